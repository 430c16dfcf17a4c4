package QuorinTest;

import java.util.ArrayList;

/** A list that refuses to be emptied, as a hostile or broken subclass might. */
public class ThrowingList<E> extends ArrayList<E> {
    private static final long serialVersionUID = 1L;

    @Override
    public void clear() {
        throw new IllegalStateException("clear refused");
    }
}
