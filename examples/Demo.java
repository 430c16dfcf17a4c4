import QuorinCtrlWrapper.ParameterException;
import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_DEVICE_INFO;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_GIGE_DEVICE_INFO;
import java.util.ArrayList;

/**
 * Lists the code readers the SDK can see, then creates, opens, closes and destroys a
 * handle on the first one. Against the stand-in SDK it shows the virtual readers.
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
        report("OpenDevice", QuorinCtrl.QUORIN_OpenDevice(handle));
        report("CloseDevice", QuorinCtrl.QUORIN_CloseDevice(handle));
        report("DestroyHandle", QuorinCtrl.QUORIN_DestroyHandle(handle));
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

    private static void report(String what, int status) {
        System.out.printf("%-14s %s%n", what, status == 0 ? "ok" : String.format("failed 0x%08x", status));
    }
}
