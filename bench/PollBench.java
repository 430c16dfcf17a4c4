import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;

/**
 * Timed loops of the polling benchmark (quorin_bench calls them through JNI). Each loop first
 * runs a tenth of its length untimed, so that the JIT, the class look-ups and the reader's
 * first delivery of a newly installed frame stay out of the figures.
 */
public final class PollBench {
    private static final int TIMEOUT_MS = 1000;

    private PollBench() {
    }

    /** Fetches {@code frames} frames; returns the nanoseconds they took. Any non-zero status throws. */
    public static long poll(Handle handle, byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info, int frames) {
        fetch(handle, data, info, warmUpLength(frames));
        long start = System.nanoTime();
        fetch(handle, data, info, frames);
        return System.nanoTime() - start;
    }

    /** Copies all of {@code src} to the start of {@code dst} {@code times} times; returns the nanoseconds. */
    public static long copy(byte[] src, byte[] dst, int times) {
        copyInto(src, dst, warmUpLength(times));
        long start = System.nanoTime();
        copyInto(src, dst, times);
        return System.nanoTime() - start;
    }

    /** Throws unless the last frame fetched into {@code info} has this image length and this many codes. */
    public static void expectFrame(QUORIN_IMAGE_OUT_INFO_EX2 info, int frameLen, int codes) {
        int listed = info.pstCodeListEx.stBcrInfoEx.size();
        if (info.nFrameLen != frameLen || info.pstCodeListEx.nCodeNum != codes || listed != codes) {
            throw new IllegalStateException(String.format(
                    "fetched a frame of %d bytes with %d codes (%d listed), installed %d bytes with %d codes",
                    info.nFrameLen, info.pstCodeListEx.nCodeNum, listed, frameLen, codes));
        }
    }

    private static int warmUpLength(int length) {
        return Math.max(1, length / 10);
    }

    private static void fetch(Handle handle, byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info, int frames) {
        for (int i = 0; i < frames; i++) {
            int status = QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2(handle, data, info, TIMEOUT_MS);
            if (status != 0) {
                throw new IllegalStateException(String.format(
                        "QUORIN_GetOneFrameTimeoutEx2 returned 0x%08x at fetch %d", status, i));
            }
        }
    }

    private static void copyInto(byte[] src, byte[] dst, int times) {
        for (int i = 0; i < times; i++) {
            System.arraycopy(src, 0, dst, 0, src.length);
        }
    }
}
