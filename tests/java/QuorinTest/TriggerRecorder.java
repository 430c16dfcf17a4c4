package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_TRIGGER_INFO_DATA;

/** Records trigger notices. */
public class TriggerRecorder {
    public int calls;
    public Object firstRecord;
    public Object lastRecord;
    public int triggerIndex;
    public int timeLow;
    public short forceOver;
    public short mainCam;
    public long hostTimeStamp;

    public synchronized int OnTriggerCallBack(QUORIN_TRIGGER_INFO_DATA info) {
        if (calls == 0) {
            firstRecord = info;
        }
        calls++;
        lastRecord = info;
        triggerIndex = info.nTriggerIndex;
        timeLow = info.nTriggerTimeLow;
        forceOver = info.nIsForceOver;
        mainCam = info.nIsMainCam;
        hostTimeStamp = info.nHostTimeStamp;
        return 0;
    }
}
