import com.sun.jna.Callback;
import com.sun.jna.Library;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.Structure;
import com.sun.jna.Structure.FieldOrder;
import com.sun.jna.ptr.PointerByReference;
import java.util.ArrayList;
import java.util.List;

/**
 * The SDK's frame calls and records mapped with JNA, as a Java developer without the bridge would
 * map them from QuorinCtrl.h (x86_64, natural alignment). The benchmark's peer of the bridge.
 *
 * <p>Records are made once and pointed at each new frame's memory before read(): JNA derives the
 * layout of a Structure with array fields anew for every instance, which made a new record per code
 * cost some 70 us.
 */
public final class QuorinJna {
    public static final int QUORIN_MAX_BCR_EX_NUM = 300;

    private QuorinJna() {
    }

    // The record as a Pointer: a Structure parameter would make a new record for every frame.
    public interface ImageCallBackEx2 extends Callback {
        void invoke(Pointer pData, Pointer pFrameInfo, Pointer pUser);
    }

    /** A record that is pointed at the SDK's memory of each frame in turn. */
    public abstract static class Record extends Structure {
        /** Points this record at {@code p} and reads it. */
        public void readAt(Pointer p) {
            useMemory(p);
            read();
        }
    }

    public interface Sdk extends Library {
        // The stand-in the process has loaded already, found on jna.library.path.
        Sdk INSTANCE = Native.load("QuorinCtrl", Sdk.class);

        int QUORIN_GetOneFrameTimeoutEx2(Pointer handle, PointerByReference ppData,
                                         QUORIN_IMAGE_OUT_INFO_EX2 pFrameInfo, int nMsec);

        int QUORIN_RegisterImageCallBackEx2(Pointer handle, ImageCallBackEx2 cbOutput, Pointer pUser);
    }

    @FieldOrder({"nX", "nY"})
    public static class QUORIN_POINT_I extends Record {
        public int nX;
        public int nY;
    }

    @FieldOrder({"nOverQuality", "nDeCode", "nSCGrade", "nModGrade", "nFPDGrade", "nANGrade", "nGNGrade",
            "nUECGrade", "nPGHGrade", "nPGVGrade", "fSCScore", "fModScore", "fFPDScore", "fAnScore", "fGNScore",
            "fUECScore", "fPGHScore", "fPGVScore", "nRMGrade", "fRMScore", "n1DEdgeGrade", "n1DMinRGrade",
            "n1DMinEGrade", "n1DDcdGrade", "n1DDefGrade", "n1DQZGrade", "f1DEdgeScore", "f1DMinRScore",
            "f1DMinEScore", "f1DDcdScore", "f1DDefScore", "f1DQZScore", "nReserved"})
    public static class QUORIN_CODE_INFO extends Record {
        public int nOverQuality;
        public int nDeCode;
        public int nSCGrade;
        public int nModGrade;
        public int nFPDGrade;
        public int nANGrade;
        public int nGNGrade;
        public int nUECGrade;
        public int nPGHGrade;
        public int nPGVGrade;
        public float fSCScore;
        public float fModScore;
        public float fFPDScore;
        public float fAnScore;
        public float fGNScore;
        public float fUECScore;
        public float fPGHScore;
        public float fPGVScore;
        public int nRMGrade;
        public float fRMScore;
        public int n1DEdgeGrade;
        public int n1DMinRGrade;
        public int n1DMinEGrade;
        public int n1DDcdGrade;
        public int n1DDefGrade;
        public int n1DQZGrade;
        public float f1DEdgeScore;
        public float f1DMinRScore;
        public float f1DMinEScore;
        public float f1DDcdScore;
        public float f1DDefScore;
        public float f1DQZScore;
        public int[] nReserved = new int[18];
    }

    @FieldOrder({"nID", "chCode", "nLen", "nBarType", "stCornerLeftTop", "stCornerRightTop", "stCornerRightBottom",
            "stCornerLeftBottom", "stCodeQuality", "nAngle", "nMainPackageId", "nSubPackageId", "sAppearCount", "sPPM",
            "sAlgoCost", "sSharpness", "bIsGetQuality", "nIDRScore", "n1DIsGetQuality", "nTotalProcCost",
            "nTriggerTimeTvHigh", "nTriggerTimeTvLow", "nTriggerTimeUtvHigh", "nTriggerTimeUtvLow", "nReserved"})
    public static class QUORIN_BCR_INFO_EX extends Record {
        public int nID;
        public byte[] chCode = new byte[4096];
        public int nLen;
        public int nBarType;
        public QUORIN_POINT_I stCornerLeftTop;
        public QUORIN_POINT_I stCornerRightTop;
        public QUORIN_POINT_I stCornerRightBottom;
        public QUORIN_POINT_I stCornerLeftBottom;
        public QUORIN_CODE_INFO stCodeQuality;
        public int nAngle;
        public int nMainPackageId;
        public int nSubPackageId;
        public short sAppearCount;
        public short sPPM;
        public short sAlgoCost;
        public short sSharpness;
        public byte bIsGetQuality;
        public int nIDRScore;
        public int n1DIsGetQuality;
        public int nTotalProcCost;
        public int nTriggerTimeTvHigh;
        public int nTriggerTimeTvLow;
        public int nTriggerTimeUtvHigh;
        public int nTriggerTimeUtvLow;
        public int[] nReserved = new int[59];

        /** The code's text, up to its terminator; the readers send UTF-8. */
        public String code() {
            return Native.toString(chCode, "UTF-8");
        }
    }

    @FieldOrder({"nCodeNum", "stBcrInfoEx", "nReserved"})
    public static class QUORIN_RESULT_BCR_EX extends Record {
        private static final int ENTRY_SIZE = new QUORIN_BCR_INFO_EX().size();

        public int nCodeNum;
        public QUORIN_BCR_INFO_EX[] stBcrInfoEx = new QUORIN_BCR_INFO_EX[QUORIN_MAX_BCR_EX_NUM];
        public int[] nReserved = new int[8];
        private final List<QUORIN_BCR_INFO_EX> codes = new ArrayList<>();  // not a field of the record

        /**
         * Points the list at {@code p} and reads nCodeNum and the entries it counts, each with read();
         * they stay valid until the next call. The whole list is 1.3 MB, and read() of it would read all
         * 300 entries for every frame.
         */
        public List<QUORIN_BCR_INFO_EX> readCodesAt(Pointer p) {
            useMemory(p);
            readField("nCodeNum");
            if (nCodeNum < 0 || nCodeNum > QUORIN_MAX_BCR_EX_NUM) {
                throw new IllegalStateException("the SDK reported " + nCodeNum + " codes");
            }
            Pointer first = p.share(fieldOffset("stBcrInfoEx"));
            while (codes.size() < nCodeNum) {
                codes.add(new QUORIN_BCR_INFO_EX());
            }
            for (int i = 0; i < nCodeNum; i++) {
                codes.get(i).readAt(first.share((long) i * ENTRY_SIZE));
            }
            return codes.subList(0, nCodeNum);
        }
    }

    @FieldOrder({"nWidth", "nHeight", "enPixelType", "nReserved0", "nTriggerIndex", "nFrameNum", "nFrameLen",
            "nTimeStampHigh", "nTimeStampLow", "bFlaseTrigger", "nFocusScore", "bIsGetCode", "pstCodeList",
            "pstWaybillList", "nEventID", "nChannelID", "nImageCost", "pstCodeListEx", "nReserved"})
    public static class QUORIN_IMAGE_OUT_INFO_EX2 extends Record {
        public short nWidth;
        public short nHeight;
        public int enPixelType;
        public int nReserved0;
        public int nTriggerIndex;
        public int nFrameNum;
        public int nFrameLen;
        public int nTimeStampHigh;
        public int nTimeStampLow;
        public int bFlaseTrigger;
        public int nFocusScore;
        public byte bIsGetCode;
        // Pointers, not nested ByReference structures: those would read the whole 1.3 MB code list.
        public Pointer pstCodeList;
        public Pointer pstWaybillList;
        public int nEventID;
        public int nChannelID;
        public int nImageCost;
        public Pointer pstCodeListEx;
        public int[] nReserved = new int[29];
        private QUORIN_RESULT_BCR_EX codeList;  // not a field of the record; made on first use

        /** The codes of the frame last read into this record, valid until the next; none without a list. */
        public List<QUORIN_BCR_INFO_EX> readCodes() {
            if (pstCodeListEx == null) {
                return List.of();
            }
            if (codeList == null) {
                codeList = new QUORIN_RESULT_BCR_EX();
            }
            return codeList.readCodesAt(pstCodeListEx);
        }
    }

    /** Throws unless the records are as large as the C++ compiler lays them out. */
    public static void expectLayout(int frameInfoSize, int codeSize, int codeListSize) {
        int[] jna = {new QUORIN_IMAGE_OUT_INFO_EX2().size(), new QUORIN_BCR_INFO_EX().size(),
                new QUORIN_RESULT_BCR_EX().size()};
        if (jna[0] != frameInfoSize || jna[1] != codeSize || jna[2] != codeListSize) {
            throw new IllegalStateException(String.format(
                    "JNA lays out the frame record, code and code list in %d, %d and %d bytes; C++ in %d, %d and %d",
                    jna[0], jna[1], jna[2], frameInfoSize, codeSize, codeListSize));
        }
    }
}
