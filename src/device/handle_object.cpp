// The Java Handle object: the SDK pointers it carries, and its creation.
#include "bridge.h"

void* SdkHandleOf(JNIEnv* env, jobject handle, const char* field) {
  // Kept zero-extended in a long; narrowed back to the width of a native pointer.
  return reinterpret_cast<void*>(static_cast<uintptr_t>(GetFieldValue(env, handle, field, jsig::kLong)));
}

jobject NewHandleObject(JNIEnv* env, const char* field, void* sdkHandle) {
  ScopedLocalRef<jclass> cls(env, env->FindClass(jclassname::kHandle));
  RETURN_IF_NULL(cls.get(), nullptr);
  jmethodID constructor = env->GetMethodID(cls.get(), "<init>", jsig::kNoArgConstructor);
  RETURN_IF_NULL(constructor, nullptr);
  jobject handle = env->NewObject(cls.get(), constructor);
  RETURN_IF_NULL(handle, nullptr);
  SetFieldValue(env, handle, field, jsig::kLong, PointerWord(sdkHandle));
  return handle;
}
