package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2;

/** A callback whose methods throw: the bridge must survive it. */
public class ThrowingCallback {
    public int calls;

    public synchronized int OnExceptionCallBack(int nMsgType) {
        calls++;
        throw new IllegalStateException("exception callback failed on purpose");
    }

    public synchronized int OnImageCallBack(byte[] data, QUORIN_IMAGE_OUT_INFO_EX2 info) {
        calls++;
        throw new IllegalStateException("image callback failed on purpose");
    }
}
