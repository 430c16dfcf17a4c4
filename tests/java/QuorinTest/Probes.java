package QuorinTest;

/** Small helpers the native tests use to ask the VM questions. */
public final class Probes {
    private Probes() {
    }

    public static long currentThreadId() {
        return Thread.currentThread().getId();
    }

    /** Bytes of Java heap in use once garbage is collected. */
    public static long usedHeapAfterCollection() {
        Runtime runtime = Runtime.getRuntime();
        for (int i = 0; i < 3; i++) {
            System.gc();
        }
        return runtime.totalMemory() - runtime.freeMemory();
    }
}
