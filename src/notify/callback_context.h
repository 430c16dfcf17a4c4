// The heap records handed to the SDK as user data with each registered callback. Their
// addresses live in long fields of the Java Handle; QUORIN_DestroyHandle releases them.
#pragma once

#include "bridge.h"
#include "jmap/java_map.h"

// A global reference held in a context word. Deleted on release unless the context says to keep
// it, which is spelt out where it happens.
template <typename T>
struct GlobalRef {
  T ref;

  T get() const { return ref; }
  void Delete(JNIEnv* env) {
    if (ref != nullptr) env->DeleteGlobalRef(ref);
    ref = nullptr;
  }
  // The reference stays alive for the rest of the process; only where that is intended.
  void KeepForProcess() { ref = nullptr; }
};

// Exception callback.
struct CallbackContext {
  GlobalRef<jobject> callbackRef;
  GlobalRef<jobject> handleRef;  // kept alive with the registration, never read on delivery
  JavaVM* javaVM;
};

// Event and trigger callbacks: also the Java record class and the one reused record.
struct RecordCallbackContext {
  GlobalRef<jobject> callbackRef;
  GlobalRef<jobject> handleRef;
  GlobalRef<jobject> recordRef;
  GlobalRef<jclass> recordClassRef;
  JavaVM* javaVM;
};

// Image callback: the classes the frame conversion needs on an SDK thread.
struct ImageCallbackContext {
  GlobalRef<jobject> callbackRef;
  GlobalRef<jobject> handleRef;
  GlobalRef<jbyteArray> imageArrayRef;
  GlobalRef<jclass> bcrInfoClassRef;
  GlobalRef<jclass> waybillInfoClassRef;
  GlobalRef<jclass> pixelTypeClassRef;
  GlobalRef<jclass> imageTypeClassRef;
  JavaVM* javaVM;
};

#if defined(__i386__)
static_assert(sizeof(CallbackContext) == 12, "three words");
static_assert(sizeof(RecordCallbackContext) == 20, "five words");
static_assert(sizeof(ImageCallbackContext) == 32, "eight words");
#endif

// The references a registration writes into each kind of context, visited pairwise in two
// copies of it; the ones deliveries make (the reused record, the image array) are not among them.
template <typename Visit>
void ForEachRegisteredRef(CallbackContext& a, CallbackContext& b, Visit visit) {
  visit(a.callbackRef, b.callbackRef);
  visit(a.handleRef, b.handleRef);
}
template <typename Visit>
void ForEachRegisteredRef(RecordCallbackContext& a, RecordCallbackContext& b, Visit visit) {
  visit(a.callbackRef, b.callbackRef);
  visit(a.handleRef, b.handleRef);
  visit(a.recordClassRef, b.recordClassRef);
}
template <typename Visit>
void ForEachRegisteredRef(ImageCallbackContext& a, ImageCallbackContext& b, Visit visit) {
  visit(a.callbackRef, b.callbackRef);
  visit(a.handleRef, b.handleRef);
  visit(a.bcrInfoClassRef, b.bcrInfoClassRef);
  visit(a.waybillInfoClassRef, b.waybillInfoClassRef);
  visit(a.pixelTypeClassRef, b.pixelTypeClassRef);
  visit(a.imageTypeClassRef, b.imageTypeClassRef);
}

// Every context the bridge made, with the Handle field and the SDK handle it was made for. A
// context word Java wrote itself, or copied into another field or Handle, names none of them, so
// it is never written through or freed.
void RememberContext(const void* context, jmap::FieldId field, const void* sdkHandle);
bool IsContextOf(const void* context, jmap::FieldId field, const void* sdkHandle);
void ForgetContext(const void* context);

// What a Handle field says of its context.
template <typename Context>
struct ContextWord {
  Context* context = nullptr;  // the bridge's own context, or null
  bool forged = false;         // a non-zero word the bridge did not make for this field and handle
};

template <typename Context>
ContextWord<Context> ContextOf(JNIEnv* env, jobject handle, jmap::FieldId field, const void* sdkHandle) {
  const auto word = static_cast<uintptr_t>(jmap::Get(env, handle, field));
  if (word == 0) return {};
  auto* context = reinterpret_cast<Context*>(word);
  if (!IsContextOf(context, field, sdkHandle)) return {nullptr, true};
  return {context, false};
}

// The Handle's context of this kind, made and recorded in `field` on first registration; null
// when the field holds a word the bridge did not make, or could not be read.
template <typename Context>
Context* ContextFor(JNIEnv* env, jobject handle, jmap::FieldId field, const void* sdkHandle) {
  const ContextWord<Context> found = ContextOf<Context>(env, handle, field, sdkHandle);
  RETURN_IF_PENDING(env, nullptr);
  if (found.forged) return nullptr;
  if (found.context != nullptr) return found.context;
  auto* context = new Context{};
  RememberContext(context, field, sdkHandle);
  jmap::Set(env, handle, field, PointerWord(context));
  return context;
}

// The callback, the Handle and the VM (re)written. On re-registration the earlier references
// are deliberately left alive: a delivery already under way may still use them.
template <typename Context>
void WriteRegistration(JNIEnv* env, Context* context, jobject handle, jobject callback) {
  context->callbackRef.ref = env->NewGlobalRef(callback);
  context->handleRef.ref = env->NewGlobalRef(handle);
  env->GetJavaVM(&context->javaVM);
}

// A registration that did not take puts back the words that stood before it. Its own fresh
// references are deleted only when nothing was registered before: over a standing registration
// a delivery may already hold them, so they stay alive as a re-registration's would.
template <typename Context>
void RollBackRegistration(JNIEnv* env, Context* context, Context standing) {
  const bool wasRegistered = standing.callbackRef.get() != nullptr;
  ForEachRegisteredRef(*context, standing, [env, wasRegistered](auto& fresh, auto& kept) {
    if (fresh.get() == kept.get()) return;
    if (wasRegistered) {
      fresh.KeepForProcess();
    } else {
      fresh.Delete(env);
    }
    fresh = kept;
  });
}

// A global reference to a class found on the registering (Java) thread, or `previous` when
// the class cannot be found; FindClass on an SDK thread would not see the application's classes.
template <typename Class>
Class GlobalClassOr(JNIEnv* env, jmap::ClassId cls, Class previous) {
  RETURN_IF_PENDING(env, previous);
  ScopedLocalRef<jclass> local(env, jmap::FindClass(env, cls));
  if (!local) return previous;
  return static_cast<Class>(env->NewGlobalRef(local.get()));
}

// The registration every notification kind shares. A null callback only clears the SDK's
// side (no function, no context); the context stays and is reused by the next registration.
template <typename Context, typename SdkRegister, typename Prepare>
jint RegisterCallback(JNIEnv* env, jobject handle, jobject callback, jmap::FieldId field, SdkRegister sdkRegister,
                      Prepare prepare) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  void* sdkHandle = SdkHandleOf(env, handle);
  if (callback == nullptr) return sdkRegister(sdkHandle, nullptr);
  Context* context = ContextFor<Context>(env, handle, field, sdkHandle);
  if (context == nullptr) return kStatusBadArgument;  // a context word Java made up is never written through
  const Context standing = *context;
  WriteRegistration(env, context, handle, callback);
  prepare(*context);
  // A class the registration needs is missing: its error is what Java sees, the SDK is not asked.
  const jint status = env->ExceptionCheck() ? kStatusBadArgument : sdkRegister(sdkHandle, context);
  // Either way the context stays attached to the Handle, freed with it.
  if (status != kStatusOk) RollBackRegistration(env, context, standing);
  return status;
}

// The Java method a callback object declares for this kind, looked up on its own class at
// every delivery so that subclasses and anonymous classes work.
jmethodID CallbackMethod(JNIEnv* env, jobject callback, const jmap::JavaMethod& method);

// Frees the exception, event and image contexts the bridge made for this Handle and its SDK
// handle, and zeroes their fields.
void ReleaseCallbackContexts(JNIEnv* env, jobject handle, const void* sdkHandle);
