#include "acquire/fetch_checks.h"

#include <algorithm>

#include "jmap/java_map.h"

jint CheckFetch(JNIEnv* env, jobject handle, jbyteArray data, jobject info, jint timeout, const FetchMessages& messages) {
  if (info == nullptr || timeout <= 0 || data == nullptr) {
    if (messages.badArgumentText != nullptr) QN_RunInfo("%s", messages.badArgumentText);
    return kStatusBadArgument;
  }
  RETURN_IF_NULL(handle, kStatusNullHandle);
  const auto payloadSize = static_cast<jint>(jmap::Get(env, handle, F::Handle_PayloadSize));
  if (payloadSize == 0) {
    QN_RunInfo("%s", messages.payloadUnknownText);
    return kStatusPayloadUnknown;
  }
  if (payloadSize > env->GetArrayLength(data)) return kStatusBufferTooSmall;
  return kStatusOk;
}

void CopyFrameImage(JNIEnv* env, const unsigned char* image, unsigned int frameLen, jbyteArray array) {
  if (image == nullptr) return;
  const auto length = static_cast<jsize>(std::min<unsigned long long>(frameLen, env->GetArrayLength(array)));
  env->SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(image));
}
