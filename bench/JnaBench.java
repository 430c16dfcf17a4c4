import com.sun.jna.CallbackThreadInitializer;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.ptr.PointerByReference;
import java.lang.reflect.Field;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.Set;

import QuorinCtrlWrapper.QuorinCtrl;
import QuorinCtrlWrapper.QuorinCtrlDefine;
import QuorinCtrlWrapper.QuorinCtrlDefine.Handle;
import QuorinCtrlWrapper.QuorinCtrlDefine.QuorinGvspPixelType;

/**
 * The JNA peer of the benchmarks: the same frames fetched and delivered straight from the SDK through
 * {@link QuorinJna}, each frame record and code read with Structure.read() and the image copied into a
 * Java array, as the bridge does; and the check that the bridge and JNA see the same frames.
 */
public final class JnaBench {
    private static final int TIMEOUT_MS = 1000;
    // The bridge's fetch leaves this code field as the Java constructor set it; its callback writes it.
    private static final Set<String> NOT_POLLED = Set.of("n1DIsGetQuality");

    /** One SDK handle polled through JNA into one reused record and image array. */
    private static final class Fetcher {
        final Pointer handle;
        final PointerByReference image = new PointerByReference();
        final QuorinJna.QUORIN_IMAGE_OUT_INFO_EX2 info = new QuorinJna.QUORIN_IMAGE_OUT_INFO_EX2();
        final byte[] data;
        List<QuorinJna.QUORIN_BCR_INFO_EX> codes = List.of();

        Fetcher(long handle, byte[] data) {
            this.handle = new Pointer(handle);
            this.data = data;
            info.setAutoSynch(false);  // nothing to write in; read() after the call
        }

        void fetch() {
            int status = QuorinJna.Sdk.INSTANCE.QUORIN_GetOneFrameTimeoutEx2(handle, image, info, TIMEOUT_MS);
            if (status != 0) {
                throw new IllegalStateException(String.format("QUORIN_GetOneFrameTimeoutEx2 returned 0x%08x", status));
            }
            info.read();
            image.getValue().read(0, data, 0, info.nFrameLen);
            codes = info.readCodes();
        }
    }

    private JnaBench() {
    }

    /** Fetches {@code frames} frames after a tenth of that untimed; returns the nanoseconds they took. */
    public static long poll(long handle, byte[] data, int frames) {
        Fetcher fetcher = new Fetcher(handle, data);
        for (int i = Math.max(1, frames / 10); i > 0; i--) {
            fetcher.fetch();
        }
        long start = System.nanoTime();
        for (int i = 0; i < frames; i++) {
            fetcher.fetch();
        }
        return System.nanoTime() - start;
    }

    /**
     * Fetches one frame through the bridge, then one through JNA, and throws unless they are the same
     * frame but for its number, which the reader counts up by one for every fetch.
     */
    public static void expectSameFetch(Handle bridgeHandle, long handle, byte[] bridgeData,
                                       QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2 bridgeInfo) {
        int status = QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2(bridgeHandle, bridgeData, bridgeInfo, TIMEOUT_MS);
        if (status != 0) {
            throw new IllegalStateException(String.format("QUORIN_GetOneFrameTimeoutEx2 returned 0x%08x", status));
        }
        Fetcher fetcher = new Fetcher(handle, new byte[bridgeData.length]);
        fetcher.fetch();
        expectEqual("polled frame.nFrameNum after the bridge's", bridgeInfo.nFrameNum + 1, fetcher.info.nFrameNum);
        fetcher.info.nFrameNum = bridgeInfo.nFrameNum;
        expectSame("polled", NOT_POLLED, bridgeInfo, bridgeData, fetcher.info, fetcher.codes, fetcher.data);
    }

    /**
     * The image callback through JNA: it reads the frame record, its codes and
     * copies the image into one array, then does what {@link CallbackBench} does with a frame.
     */
    public static final class Consumer implements QuorinJna.ImageCallBackEx2 {
        private final byte[] data;
        private long deliveries;
        private int lastFrameLen;
        private int lastCodeNum;
        private String lastFirstCode = "";
        private int imageSum;  // read by nobody; it keeps the image reads from being dropped
        private List<QuorinJna.QUORIN_BCR_INFO_EX> lastCodes = List.of();

        Consumer(int payloadSize) {
            data = new byte[payloadSize];
        }

        private final QuorinJna.QUORIN_IMAGE_OUT_INFO_EX2 info = new QuorinJna.QUORIN_IMAGE_OUT_INFO_EX2();

        @Override
        public synchronized void invoke(Pointer pData, Pointer pFrameInfo, Pointer pUser) {
            info.readAt(pFrameInfo);
            List<QuorinJna.QUORIN_BCR_INFO_EX> codes = info.readCodes();
            pData.read(0, data, 0, Math.min(info.nFrameLen, data.length));
            deliveries++;
            lastFrameLen = info.nFrameLen;
            lastCodeNum = codes.size();
            lastFirstCode = codes.isEmpty() ? "" : codes.get(0).code();
            imageSum += data[0] + data[info.nFrameLen - 1];
            lastCodes = codes;
        }
    }

    /**
     * Registers a new Consumer as the image callback of an SDK handle and returns it. Its delivering
     * thread stays attached to the JVM between deliveries, as a JNA user tuning for throughput sets it.
     */
    public static Consumer register(long handle, int payloadSize) {
        Consumer consumer = new Consumer(payloadSize);
        Native.setCallbackThreadInitializer(consumer, new CallbackThreadInitializer(true, false, "jna-image"));
        int status = QuorinJna.Sdk.INSTANCE.QUORIN_RegisterImageCallBackEx2(new Pointer(handle), consumer, null);
        if (status != 0) {
            throw new IllegalStateException(String.format("QUORIN_RegisterImageCallBackEx2 returned 0x%08x", status));
        }
        return consumer;
    }

    /**
     * Throws unless {@code consumer} received {@code deliveries} frames and its last frame equals the
     * last one {@code bridge} received.
     */
    public static void expectDelivered(Consumer consumer, long deliveries, CallbackBench bridge) {
        synchronized (consumer) {
            if (consumer.deliveries != deliveries) {
                throw new IllegalStateException(String.format("the JNA callback received %d of %d frames",
                        consumer.deliveries, deliveries));
            }
            synchronized (bridge) {
                expectSame("delivered", Set.of(), bridge.lastInfo(), bridge.lastData(), consumer.info,
                        consumer.lastCodes, consumer.data);
            }
        }
    }

    // ---------------------------------------------------------------------------------------------
    // The same frame from the bridge and from JNA: every field the bridge fills, by name.

    private static void expectSame(String what, Set<String> unwritten,
                                   QuorinCtrlDefine.QUORIN_IMAGE_OUT_INFO_EX2 bridgeInfo,
                                   byte[] bridgeData, QuorinJna.QUORIN_IMAGE_OUT_INFO_EX2 jnaInfo,
                                   List<QuorinJna.QUORIN_BCR_INFO_EX> jnaCodes, byte[] jnaData) {
        String path = what + " frame";
        expectSameFields(path, unwritten, bridgeInfo, jnaInfo);
        List<QuorinCtrlDefine.QUORIN_BCR_INFO_EX> bridgeCodes = bridgeInfo.pstCodeListEx.stBcrInfoEx;
        expectEqual(path + ".nCodeNum", bridgeInfo.pstCodeListEx.nCodeNum, jnaCodes.size());
        expectEqual(path + " codes listed", bridgeCodes.size(), jnaCodes.size());
        for (int i = 0; i < jnaCodes.size(); i++) {
            expectSameFields(path + ".stBcrInfoEx[" + i + "]", unwritten, bridgeCodes.get(i), jnaCodes.get(i));
        }
        if (!Arrays.equals(bridgeData, 0, bridgeInfo.nFrameLen, jnaData, 0, jnaInfo.nFrameLen)) {
            throw new IllegalStateException(path + ": the bridge and JNA copied different image bytes");
        }
    }

    /** Fields named in {@code unwritten} must have kept 0, the Java constructor's value. */
    private static void expectSameFields(String path, Set<String> unwritten, Object bridge, Object jna) {
        try {
            for (Field field : bridge.getClass().getFields()) {
                if (Modifier.isStatic(field.getModifiers())) {
                    continue;
                }
                String at = path + "." + field.getName();
                Field jnaField = jna.getClass().getField(field.getName());
                if (jnaField.getType() == Pointer.class) {
                    continue;  // the lists behind the pointers are compared on their own
                }
                Object b = field.get(bridge);
                Object j = jnaField.get(jna);
                if (unwritten.contains(field.getName())) {
                    expectEqual(at + " (left unwritten)", 0, b);
                } else if (b instanceof String) {
                    expectEqual(at, b, Native.toString((byte[]) j, "UTF-8"));
                } else if (b instanceof Boolean) {
                    expectEqual(at, b, (Byte) j != 0);
                } else if (b instanceof QuorinGvspPixelType || b == null && jnaField.getType() == int.class) {
                    expectEqual(at, b == null ? null : ((QuorinGvspPixelType) b).getnValue(), j);
                } else if (j instanceof com.sun.jna.Structure) {
                    expectSameFields(at, unwritten, b, j);
                } else {
                    expectEqual(at, b, j);
                }
            }
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(path + ": no JNA field to compare with", e);
        }
    }

    private static void expectEqual(String at, Object bridge, Object jna) {
        if (!Objects.equals(bridge, jna)) {
            throw new IllegalStateException(at + ": the bridge gave " + bridge + ", JNA " + jna);
        }
    }
}
