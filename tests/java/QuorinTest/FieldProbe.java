package QuorinTest;

/** One field of every JNI type, for the field helpers' tests. */
public class FieldProbe {
    public int i;
    public long j;
    public short s;
    public boolean z;
    public byte b;
    public char c;
    public float f;
    public double d;
    public String text;
    public byte[] bytes;
    public FieldProbe() {
    }
}
