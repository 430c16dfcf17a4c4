// The shape every keyed entry point shares: the Handle is tested first, then the key and
// any other required reference; the SDK call then gets the handle and the key's characters.
#pragma once

#include "bridge.h"

template <typename SdkCall>
jint WithKey(JNIEnv* env, jobject handle, jstring key, jobject required, SdkCall sdkCall) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(key, kStatusBadArgument);
  RETURN_IF_NULL(required, kStatusBadArgument);
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
  return WithKey(env, handle, key, key, sdkCall);
}
