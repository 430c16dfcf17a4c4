// Polling for the next decoded frame: image bytes into the caller's array, results into the
// caller's frame object.
#include <algorithm>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/frame_record.h"
#include "bridge.h"

namespace {

struct FetchRules {
  const char* payloadUnknownText;  // printed when grabbing was never started through the bridge
  OneDQuality oneDQuality;
};

// What every fetch checks before the SDK is asked. Unlike the other entry points the other
// arguments are tested before the Handle.
jint CheckFetch(JNIEnv* env, jobject handle, jbyteArray data, jobject info, jint timeout, const FetchRules& rules) {
  if (info == nullptr || timeout <= 0 || data == nullptr) return kStatusBadArgument;
  RETURN_IF_NULL(handle, kStatusNullHandle);
  const auto payloadSize = static_cast<jint>(GetFieldValue(env, handle, handlefield::kPayloadSize, jsig::kInt));
  if (payloadSize == 0) {
    QN_RunInfo("%s", rules.payloadUnknownText);
    return kStatusPayloadUnknown;
  }
  if (payloadSize > env->GetArrayLength(data)) return kStatusBufferTooSmall;
  return kStatusOk;
}

// The frame's bytes go to the start of the caller's array. A frame longer than the array
// (possible only when the SDK delivers more than PayloadSize) is cut to the array, never
// written past it; nFrameLen in the frame object still tells its full length.
void CopyImage(JNIEnv* env, const unsigned char* image, const QUORIN_IMAGE_OUT_INFO_EX2& info, jbyteArray data) {
  if (image == nullptr) return;
  const auto length = static_cast<jsize>(std::min<unsigned long long>(info.nFrameLen, env->GetArrayLength(data)));
  env->SetByteArrayRegion(data, 0, length, reinterpret_cast<const jbyte*>(image));
}

template <typename SdkFetch>
jint FetchFrame(JNIEnv* env, jobject handle, jbyteArray data, jobject target, jint timeout, const FetchRules& rules,
                SdkFetch sdkFetch) {
  const jint check = CheckFetch(env, handle, data, target, timeout, rules);
  if (check != kStatusOk) return check;
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  unsigned char* image = nullptr;
  const int status = sdkFetch(SdkHandleOf(env, handle), &image, &info);
  if (status != 0) return status;  // nothing of the caller's is touched
  CopyImage(env, image, info, data);
  LocalFrameClasses classes(env);
  FillImageOutInfoEx2(env, info, target, classes.get(), rules.oneDQuality);
  return kStatusOk;
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetOneFrameTimeoutEx2(JNIEnv* env, jclass,
                                                                                      jobject handle, jbyteArray data,
                                                                                      jobject info, jint timeout) {
  // This fetch leaves n1DIsGetQuality as the Java constructor set it.
  static const FetchRules kRules{"JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n",
                                 OneDQuality::kLeftAsConstructed};
  return FetchFrame(env, handle, data, info, timeout, kRules,
                    [&](void* h, unsigned char** image, QUORIN_IMAGE_OUT_INFO_EX2* record) {
                      return QUORIN_GetOneFrameTimeoutEx2(h, image, record, static_cast<unsigned int>(timeout));
                    });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1MSC_1GetOneFrameTimeout(JNIEnv* env, jclass,
                                                                                        jobject handle,
                                                                                        jbyteArray data, jobject info,
                                                                                        jint channel, jint timeout) {
  if (channel < 0) return kStatusBadArgument;
  static const FetchRules kRules{"JNI test PayloadSize is 0", OneDQuality::kWritten};
  return FetchFrame(env, handle, data, info, timeout, kRules,
                    [&](void* h, unsigned char** image, QUORIN_IMAGE_OUT_INFO_EX2* record) {
                      return QUORIN_MSC_GetOneFrameTimeout(h, image, record, static_cast<unsigned int>(channel),
                                                           static_cast<unsigned int>(timeout));
                    });
}
