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
    /** Success. */
    public static final int QUORIN_OK = 0;
    /** The {@code Handle} argument is null (0x80020000). */
    public static final int QUORIN_E_NULL_HANDLE = 0x80020000;
    /** No frame size known: grabbing was not started through the bridge (0x80020003). */
    public static final int QUORIN_E_PAYLOAD_UNKNOWN = 0x80020003;
    /** Another argument is null or out of range (0x80020004). */
    public static final int QUORIN_E_BAD_ARGUMENT = 0x80020004;
    /** The image array is shorter than {@code Handle.PayloadSize} (0x8002000a). */
    public static final int QUORIN_E_BUFFER_TOO_SMALL = 0x8002000a;

    // ---- Transport layer ----
    /** Transport layer of GigE devices, in {@code QUORIN_DEVICE_INFO.nTLayerType}. */
    public static final int QUORIN_GIGE_DEVICE = 1;

    // ---- Access modes for QuorinCtrl.QUORIN_IsDeviceAccessible ----
    /** Exclusive access. */
    public static final int QUORIN_ACCESS_Exclusive = 1;
    /** Exclusive access, taken over from another host. */
    public static final int QUORIN_ACCESS_ExclusiveWithSwitch = 2;
    /** Control access; other hosts may watch. */
    public static final int QUORIN_ACCESS_Control = 3;
    /** Control access, taken over from another host. */
    public static final int QUORIN_ACCESS_ControlWithSwitch = 4;
    /** Control access that another host may take over. */
    public static final int QUORIN_ACCESS_ControlSwitchEnable = 5;
    /** Control access that another host may take over with a key. */
    public static final int QUORIN_ACCESS_ControlSwitchEnableWithKey = 6;
    /** Read-only access, watching another host's control. */
    public static final int QUORIN_ACCESS_Monitor = 7;

    // ---- IP configuration types for QuorinCtrl.QUORIN_GIGE_SetIpConfig ----
    /** Fixed address stored in the device. */
    public static final int QUORIN_IP_CFG_STATIC = 0x05000000;
    /** Address from a DHCP server. */
    public static final int QUORIN_IP_CFG_DHCP = 0x06000000;
    /** Link-local address (169.254.x.x). */
    public static final int QUORIN_IP_CFG_LLA = 0x04000000;

    /**
     * Formats an SDK address word (first octet in the most significant byte) as dotted text.
     * @param ip the address word, for example {@code nCurrentIp}
     * @return for example "192.168.0.10" for 0xC0A8000A
     */
    public static String ipToString(int ip) {
        return ((ip >>> 24) & 0xFF) + "." + ((ip >>> 16) & 0xFF) + "."
                + ((ip >>> 8) & 0xFF) + "." + (ip & 0xFF);
    }

    // ======================= Handle =======================

    /** One device (or upgrade) handle; the native side keeps all of its state in these fields. */
    public static class Handle {
        /** The SDK's device handle (zero-extended); 0 in an upgrade handle. Do not change it. */
        public long hHandle;
        /** The SDK's upgrade handle, set by {@code QUORIN_CreateHandleForUpgradeAndEncryption}. */
        public long upHandle;
        /** Frame size in bytes, cached by {@code QUORIN_StartGrabbing}; 0 until then. */
        public int PayloadSize;
        /** Address of the exception callback's record; 0 when none. Do not change it. */
        public long lExceptionCallParam;
        /** Address of the event callback's record; 0 when none. Do not change it. */
        public long lAllEventCallParam;
        /** Address of the image callback's record; 0 when none. Do not change it. */
        public long lImageCallParam;
        /** Address of the trigger callback's record; 0 when none. Do not change it. */
        public long lTriggerCallParam;

        /** Creates an empty handle; the bridge creates the ones it returns. */
        public Handle() {
        }
    }

    // ======================= Devices =======================

    /** Device information as enumerated; also the input of handle creation. */
    public static class QUORIN_DEVICE_INFO {
        /** Major version of the device's protocol. */
        public short nMajorVer;
        /** Minor version of the device's protocol. */
        public short nMinorVer;
        /** Upper 16 bits of the MAC address. */
        public int nMacAddrHigh;
        /** Lower 32 bits of the MAC address. */
        public int nMacAddrLow;
        /** Transport layer bits, the SDK's ({@link #QUORIN_GIGE_DEVICE}). */
        public int nTLayerType;
        /** True for a code reader, false for a camera without a decoder. */
        public boolean bCodeReader;
        /** The GigE part; never null in a record the bridge reads. */
        public QUORIN_GIGE_DEVICE_INFO stGigEInfo;

        /** Creates an empty record with its {@code stGigEInfo}. */
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
        /** IP configurations the device supports, the SDK's bits. */
        public int nIpCfgOption;
        /** IP configuration in use, the SDK's bits. */
        public int nIpCfgCurrent;
        /** Current address, an SDK word. */
        public int nCurrentIp;
        /** Current subnet mask, an SDK word. */
        public int nCurrentSubNetMask;
        /** Default gateway, an SDK word (the name is spelled so on purpose). */
        public int nDefultGateWay;
        // Texts start empty: a null text would crash the conversion of a user-built record.
        /** Manufacturer; 31 bytes at most when creating a handle. */
        public String chManufacturerName = "";
        /** Model; 31 bytes at most when creating a handle. */
        public String chModelName = "";
        /** Firmware version; 31 bytes at most when creating a handle. */
        public String chDeviceVersion = "";
        /** Manufacturer's information; 47 bytes at most when creating a handle. */
        public String chManufacturerSpecificInfo = "";
        /** Serial number; 15 bytes at most when creating a handle. */
        public String chSerialNumber = "";
        /** User-defined name (GBK names arrive decoded); 15 bytes at most when creating a handle. */
        public String chUserDefinedName = "";
        /** Address of the host interface the device was found through, an SDK word. */
        public int nNetExport;
        /** Address of the host that holds the device, an SDK word. */
        public int nCurUserIP;

        /** Creates an empty record. */
        public QUORIN_GIGE_DEVICE_INFO() {
        }
    }

    // ======================= Parameter values =======================

    /** Integer feature with its range, filled by {@code QUORIN_GetIntValue}. */
    public static class QUORIN_INT_VALUE {
        /** Current value. */
        public long nCurValue;
        /** Largest value. */
        public long nMax;
        /** Smallest value. */
        public long nMin;
        /** Step between values. */
        public long nInc;

        /** Creates an empty record. */
        public QUORIN_INT_VALUE() {
        }
    }

    /** Enumeration feature with its supported entries, filled by {@code QUORIN_GetEnumValue}. */
    public static class QUORIN_ENUM_VALUE {
        /** Number of the current entry. */
        public int nCurValue;
        /** Numbers of the supported entries; cleared and refilled in place. */
        public ArrayList<Integer> lsSupportValue;

        /** Creates an empty value with its list. */
        public QUORIN_ENUM_VALUE() {
            // Refilled in place by the native side, never created there.
            lsSupportValue = new ArrayList<>();
        }
    }

    /** Float feature with its range, filled by {@code QUORIN_GetFloatValue}. */
    public static class QUORIN_FLOAT_VALUE {
        /** Current value. */
        public float fCurValue;
        /** Largest value. */
        public float fMax;
        /** Smallest value. */
        public float fMin;

        /** Creates an empty record. */
        public QUORIN_FLOAT_VALUE() {
        }
    }

    /** Boolean feature, filled by {@code QUORIN_GetBoolValue}. */
    public static class QUORIN_BOOL_VALUE {
        /** Current value. */
        public boolean bCurValue;

        /** Creates an empty record. */
        public QUORIN_BOOL_VALUE() {
        }
    }

    /** String feature, filled by {@code QUORIN_GetStringValue}. */
    public static class QUORIN_STRING_VALUE {
        /** Current text. */
        public String chCurValue;
        /** Longest text the feature takes. */
        public int nMaxLength;

        /** Creates an empty record. */
        public QUORIN_STRING_VALUE() {
        }
    }

    /** Integer parameter of the decoding algorithm, filled by {@code QUORIN_Algorithm_GetIntValue}. */
    public static class QUORIN_ALGORITHM_INT_VALUE {
        /** The parameter's value. */
        public long lOutValue;

        /** Creates an empty record. */
        public QUORIN_ALGORITHM_INT_VALUE() {
        }
    }

    /** Access mode of a feature node; left untouched (null when fresh) if the query fails. */
    public static class QUORIN_XML_NODE_ACCESSMODE {
        /** The node's access mode; null until a query succeeds. */
        public QUORIN_XML_AccessMode accessMode;

        /** Creates an empty record. */
        public QUORIN_XML_NODE_ACCESSMODE() {
        }
    }

    // ======================= Device files =======================

    /** Host and device file names of a transfer. */
    public static class QUORIN_FILE_ACCESS {
        // Empty rather than null: the native side does not test the names.
        /** File on this host. */
        public String pUserFileName = "";
        /** File on the device. */
        public String pDevFileName = "";

        /** Creates an empty record. */
        public QUORIN_FILE_ACCESS() {
        }
    }

    /** Progress of a file transfer, filled by {@code QUORIN_GetFileAccessProgress}. */
    public static class QUORIN_FILE_ACCESS_PROGRESS {
        /** Bytes transferred so far. */
        public long nCompleted;
        /** Bytes of the whole transfer. */
        public long nTotal;

        /** Creates an empty record. */
        public QUORIN_FILE_ACCESS_PROGRESS() {
        }
    }

    // ======================= Notifications =======================

    /** Device event; one instance per registration is reused for every event: copy what you keep. */
    public static class QUORIN_EVENT_OUT_INFO {
        /** Name of the event. */
        public String EventName;
        /** Event number; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nEventID;
        /**
         * Stream channel of the event; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}).
         */
        public short nStreamChannel;
        /** Upper 32 bits of the frame (block) number. */
        public int nBlockIdHigh;
        /** Lower 32 bits of the frame (block) number. */
        public int nBlockIdLow;
        /** Upper 32 bits of the device's time stamp. */
        public int nTimestampHigh;
        /** Lower 32 bits of the device's time stamp. */
        public int nTimestampLow;
        /** The event's data bytes. */
        public byte[] pEventData;
        /** Bytes of event data. */
        public int nEventDataSize;

        /** Creates an empty record. */
        public QUORIN_EVENT_OUT_INFO() {
        }
    }

    /** Trigger notice; one instance per registration is reused for every notice. */
    public static class QUORIN_TRIGGER_INFO_DATA {
        /** Number of the trigger; an unsigned 32-bit SDK number in an int. */
        public int nTriggerIndex;
        /** The SDK's trigger flag. */
        public int nTriggerFlag;
        /** Upper 32 bits of the trigger time. */
        public int nTriggerTimeHigh;
        /** Lower 32 bits of the trigger time. */
        public int nTriggerTimeLow;
        /** Number of the original trigger. */
        public int nOriginalTrigger;
        /** Non-zero when the trigger was forced to end. */
        public short nIsForceOver;
        /** Non-zero when this device is the main camera. */
        public short nIsMainCam;
        /** Host time of the notice, in microseconds. */
        public long nHostTimeStamp;

        /** Creates an empty record. */
        public QUORIN_TRIGGER_INFO_DATA() {
        }
    }

    // ======================= Frame results =======================

    /** Frame result of the Ex2/MSC fetches and of the image callback. */
    public static class QUORIN_IMAGE_OUT_INFO_EX2 {
        /** Width in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nWidth;
        /** Height in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nHeight;
        /** Pixel format; unchanged when the SDK reports a number without a constant. */
        public QuorinGvspPixelType enPixelType;
        /** Number of the trigger that made the frame; an unsigned 32-bit SDK number in an int. */
        public int nTriggerIndex;
        /** Frame number; an unsigned 32-bit SDK number in an int ({@code Integer.toUnsignedLong}). */
        public int nFrameNum;
        /** Image bytes of this frame: only {@code data[0 .. nFrameLen)} belong to it. */
        public int nFrameLen;
        /** Upper 32 bits of the device's time stamp. */
        public int nTimeStampHigh;
        /** Lower 32 bits of the device's time stamp. */
        public int nTimeStampLow;
        /** Non-zero for a false trigger (the name is spelled so on purpose). */
        public int bFlaseTrigger;
        /** Focus score of the image. */
        public int nFocusScore;
        /** True when codes were decoded. */
        public boolean bIsGetCode;
        /** Waybills cut out of the frame; filled in place, never replaced. */
        public QUORIN_WAYBILL_LIST pstWaybillList;
        /** Event number; an unsigned 32-bit SDK number in an int. */
        public int nEventID;
        /** Channel of a multi-channel reader, from 0. */
        public int nChannelID;
        /** The SDK's image processing cost. */
        public int nImageCost;
        /** Decoded codes; filled in place, never replaced. */
        public QUORIN_RESULT_BCR_EX pstCodeListEx;

        /** Creates an empty frame with its two lists. */
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

    /** Codes decoded in one frame. */
    public static class QUORIN_RESULT_BCR_EX {
        /** Number of codes. */
        public int nCodeNum;
        /** The codes; cleared and refilled with new objects by every fetch. */
        public ArrayList<QUORIN_BCR_INFO_EX> stBcrInfoEx;

        /** Creates an empty record. */
        public QUORIN_RESULT_BCR_EX() {
            stBcrInfoEx = new ArrayList<>();
        }
    }

    /** One decoded code with its corners, print quality and timing. */
    public static class QUORIN_BCR_INFO_EX {
        /** Number of the code in the frame. */
        public int nID;
        /** The code's text (UTF-8, or GBK decoded). */
        public String chCode;
        /** Bytes of the code's text. */
        public int nLen;
        /** Symbology number, the SDK's. */
        public int nBarType;
        /** Top-left corner, in pixels. */
        public QUORIN_POINT_I stCornerLeftTop;
        /** Top-right corner, in pixels. */
        public QUORIN_POINT_I stCornerRightTop;
        /** Bottom-right corner, in pixels. */
        public QUORIN_POINT_I stCornerRightBottom;
        /** Bottom-left corner, in pixels. */
        public QUORIN_POINT_I stCornerLeftBottom;
        /** Print-quality grades and scores. */
        public QUORIN_CODE_INFO stCodeQuality;
        /** Angle of the code, the SDK's units. */
        public int nAngle;
        /** Main package number. */
        public int nMainPackageId;
        /** Sub-package number. */
        public int nSubPackageId;
        /**
         * How often the code appeared; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}).
         */
        public short sAppearCount;
        /** Pixels per module; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short sPPM;
        /**
         * Decoding time of the algorithm; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}).
         */
        public short sAlgoCost;
        /** Sharpness of the code; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short sSharpness;
        /** True when print quality was graded. */
        public boolean bIsGetQuality;
        /** Reading score. */
        public int nIDRScore;
        /**
         * Non-zero when a 1-D code's quality was graded; not written by {@code QUORIN_GetOneFrameTimeoutEx2}.
         */
        public int n1DIsGetQuality;
        /** Total processing time. */
        public int nTotalProcCost;
        /** Upper 32 bits of the trigger time's seconds. */
        public int nTriggerTimeTvHigh;
        /** Lower 32 bits of the trigger time's seconds. */
        public int nTriggerTimeTvLow;
        /** Upper 32 bits of the trigger time's microseconds. */
        public int nTriggerTimeUtvHigh;
        /** Lower 32 bits of the trigger time's microseconds. */
        public int nTriggerTimeUtvLow;

        /** Creates an empty record. */
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

    /** A point of the image, in pixels. */
    public static class QUORIN_POINT_I {
        /** Horizontal position. */
        public int nX;
        /** Vertical position. */
        public int nY;

        /** Creates an empty record. */
        public QUORIN_POINT_I() {
        }
    }

    /** Print-quality grades (n...) and scores (f...) of one code, in the SDK's layout order. */
    public static class QUORIN_CODE_INFO {
        /** Overall grade. */
        public int nOverQuality;
        /** Decode grade. */
        public int nDeCode;
        /** Grade of symbol contrast. */
        public int nSCGrade;
        /** Grade of modulation. */
        public int nModGrade;
        /** Grade of fixed pattern damage. */
        public int nFPDGrade;
        /** Grade of axial non-uniformity. */
        public int nANGrade;
        /** Grade of grid non-uniformity. */
        public int nGNGrade;
        /** Grade of unused error correction. */
        public int nUECGrade;
        /** Grade of horizontal print growth. */
        public int nPGHGrade;
        /** Grade of vertical print growth. */
        public int nPGVGrade;
        /** Score of symbol contrast. */
        public float fSCScore;
        /** Score of modulation. */
        public float fModScore;
        /** Score of fixed pattern damage. */
        public float fFPDScore;
        /** Score of axial non-uniformity. */
        public float fAnScore;
        /** Score of grid non-uniformity. */
        public float fGNScore;
        /** Score of unused error correction. */
        public float fUECScore;
        /** Score of horizontal print growth. */
        public float fPGHScore;
        /** Score of vertical print growth. */
        public float fPGVScore;
        /** Grade of reflectance margin. */
        public int nRMGrade;
        /** Score of reflectance margin. */
        public float fRMScore;
        /** Grade of 1-D edge contrast. */
        public int n1DEdgeGrade;
        /** Grade of 1-D minimum reflectance. */
        public int n1DMinRGrade;
        /** Grade of 1-D minimum edge contrast. */
        public int n1DMinEGrade;
        /** Grade of 1-D decodability. */
        public int n1DDcdGrade;
        /** Grade of 1-D defects. */
        public int n1DDefGrade;
        /** Grade of 1-D quiet zone. */
        public int n1DQZGrade;
        /** Score of 1-D edge contrast. */
        public float f1DEdgeScore;
        /** Score of 1-D minimum reflectance. */
        public float f1DMinRScore;
        /** Score of 1-D minimum edge contrast. */
        public float f1DMinEScore;
        /** Score of 1-D decodability. */
        public float f1DDcdScore;
        /** Score of 1-D defects. */
        public float f1DDefScore;
        /** Score of 1-D quiet zone. */
        public float f1DQZScore;

        /** Creates an empty record. */
        public QUORIN_CODE_INFO() {
        }
    }

    /** Waybills cut out of one frame. */
    public static class QUORIN_WAYBILL_LIST {
        /** Number of waybills. */
        public int nWaybillNum;
        /** Image format of the waybill images. */
        public QUORIN_IMAGE_TYPE enWaybillImageType;
        /** The waybills; cleared and refilled with new objects. */
        public ArrayList<QUORIN_WAYBILL_INFO> stWaybillInfo;

        /** Creates an empty record. */
        public QUORIN_WAYBILL_LIST() {
            stWaybillInfo = new ArrayList<>();
        }
    }

    /** One waybill region with its cut-out image. */
    public static class QUORIN_WAYBILL_INFO {
        /** Horizontal centre of the waybill, in pixels. */
        public float fCenterX;
        /** Vertical centre of the waybill, in pixels. */
        public float fCenterY;
        /** Width of the waybill, in pixels. */
        public float fWidth;
        /** Height of the waybill, in pixels. */
        public float fHeight;
        /** Angle of the waybill. */
        public float fAngle;
        /** Confidence of the detection. */
        public float fConfidence;
        /** The cut-out image, a new array. */
        public byte[] pImageWaybill;
        /** Bytes of the cut-out image. */
        public int nImageLen;

        /** Creates an empty record. */
        public QUORIN_WAYBILL_INFO() {
        }
    }

    // ======================= Legacy frame fetch =======================

    /** Frame result of QuorinCtrl.QUORIN_GetOneFrameTimeout. */
    public static class QUORIN_FRAME_OUT_INFO {
        /** Width in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nWidth;
        /** Height in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nHeight;
        /** Pixel format; unchanged when the SDK reports a number without a constant. */
        public QuorinGvspPixelType enPixelType;
        /** Number of the trigger that made the frame; an unsigned 32-bit SDK number in an int. */
        public int nTriggerIndex;
        /** Frame number; an unsigned 32-bit SDK number in an int ({@code Integer.toUnsignedLong}). */
        public int nFrameNum;
        /** Image bytes of this frame: only {@code data[0 .. nFrameLen)} belong to it. */
        public int nFrameLen;
        /** Upper 32 bits of the device's time stamp. */
        public int nTimeStampHigh;
        /** Lower 32 bits of the device's time stamp. */
        public int nTimeStampLow;
        /** Number of codes. */
        public int nCodeNumber;
        /** The waybill image, a new array per fetch. */
        public byte[] pImageWaybill;
        /** Bytes of the waybill image. */
        public int nImageWaybillLen;
        /** Image format of the waybill images. */
        public QUORIN_IMAGE_TYPE enWaybillImageType;
        /** Non-zero for a false trigger (the name is spelled so on purpose). */
        public int bFlaseTrigger;
        /** Focus score of the image. */
        public int nFocusScore;
        /** Channel of a multi-channel reader, from 0. */
        public int nChannelID;
        /** The SDK's image processing cost. */
        public int nImageCost;
        /** The codes; cleared and refilled with new objects by every fetch. */
        public ArrayList<QUORIN_BcrInfo> bcrinfoList;

        /** Creates an empty record. */
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
        /** Number of the code in the frame. */
        public int nID;
        /** The code's text as raw bytes, {@code nLen} of them. */
        public byte[] chCode;
        /** Bytes of the code's text. */
        public int nLen;
        /** Symbology number, the SDK's. */
        public int nBarType;
        /** Corners of the code, as {@code QUORIN_POINT}s. */
        public ArrayList<QUORIN_POINT> pointList;
        /** Angle of the code, the SDK's units. */
        public int nAngle;
        /** Main package number. */
        public int nMainPackageId;
        /** Sub-package number. */
        public int nSubPackageId;
        /**
         * How often the code appeared; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}).
         */
        public short sAppearCount;
        /** Pixels per module; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short sPPM;
        /**
         * Decoding time of the algorithm; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}).
         */
        public short sAlgoCost;
        /** Sharpness of the code; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short sSharpness;

        /** Creates an empty record. */
        public QUORIN_BcrInfo() {
            pointList = new ArrayList<>();
        }
    }

    /** A point of the image, in pixels (legacy record). */
    public static class QUORIN_POINT {
        /** Horizontal position. */
        public int x;
        /** Vertical position. */
        public int y;

        /** Creates an empty record. */
        public QUORIN_POINT() {
        }
    }

    // ======================= Image saving =======================

    /** Input of QuorinCtrl.QUORIN_SaveImage; on success pImageBuffer/nImageLen hold the encoded file. */
    public static class QUORIN_SAVE_IMAGE_PARAM {
        /** Raw pixels to encode. */
        public byte[] pData;
        /** Bytes of {@code pData} to encode; at most {@code pData.length}. */
        public int nDataLen;
        // Both enumerations start set: the native side reads them without a null test.
        /** Pixel format of {@code pData}. */
        public QuorinGvspPixelType enPixelType = QuorinGvspPixelType.PixelType_Gvsp_Undefined;
        /** Width in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nWidth;
        /** Height in pixels; an unsigned 16-bit SDK number in a short ({@code Short.toUnsignedInt}). */
        public short nHeight;
        /** The encoded file, a new array set on success. */
        public byte[] pImageBuffer;
        /** Bytes of the encoded file, set on success. */
        public int nImageLen;
        /** Buffer size handed to the SDK as is. */
        public int nBufferSize;
        /** File format to encode. */
        public QUORIN_IMAGE_TYPE enImageType = QUORIN_IMAGE_TYPE.QUORIN_Image_Undefined;
        /** JPEG quality, for {@code QUORIN_Image_Jpeg}. */
        public int nJpgQuality;
        /** Conversion method handed to the SDK as is. */
        public int iMethodValue;

        /** Creates an empty record. */
        public QUORIN_SAVE_IMAGE_PARAM() {
        }
    }

    // ======================= Enumerations =======================

    /** Pixel formats, numbered as GigE Vision numbers them. */
    public enum QuorinGvspPixelType {
        /** No format. */
        PixelType_Gvsp_Undefined(0xFFFFFFFF),
        /** 8-bit grey. */
        PixelType_Gvsp_Mono8(0x01080001),
        /** 10-bit grey. */
        PixelType_Gvsp_Mono10(0x01100003),
        /** 12-bit grey. */
        PixelType_Gvsp_Mono12(0x01100005),
        /** 16-bit grey. */
        PixelType_Gvsp_Mono16(0x01100007),
        /** 8-bit Bayer, GR. */
        PixelType_Gvsp_BayerGR8(0x01080008),
        /** 8-bit Bayer, RG. */
        PixelType_Gvsp_BayerRG8(0x01080009),
        /** 8-bit Bayer, GB. */
        PixelType_Gvsp_BayerGB8(0x0108000A),
        /** 8-bit Bayer, BG. */
        PixelType_Gvsp_BayerBG8(0x0108000B),
        /** 8-bit RGB. */
        PixelType_Gvsp_RGB8_Packed(0x02180014),
        /** 8-bit BGR. */
        PixelType_Gvsp_BGR8_Packed(0x02180015),
        /** YUV 4:2:2. */
        PixelType_Gvsp_YUV422_Packed(0x02100032),
        /** JPEG-compressed. */
        PixelType_Gvsp_Jpeg(0x80180001);

        /** The SDK's number; the bridge reads it by this name. */
        private final int nValue;

        /** @param nValue the SDK's number */
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
        /** No format. */
        QUORIN_Image_Undefined(0),
        /** BMP. */
        QUORIN_Image_Bmp(1),
        /** JPEG. */
        QUORIN_Image_Jpeg(2),
        /** PNG. */
        QUORIN_Image_Png(3),
        /** TIFF. */
        QUORIN_Image_Tif(4);

        /** The SDK's number; the bridge reads it by this name. */
        private final int nValue;

        /** @param nValue the SDK's number */
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
        /** Not implemented. */
        QUORIN_AM_NI(0),
        /** Not available. */
        QUORIN_AM_NA(1),
        /** Write-only. */
        QUORIN_AM_WO(2),
        /** Read-only. */
        QUORIN_AM_RO(3),
        /** Read-write. */
        QUORIN_AM_RW(4),
        /** Undefined. */
        QUORIN_AM_Undefined(5),
        /** Being resolved (cycle detection). */
        QUORIN_AM_CycleDetect(6);

        /** The SDK's number; the bridge reads it by this name. */
        private final int nValue;

        /** @param nValue the SDK's number */
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

    /** Receives device exceptions; see {@code QuorinCtrl.QUORIN_RegisterExceptionCallBack}. */
    public interface ExceptionCallBack {
        /**
         * Called on an SDK thread when the device fails, for example when it drops off the network.
         * @param nMsgType the SDK's exception message type, passed through unchanged
         * @return ignored
         */
        int OnExceptionCallBack(int nMsgType);
    }

    /** Receives device events; see {@code QuorinCtrl.QUORIN_RegisterAllEventCallBack}. */
    public interface AllEventCallBack {
        /**
         * Called on an SDK thread for every device event.
         * @param info the registration's one event object, overwritten by the next delivery
         * @return ignored
         */
        int OnAllEventCallBack(QUORIN_EVENT_OUT_INFO info);
    }

    /** Receives trigger notices; see {@code QuorinCtrl.QUORIN_RegisterTriggerCallBack}. */
    public interface TriggerCallBack {
        /**
         * Called on an SDK thread for every trigger notice.
         * @param info the registration's one notice object, overwritten by the next delivery
         * @return ignored
         */
        int OnTriggerCallBack(QUORIN_TRIGGER_INFO_DATA info);
    }

    /** Receives frames; see {@code QuorinCtrl.QUORIN_RegisterImageCallBackEx2}. */
    public interface ImageCallBack {
        /**
         * Called on an SDK thread for every frame.
         * @param data the handle's one image array, reused for every frame; only its first
         *     {@code info.nFrameLen} bytes belong to this frame
         * @param info the process-wide frame object, shared by every handle and overwritten by the
         *     next delivery
         * @return ignored
         */
        int OnImageCallBack(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info);
    }
}
