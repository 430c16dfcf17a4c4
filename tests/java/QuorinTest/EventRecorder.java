package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrlDefine.QUORIN_EVENT_OUT_INFO;

/** Records device events; keeps the record instances it was handed to compare them. */
public class EventRecorder {
    public int calls;
    public Object firstRecord;
    public Object lastRecord;
    public String name;
    public short eventId;
    public short streamChannel;
    public int blockIdLow;
    public int timestampHigh;
    public byte[] data;
    public int dataSize;
    public long threadId;

    public synchronized int OnAllEventCallBack(QUORIN_EVENT_OUT_INFO info) {
        if (calls == 0) {
            firstRecord = info;
        }
        calls++;
        lastRecord = info;
        name = info.EventName;
        eventId = info.nEventID;
        streamChannel = info.nStreamChannel;
        blockIdLow = info.nBlockIdLow;
        timestampHigh = info.nTimestampHigh;
        data = info.pEventData == null ? null : info.pEventData.clone();
        dataSize = info.nEventDataSize;
        threadId = Thread.currentThread().getId();
        return 0;
    }
}
