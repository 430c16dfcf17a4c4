import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_DEVICE_INFO;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;

/**
 * Upgrades a reader's firmware and follows the progress to completion.
 * Usage: FirmwareUpgrade [firmware-file]; without a file a dummy one is written first.
 */
public class FirmwareUpgrade {
    public static void main(String[] args) throws Exception {
        Path firmware;
        if (args.length > 0) {
            firmware = Path.of(args[0]);
        } else {
            firmware = Files.createTempFile("quorin", ".fw");
            Files.write(firmware, ("V2.9.0 build261123\n" + "F".repeat(65536)).getBytes());
        }
        ArrayList<QUORIN_DEVICE_INFO> devices = QuorinCtrl.QUORIN_DiscoveryUpgDevice();
        if (devices == null || devices.isEmpty()) {
            System.out.println("No device to upgrade");
            return;
        }
        QUORIN_DEVICE_INFO device = devices.get(devices.size() > 2 ? 2 : 0);
        System.out.printf("Upgrading %s %s (firmware %s) from %s%n", device.stGigEInfo.chModelName,
                device.stGigEInfo.chSerialNumber, device.stGigEInfo.chDeviceVersion, firmware);

        // The upgrade has its own handle, kept in upHandle.
        Handle upgrader = QuorinCtrl.QUORIN_CreateHandleForUpgradeAndEncryption();
        if (upgrader == null) {
            System.out.println("No upgrade handle");
            return;
        }
        int status = QuorinCtrl.QUORIN_StartUpgradeDeviceByHandle(upgrader, device, firmware.toString());
        if (status != 0) {
            System.out.printf("Upgrade refused: 0x%08x%n", status);
        } else {
            // The bridge writes the progress into this very object, so it must be our own.
            @SuppressWarnings("removal")
            Integer progress = new Integer(0);
            int last = -1;
            while (progress.intValue() < 100) {
                status = QuorinCtrl.QUORIN_GetUpgradeProcessByHandle(upgrader, progress);
                if (status != 0) {
                    System.out.printf("Progress query failed: 0x%08x%n", status);
                    break;
                }
                if (progress.intValue() != last) {
                    last = progress.intValue();
                    System.out.printf("  %3d %%%n", last);
                }
                Thread.sleep(50);
            }
            ArrayList<QUORIN_DEVICE_INFO> after = QuorinCtrl.QUORIN_EnumDevices();
            for (QUORIN_DEVICE_INFO d : after) {
                if (d.stGigEInfo.chSerialNumber.equals(device.stGigEInfo.chSerialNumber)) {
                    System.out.println("Firmware now " + d.stGigEInfo.chDeviceVersion);
                }
            }
        }
        QuorinCtrl.QUORIN_DestroyHandleForUpgradeAndEncryption(upgrader);
        if (args.length == 0) {
            Files.delete(firmware);
        }
    }
}
