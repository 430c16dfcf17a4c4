// Polling for the next decoded frame: image bytes into the caller's array, results into the
// caller's frame object.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/fetch_checks.h"
#include "acquire/frame_record.h"
#include "bridge.h"

namespace {

template <typename SdkFetch>
jint FetchFrame(JNIEnv* env, jobject handle, jbyteArray data, jobject target, jint timeout, const FetchMessages& messages,
                OneDQuality oneDQuality, SdkFetch sdkFetch) {
  const jint check = CheckFetch(env, handle, data, target, timeout, messages);
  if (check != kStatusOk) return check;
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  unsigned char* image = nullptr;
  const int status = sdkFetch(SdkHandleOf(env, handle), &image, &info);
  if (status != 0) return status;  // nothing of the caller's is touched
  CopyFrameImage(env, image, info.nFrameLen, data);
  LocalFrameClasses classes(env);
  FillImageOutInfoEx2(env, info, target, classes.get(), oneDQuality);
  RETURN_IF_PENDING(env, kStatusBadArgument);  // a list that would not take the frame's entries
  return kStatusOk;
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetOneFrameTimeoutEx2(JNIEnv* env, jclass,
                                                                                      jobject handle, jbyteArray data,
                                                                                      jobject info, jint timeout) {
  // This fetch leaves n1DIsGetQuality as the Java constructor set it.
  static const FetchMessages kMessages{nullptr, "JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n"};
  return FetchFrame(env, handle, data, info, timeout, kMessages, OneDQuality::kLeftAsConstructed,
                    [&](void* h, unsigned char** image, QUORIN_IMAGE_OUT_INFO_EX2* record) {
                      return QUORIN_GetOneFrameTimeoutEx2(h, image, record, static_cast<unsigned int>(timeout));
                    });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1MSC_1GetOneFrameTimeout(JNIEnv* env, jclass,
                                                                                        jobject handle,
                                                                                        jbyteArray data, jobject info,
                                                                                        jint channel, jint timeout) {
  if (channel < 0) return kStatusBadArgument;
  static const FetchMessages kMessages{nullptr, "JNI test PayloadSize is 0"};
  return FetchFrame(env, handle, data, info, timeout, kMessages, OneDQuality::kWritten,
                    [&](void* h, unsigned char** image, QUORIN_IMAGE_OUT_INFO_EX2* record) {
                      return QUORIN_MSC_GetOneFrameTimeout(h, image, record, static_cast<unsigned int>(channel),
                                                           static_cast<unsigned int>(timeout));
                    });
}
