import QuorinCtrlWrapper.ParameterException;
import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_BCR_INFO_EX;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_GIGE_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_INT_VALUE;
import java.util.ArrayList;

/**
 * Lists the code readers the SDK can see, opens the first one, sets a few parameters, polls
 * decoded frames for a few seconds and closes it again. Against the stand-in SDK it shows the
 * virtual readers. Usage: Demo [seconds]
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
            double seconds = args.length > 0 ? Double.parseDouble(args[0]) : 3.0;
            configure(handle);
            poll(handle, seconds);
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
        System.out.printf("%-18s %s%n", what, status == 0 ? "ok" : String.format("failed 0x%08x", status));
        return status == 0;
    }
}
