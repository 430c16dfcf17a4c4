// Starting and stopping acquisition; starting also caches the frame size in the Handle.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/java_map.h"
#include "params/payload_size.h"

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1StartGrabbing(JNIEnv* env, jclass, jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  void* sdkHandle = SdkHandleOf(env, handle);
  // Cached before the SDK is asked to start, and kept even if it refuses.
  const long long payloadSize = PayloadSizeOf(sdkHandle);
  jmap::Set(env, handle, F::Handle_PayloadSize, static_cast<unsigned long long>(payloadSize));
  return QUORIN_StartGrabbing(sdkHandle);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1StopGrabbing(JNIEnv* env, jclass, jobject handle) {
  if (handle == nullptr) {
    QN_RunInfo("JNI QUORIN_StopGrabbing, handle is null");
    return kStatusNullHandle;
  }
  return QUORIN_StopGrabbing(SdkHandleOf(env, handle));
}
