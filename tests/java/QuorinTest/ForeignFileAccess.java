package QuorinTest;

/** Has the file access record's two fields without being one. */
public class ForeignFileAccess {
    public String pUserFileName;
    public String pDevFileName;

    public ForeignFileAccess() {
    }
}
