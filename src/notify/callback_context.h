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

// Frees the exception, event and image contexts of a Handle and zeroes their fields.
void ReleaseCallbackContexts(JNIEnv* env, jobject handle);
