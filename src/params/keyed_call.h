// The shape every keyed entry point shares: the Handle is tested first, then the key and
// any other required reference; the SDK call then gets the handle and the key's characters.
#pragma once

#include "bridge.h"

// The SDK call with the key pinned, once the Handle and the key are known to be there.
template <typename SdkCall>
jint CallWithKey(JNIEnv* env, jobject handle, jstring key, SdkCall sdkCall) {
  void* sdkHandle = SdkHandleOf(env, handle);
  ScopedUtfChars keyChars(env, key);
  // Characters the VM could not pin (out of memory) leave its error pending.
  RETURN_IF_NULL(keyChars.c_str(), kStatusBadArgument);
  const jint status = sdkCall(sdkHandle, keyChars);
  // A result Java could not take (a throwing list, say) leaves its error pending for Java.
  RETURN_IF_PENDING(env, kStatusBadArgument);
  return status;
}

// For entry points whose only required reference beyond the Handle is the key.
template <typename SdkCall>
jint WithKey(JNIEnv* env, jobject handle, jstring key, SdkCall sdkCall) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(key, kStatusBadArgument);
  return CallWithKey(env, handle, key, sdkCall);
}

// For entry points that also need a value or result object: it is tested after the key.
template <typename SdkCall>
jint WithKey(JNIEnv* env, jobject handle, jstring key, jobject required, SdkCall sdkCall) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(key, kStatusBadArgument);
  RETURN_IF_NULL(required, kStatusBadArgument);
  return CallWithKey(env, handle, key, sdkCall);
}
