import QuorinCtrlWrapper.ParameterException;
import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_BCR_INFO_EX;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_GIGE_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_EVENT_OUT_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_TYPE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_INT_VALUE;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_SAVE_IMAGE_PARAM;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_TRIGGER_INFO_DATA;
import QuorinCtrlWrapper.QuorinCtrlDefine.QuorinGvspPixelType;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;

/**
 * Lists the code readers the SDK can see, opens the first one, sets a few parameters, and for a
 * few seconds either polls decoded frames (then saves the last one as a JPEG) or has frames,
 * trigger notices and events pushed to callbacks. Against the stand-in SDK it shows the virtual
 * readers. Usage: Demo [poll|callback] [seconds]
 */
public class Demo {
    public static void main(String[] args) {
        System.out.println("SDK version " + QuorinCtrl.QUORIN_GetSDKVersion());

        ArrayList<QUORIN_DEVICE_INFO> devices = QuorinCtrl.QUORIN_EnumDevices();
        if (devices == null) {
            System.out.println("Enumeration failed");
            System.exit(1);
        }
        System.out.println(devices.size() + " device(s) found");
        for (int i = 0; i < devices.size(); i++) {
            printDevice(i, devices.get(i));
        }
        if (devices.isEmpty()) {
            return;
        }

        QUORIN_DEVICE_INFO first = devices.get(0);
        Handle handle;
        try {
            handle = QuorinCtrl.QUORIN_CreateHandle(first);
        } catch (ParameterException e) {
            System.out.printf("CreateHandle failed: %s (0x%08x)%n", e.getMessage(), e.getErrCode());
            System.exit(1);
            return;
        }
        System.out.printf("Handle created on %s%n", first.stGigEInfo.chSerialNumber);
        if (report("OpenDevice", QuorinCtrl.QUORIN_OpenDevice(handle))) {
            boolean callbacks = args.length > 0 && args[0].equals("callback");
            double seconds = args.length > 1 ? Double.parseDouble(args[1]) : 3.0;
            configure(handle);
            if (callbacks) {
                listen(handle, seconds);
            } else {
                poll(handle, seconds);
            }
            report("CloseDevice", QuorinCtrl.QUORIN_CloseDevice(handle));
        }
        report("DestroyHandle", QuorinCtrl.QUORIN_DestroyHandle(handle));
    }

    private static void configure(Handle handle) {
        report("Width = 800", QuorinCtrl.QUORIN_SetIntValue(handle, "Width", 800));
        report("Height = 600", QuorinCtrl.QUORIN_SetIntValue(handle, "Height", 600));
        report("TriggerMode = Off", QuorinCtrl.QUORIN_SetEnumValueByString(handle, "TriggerMode", "Off"));
        report("ExposureTime", QuorinCtrl.QUORIN_SetFloatValue(handle, "ExposureTime", 1500.0f));
        report("FrameRate = 20", QuorinCtrl.QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", 20.0f));
        QUORIN_INT_VALUE width = new QUORIN_INT_VALUE();
        if (QuorinCtrl.QUORIN_GetIntValue(handle, "Width", width) == 0) {
            System.out.printf("Width is %d (range %d..%d, step %d)%n", width.nCurValue, width.nMin, width.nMax,
                    width.nInc);
        }
    }

    /** Polls frames for the given time and prints each with its decoded codes. */
    private static void poll(Handle handle, double seconds) {
        if (!report("StartGrabbing", QuorinCtrl.QUORIN_StartGrabbing(handle))) {
            return;
        }
        // PayloadSize is known once grabbing started: every frame fits a buffer of that size.
        byte[] image = new byte[handle.PayloadSize];
        QUORIN_IMAGE_OUT_INFO_EX2 frame = new QUORIN_IMAGE_OUT_INFO_EX2();
        long start = System.nanoTime();
        long end = start + (long) (seconds * 1e9);
        int frames = 0;
        while (System.nanoTime() < end) {
            int status = QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2(handle, image, frame, 1000);
            if (status != 0) {
                System.out.printf("no frame: 0x%08x%n", status);
                continue;
            }
            frames++;
            System.out.printf("frame %d  %dx%d  %d bytes  %d code(s)%n", Integer.toUnsignedLong(frame.nFrameNum),
                    frame.nWidth & 0xFFFF, frame.nHeight & 0xFFFF, frame.nFrameLen, frame.pstCodeListEx.nCodeNum);
            for (QUORIN_BCR_INFO_EX code : frame.pstCodeListEx.stBcrInfoEx) {
                System.out.printf("    \"%s\"  type %d  at (%d,%d)  quality %d%n", code.chCode, code.nBarType,
                        code.stCornerLeftTop.nX, code.stCornerLeftTop.nY, code.stCodeQuality.nOverQuality);
            }
        }
        double elapsed = (System.nanoTime() - start) / 1e9;
        System.out.printf("%d frames in %.1f s: %.1f frames/s%n", frames, elapsed, frames / elapsed);
        report("StopGrabbing", QuorinCtrl.QUORIN_StopGrabbing(handle));
        if (frames > 0) {
            saveJpeg(handle, image, frame);
        }
    }

    /** Has the SDK encode the last frame as a JPEG and writes it next to the working folder. */
    private static void saveJpeg(Handle handle, byte[] image, QUORIN_IMAGE_OUT_INFO_EX2 frame) {
        QUORIN_SAVE_IMAGE_PARAM save = new QUORIN_SAVE_IMAGE_PARAM();
        save.pData = Arrays.copyOf(image, frame.nFrameLen);
        save.nDataLen = frame.nFrameLen;
        save.enPixelType = QuorinGvspPixelType.PixelType_Gvsp_Mono8;
        save.nWidth = frame.nWidth;
        save.nHeight = frame.nHeight;
        save.enImageType = QUORIN_IMAGE_TYPE.QUORIN_Image_Jpeg;
        save.nJpgQuality = 90;
        if (!report("SaveImage (JPEG)", QuorinCtrl.QUORIN_SaveImage(handle, save))) {
            return;
        }
        Path path = Paths.get("quorin-demo-frame.jpg").toAbsolutePath();
        try {
            Files.write(path, save.pImageBuffer);
            System.out.printf("Saved frame %d as %s (%d bytes)%n", Integer.toUnsignedLong(frame.nFrameNum), path,
                    save.nImageLen);
        } catch (IOException e) {
            System.out.println("Could not write " + path + ": " + e.getMessage());
        }
    }

    /** Frames, trigger notices and device events as the SDK pushes them, on its own threads. */
    private static void listen(Handle handle, double seconds) {
        // Everything handed to a callback is reused by the next delivery: copy what you keep.
        QuorinCtrlDefine.ImageCallBack onImage = (data, info) -> {
            String first = info.pstCodeListEx.stBcrInfoEx.isEmpty() ? "-"
                    : info.pstCodeListEx.stBcrInfoEx.get(0).chCode;
            System.out.printf("[image]   frame %d  %dx%d  %d code(s), first \"%s\"%n",
                    Integer.toUnsignedLong(info.nFrameNum), info.nWidth & 0xFFFF, info.nHeight & 0xFFFF,
                    info.pstCodeListEx.nCodeNum, first);
            return 0;
        };
        QuorinCtrlDefine.TriggerCallBack onTrigger = (QUORIN_TRIGGER_INFO_DATA info) -> {
            System.out.printf("[trigger] index %d at %d us%n", info.nTriggerIndex, info.nHostTimeStamp);
            return 0;
        };
        QuorinCtrlDefine.AllEventCallBack onEvent = (QUORIN_EVENT_OUT_INFO info) -> {
            System.out.printf("[event]   %s (id 0x%04x, %d data bytes)%n", info.EventName, info.nEventID & 0xFFFF,
                    info.nEventDataSize);
            return 0;
        };
        QuorinCtrlDefine.ExceptionCallBack onException = msgType -> {
            System.out.printf("[exception] 0x%08x%n", msgType);
            return 0;
        };
        report("RegisterImageCallBackEx2", QuorinCtrl.QUORIN_RegisterImageCallBackEx2(handle, onImage));
        report("RegisterTriggerCallBack", QuorinCtrl.QUORIN_RegisterTriggerCallBack(handle, onTrigger));
        report("RegisterAllEventCallBack", QuorinCtrl.QUORIN_RegisterAllEventCallBack(handle, onEvent));
        report("RegisterExceptionCallBack", QuorinCtrl.QUORIN_RegisterExceptionCallBack(handle, onException));
        if (!report("StartGrabbing", QuorinCtrl.QUORIN_StartGrabbing(handle))) {
            return;
        }
        try {
            Thread.sleep((long) (seconds * 1000));
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
        // Stopping waits for a delivery under way; after it no callback runs.
        report("StopGrabbing", QuorinCtrl.QUORIN_StopGrabbing(handle));
    }

    private static void printDevice(int index, QUORIN_DEVICE_INFO device) {
        QUORIN_GIGE_DEVICE_INFO gige = device.stGigEInfo;
        System.out.printf("[%d] %s %s  serial %s  name \"%s\"%s%n", index, gige.chManufacturerName,
                gige.chModelName, gige.chSerialNumber, gige.chUserDefinedName,
                device.bCodeReader ? "" : "  (no decoder)");
        System.out.printf("    ip %s  mask %s  gateway %s  via host %s%n",
                QuorinCtrlDefine.ipToString(gige.nCurrentIp), QuorinCtrlDefine.ipToString(gige.nCurrentSubNetMask),
                QuorinCtrlDefine.ipToString(gige.nDefultGateWay), QuorinCtrlDefine.ipToString(gige.nNetExport));
        System.out.printf("    mac %s  firmware %s  protocol %d.%d%n", mac(device), gige.chDeviceVersion,
                device.nMajorVer, device.nMinorVer);
    }

    private static String mac(QUORIN_DEVICE_INFO device) {
        long mac = ((long) (device.nMacAddrHigh & 0xFFFF) << 32) | (device.nMacAddrLow & 0xFFFFFFFFL);
        StringBuilder text = new StringBuilder();
        for (int shift = 40; shift >= 0; shift -= 8) {
            text.append(String.format("%02x", (mac >> shift) & 0xFF));
            if (shift > 0) {
                text.append(':');
            }
        }
        return text.toString();
    }

    private static boolean report(String what, int status) {
        System.out.printf("%-26s %s%n", what, status == 0 ? "ok" : String.format("failed 0x%08x", status));
        return status == 0;
    }
}
