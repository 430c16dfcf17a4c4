// Typed access to the reader's feature nodes by name, and the frame node count.
#include <algorithm>
#include <cstring>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "params/keyed_call.h"
#include "params/payload_size.h"

namespace {

constexpr unsigned int kInvalidateNodeCount = 3;

void WriteIntValue(JNIEnv* env, jobject target, const QUORIN_INT_VALUE& value) {
  SetFieldValue(env, target, "nCurValue", jsig::kLong, static_cast<unsigned long long>(value.nCurValue));
  SetFieldValue(env, target, "nMax", jsig::kLong, static_cast<unsigned long long>(value.nMax));
  SetFieldValue(env, target, "nMin", jsig::kLong, static_cast<unsigned long long>(value.nMin));
  SetFieldValue(env, target, "nInc", jsig::kLong, static_cast<unsigned long long>(value.nInc));
}

// "PayloadSize" also caches the size in the Handle and always answers 0: a caller sizing its
// image buffer gets a usable number even from a reader that lacks the node.
jint GetPayloadSizeNode(JNIEnv* env, jobject handle, void* sdkHandle, jobject target, ScopedUtfChars& key) {
  key.leak();  // this branch has always kept the key's characters pinned; kept as it is
  QUORIN_INT_VALUE value{};
  if (QUORIN_GetIntValue(sdkHandle, "PayloadSize", &value) == 0) {
    SetFieldValue(env, handle, handlefield::kPayloadSize, jsig::kInt, static_cast<unsigned long long>(value.nCurValue));
  } else {
    value = QUORIN_INT_VALUE{};
    value.nCurValue = FallbackPayloadSize(sdkHandle);
  }
  WriteIntValue(env, target, value);
  return kStatusOk;
}

// Clears the caller's list and refills it with one Integer per supported value.
void FillSupportedValues(JNIEnv* env, jobject target, const QUORIN_ENUM_VALUE& value) {
  ScopedLocalRef<jobject> list(env, GetObjectFieldValue(env, target, "lsSupportValue", jsig::kArrayList));
  if (!list || env->ExceptionCheck()) return;
  ScopedLocalRef<jclass> listClass(env, env->FindClass(jclassname::kArrayList));
  jmethodID add = env->GetMethodID(listClass.get(), "add", "(Ljava/lang/Object;)Z");
  jmethodID clear = GetMethodID(env, list.get(), "clear", "()V");
  if (add == nullptr || clear == nullptr) return;
  env->CallVoidMethod(list.get(), clear);
  if (env->ExceptionCheck()) return;
  // A count beyond the record's capacity is never read past its end.
  const unsigned int count = std::min<unsigned int>(value.nSupportedNum, QUORIN_MAX_ENUM_VALUE_NUM);
  for (unsigned int i = 0; i < count; ++i) {
    ScopedLocalRef<jclass> integerClass(env, env->FindClass(jclassname::kInteger));
    jmethodID constructor = env->GetMethodID(integerClass.get(), "<init>", "(I)V");
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
    if (std::strcmp(k.c_str(), "PayloadSize") == 0) return GetPayloadSizeNode(env, handle, h, target, k);
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
    SetFieldValue(env, target, "nCurValue", jsig::kInt, value.nCurValue);
    FillSupportedValues(env, target, value);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetFloatValue(JNIEnv* env, jclass, jobject handle,
                                                                              jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    QUORIN_FLOAT_VALUE value{};
    const int status = QUORIN_GetFloatValue(h, k.c_str(), &value);
    SetFieldValue(env, target, "fCurValue", jsig::kFloat, FloatBits(value.fCurValue));
    SetFieldValue(env, target, "fMax", jsig::kFloat, FloatBits(value.fMax));
    SetFieldValue(env, target, "fMin", jsig::kFloat, FloatBits(value.fMin));
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetBoolValue(JNIEnv* env, jclass, jobject handle,
                                                                             jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    bool value = false;
    const int status = QUORIN_GetBoolValue(h, k.c_str(), &value);
    SetFieldValue(env, target, "bCurValue", jsig::kBoolean, value ? 1 : 0);
    return status;
  });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetStringValue(JNIEnv* env, jclass, jobject handle,
                                                                               jstring key, jobject target) {
  return WithKey(env, handle, key, target, [&](void* h, ScopedUtfChars& k) {
    QUORIN_STRING_VALUE value{};
    const int status = QUORIN_GetStringValue(h, k.c_str(), &value);
    ScopedLocalRef<jstring> text(env, StringValueToJava(env, value));
    SetFieldValue(env, target, "chCurValue", jsig::kString, PointerWord(text.get()));
    SetFieldValue(env, target, "nMaxLength", jsig::kInt, static_cast<unsigned long long>(value.nMaxLength));
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
