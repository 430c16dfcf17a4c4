package QuorinTest;

/** Records exception messages as the bridge delivers them. */
public class ExceptionRecorder {
    public int calls;
    public int lastMsgType;
    public long threadId;

    public synchronized int OnExceptionCallBack(int nMsgType) {
        calls++;
        lastMsgType = nMsgType;
        threadId = Thread.currentThread().getId();
        return 0;
    }
}
