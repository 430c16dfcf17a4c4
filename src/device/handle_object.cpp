// The Java Handle object: the SDK pointers it carries, and its creation.
#include "bridge.h"
#include "jmap/java_map.h"

namespace {
jmap::FieldId FieldOf(HandleKind kind) { return kind == HandleKind::kDevice ? F::Handle_hHandle : F::Handle_upHandle; }
}  // namespace

void* SdkHandleOf(JNIEnv* env, jobject handle, HandleKind kind) {
  // Kept zero-extended in a long; narrowed back to the width of a native pointer.
  return reinterpret_cast<void*>(static_cast<uintptr_t>(jmap::Get(env, handle, FieldOf(kind))));
}

jobject NewHandleObject(JNIEnv* env, HandleKind kind, void* sdkHandle) {
  jobject handle = jmap::NewObject(env, jmap::ClassId::Handle);
  RETURN_IF_NULL(handle, nullptr);
  jmap::Set(env, handle, FieldOf(kind), PointerWord(sdkHandle));
  return handle;
}
