#include "notify/callback_context.h"

#include <mutex>
#include <unordered_map>

namespace {

struct ContextOwner {
  jmap::FieldId field;
  const void* sdkHandle;
};

std::mutex g_contextsLock;
std::unordered_map<const void*, ContextOwner> g_contexts;

// A word the bridge did not make is left as Java wrote it.
template <typename Context, typename Release>
void ReleaseContext(JNIEnv* env, jobject handle, const void* sdkHandle, jmap::FieldId field, Release release) {
  Context* context = ContextOf<Context>(env, handle, field, sdkHandle).context;
  if (context == nullptr) return;
  ForgetContext(context);
  release(*context);
  delete context;
  jmap::Set(env, handle, field, 0);
}

}  // namespace

void RememberContext(const void* context, jmap::FieldId field, const void* sdkHandle) {
  std::lock_guard<std::mutex> lock(g_contextsLock);
  g_contexts[context] = ContextOwner{field, sdkHandle};
}

bool IsContextOf(const void* context, jmap::FieldId field, const void* sdkHandle) {
  std::lock_guard<std::mutex> lock(g_contextsLock);
  const auto found = g_contexts.find(context);
  return found != g_contexts.end() && found->second.field == field && found->second.sdkHandle == sdkHandle;
}

void ForgetContext(const void* context) {
  std::lock_guard<std::mutex> lock(g_contextsLock);
  g_contexts.erase(context);
}

jmethodID CallbackMethod(JNIEnv* env, jobject callback, const jmap::JavaMethod& method) {
  if (callback == nullptr) return nullptr;  // a context whose registration never took
  ScopedLocalRef<jclass> cls(env, env->GetObjectClass(callback));
  if (!cls) return nullptr;
  jmethodID found = env->GetMethodID(cls.get(), method.name, method.sig);
  if (found == nullptr) env->ExceptionClear();  // a callback without the method gets nothing
  return found;
}

void ReleaseCallbackContexts(JNIEnv* env, jobject handle, const void* sdk) {
  ReleaseContext<CallbackContext>(env, handle, sdk, F::Handle_lExceptionCallParam, [env](CallbackContext& c) {
    c.handleRef.Delete(env);
    c.callbackRef.Delete(env);
  });
  ReleaseContext<RecordCallbackContext>(env, handle, sdk, F::Handle_lAllEventCallParam, [env](RecordCallbackContext& c) {
    c.handleRef.Delete(env);
    c.callbackRef.Delete(env);
    c.recordRef.Delete(env);
    // Intended: the release of an event context leaves its record class referenced.
    c.recordClassRef.KeepForProcess();
  });
  ReleaseContext<ImageCallbackContext>(env, handle, sdk, F::Handle_lImageCallParam, [env](ImageCallbackContext& c) {
    c.bcrInfoClassRef.Delete(env);
    c.imageTypeClassRef.Delete(env);
    c.pixelTypeClassRef.Delete(env);
    c.waybillInfoClassRef.Delete(env);
    c.handleRef.Delete(env);
    c.callbackRef.Delete(env);
    // Intended: the image array outlives the handle, referenced for the rest of the process.
    c.imageArrayRef.KeepForProcess();
  });
  // Intended: the trigger context is not released and outlives the handle, with its references.
}
