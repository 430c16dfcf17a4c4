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
 *
 * <p>The first use of this class loads {@code libQuorinCtrlWrapper.so} through
 * {@code java.library.path} (Debian's packages put it where the JVM looks by default); it links
 * to the device SDK {@code libQuorinCtrl.so}, found by the system's loader.
 *
 * <p><b>Status words.</b> Unless noted, a method returns 0 on success, the SDK's own status
 * unchanged, or one of the bridge's words, answered before the SDK is reached:
 * {@link QuorinCtrlDefine#QUORIN_E_NULL_HANDLE} (0x80020000, null {@code Handle}),
 * {@link QuorinCtrlDefine#QUORIN_E_BAD_ARGUMENT} (0x80020004, another argument null or out of
 * range), {@link QuorinCtrlDefine#QUORIN_E_PAYLOAD_UNKNOWN} (0x80020003, no frame size known)
 * and {@link QuorinCtrlDefine#QUORIN_E_BUFFER_TOO_SMALL} (0x8002000a, image array shorter than
 * the frame size). They are unsigned words that read as negative {@code int}s. As a rule the
 * {@code Handle} is tested first; the frame fetches test their other arguments first.
 *
 * <p><b>Exceptions.</b> Only the two handle creators throw, a {@link ParameterException}.
 * Methods that return an object return null when the SDK fails. When Java itself fails while
 * the bridge reads or writes an argument (a list holding an object of another class, no memory
 * for a result) the method stops there and that exception is pending on return.
 *
 * <p><b>Threads.</b> Every method runs on the calling thread and takes no lock; calls on
 * different handles are independent, calls on one handle are serialised (or not) by the SDK.
 * Callbacks run on the SDK's threads. A handle must not be destroyed while another thread or a
 * callback still uses it.
 *
 * <p><b>Objects.</b> Methods fill the objects they are given in place; lists inside them are
 * cleared and refilled, never replaced. {@code Integer} out-parameters are changed in place.
 * Addresses are SDK words, see {@link QuorinCtrlDefine#ipToString(int)}.
 */
public class QuorinCtrl {
    static {
        System.loadLibrary("QuorinCtrlWrapper");
    }

    /** No instances: every operation is a static method. */
    private QuorinCtrl() {
    }

    // ---- Library ----

    /**
     * Version of the device SDK that is loaded ("3.1.0.5" for the stand-in).
     * @return the SDK's version word as dotted text, most significant byte first, for example "1.2.3.4"
     */
    public static native String QUORIN_GetSDKVersion();

    // ---- Devices ----

    /**
     * GigE devices the SDK finds on the host's networks. A serial number stored
     * in GBK arrives decoded, as do GBK user-defined names. Each call makes a new list of new
     * {@link QUORIN_DEVICE_INFO} objects; addresses in them are SDK words
     * ({@link QuorinCtrlDefine#ipToString(int)}). A device text that does not fit its Java conversion
     * is a fatal error of the process, never a cut text.
     * @return the devices, possibly empty; null when the SDK fails (one line with its status is printed)
     */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumDevices();

    /**
     * Devices of the SDK's ID enumeration. GBK user-defined names arrive decoded; a
     * serial number is taken as modified UTF-8. Each call makes a new list of new
     * {@link QUORIN_DEVICE_INFO} objects; addresses in them are SDK words
     * ({@link QuorinCtrlDefine#ipToString(int)}). A device text that does not fit its Java conversion
     * is a fatal error of the process, never a cut text.
     * @return the devices, possibly empty; null when the SDK fails (one line with its status is printed)
     */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumIDDevices();

    /**
     * Code readers the SDK finds. GBK user-defined names arrive decoded; a serial
     * number is taken as modified UTF-8. Each call makes a new list of new
     * {@link QUORIN_DEVICE_INFO} objects; addresses in them are SDK words
     * ({@link QuorinCtrlDefine#ipToString(int)}). A device text that does not fit its Java conversion
     * is a fatal error of the process, never a cut text.
     * @return the devices, possibly empty; null when the SDK fails (one line with its status is printed)
     */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_EnumCodeReader();

    /**
     * Asks the SDK whether the device can be opened in the access mode. The record is converted
     * to the SDK's own without opening anything; texts are copied as many bytes as they have
     * characters (see the user guide for the exact limits; a longer one is a fatal error).
     * @param pstDevInfo the device, as enumerated; null answers false
     * @param nAccessMode one of the {@code QUORIN_ACCESS_*} constants of {@link QuorinCtrlDefine}, passed as is
     * @return the SDK's answer; false for a null device
     */
    public static native boolean QUORIN_IsDeviceAccessible(QUORIN_DEVICE_INFO pstDevInfo, int nAccessMode);

    /**
     * Reads the open device's record into the caller's object: its numbers, its
     * {@code stGigEInfo} sub-record (filled in place) and its texts as new strings.
     * @param handle the device's handle; 0x80020000 when null
     * @param pstDevInfo the object to fill, with its {@code stGigEInfo}; 0x80020004 when null. Written
     *     only when the status is 0
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_GetDeviceInfo(Handle handle, QUORIN_DEVICE_INFO pstDevInfo);

    // ---- Handles ----

    /**
     * Creates a device handle for an enumerated device. The record, with its texts and address
     * words, is converted back to the SDK's; a text that does not fit its SDK array with its terminator
     * (a serial number of 16 bytes or more) ends the process with a fatal error rather than address
     * another device.
     * @param pstDevInfo the device, as enumerated or built by the caller
     * @return a new {@link Handle} whose {@code hHandle} holds the SDK's handle; all other fields 0
     * @throws ParameterException errCode 0x80020004 for a null device, or the SDK's status when it
     *     refuses; the message names this method
     */
    public static native Handle QUORIN_CreateHandle(QUORIN_DEVICE_INFO pstDevInfo);

    /**
     * Creates a device handle by the device's serial number, without enumerating first.
     * @param strSerialNumber the serial number, for example "QN2405C0117"; a text of 16 bytes or more
     *     (modified UTF-8) is a fatal error
     * @return a new {@link Handle} whose {@code hHandle} holds the SDK's handle
     * @throws ParameterException errCode 0x80020004 for a null serial number, or the SDK's status when
     *     no such device exists or the SDK refuses; the message names this method
     */
    public static native Handle QUORIN_CreateHandleBySerialNumber(String strSerialNumber);

    /**
     * Releases the handle's exception, event and image callback records and their Java
     * references, then destroys the SDK handle. Call it last, after stopping and closing: no other
     * thread and no callback may use the handle during or after this call. The trigger callback's
     * record and each handle's image callback array stay referenced for the life of the process.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_DestroyHandle(Handle handle);

    /**
     * Opens the device for control and acquisition.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status (for example when another host holds the device)
     */
    public static native int QUORIN_OpenDevice(Handle handle);

    /**
     * Closes the device; the handle stays valid for opening again or destroying.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_CloseDevice(Handle handle);

    /**
     * Creates the handle of the firmware upgrade, separate from device handles. Use it only
     * with the upgrade methods and {@link #QUORIN_DestroyHandleForUpgradeAndEncryption}.
     * @return a new {@link Handle} whose {@code upHandle} is set and whose {@code hHandle} is 0; null,
     *     without an exception or message, when the SDK fails
     */
    public static native Handle QUORIN_CreateHandleForUpgradeAndEncryption();

    /**
     * Destroys the SDK's upgrade handle held in {@code upHandle}.
     * @param handle the upgrade handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_DestroyHandleForUpgradeAndEncryption(Handle handle);

    // ---- Firmware upgrade ----

    /**
     * Devices that can take a firmware upgrade. Each call makes a new list of new
     * {@link QUORIN_DEVICE_INFO} objects.
     * @return the devices, possibly empty; null when the SDK fails (one line with its status is printed)
     */
    public static native ArrayList<QUORIN_DEVICE_INFO> QUORIN_DiscoveryUpgDevice();

    /**
     * Starts upgrading a device from a firmware file; the SDK runs the upgrade on its own and
     * {@link #QUORIN_GetUpgradeProcessByHandle} follows it. Device texts are copied as many bytes as
     * they have characters (33 characters or more in a 32-byte text is a fatal error).
     * @param handle the upgrade handle of {@link #QUORIN_CreateHandleForUpgradeAndEncryption}; 0x80020000
     *     when null, whatever the other arguments
     * @param pstDevInfo the device, as discovered; 0x80020004 when null
     * @param strFilePathName the firmware file on this host; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_StartUpgradeDeviceByHandle(Handle handle, QUORIN_DEVICE_INFO pstDevInfo,
            String strFilePathName);

    /**
     * Reads the progress of the upgrade under way.
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     * @param handle the upgrade handle; 0x80020000 when null
     * @param nProcess a fresh Integer that receives the progress as the SDK counts it,
     *     also when the SDK fails (0 when the SDK wrote nothing); 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetUpgradeProcessByHandle(Handle handle, Integer nProcess);

    // ---- GigE network ----

    /**
     * Forces an address, subnet mask and default gateway onto the device, which need not be in the
     * host's subnet.
     * @param handle the device's handle; 0x80020000 when null
     * @param strIP the address as dotted text, for example "192.168.1.20"; 0x80020004 when null
     * @param strSubNetMask the subnet mask as dotted text; 0x80020004 when null
     * @param strDefaultGateWay the default gateway as dotted text; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GIGE_ForceIp(Handle handle, String strIP, String strSubNetMask,
            String strDefaultGateWay);

    /**
     * Selects how the device obtains its address at start.
     * @param handle the device's handle; 0x80020000 when null
     * @param nType one of {@code QUORIN_IP_CFG_STATIC}, {@code QUORIN_IP_CFG_DHCP},
     *     {@code QUORIN_IP_CFG_LLA}; passed to the SDK unchanged
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GIGE_SetIpConfig(Handle handle, int nType);

    /**
     * Sets the time-out of the control channel.
     * @param handle the device's handle; 0x80020000 when null
     * @param nMillisec milliseconds; 0x80020004 when negative
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GIGE_SetGvcpTimeout(Handle handle, int nMillisec);

    /**
     * Reads the time-out of the control channel.
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     * @param handle the device's handle; 0x80020000 when null
     * @param nMillisec a fresh Integer that receives the milliseconds, also when the SDK fails;
     *     0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GIGE_GetGvcpTimeout(Handle handle, Integer nMillisec);

    // ---- Typed parameters ----

    /**
     * Sets an integer feature.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param nValue the new value
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetIntValue(Handle handle, String strKey, long nValue);

    /**
     * Reads an integer feature with its range into the caller's object. The object is written also
     * when the SDK fails: look at the status first. "PayloadSize" is special: it always returns 0; a
     * node value is cached in {@code handle.PayloadSize}, and without such a node the largest frame the
     * reader can make (maximum width times maximum height, or 60 MiB) is reported with range 0 and the
     * handle left as it was.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param pstIntValue receives {@code nCurValue}, {@code nMax}, {@code nMin} and {@code nInc};
     *     0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetIntValue(Handle handle, String strKey, QUORIN_INT_VALUE pstIntValue);

    /**
     * Sets an enumeration feature by its number.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param nValue the entry's number
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetEnumValue(Handle handle, String strKey, int nValue);

    /**
     * Sets an enumeration feature by its entry's name, for example ("TriggerMode", "On").
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param strValue the entry's name; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetEnumValueByString(Handle handle, String strKey, String strValue);

    /**
     * Reads an enumeration feature into the caller's object: {@code nCurValue}, and the numbers of
     * the supported entries into the object's own {@code lsSupportValue} list, which is cleared and
     * refilled with new Integer objects (the list itself is not replaced). Written also when the SDK
     * fails: look at the status first.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param pstEnumValue the object to fill, whose {@code lsSupportValue} must hold a list;
     *     0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetEnumValue(Handle handle, String strKey, QUORIN_ENUM_VALUE pstEnumValue);

    /**
     * Sets a float feature.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param fValue the new value
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetFloatValue(Handle handle, String strKey, float fValue);

    /**
     * Reads a float feature with its range into the caller's object, also when the SDK fails:
     * look at the status first.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param pstFloatValue receives {@code fCurValue}, {@code fMax} and {@code fMin}; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetFloatValue(Handle handle, String strKey, QUORIN_FLOAT_VALUE pstFloatValue);

    /**
     * Sets a boolean feature.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param bValue the new value
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetBoolValue(Handle handle, String strKey, boolean bValue);

    /**
     * Reads a boolean feature into the caller's object, also when the SDK fails: look at the
     * status first.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param pstBoolValue receives {@code bCurValue}; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetBoolValue(Handle handle, String strKey, QUORIN_BOOL_VALUE pstBoolValue);

    /**
     * Sets a string feature.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param strValue the new text, sent as its modified UTF-8 characters; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetStringValue(Handle handle, String strKey, String strValue);

    /**
     * Reads a string feature into the caller's object, also when the SDK fails (then an empty
     * text and a maximum length of 0 when the SDK wrote nothing): look at the status first.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @param pstStringValue receives {@code chCurValue} as a new string and {@code nMaxLength};
     *     0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetStringValue(Handle handle, String strKey, QUORIN_STRING_VALUE pstStringValue);

    /**
     * Executes a command feature, for example "TriggerSoftware".
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the feature's name, for example "Width"; its modified UTF-8 characters go to the SDK; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetCommandValue(Handle handle, String strKey);

    /**
     * Sets how many frame buffers the SDK keeps for this device.
     * @param handle the device's handle; 0x80020000 when null
     * @param nNum the number of buffers; 0x80020004 when negative
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetFrameNodeNum(Handle handle, int nNum);

    /**
     * Sets the SDK's frame buffer count back to 3.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_InvalidateNodes(Handle handle);

    // ---- Algorithm parameters and node metadata ----

    /**
     * Sets an integer parameter of the decoding algorithm.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the parameter's name; 0x80020004 when null
     * @param nValue the new value
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_Algorithm_SetIntValue(Handle handle, String strKey, int nValue);

    /**
     * Reads an integer parameter of the decoding algorithm into the caller's object, also when the
     * SDK fails: look at the status first.
     * @param handle the device's handle; 0x80020000 when null
     * @param strKey the parameter's name; 0x80020004 when null
     * @param pstValue receives {@code lOutValue}; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_Algorithm_GetIntValue(Handle handle, String strKey,
            QUORIN_ALGORITHM_INT_VALUE pstValue);

    /**
     * Copies the device's feature description (GenICam XML) into the caller's array, and its full
     * length into {@code nDataLen}, also when the SDK fails. When the array is too small the SDK's
     * status comes back with the length needed.
     * The value is stored into the given Integer object itself: pass a fresh {@code new Integer(0)},
     * never a boxed constant such as {@code Integer x = 0}, which the whole program shares.
     * @param handle the device's handle; 0x80020000 when null
     * @param pData the array that receives the bytes (copied back in place); 0x80020004 when null
     * @param nDataLen a fresh Integer that receives the description's length; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_XML_GetGenICamXML(Handle handle, byte[] pData, Integer nDataLen);

    /**
     * Reads a feature node's access mode (read-write, read-only, ...) into the caller's object.
     * @param handle the device's handle; 0x80020000 when null
     * @param strName the node's name; 0x80020004 when null
     * @param pstAccessMode receives {@code accessMode}, only when the status is 0 (an unknown node
     *     leaves it as it was); 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_XML_GetNodeAccessMode(Handle handle, String strName,
            QUORIN_XML_NODE_ACCESSMODE pstAccessMode);

    // ---- Device files ----

    /**
     * Copies a file of the device to a file of this host. The call returns when the transfer
     * ends; follow it from another thread with {@link #QUORIN_GetFileAccessProgress}.
     * @param handle the device's handle; 0x80020000 when null
     * @param pstFileAccess {@code pDevFileName} to read and {@code pUserFileName} to write; 0x80020004
     *     when it or either name is null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_FileAccessRead(Handle handle, QUORIN_FILE_ACCESS pstFileAccess);

    /**
     * Copies a file of this host to a file of the device. The call returns when the transfer
     * ends; follow it from another thread with {@link #QUORIN_GetFileAccessProgress}.
     * @param handle the device's handle; 0x80020000 when null
     * @param pstFileAccess {@code pUserFileName} to read and {@code pDevFileName} to write; 0x80020004
     *     when it or either name is null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_FileAccessWrite(Handle handle, QUORIN_FILE_ACCESS pstFileAccess);

    /**
     * Reads the progress of the device's file transfer; safe to call from another thread while a
     * transfer runs.
     * @param handle the device's handle; 0x80020000 when null
     * @param pstFileAccessProgress receives {@code nCompleted} and {@code nTotal}, the SDK's 64-bit
     *     counts, only when the status is 0; 0x80020004 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_GetFileAccessProgress(Handle handle,
            QUORIN_FILE_ACCESS_PROGRESS pstFileAccessProgress);

    // ---- Notifications (null callback unregisters) ----

    /**
     * Registers the object whose {@code int OnExceptionCallBack(int)} the SDK calls when the device
     * fails, for example when it drops off the network (see {@link QuorinCtrlDefine.ExceptionCallBack}).
     * The bridge finds the method by name and signature on the object's own class when
     * registering and keeps global references to the object and the handle; a new registration
     * replaces the object, and the old one stays referenced for the life of the process (do not
     * register in a loop). A registration the SDK refuses leaves the standing one in place.
     * Deliveries run on the SDK's threads, each attached to the JVM for one call: do little there,
     * and copy what you keep. An exception the callback throws is reported through the thread's
     * uncaught-exception handler when the delivery ends; it does not reach the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param cbException the callback object; null stops deliveries
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_RegisterExceptionCallBack(Handle handle, Object cbException);

    /**
     * Registers the object whose {@code int OnAllEventCallBack(QUORIN_EVENT_OUT_INFO)} the SDK
     * calls for every device event (see {@link QuorinCtrlDefine.AllEventCallBack}). One
     * {@link QuorinCtrlDefine.QUORIN_EVENT_OUT_INFO} object per registration is overwritten by every
     * delivery.
     * The bridge finds the method by name and signature on the object's own class when
     * registering and keeps global references to the object and the handle; a new registration
     * replaces the object, and the old one stays referenced for the life of the process (do not
     * register in a loop). A registration the SDK refuses leaves the standing one in place.
     * Deliveries run on the SDK's threads, each attached to the JVM for one call: do little there,
     * and copy what you keep. An exception the callback throws is reported through the thread's
     * uncaught-exception handler when the delivery ends; it does not reach the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param cbEvent the callback object; null stops deliveries
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_RegisterAllEventCallBack(Handle handle, Object cbEvent);

    /**
     * Registers the object whose {@code int OnTriggerCallBack(QUORIN_TRIGGER_INFO_DATA)} the SDK
     * calls for every trigger notice (see {@link QuorinCtrlDefine.TriggerCallBack}). One
     * {@link QuorinCtrlDefine.QUORIN_TRIGGER_INFO_DATA} object per registration is overwritten by
     * every delivery. Its record is kept for the life of the process, also after
     * {@link #QUORIN_DestroyHandle}.
     * The bridge finds the method by name and signature on the object's own class when
     * registering and keeps global references to the object and the handle; a new registration
     * replaces the object, and the old one stays referenced for the life of the process (do not
     * register in a loop). A registration the SDK refuses leaves the standing one in place.
     * Deliveries run on the SDK's threads, each attached to the JVM for one call: do little there,
     * and copy what you keep. An exception the callback throws is reported through the thread's
     * uncaught-exception handler when the delivery ends; it does not reach the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param cbTrigger the callback object; null stops deliveries
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_RegisterTriggerCallBack(Handle handle, Object cbTrigger);

    // ---- Acquisition ----

    /**
     * Works out the frame size, caches it in {@code handle.PayloadSize} (kept there even when the SDK
     * refuses to start) and starts grabbing. Start through this method before fetching frames or
     * expecting image callbacks: until then fetches answer 0x80020003 and the image callback drops
     * frames. Writes {@code PayloadSize} without a lock.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_StartGrabbing(Handle handle);

    /**
     * Stops grabbing. Stop before closing the device and destroying the handle.
     * @param handle the device's handle; 0x80020000 when null
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_StopGrabbing(Handle handle);

    /**
     * Waits up to the time-out for the next frame, copies its {@code nFrameLen} image bytes into
     * {@code pData} from index 0 and fills the caller's frame object: its numbers, {@code enPixelType},
     * and its {@code pstCodeListEx} and {@code pstWaybillList} lists, cleared and refilled in place
     * with new objects. The other arguments are tested before the handle. When no frame comes the
     * SDK's time-out status is returned and the array and object are left as they were. Use one frame
     * object per thread; calls on different handles are independent.
     * @param handle the device's handle, grabbing; 0x80020000 when null, 0x80020003 before
     *     {@link #QUORIN_StartGrabbing}
     * @param pData the image array, at least {@code handle.PayloadSize} long (0x8002000a otherwise);
     *     0x80020004 when null
     * @param pstFrameInfo the frame object to fill; 0x80020004 when null
     * @param nMsec the time-out in milliseconds; 0x80020004 below 1
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_GetOneFrameTimeoutEx2(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo, int nMsec);

    /**
     * Waits up to the time-out for the next frame, copies its {@code nFrameLen} image bytes into
     * {@code pData} from index 0 and fills the caller's frame object: its numbers, {@code enPixelType},
     * and its {@code pstCodeListEx} and {@code pstWaybillList} lists, cleared and refilled in place
     * with new objects. The other arguments are tested before the handle. When no frame comes the
     * SDK's time-out status is returned and the array and object are left as they were. Use one frame
     * object per thread; calls on different handles are independent. This form fetches one channel of a multi-channel reader.
     * @param handle the device's handle, grabbing; 0x80020000 when null, 0x80020003 before
     *     {@link #QUORIN_StartGrabbing}
     * @param pData the image array, at least {@code handle.PayloadSize} long (0x8002000a otherwise);
     *     0x80020004 when null
     * @param pstFrameInfo the frame object to fill; 0x80020004 when null
     * @param nChannelID the channel, from 0; 0x80020004 when negative
     * @param nMsec the time-out in milliseconds; 0x80020004 below 1
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_MSC_GetOneFrameTimeout(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo, int nChannelID, int nMsec);

    /**
     * Registers the object whose {@code int OnImageCallBack(byte[], QUORIN_IMAGE_OUT_INFO_EX2)} the SDK
     * calls for every frame (see {@link QuorinCtrlDefine.ImageCallBack}).
     * The image callback receives the same byte array for every frame of a handle (its length is the
     * {@code PayloadSize} of the first frame; only the first {@code info.nFrameLen} bytes belong to the
     * current frame) and the same {@link QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2} object for every
     * frame of every handle: copy before returning, and do not expect two callbacks running at once
     * on different handles to see consistent data in it. While {@code PayloadSize} is 0 frames are
     * dropped. Register before grabbing starts.
     * The bridge finds the method by name and signature on the object's own class when
     * registering and keeps global references to the object and the handle; a new registration
     * replaces the object, and the old one stays referenced for the life of the process (do not
     * register in a loop). A registration the SDK refuses leaves the standing one in place.
     * Deliveries run on the SDK's threads, each attached to the JVM for one call: do little there,
     * and copy what you keep. An exception the callback throws is reported through the thread's
     * uncaught-exception handler when the delivery ends; it does not reach the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param cbOutput the callback object; null stops deliveries
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_RegisterImageCallBackEx2(Handle handle, Object cbOutput);

    /**
     * Registers the image callback object for one channel of a multi-channel reader, in the same
     * record as {@link #QUORIN_RegisterImageCallBackEx2}.
     * The image callback receives the same byte array for every frame of a handle (its length is the
     * {@code PayloadSize} of the first frame; only the first {@code info.nFrameLen} bytes belong to the
     * current frame) and the same {@link QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2} object for every
     * frame of every handle: copy before returning, and do not expect two callbacks running at once
     * on different handles to see consistent data in it. While {@code PayloadSize} is 0 frames are
     * dropped. Register before grabbing starts.
     * The bridge finds the method by name and signature on the object's own class when
     * registering and keeps global references to the object and the handle; a new registration
     * replaces the object, and the old one stays referenced for the life of the process (do not
     * register in a loop). A registration the SDK refuses leaves the standing one in place.
     * Deliveries run on the SDK's threads, each attached to the JVM for one call: do little there,
     * and copy what you keep. An exception the callback throws is reported through the thread's
     * uncaught-exception handler when the delivery ends; it does not reach the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param nChannelID the channel, from 0
     * @param cbOutput the callback object; null stops deliveries
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_MSC_RegisterImageCallBack(Handle handle, int nChannelID, Object cbOutput);

    /**
     * Older fetch with its own record: waits up to the time-out for the next frame, copies its image
     * bytes into {@code pData} and fills the caller's {@link QuorinCtrlDefine.QUORIN_FRAME_OUT_INFO}:
     * its numbers, its waybill image as a new array, and its {@code bcrinfoList}, cleared and refilled
     * with new {@link QuorinCtrlDefine.QUORIN_BcrInfo} objects (codes as raw bytes). The other
     * arguments are tested before the handle. When the SDK fails the array and object are left as
     * they were.
     * @param handle the device's handle, grabbing; 0x80020000 when null, 0x80020003 before
     *     {@link #QUORIN_StartGrabbing}
     * @param pData the image array, at least {@code handle.PayloadSize} long (0x8002000a otherwise);
     *     0x80020004 when null
     * @param pstFrameInfo the frame object to fill, whose {@code bcrinfoList} must hold a list;
     *     0x80020004 when null
     * @param nMsec the time-out in milliseconds; 0x80020004 below 1
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_GetOneFrameTimeout(Handle handle, byte[] pData,
            QUORIN_FRAME_OUT_INFO pstFrameInfo, int nMsec);

    /**
     * Hands a frame the caller holds back to the SDK to cut its waybills out, and on success refills
     * {@code pstFrameInfo.pstWaybillList}: {@code nWaybillNum}, {@code enWaybillImageType}, and its
     * {@code stWaybillInfo} list cleared and refilled with new
     * {@link QuorinCtrlDefine.QUORIN_WAYBILL_INFO} objects, each with its image as a new array. The
     * image array is copied back after the call. On an SDK failure the frame object is left as it
     * was.
     * @param handle the device's handle; 0x80020000 when null
     * @param pData the frame's image bytes; 0x80020004 when null or shorter than the frame's
     *     {@code nFrameLen}
     * @param pstFrameInfo the frame as fetched, with its code and waybill lists; 0x80020004 when null
     *     or when it lacks {@code enPixelType} or {@code pstCodeListEx}
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_GetWayBillInfoEx(Handle handle, byte[] pData,
            QUORIN_IMAGE_OUT_INFO_EX2 pstFrameInfo);

    /**
     * Encodes raw pixels as an image file (BMP, JPEG with {@code nJpgQuality}, PNG) through the SDK.
     * @param handle the device's handle; 0x80020000 when null
     * @param pstSaveParam reads {@code pData}, {@code nDataLen}, {@code enPixelType}, {@code nWidth},
     *     {@code nHeight}, {@code nBufferSize}, {@code enImageType}, {@code nJpgQuality} and
     *     {@code iMethodValue}; on success {@code pImageBuffer} is set to a new array of
     *     {@code nImageLen} bytes, on failure both are left as they were. 0x80020004 when it or its
     *     {@code pData} is null, or when {@code nDataLen} exceeds {@code pData.length}
     * @return 0, the SDK's status, or a bridge status word
     */
    public static native int QUORIN_SaveImage(Handle handle, QUORIN_SAVE_IMAGE_PARAM pstSaveParam);

    /**
     * Switches the cutting of waybill images on or off, also while grabbing.
     * @param handle the device's handle; 0x80020000 when null
     * @param bEnable true to cut waybills out of the frames
     * @return 0 or the SDK's status
     */
    public static native int QUORIN_SetWayBillEnable(Handle handle, boolean bEnable);
}
