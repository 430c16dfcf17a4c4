// Typed access to the reader's feature nodes by name, and the frame node count.
#include <algorithm>
#include <cstring>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/records.h"
#include "params/keyed_call.h"
#include "params/payload_size.h"

namespace {

constexpr unsigned int kInvalidateNodeCount = 3;

void WriteIntValue(JNIEnv* env, jobject target, const QUORIN_INT_VALUE& value) {
  jmap::WriteMembers(jmap::JavaObject(env, target), &value, jmap::kIntValue);
}

// "PayloadSize" also caches the size in the Handle and always answers 0: a caller sizing its
// image buffer gets a usable number even from a reader that lacks the node.
jint GetPayloadSizeNode(JNIEnv* env, jobject handle, void* sdkHandle, jobject target, ScopedUtfChars& key) {
  key.leak();  // intended: this branch keeps the key's characters pinned, as it is defined to
  QUORIN_INT_VALUE value{};
  if (QUORIN_GetIntValue(sdkHandle, kPayloadSizeNode, &value) == 0) {
    jmap::Set(env, handle, F::Handle_PayloadSize, static_cast<unsigned long long>(value.nCurValue));
  } else {
    value = QUORIN_INT_VALUE{};
    value.nCurValue = FallbackPayloadSize(sdkHandle);
  }
  WriteIntValue(env, target, value);
  return kStatusOk;
}

// Clears the caller's list and refills it with one Integer per supported value.
void FillSupportedValues(JNIEnv* env, jobject target, const QUORIN_ENUM_VALUE& value) {
  ScopedLocalRef<jobject> list(env, jmap::JavaObject(env, target).GetObject(F::EnumValue_lsSupportValue));
  if (!list) return;
  ScopedLocalRef<jclass> listClass(env, jmap::FindClass(env, jmap::ClassId::ArrayList));
  jmethodID add = jmap::MethodOf(env, listClass.get(), jmap::ClassId::ArrayList, jmap::kListAdd);
  jmethodID clear = jmap::ListMethod(env, list.get(), jmap::kListClear);
  if (add == nullptr || clear == nullptr) return;
  env->CallVoidMethod(list.get(), clear);
  if (env->ExceptionCheck()) return;
  // A count beyond the record's capacity is never read past its end.
  const unsigned int count = std::min<unsigned int>(value.nSupportedNum, QUORIN_MAX_ENUM_VALUE_NUM);
  for (unsigned int i = 0; i < count; ++i) {
    ScopedLocalRef<jclass> integerClass(env, jmap::FindClass(env, jmap::ClassId::Integer));
    jmethodID constructor = jmap::MethodOf(env, integerClass.get(), jmap::ClassId::Integer, jmap::kIntegerConstructor);
    ScopedLocalRef<jobject> number(env, env->NewObject(integerClass.get(), constructor,
                                                       static_cast<jint>(value.nSupportValue[i])));
    if (!number) return;
    env->CallBooleanMethod(list.get(), add, number.get());
    if (env->ExceptionCheck()) return;
  }
}

// The record's text, bounded by its array even when the SDK filled it without a terminator.
jstring StringValueToJava(JNIEnv* env, const QUORIN_STRING_VALUE& value) {
  char text[sizeof value.chCurValue + 1] = {};
  std::memcpy(text, value.chCurValue, sizeof value.chCurValue);
  return DeviceTextToJava(env, text);
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetIntValue(JNIEnv* env, jclass, jobject handle,
                                                                            jstring key, jlong value) {
  return WithKey(env, handle, key, [&](void* h, ScopedUtfChars& k) { return QUORIN_SetIntValue(h, k.c_str(), value); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetEnumValue(JNIEnv* env, jclass, jobject handle,
                                                                             jstring key, jint value) {
  return WithKey(env, handle, key, [&](void* h, ScopedUtfChars& k) {
    return QUORIN_SetEnumValue(h, k.c_str(), static_cast<unsigned int>(value));
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetEnumValueByString(JNIEnv* env, jclass,
                                                                                     jobject handle, jstring key,
                                                                                     jstring value) {
  return WithKey(env, handle, key, value, [&](void* h, ScopedUtfChars& k) {
    ScopedUtfChars symbol(env, value);
    RETURN_IF_NULL(symbol.c_str(), kStatusBadArgument);
    return QUORIN_SetEnumValueByString(h, k.c_str(), symbol.c_str());
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetFloatValue(JNIEnv* env, jclass, jobject handle,
                                                                              jstring key, jfloat value) {
  return WithKey(env, handle, key, [&](void* h, ScopedUtfChars& k) { return QUORIN_SetFloatValue(h, k.c_str(), value); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetBoolValue(JNIEnv* env, jclass, jobject handle,
                                                                             jstring key, jboolean value) {
  return WithKey(env, handle, key, [&](void* h, ScopedUtfChars& k) {
    return QUORIN_SetBoolValue(h, k.c_str(), value != 0);
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetStringValue(JNIEnv* env, jclass, jobject handle,
                                                                               jstring key, jstring value) {
  return WithKey(env, handle, key, value, [&](void* h, ScopedUtfChars& k) {
    ScopedUtfChars text(env, value);
    RETURN_IF_NULL(text.c_str(), kStatusBadArgument);
    return QUORIN_SetStringValue(h, k.c_str(), text.c_str());
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetCommandValue(JNIEnv* env, jclass, jobject handle,
                                                                                jstring key) {
  return WithKey(env, handle, key, [](void* h, ScopedUtfChars& k) { return QUORIN_SetCommandValue(h, k.c_str()); });
}

// The getters write the caller's object whatever the SDK answers: after a failure it holds
// the record's zero fill, so the status must be looked at first.

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetIntValue(JNIEnv* env, jclass, jobject handle,
                                                                            jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    if (std::strcmp(k.c_str(), kPayloadSizeNode) == 0) return GetPayloadSizeNode(env, handle, h, target, k);
    QUORIN_INT_VALUE value{};
    const int status = QUORIN_GetIntValue(h, k.c_str(), &value);
    WriteIntValue(env, target, value);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetEnumValue(JNIEnv* env, jclass, jobject handle,
                                                                             jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    QUORIN_ENUM_VALUE value{};
    const int status = QUORIN_GetEnumValue(h, k.c_str(), &value);
    jmap::Set(env, target, F::EnumValue_nCurValue, value.nCurValue);
    FillSupportedValues(env, target, value);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetFloatValue(JNIEnv* env, jclass, jobject handle,
                                                                              jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    QUORIN_FLOAT_VALUE value{};
    const int status = QUORIN_GetFloatValue(h, k.c_str(), &value);
    jmap::WriteMembers(jmap::JavaObject(env, target), &value, jmap::kFloatValue);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetBoolValue(JNIEnv* env, jclass, jobject handle,
                                                                             jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    bool value = false;
    const int status = QUORIN_GetBoolValue(h, k.c_str(), &value);
    jmap::Set(env, target, F::BoolValue_bCurValue, value ? 1 : 0);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetStringValue(JNIEnv* env, jclass, jobject handle,
                                                                               jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    QUORIN_STRING_VALUE value{};
    const int status = QUORIN_GetStringValue(h, k.c_str(), &value);
    ScopedLocalRef<jstring> text(env, StringValueToJava(env, value));
    const jmap::JavaObject result(env, target);
    result.SetObject(F::StringValue_chCurValue, text.get());
    result.Set(F::StringValue_nMaxLength, static_cast<unsigned long long>(value.nMaxLength));
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetFrameNodeNum(JNIEnv* env, jclass, jobject handle,
                                                                                jint count) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  if (count < 0) return kStatusBadArgument;
  return QUORIN_SetFrameNodeNum(SdkHandleOf(env, handle), static_cast<unsigned int>(count));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1InvalidateNodes(JNIEnv* env, jclass, jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  // Invalidation has no SDK function of its own: it is a frame node count of 3.
  return QUORIN_SetFrameNodeNum(SdkHandleOf(env, handle), kInvalidateNodeCount);
}
