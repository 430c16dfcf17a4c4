package QuorinTest;

import QuorinCtrlWrapper.QuorinCtrl;
import java.lang.invoke.MethodType;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayList;

/** The native methods of QuorinCtrl as "name descriptor", so a table can prove it covers them all. */
public final class Natives {
    private Natives() {
    }

    public static String[] declared() {
        ArrayList<String> natives = new ArrayList<>();
        for (Method m : QuorinCtrl.class.getDeclaredMethods()) {
            if (!Modifier.isNative(m.getModifiers())) {
                continue;
            }
            natives.add(m.getName() + " "
                    + MethodType.methodType(m.getReturnType(), m.getParameterTypes()).toMethodDescriptorString());
        }
        return natives.toArray(new String[0]);
    }
}
