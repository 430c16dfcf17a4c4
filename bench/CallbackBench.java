import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_RESULT_BCR_EX;

/**
 * The image callback of the callback benchmark: quorin_bench registers an instance with
 * QuorinCtrl.QUORIN_RegisterImageCallBackEx2 and pushes frames at it. It does the least a consumer
 * does with a frame: counts it, reads its length and its first code and touches its image, and
 * copies nothing out of the array or the record, which the next frame overwrites.
 */
public final class CallbackBench {
    private long deliveries;
    private int lastFrameLen;
    private int lastCodeNum;
    private String lastFirstCode = "";
    private int imageSum;  // read by nobody; it keeps the image reads from being dropped
    // The last frame's record and array, kept for the check against JNA after the timed loops: the
    // bridge refills both in place, so keeping them costs nothing.
    private QUORIN_IMAGE_OUT_INFO_EX2 lastInfo;
    private byte[] lastData;

    // Synchronized because a delivery may come on any thread of the reader; uncontended.
    public synchronized int OnImageCallBack(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info) {
        deliveries++;
        lastFrameLen = info.nFrameLen;
        QUORIN_RESULT_BCR_EX codes = info.pstCodeListEx;
        lastCodeNum = codes.nCodeNum;
        lastFirstCode = codes.nCodeNum > 0 ? codes.stBcrInfoEx.get(0).chCode : "";
        imageSum += data[0] + data[info.nFrameLen - 1];
        lastInfo = info;
        lastData = data;
        return 0;
    }

    synchronized QUORIN_IMAGE_OUT_INFO_EX2 lastInfo() {
        return lastInfo;
    }

    synchronized byte[] lastData() {
        return lastData;
    }

    /**
     * Throws unless {@code bench} has received {@code deliveries} frames, the last one of
     * {@code frameLen} bytes with {@code codes} codes, the first of them {@code firstCode}.
     */
    public static void expectDelivered(CallbackBench bench, long deliveries, int frameLen, int codes,
                                       String firstCode) {
        synchronized (bench) {
            if (bench.deliveries != deliveries || bench.lastFrameLen != frameLen || bench.lastCodeNum != codes
                    || !bench.lastFirstCode.equals(firstCode)) {
                throw new IllegalStateException(String.format(
                        "received %d frames, the last of %d bytes with %d codes, first \"%s\";"
                                + " pushed %d frames, the last of %d bytes with %d codes, first \"%s\"",
                        bench.deliveries, bench.lastFrameLen, bench.lastCodeNum, bench.lastFirstCode,
                        deliveries, frameLen, codes, firstCode));
            }
        }
    }
}
