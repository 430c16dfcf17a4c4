// The heap records handed to the SDK as user data with each registered callback. Their
// addresses live in long fields of the Java Handle; QUORIN_DestroyHandle releases them.
#pragma once

#include "bridge.h"

// Exception callback.
struct CallbackContext {
  jobject callbackRef;
  jobject handleRef;  // kept alive with the registration, never read on delivery
  JavaVM* javaVM;
};

// Event and trigger callbacks: also the Java record class and the one reused record.
struct RecordCallbackContext {
  jobject callbackRef;
  jobject handleRef;
  jobject recordRef;
  jclass recordClassRef;
  JavaVM* javaVM;
};

// Image callback: the classes the frame conversion needs on an SDK thread.
struct ImageCallbackContext {
  jobject callbackRef;
  jobject handleRef;
  jbyteArray imageArrayRef;
  jclass bcrInfoClassRef;
  jclass waybillInfoClassRef;
  jclass pixelTypeClassRef;
  jclass imageTypeClassRef;
  JavaVM* javaVM;
};

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

#if defined(__i386__)
static_assert(sizeof(CallbackContext) == 12, "three words");
static_assert(sizeof(RecordCallbackContext) == 20, "five words");
static_assert(sizeof(ImageCallbackContext) == 32, "eight words");
#endif

// The context whose address a Handle field holds, or null.
template <typename Context>
Context* ContextOf(JNIEnv* env, jobject handle, const char* field) {
  return reinterpret_cast<Context*>(static_cast<uintptr_t>(GetFieldValue(env, handle, field, jsig::kLong)));
}

// The Handle's context of this kind, made and recorded in `field` on first registration.
template <typename Context>
Context* ContextFor(JNIEnv* env, jobject handle, const char* field) {
  Context* context = ContextOf<Context>(env, handle, field);
  if (context == nullptr) {
    context = new Context{};
    SetFieldValue(env, handle, field, jsig::kLong, PointerWord(context));
  }
  return context;
}

// The callback, the Handle and the VM (re)written. On re-registration the earlier references
// are deliberately left alive: a delivery already under way may still use them.
template <typename Context>
void WriteRegistration(JNIEnv* env, Context* context, jobject handle, jobject callback) {
  context->callbackRef = env->NewGlobalRef(callback);
  context->handleRef = env->NewGlobalRef(handle);
  env->GetJavaVM(&context->javaVM);
}

// A registration that did not take puts back the words that stood before it. Its own fresh
// references are deleted only when nothing was registered before: over a standing registration
// a delivery may already hold them, so they stay alive as a re-registration's would.
template <typename Context>
void RollBackRegistration(JNIEnv* env, Context* context, Context standing) {
  const bool wasRegistered = standing.callbackRef != nullptr;
  ForEachRegisteredRef(*context, standing, [env, wasRegistered](auto& fresh, auto& kept) {
    if (fresh == kept) return;
    if (!wasRegistered && fresh != nullptr) env->DeleteGlobalRef(fresh);
    fresh = kept;
  });
}

// A global reference to a class found on the registering (Java) thread, or `previous` when
// the class cannot be found; FindClass on an SDK thread would not see the application's classes.
template <typename Class>
Class GlobalClassOr(JNIEnv* env, const char* name, Class previous) {
  RETURN_IF_PENDING(env, previous);
  ScopedLocalRef<jclass> local(env, env->FindClass(name));
  if (!local) return previous;
  return static_cast<Class>(env->NewGlobalRef(local.get()));
}

// The registration every notification kind shares. A null callback only clears the SDK's
// side (no function, no context); the context stays and is reused by the next registration.
template <typename Context, typename SdkRegister, typename Prepare>
jint RegisterCallback(JNIEnv* env, jobject handle, jobject callback, const char* field, SdkRegister sdkRegister,
                      Prepare prepare) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  void* sdkHandle = SdkHandleOf(env, handle);
  if (callback == nullptr) return sdkRegister(sdkHandle, nullptr);
  Context* context = ContextFor<Context>(env, handle, field);
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
jmethodID CallbackMethod(JNIEnv* env, jobject callback, const char* name, const char* sig);

// Frees the exception, event and image contexts of a Handle and zeroes their fields.
void ReleaseCallbackContexts(JNIEnv* env, jobject handle);
