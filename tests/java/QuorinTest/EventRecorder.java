package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_EVENT_OUT_INFO;

/** Records device events; keeps the record instances it was handed to compare them. */
public class EventRecorder {
    public int calls;
    public Object firstRecord;
    public Object lastRecord;
    public long threadId;

    public synchronized int OnAllEventCallBack(QUORIN_EVENT_OUT_INFO info) {
        if (calls++ == 0) {
            firstRecord = info;
        }
        lastRecord = info;
        threadId = Thread.currentThread().getId();
        return 0;
    }
}
