#include "notify/callback_context.h"

namespace {

template <typename Ref>
void DeleteGlobal(JNIEnv* env, Ref& ref) {
  if (ref != nullptr) env->DeleteGlobalRef(ref);
  ref = nullptr;
}

template <typename Context, typename Release>
void ReleaseContext(JNIEnv* env, jobject handle, const char* field, Release release) {
  Context* context = ContextOf<Context>(env, handle, field);
  if (context == nullptr) return;
  release(*context);
  delete context;
  SetFieldValue(env, handle, field, jsig::kLong, 0);
}

}  // namespace

jmethodID CallbackMethod(JNIEnv* env, jobject callback, const char* name, const char* sig) {
  if (callback == nullptr) return nullptr;  // a context whose registration never took
  ScopedLocalRef<jclass> cls(env, env->GetObjectClass(callback));
  if (!cls) return nullptr;
  jmethodID method = env->GetMethodID(cls.get(), name, sig);
  if (method == nullptr) env->ExceptionClear();  // a callback without the method gets nothing
  return method;
}

void ReleaseCallbackContexts(JNIEnv* env, jobject handle) {
  ReleaseContext<CallbackContext>(env, handle, handlefield::kExceptionContext, [env](CallbackContext& c) {
    DeleteGlobal(env, c.handleRef);
    DeleteGlobal(env, c.callbackRef);
  });
  // The record class stays referenced: it is shared by every registration of the kind.
  ReleaseContext<RecordCallbackContext>(env, handle, handlefield::kAllEventContext, [env](RecordCallbackContext& c) {
    DeleteGlobal(env, c.handleRef);
    DeleteGlobal(env, c.callbackRef);
    DeleteGlobal(env, c.recordRef);
  });
  // The image array stays referenced for the life of the process, by design: Java code may
  // still hold the array it was handed.
  ReleaseContext<ImageCallbackContext>(env, handle, handlefield::kImageContext, [env](ImageCallbackContext& c) {
    DeleteGlobal(env, c.bcrInfoClassRef);
    DeleteGlobal(env, c.imageTypeClassRef);
    DeleteGlobal(env, c.pixelTypeClassRef);
    DeleteGlobal(env, c.waybillInfoClassRef);
    DeleteGlobal(env, c.handleRef);
    DeleteGlobal(env, c.callbackRef);
  });
  // The trigger context is deliberately not released: it outlives the handle.
}
