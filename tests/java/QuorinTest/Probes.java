package QuorinTest;

import java.lang.ref.WeakReference;

/** Small helpers the native tests use to ask the VM questions. */
public final class Probes {
    private Probes() {
    }

    public static long currentThreadId() {
        return Thread.currentThread().getId();
    }

    public static WeakReference<Object> weakly(Object target) {
        return new WeakReference<>(target);
    }

    /** Bytes of Java heap in use once garbage is collected. */
    public static long usedHeapAfterCollection() {
        Runtime runtime = Runtime.getRuntime();
        for (int i = 0; i < 3; i++) {
            System.gc();
        }
        return runtime.totalMemory() - runtime.freeMemory();
    }

    /** The referent once garbage is collected, null when it was unreachable. */
    public static Object afterCollection(WeakReference<Object> ref) {
        usedHeapAfterCollection();
        return ref.get();
    }
}
