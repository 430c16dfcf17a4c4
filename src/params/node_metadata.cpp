// The decoding algorithm's integer parameters, the feature description file, and a node's
// access mode.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/java_map.h"
#include "params/keyed_call.h"

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1Algorithm_1SetIntValue(JNIEnv* env, jclass,
                                                                                       jobject handle, jstring key,
                                                                                       jint value) {
  return WithKey(env, handle, key,
                 [&](void* h, ScopedUtfChars& k) { return QUORIN_Algorithm_SetIntValue(h, k.c_str(), value); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1Algorithm_1GetIntValue(JNIEnv* env, jclass,
                                                                                       jobject handle, jstring key,
                                                                                       jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    int value = 0;  // what a failing SDK leaves behind, rather than whatever the stack held
    const int status = QUORIN_Algorithm_GetIntValue(h, k.c_str(), &value);
    jmap::Set(env, target, F::AlgorithmIntValue_lOutValue, static_cast<unsigned long long>(static_cast<long long>(value)));
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1XML_1GetGenICamXML(JNIEnv* env, jclass,
                                                                                   jobject handle, jbyteArray buffer,
                                                                                   jobject length) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(buffer, kStatusBadArgument);
  RETURN_IF_NULL(length, kStatusBadArgument);
  void* sdkHandle = SdkHandleOf(env, handle);
  // The caller chooses the buffer's size; one too small is the SDK's to report.
  const auto size = static_cast<unsigned int>(env->GetArrayLength(buffer));
  unsigned int written = 0;
  ScopedByteArrayElements bytes(env, buffer, 0);  // copied back into the array when released
  const int status = QUORIN_XML_GetGenICamXML(sdkHandle, bytes.data(), size, &written);
  SetIntegerValue(env, length, written);  // written whatever the status
  return status;
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1XML_1GetNodeAccessMode(JNIEnv* env, jclass,
                                                                                       jobject handle, jstring key,
                                                                                       jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    unsigned int accessMode = 0;
    const int status = QUORIN_XML_GetNodeAccessMode(h, k.c_str(), &accessMode);
    if (status != 0) {
      // Intended: on failure the key stays pinned and the object untouched, as defined for this call.
      k.leak();
      return status;
    }
    ScopedLocalRef<jobject> constant(env, getType(env, static_cast<int>(accessMode)));
    jmap::Set(env, target, F::NodeAccessMode_accessMode, PointerWord(constant.get()));
    return kStatusOk;
  });
}
