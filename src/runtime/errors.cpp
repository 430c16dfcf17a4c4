// ParameterException, the one exception the bridge throws (from the handle creators).
#include "bridge.h"

void throwError(JNIEnv* env, int code, std::string message) {
  if (env->ExceptionCheck()) return;  // the first error stays the one Java sees
  ScopedLocalRef<jclass> cls(env, env->FindClass(jclassname::kParameterException));
  if (!cls) return;  // the lookup's NoClassDefFoundError is what Java sees
  jmethodID constructor = env->GetMethodID(cls.get(), "<init>", jsig::kNoArgConstructor);
  if (constructor == nullptr) return;
  ScopedLocalRef<jobject> exception(env, env->NewObject(cls.get(), constructor));
  if (!exception) return;
  // The fields are set directly rather than through a constructor with arguments.
  SetFieldValue(env, exception.get(), "errCode", jsig::kInt, static_cast<unsigned long long>(static_cast<long long>(code)));
  ScopedLocalRef<jstring> text(env, env->NewStringUTF(message.c_str()));
  SetFieldValue(env, exception.get(), "message", jsig::kString, PointerWord(text.get()));
  if (env->ExceptionCheck()) return;  // a malformed exception class: its own error is reported instead
  env->Throw(static_cast<jthrowable>(exception.get()));
}
