package QuorinCtrlWrapper;

/**
 * Thrown by the two handle creators of {@link QuorinCtrl} when a handle cannot be made.
 * The native side constructs it empty and sets {@link #errCode} and {@link #message} directly,
 * so both stay public, mutable fields.
 */
public class ParameterException extends RuntimeException {
    /** Version of the serialised form. */
    private static final long serialVersionUID = 1L;

    /** Status word: 0x80020004 for a null argument, otherwise the SDK's status. */
    public int errCode;
    /** Text naming the operation and the cause. */
    public String message;

    /** The constructor the native side calls; it then sets both fields. */
    public ParameterException() {
    }

    /**
     * Creates the exception with its status word and text.
     * @param errCode the status word
     * @param message the text naming the operation and the cause
     */
    public ParameterException(int errCode, String message) {
        this.errCode = errCode;
        this.message = message;
    }

    /** @return the status word that caused the failure */
    public int getErrCode() {
        return errCode;
    }

    /** @return the text set by the native side (the inherited detail message stays unused) */
    @Override
    public String getMessage() {
        return message;
    }
}
