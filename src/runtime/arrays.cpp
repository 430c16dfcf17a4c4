// Java byte arrays made from bytes the SDK owns.
#include <climits>

#include "bridge.h"

jbyteArray NewByteArrayOf(JNIEnv* env, const void* bytes, unsigned int length) {
  RETURN_IF_PENDING(env, nullptr);
  // No bytes behind the pointer, or a length no Java array can have: an empty array.
  const bool copyable = bytes != nullptr && length <= static_cast<unsigned int>(INT_MAX);
  const auto size = static_cast<jsize>(copyable ? length : 0);
  jbyteArray array = env->NewByteArray(size);
  if (array != nullptr) env->SetByteArrayRegion(array, 0, size, static_cast<const jbyte*>(bytes));
  return array;
}
