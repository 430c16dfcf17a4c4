package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_TRIGGER_INFO_DATA;

/** Records trigger notices; keeps the record instances it was handed to compare them. */
public class TriggerRecorder {
    public int calls;
    public Object firstRecord;
    public Object lastRecord;

    public synchronized int OnTriggerCallBack(QUORIN_TRIGGER_INFO_DATA info) {
        if (calls++ == 0) {
            firstRecord = info;
        }
        lastRecord = info;
        return 0;
    }
}
