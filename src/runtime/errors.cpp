// ParameterException, the one exception the bridge throws (from the handle creators).
#include "bridge.h"
#include "jmap/java_map.h"

void throwError(JNIEnv* env, int code, std::string message) {
  if (env->ExceptionCheck()) return;  // the first error stays the one Java sees
  // A missing class or constructor leaves its own error pending: that is what Java sees.
  ScopedLocalRef<jobject> exception(env, jmap::NewObject(env, jmap::ClassId::ParameterException));
  if (!exception) return;
  // The fields are set directly rather than through a constructor with arguments.
  const jmap::JavaObject fields(env, exception.get());
  fields.Set(F::ParameterException_errCode, static_cast<unsigned long long>(static_cast<long long>(code)));
  ScopedLocalRef<jstring> text(env, env->NewStringUTF(message.c_str()));
  fields.SetObject(F::ParameterException_message, text.get());
  if (env->ExceptionCheck()) return;  // a malformed exception class: its own error is reported instead
  env->Throw(static_cast<jthrowable>(exception.get()));
}
