package QuorinCtrlWrapper;

import java.util.ArrayList;

/**
 * Records, enumerations, constants and callback interfaces exchanged with {@link QuorinCtrl}.
 * The native library reads and writes these fields by name and JNI type, so the field names,
 * types and the no-argument constructors are an interface: rename nothing.
 * Unsigned SDK numbers arrive as the same bits in signed Java fields (0xFFFF reads as -1).
 */
public class QuorinCtrlDefine {

    // ---- Status words of the native bridge (same bits as the SDK's unsigned words) ----
    public static final int QUORIN_OK = 0;
    public static final int QUORIN_E_NULL_HANDLE = 0x80020000;
    public static final int QUORIN_E_PAYLOAD_UNKNOWN = 0x80020003;
    public static final int QUORIN_E_BAD_ARGUMENT = 0x80020004;
    public static final int QUORIN_E_BUFFER_TOO_SMALL = 0x8002000a;

    // ---- Transport layer ----
    public static final int QUORIN_GIGE_DEVICE = 1;

    // ---- Access modes for QuorinCtrl.QUORIN_IsDeviceAccessible ----
    public static final int QUORIN_ACCESS_Exclusive = 1;
    public static final int QUORIN_ACCESS_ExclusiveWithSwitch = 2;
    public static final int QUORIN_ACCESS_Control = 3;
    public static final int QUORIN_ACCESS_ControlWithSwitch = 4;
    public static final int QUORIN_ACCESS_ControlSwitchEnable = 5;
    public static final int QUORIN_ACCESS_ControlSwitchEnableWithKey = 6;
    public static final int QUORIN_ACCESS_Monitor = 7;

    // ---- IP configuration types for QuorinCtrl.QUORIN_GIGE_SetIpConfig ----
    public static final int QUORIN_IP_CFG_STATIC = 0x05000000;
    public static final int QUORIN_IP_CFG_DHCP = 0x06000000;
    public static final int QUORIN_IP_CFG_LLA = 0x04000000;

    /**
     * Formats an SDK address word (first octet in the most significant byte) as dotted text.
     * @return for example "192.168.0.10" for 0xC0A8000A
     */
    public static String ipToString(int ip) {
        return ((ip >>> 24) & 0xFF) + "." + ((ip >>> 16) & 0xFF) + "."
                + ((ip >>> 8) & 0xFF) + "." + (ip & 0xFF);
    }

    // ======================= Handle =======================

    /** One device (or upgrade) handle; the native side keeps all of its state in these fields. */
    public static class Handle {
        public long hHandle;
        public long upHandle;
        public int PayloadSize;
        public long lExceptionCallParam;
        public long lAllEventCallParam;
        public long lImageCallParam;
        public long lTriggerCallParam;

        public Handle() {
        }
    }

    // ======================= Devices =======================

    /** Device information as enumerated; also the input of handle creation. */
    public static class QUORIN_DEVICE_INFO {
        public short nMajorVer;
        public short nMinorVer;
        public int nMacAddrHigh;
        public int nMacAddrLow;
        public int nTLayerType;
        public boolean bCodeReader;
        public QUORIN_GIGE_DEVICE_INFO stGigEInfo;

        public QUORIN_DEVICE_INFO() {
            // The native side reads the sub-record without a null test.
            stGigEInfo = new QUORIN_GIGE_DEVICE_INFO();
        }

        @Override
        public String toString() {
            QUORIN_GIGE_DEVICE_INFO g = stGigEInfo;
            if (g == null) {
                return "QUORIN_DEVICE_INFO[no GigE info]";
            }
            return "QUORIN_DEVICE_INFO[model=" + g.chModelName + ", serial=" + g.chSerialNumber
                    + ", name=" + g.chUserDefinedName + ", ip=" + ipToString(g.nCurrentIp)
                    + ", codeReader=" + bCodeReader + "]";
        }
    }

    /** GigE part of a device record; addresses are SDK words, see {@link #ipToString(int)}. */
    public static class QUORIN_GIGE_DEVICE_INFO {
        public int nIpCfgOption;
        public int nIpCfgCurrent;
        public int nCurrentIp;
        public int nCurrentSubNetMask;
        public int nDefultGateWay;
        // Texts start empty: a null text would crash the conversion of a user-built record.
        public String chManufacturerName = "";
        public String chModelName = "";
        public String chDeviceVersion = "";
        public String chManufacturerSpecificInfo = "";
        public String chSerialNumber = "";
        public String chUserDefinedName = "";
        public int nNetExport;
        public int nCurUserIP;

        public QUORIN_GIGE_DEVICE_INFO() {
        }
    }

    // ======================= Parameter values =======================

    public static class QUORIN_INT_VALUE {
        public long nCurValue;
        public long nMax;
        public long nMin;
        public long nInc;

        public QUORIN_INT_VALUE() {
        }
    }

    public static class QUORIN_ENUM_VALUE {
        public int nCurValue;
        public ArrayList<Integer> lsSupportValue;

        public QUORIN_ENUM_VALUE() {
            // Refilled in place by the native side, never created there.
            lsSupportValue = new ArrayList<>();
        }
    }

    public static class QUORIN_FLOAT_VALUE {
        public float fCurValue;
        public float fMax;
        public float fMin;

        public QUORIN_FLOAT_VALUE() {
        }
    }

    public static class QUORIN_BOOL_VALUE {
        public boolean bCurValue;

        public QUORIN_BOOL_VALUE() {
        }
    }

    public static class QUORIN_STRING_VALUE {
        public String chCurValue;
        public int nMaxLength;

        public QUORIN_STRING_VALUE() {
        }
    }

    public static class QUORIN_ALGORITHM_INT_VALUE {
        public long lOutValue;

        public QUORIN_ALGORITHM_INT_VALUE() {
        }
    }

    /** Access mode of a feature node; left untouched (null when fresh) if the query fails. */
    public static class QUORIN_XML_NODE_ACCESSMODE {
        public QUORIN_XML_AccessMode accessMode;

        public QUORIN_XML_NODE_ACCESSMODE() {
        }
    }

    // ======================= Device files =======================

    public static class QUORIN_FILE_ACCESS {
        // Empty rather than null: the native side does not test the names.
        public String pUserFileName = "";
        public String pDevFileName = "";

        public QUORIN_FILE_ACCESS() {
        }
    }

    public static class QUORIN_FILE_ACCESS_PROGRESS {
        public long nCompleted;
        public long nTotal;

        public QUORIN_FILE_ACCESS_PROGRESS() {
        }
    }

    // ======================= Notifications =======================

    /** Device event; one instance per registration is reused for every event: copy what you keep. */
    public static class QUORIN_EVENT_OUT_INFO {
        public String EventName;
        public short nEventID;
        public short nStreamChannel;
        public int nBlockIdHigh;
        public int nBlockIdLow;
        public int nTimestampHigh;
        public int nTimestampLow;
        public byte[] pEventData;
        public int nEventDataSize;

        public QUORIN_EVENT_OUT_INFO() {
        }
    }

    /** Trigger notice; one instance per registration is reused for every notice. */
    public static class QUORIN_TRIGGER_INFO_DATA {
        public int nTriggerIndex;
        public int nTriggerFlag;
        public int nTriggerTimeHigh;
        public int nTriggerTimeLow;
        public int nOriginalTrigger;
        public short nIsForceOver;
        public short nIsMainCam;
        public long nHostTimeStamp;

        public QUORIN_TRIGGER_INFO_DATA() {
        }
    }

    // ======================= Frame results =======================

    /** Frame result of the Ex2/MSC fetches and of the image callback. */
    public static class QUORIN_IMAGE_OUT_INFO_EX2 {
        public short nWidth;
        public short nHeight;
        public QuorinGvspPixelType enPixelType;
        public int nTriggerIndex;
        public int nFrameNum;
        public int nFrameLen;
        public int nTimeStampHigh;
        public int nTimeStampLow;
        public int bFlaseTrigger;
        public int nFocusScore;
        public boolean bIsGetCode;
        public QUORIN_WAYBILL_LIST pstWaybillList;
        public int nEventID;
        public int nChannelID;
        public int nImageCost;
        public QUORIN_RESULT_BCR_EX pstCodeListEx;

        public QUORIN_IMAGE_OUT_INFO_EX2() {
            // The conversion fills both lists in place and never creates them.
            pstCodeListEx = new QUORIN_RESULT_BCR_EX();
            pstWaybillList = new QUORIN_WAYBILL_LIST();
        }

        @Override
        public String toString() {
            int codes = pstCodeListEx == null ? 0 : pstCodeListEx.nCodeNum;
            int waybills = pstWaybillList == null ? 0 : pstWaybillList.nWaybillNum;
            return "QUORIN_IMAGE_OUT_INFO_EX2[frame=" + Integer.toUnsignedString(nFrameNum)
                    + ", channel=" + nChannelID + ", " + Short.toUnsignedInt(nWidth) + "x"
                    + Short.toUnsignedInt(nHeight) + ", pixel=" + enPixelType
                    + ", len=" + Integer.toUnsignedString(nFrameLen)
                    + ", codes=" + codes + ", waybills=" + waybills + "]";
        }
    }

    public static class QUORIN_RESULT_BCR_EX {
        public int nCodeNum;
        public ArrayList<QUORIN_BCR_INFO_EX> stBcrInfoEx;

        public QUORIN_RESULT_BCR_EX() {
            stBcrInfoEx = new ArrayList<>();
        }
    }

    /** One decoded code with its corners, print quality and timing. */
    public static class QUORIN_BCR_INFO_EX {
        public int nID;
        public String chCode;
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
        public boolean bIsGetQuality;
        public int nIDRScore;
        public int n1DIsGetQuality;
        public int nTotalProcCost;
        public int nTriggerTimeTvHigh;
        public int nTriggerTimeTvLow;
        public int nTriggerTimeUtvHigh;
        public int nTriggerTimeUtvLow;

        public QUORIN_BCR_INFO_EX() {
            // The conversion writes into these sub-objects without creating them.
            stCornerLeftTop = new QUORIN_POINT_I();
            stCornerRightTop = new QUORIN_POINT_I();
            stCornerRightBottom = new QUORIN_POINT_I();
            stCornerLeftBottom = new QUORIN_POINT_I();
            stCodeQuality = new QUORIN_CODE_INFO();
        }

        @Override
        public String toString() {
            return "QUORIN_BCR_INFO_EX[id=" + nID + ", type=" + nBarType + ", code=" + chCode
                    + ", angle=" + nAngle + ", ppm=" + Short.toUnsignedInt(sPPM) + "]";
        }
    }

    public static class QUORIN_POINT_I {
        public int nX;
        public int nY;

        public QUORIN_POINT_I() {
        }
    }

    /** Print-quality grades (n...) and scores (f...) of one code, in the SDK's layout order. */
    public static class QUORIN_CODE_INFO {
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

        public QUORIN_CODE_INFO() {
        }
    }

    public static class QUORIN_WAYBILL_LIST {
        public int nWaybillNum;
        public QUORIN_IMAGE_TYPE enWaybillImageType;
        public ArrayList<QUORIN_WAYBILL_INFO> stWaybillInfo;

        public QUORIN_WAYBILL_LIST() {
            stWaybillInfo = new ArrayList<>();
        }
    }

    /** One waybill region with its cut-out image. */
    public static class QUORIN_WAYBILL_INFO {
        public float fCenterX;
        public float fCenterY;
        public float fWidth;
        public float fHeight;
        public float fAngle;
        public float fConfidence;
        public byte[] pImageWaybill;
        public int nImageLen;

        public QUORIN_WAYBILL_INFO() {
        }
    }

    // ======================= Legacy frame fetch =======================

    /** Frame result of QuorinCtrl.QUORIN_GetOneFrameTimeout. */
    public static class QUORIN_FRAME_OUT_INFO {
        public short nWidth;
        public short nHeight;
        public QuorinGvspPixelType enPixelType;
        public int nTriggerIndex;
        public int nFrameNum;
        public int nFrameLen;
        public int nTimeStampHigh;
        public int nTimeStampLow;
        public int nCodeNumber;
        public byte[] pImageWaybill;
        public int nImageWaybillLen;
        public QUORIN_IMAGE_TYPE enWaybillImageType;
        public int bFlaseTrigger;
        public int nFocusScore;
        public int nChannelID;
        public int nImageCost;
        public ArrayList<QUORIN_BcrInfo> bcrinfoList;

        public QUORIN_FRAME_OUT_INFO() {
            bcrinfoList = new ArrayList<>();
        }

        @Override
        public String toString() {
            return "QUORIN_FRAME_OUT_INFO[frame=" + Integer.toUnsignedString(nFrameNum)
                    + ", channel=" + nChannelID + ", " + Short.toUnsignedInt(nWidth) + "x"
                    + Short.toUnsignedInt(nHeight) + ", pixel=" + enPixelType
                    + ", len=" + Integer.toUnsignedString(nFrameLen) + ", codes=" + nCodeNumber + "]";
        }
    }

    /** One code of the legacy frame; {@code chCode} holds the raw text bytes. */
    public static class QUORIN_BcrInfo {
        public int nID;
        public byte[] chCode;
        public int nLen;
        public int nBarType;
        public ArrayList<QUORIN_POINT> pointList;
        public int nAngle;
        public int nMainPackageId;
        public int nSubPackageId;
        public short sAppearCount;
        public short sPPM;
        public short sAlgoCost;
        public short sSharpness;

        public QUORIN_BcrInfo() {
            pointList = new ArrayList<>();
        }
    }

    public static class QUORIN_POINT {
        public int x;
        public int y;

        public QUORIN_POINT() {
        }
    }

    // ======================= Image saving =======================

    /** Input of QuorinCtrl.QUORIN_SaveImage; on success pImageBuffer/nImageLen hold the encoded file. */
    public static class QUORIN_SAVE_IMAGE_PARAM {
        public byte[] pData;
        public int nDataLen;
        // Both enumerations start set: the native side reads them without a null test.
        public QuorinGvspPixelType enPixelType = QuorinGvspPixelType.PixelType_Gvsp_Undefined;
        public short nWidth;
        public short nHeight;
        public byte[] pImageBuffer;
        public int nImageLen;
        public int nBufferSize;
        public QUORIN_IMAGE_TYPE enImageType = QUORIN_IMAGE_TYPE.QUORIN_Image_Undefined;
        public int nJpgQuality;
        public int iMethodValue;

        public QUORIN_SAVE_IMAGE_PARAM() {
        }
    }

    // ======================= Enumerations =======================

    /** Pixel formats, numbered as GigE Vision numbers them. */
    public enum QuorinGvspPixelType {
        PixelType_Gvsp_Undefined(0xFFFFFFFF),
        PixelType_Gvsp_Mono8(0x01080001),
        PixelType_Gvsp_Mono10(0x01100003),
        PixelType_Gvsp_Mono12(0x01100005),
        PixelType_Gvsp_Mono16(0x01100007),
        PixelType_Gvsp_BayerGR8(0x01080008),
        PixelType_Gvsp_BayerRG8(0x01080009),
        PixelType_Gvsp_BayerGB8(0x0108000A),
        PixelType_Gvsp_BayerBG8(0x0108000B),
        PixelType_Gvsp_RGB8_Packed(0x02180014),
        PixelType_Gvsp_BGR8_Packed(0x02180015),
        PixelType_Gvsp_YUV422_Packed(0x02100032),
        PixelType_Gvsp_Jpeg(0x80180001);

        private final int nValue;

        QuorinGvspPixelType(int nValue) {
            this.nValue = nValue;
        }

        /** @return the SDK's number for this format */
        public int getnValue() {
            return nValue;
        }
    }

    /** Image file formats for saving and for waybill images. */
    public enum QUORIN_IMAGE_TYPE {
        QUORIN_Image_Undefined(0),
        QUORIN_Image_Bmp(1),
        QUORIN_Image_Jpeg(2),
        QUORIN_Image_Png(3),
        QUORIN_Image_Tif(4);

        private final int nValue;

        QUORIN_IMAGE_TYPE(int nValue) {
            this.nValue = nValue;
        }

        /** @return the SDK's number for this format */
        public int getnValue() {
            return nValue;
        }
    }

    /** Access mode of a feature node: not implemented, not available, write-only, read-only, read-write. */
    public enum QUORIN_XML_AccessMode {
        QUORIN_AM_NI(0),
        QUORIN_AM_NA(1),
        QUORIN_AM_WO(2),
        QUORIN_AM_RO(3),
        QUORIN_AM_RW(4),
        QUORIN_AM_Undefined(5),
        QUORIN_AM_CycleDetect(6);

        private final int nValue;

        QUORIN_XML_AccessMode(int nValue) {
            this.nValue = nValue;
        }

        /** @return the SDK's number for this mode */
        public int getnValue() {
            return nValue;
        }
    }

    // ======================= Callback interfaces =======================
    // The native side finds these methods by name and signature on the registered object's own
    // class, so implementing the interfaces is a convenience, not a requirement.
    // Every callback runs on an SDK thread; the objects it receives are reused for the next call.

    public interface ExceptionCallBack {
        /** Called with the SDK's exception message type; the result is ignored. */
        int OnExceptionCallBack(int nMsgType);
    }

    public interface AllEventCallBack {
        /** Called for every device event; the result is ignored. */
        int OnAllEventCallBack(QUORIN_EVENT_OUT_INFO info);
    }

    public interface TriggerCallBack {
        /** Called for every trigger notice; the result is ignored. */
        int OnTriggerCallBack(QUORIN_TRIGGER_INFO_DATA info);
    }

    public interface ImageCallBack {
        /** Called per frame; only the first info.nFrameLen bytes of data belong to it. Result ignored. */
        int OnImageCallBack(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info);
    }
}
