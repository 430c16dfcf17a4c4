package QuorinCtrlWrapper;

import java.util.ArrayList;

import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_ALGORITHM_INT_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_BOOL_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_ENUM_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FILE_ACCESS;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FILE_ACCESS_PROGRESS;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FLOAT_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FRAME_OUT_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_INT_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_SAVE_IMAGE_PARAM;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_STRING_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_XML_NODE_ACCESSMODE;

/**
 * Entry points of the code-reader bridge, one per SDK operation.
 * Unless noted, a method returns a status word: 0 on success, the SDK's own status, or one of
 * the bridge's words in {@link QuorinCtrlDefine} (QUORIN_E_NULL_HANDLE, QUORIN_E_BAD_ARGUMENT,
 * QUORIN_E_PAYLOAD_UNKNOWN, QUORIN_E_BUFFER_TOO_SMALL). Addresses are SDK words, see
 * {@link QuorinCtrlDefine#ipToString(int)}. {@code Integer} out-parameters are changed in place.
 */
public class QuorinCtrl {
    static {
        System.loadLibrary("QuorinCtrlWrapper");
    }

    private QuorinCtrl() {
    }

    // ---- Library ----

    /** SDK version as dotted text, for example "1.2.3.4". */
    public static native String QUORIN_GetSDKVersion();

    // ---- Devices ----

    /** Enumerates GigE devices; returns the device list, or null if the SDK fails. */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumDevices();

    /** Enumerates ID devices; returns the device list, or null if the SDK fails. */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumIDDevices();

    /** Enumerates code readers; returns the device list, or null if the SDK fails. */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumCodeReader();

    /** Tests whether the device can be opened in the access mode (QUORIN_ACCESS_*); false for a null device. */
    public static native boolean QUORIN_IsDeviceAccessible(QUORIN_DEVICE_INFO pstDevInfo, int nAccessMode);

    /** Fills pstDevInfo (and its stGigEInfo) with the open device's record; returns status. */
    public static native int QUORIN_GetDeviceInfo(Handle handle, QUORIN_DEVICE_INFO pstDevInfo);

    // ---- Handles ----

    /** Creates a handle for the device; returns it, or throws {@link ParameterException}. */
    public static native Handle QUORIN_CreateHandle(QUORIN_DEVICE_INFO pstDevInfo);

    /** Creates a handle for the device with this serial number; returns it, or throws {@link ParameterException}. */
    public static native Handle QUORIN_CreateHandleBySerialNumber(String strSerialNumber);

    /** Releases the handle's callback records and destroys the handle; returns status. */
    public static native int QUORIN_DestroyHandle(Handle handle);

    /** Opens the device; returns status. */
    public static native int QUORIN_OpenDevice(Handle handle);

    /** Closes the device; returns status. */
    public static native int QUORIN_CloseDevice(Handle handle);

    /** Creates an upgrade handle (in upHandle); returns it, or null if the SDK fails. */
    public static native Handle QUORIN_CreateHandleForUpgradeAndEncryption();

    /** Destroys an upgrade handle; returns status. */
    public static native int QUORIN_DestroyHandleForUpgradeAndEncryption(Handle handle);

    // ---- Firmware upgrade ----

    /** Discovers devices that can be upgraded; returns the device list, or null if the SDK fails. */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_DiscoveryUpgDevice();

    /** Starts upgrading the device from the firmware file, through an upgrade handle; returns status. */
    public static native int QUORIN_StartUpgradeDeviceByHandle(Handle handle, QUORIN_DEVICE_INFO pstDevInfo,
            String strFilePathName);

    /**
     * Writes the upgrade progress into nProcess, also when the SDK fails; returns status.
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     */
    public static native int QUORIN_GetUpgradeProcessByHandle(Handle handle, Integer nProcess);

    // ---- GigE network ----

    /** Forces a dotted-text address, subnet mask and default gateway onto the device; returns status. */
    public static native int QUORIN_GIGE_ForceIp(Handle handle, String strIP, String strSubNetMask,
            String strDefaultGateWay);

    /** Selects the IP configuration (QUORIN_IP_CFG_*); returns status. */
    public static native int QUORIN_GIGE_SetIpConfig(Handle handle, int nType);

    /** Sets the control-channel time-out in milliseconds (not negative); returns status. */
    public static native int QUORIN_GIGE_SetGvcpTimeout(Handle handle, int nMillisec);

    /**
     * Writes the control-channel time-out in milliseconds into nMillisec, also when the SDK fails;
     * returns status.
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     */
    public static native int QUORIN_GIGE_GetGvcpTimeout(Handle handle, Integer nMillisec);

    // ---- Typed parameters ----

    /** Sets an integer feature; returns status. */
    public static native int QUORIN_SetIntValue(Handle handle, String strKey, long nValue);

    /** Fills pstIntValue with an integer feature's value and range; returns status ("PayloadSize" always 0). */
    public static native int QUORIN_GetIntValue(Handle handle, String strKey, QUORIN_INT_VALUE pstIntValue);

    /** Sets an enumeration feature by number; returns status. */
    public static native int QUORIN_SetEnumValue(Handle handle, String strKey, int nValue);

    /** Sets an enumeration feature by entry name; returns status. */
    public static native int QUORIN_SetEnumValueByString(Handle handle, String strKey, String strValue);

    /** Fills pstEnumValue with the current value and refills its lsSupportValue; returns status. */
    public static native int QUORIN_GetEnumValue(Handle handle, String strKey, QUORIN_ENUM_VALUE pstEnumValue);

    /** Sets a float feature; returns status. */
    public static native int QUORIN_SetFloatValue(Handle handle, String strKey, float fValue);

    /** Fills pstFloatValue with a float feature's value and range; returns status. */
    public static native int QUORIN_GetFloatValue(Handle handle, String strKey, QUORIN_FLOAT_VALUE pstFloatValue);

    /** Sets a boolean feature; returns status. */
    public static native int QUORIN_SetBoolValue(Handle handle, String strKey, boolean bValue);

    /** Fills pstBoolValue with a boolean feature's value; returns status. */
    public static native int QUORIN_GetBoolValue(Handle handle, String strKey, QUORIN_BOOL_VALUE pstBoolValue);

    /** Sets a string feature; returns status. */
    public static native int QUORIN_SetStringValue(Handle handle, String strKey, String strValue);

    /** Fills pstStringValue with a string feature's value and maximum length; returns status. */
    public static native int QUORIN_GetStringValue(Handle handle, String strKey, QUORIN_STRING_VALUE pstStringValue);

    /** Executes a command feature; returns status. */
    public static native int QUORIN_SetCommandValue(Handle handle, String strKey);

    /** Sets the SDK's frame node count (not negative); returns status. */
    public static native int QUORIN_SetFrameNodeNum(Handle handle, int nNum);

    /** Sets the SDK's frame node count to 3; returns status. */
    public static native int QUORIN_InvalidateNodes(Handle handle);

    // ---- Algorithm parameters and node metadata ----

    /** Sets an integer parameter of the decoding algorithm; returns status. */
    public static native int QUORIN_Algorithm_SetIntValue(Handle handle, String strKey, int nValue);

    /** Fills pstValue.lOutValue with an algorithm parameter; returns status. */
    public static native int QUORIN_Algorithm_GetIntValue(Handle handle, String strKey,
            QUORIN_ALGORITHM_INT_VALUE pstValue);

    /**
     * Copies the feature description file into pData and its full length into nDataLen; returns
     * status (the SDK's when pData is too small, with the length needed in nDataLen).
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     */
    public static native int QUORIN_XML_GetGenICamXML(Handle handle, byte[] pData, Integer nDataLen);

    /** Fills pstAccessMode.accessMode with the node's access mode; returns status. */
    public static native int QUORIN_XML_GetNodeAccessMode(Handle handle, String strName,
            QUORIN_XML_NODE_ACCESSMODE pstAccessMode);

    // ---- Device files ----

    /** Copies the device file pDevFileName to the host file pUserFileName; returns status. */
    public static native int QUORIN_FileAccessRead(Handle handle, QUORIN_FILE_ACCESS pstFileAccess);

    /** Copies the host file pUserFileName to the device file pDevFileName; returns status. */
    public static native int QUORIN_FileAccessWrite(Handle handle, QUORIN_FILE_ACCESS pstFileAccess);

    /** Fills pstFileAccessProgress with the transfer's progress (only on success); returns status. */
    public static native int QUORIN_GetFileAccessProgress(Handle handle,
            QUORIN_FILE_ACCESS_PROGRESS pstFileAccessProgress);

    // ---- Notifications (null callback unregisters) ----

    /** Registers an object with OnExceptionCallBack(int)int, see ExceptionCallBack; returns status. */
    public static native int QUORIN_RegisterExceptionCallBack(Handle handle, Object cbException);

    /** Registers an object with OnAllEventCallBack, see AllEventCallBack; returns status. */
    public static native int QUORIN_RegisterAllEventCallBack(Handle handle, Object cbEvent);

    /** Registers an object with OnTriggerCallBack, see TriggerCallBack; returns status. */
    public static native int QUORIN_RegisterTriggerCallBack(Handle handle, Object cbTrigger);

    // ---- Acquisition ----

    /** Caches the frame size in handle.PayloadSize and starts grabbing; returns status. */
    public static native int QUORIN_StartGrabbing(Handle handle);

    /** Stops grabbing; returns status. */
    public static native int QUORIN_StopGrabbing(Handle handle);

    /** Waits for a frame: copies the image into pData (at least PayloadSize long) and fills pstFrameInfo; returns status. */
    public static native int QUORIN_GetOneFrameTimeoutEx2(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo, int nMsec);

    /** As QUORIN_GetOneFrameTimeoutEx2, for one channel of a multi-channel reader; returns status. */
    public static native int QUORIN_MSC_GetOneFrameTimeout(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo, int nChannelID, int nMsec);

    /** Registers an object with OnImageCallBack, see ImageCallBack; returns status. */
    public static native int QUORIN_RegisterImageCallBackEx2(Handle handle, Object cbOutput);

    /** Registers the image callback for one channel (shared with the Ex2 registration); returns status. */
    public static native int QUORIN_MSC_RegisterImageCallBack(Handle handle, int nChannelID, Object cbOutput);

    /** Older fetch: copies the image into pData and fills pstFrameInfo and its bcrinfoList; returns status. */
    public static native int QUORIN_GetOneFrameTimeout(Handle handle, byte[] pData,
            QUORIN_FRAME_OUT_INFO pstFrameInfo, int nMsec);

    /** Cuts the waybills out of a held frame and refills pstFrameInfo.pstWaybillList; returns status. */
    public static native int QUORIN_GetWayBillInfoEx(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo);

    /** Encodes pstSaveParam.pData; on success sets its pImageBuffer and nImageLen; returns status. */
    public static native int QUORIN_SaveImage(Handle handle, QUORIN_SAVE_IMAGE_PARAM pstSaveParam);

    /** Switches waybill extraction on or off; returns status. */
    public static native int QUORIN_SetWayBillEnable(Handle handle, boolean bEnable);
}
