import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FILE_ACCESS;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_FILE_ACCESS_PROGRESS;
import java.nio.file.Files;
import java.nio.file.Path;

/**
 * Copies a configuration file to the first reader and back, printing the transfer's progress
 * from a second thread while the copy runs. Usage: FileTransfer [device-file-name]
 */
public class FileTransfer {
    public static void main(String[] args) throws Exception {
        String deviceFile = args.length > 0 ? args[0] : "UserSet2";
        Handle handle = QuorinCtrl.QUORIN_CreateHandle(QuorinCtrl.QUORIN_EnumDevices().get(0));
        check("OpenDevice", QuorinCtrl.QUORIN_OpenDevice(handle));

        Path upload = Files.createTempFile("quorin-upload", ".cfg");
        Files.write(upload, ("ExposureTime=1500\n" + "x".repeat(200_000)).getBytes());
        QUORIN_FILE_ACCESS write = new QUORIN_FILE_ACCESS();
        write.pUserFileName = upload.toString();
        write.pDevFileName = deviceFile;
        check("FileAccessWrite", withProgress(handle, () -> QuorinCtrl.QUORIN_FileAccessWrite(handle, write)));

        Path download = Files.createTempFile("quorin-download", ".cfg");
        QUORIN_FILE_ACCESS read = new QUORIN_FILE_ACCESS();
        read.pUserFileName = download.toString();
        read.pDevFileName = deviceFile;
        check("FileAccessRead", withProgress(handle, () -> QuorinCtrl.QUORIN_FileAccessRead(handle, read)));
        System.out.printf("Round trip of %d bytes %s%n", Files.size(upload),
                Files.mismatch(upload, download) == -1 ? "matches" : "DIFFERS");

        QuorinCtrl.QUORIN_CloseDevice(handle);
        QuorinCtrl.QUORIN_DestroyHandle(handle);
        Files.delete(upload);
        Files.delete(download);
    }

    interface Transfer {
        int run();
    }

    /** Runs the transfer on this thread while another polls its progress. */
    private static int withProgress(Handle handle, Transfer transfer) throws InterruptedException {
        Thread watcher = new Thread(() -> {
            QUORIN_FILE_ACCESS_PROGRESS progress = new QUORIN_FILE_ACCESS_PROGRESS();
            while (!Thread.currentThread().isInterrupted()) {
                if (QuorinCtrl.QUORIN_GetFileAccessProgress(handle, progress) == 0 && progress.nTotal > 0) {
                    System.out.printf("  %d / %d bytes%n", progress.nCompleted, progress.nTotal);
                }
                try {
                    Thread.sleep(2);
                } catch (InterruptedException e) {
                    return;
                }
            }
        });
        watcher.start();
        int status = transfer.run();
        watcher.interrupt();
        watcher.join();
        return status;
    }

    private static void check(String what, int status) {
        System.out.printf("%-16s %s%n", what, status == 0 ? "ok" : String.format("failed 0x%08x", status));
        if (status != 0) {
            System.exit(1);
        }
    }
}
