// Frames pushed to Java as the SDK decodes them, on the SDK's own threads.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/fetch_checks.h"
#include "acquire/frame_record.h"
#include "bridge.h"
#include "notify/attached_thread.h"
#include "notify/callback_context.h"

namespace {

constexpr const char* kOnImage = "([BLQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_OUT_INFO_EX2;)I";

// The shared frame object; made here by the first delivery if loading could not make it.
jobject SharedFrameObject(JNIEnv* env) {
  jobject frame = g_frameInfoEx2.load();
  if (frame != nullptr) return frame;
  // Looked up only to be released again, as at load.
  ScopedLocalRef<jclass> classLoader(env, env->FindClass(jclassname::kClassLoader));
  jobject made = NewFrameInfoEx2Global(env);
  if (made == nullptr) return nullptr;
  if (g_frameInfoEx2.compare_exchange_strong(frame, made)) return made;
  env->DeleteGlobalRef(made);  // another channel's thread made it first
  return frame;
}

// The Handle's image array, made once with the first frame's PayloadSize and reused by every
// later delivery; channels delivering at once agree on one array.
jbyteArray ImageArray(JNIEnv* env, ImageCallbackContext& context, jint payloadSize) {
  jbyteArray array = __atomic_load_n(&context.imageArrayRef, __ATOMIC_ACQUIRE);
  if (array != nullptr) return array;
  ScopedLocalRef<jbyteArray> local(env, env->NewByteArray(payloadSize));
  if (!local) {
    env->ExceptionClear();  // no array, no delivery: the frame is dropped
    return nullptr;
  }
  auto made = static_cast<jbyteArray>(env->NewGlobalRef(local.get()));
  if (__atomic_compare_exchange_n(&context.imageArrayRef, &array, made, false, __ATOMIC_ACQ_REL,
                                  __ATOMIC_ACQUIRE)) {
    return made;
  }
  env->DeleteGlobalRef(made);
  return array;
}

void RegisterFrameClasses(JNIEnv* env, ImageCallbackContext& context) {
  context.imageTypeClassRef = GlobalClassOr(env, jclassname::kImageType, context.imageTypeClassRef);
  context.pixelTypeClassRef = GlobalClassOr(env, jclassname::kPixelType, context.pixelTypeClassRef);
  context.bcrInfoClassRef = GlobalClassOr(env, jclassname::kBcrInfoEx, context.bcrInfoClassRef);
  context.waybillInfoClassRef = GlobalClassOr(env, jclassname::kWaybillInfo, context.waybillInfoClassRef);
}

}  // namespace

extern "C" JNIEXPORT void ImageCallBack(unsigned char* data, QUORIN_IMAGE_OUT_INFO_EX2* info, void* user) {
  if (user == nullptr || info == nullptr) return;
  auto& context = *static_cast<ImageCallbackContext*>(user);
  AttachedThread thread(context.javaVM);
  JNIEnv* env = thread.env();
  if (env == nullptr) return;
  const auto payloadSize = static_cast<jint>(GetFieldValue(env, context.handleRef, handlefield::kPayloadSize, jsig::kInt));
  if (payloadSize == 0) {
    // Grabbing was not started through the bridge: no frame size is known, the frame is dropped.
    QN_RunInfo("JNI test ImageCallBack PayloadSize = 0\r\n");
    return;
  }
  jmethodID onImage = CallbackMethod(env, context.callbackRef, "OnImageCallBack", kOnImage);
  jbyteArray image = ImageArray(env, context, payloadSize);
  jobject frame = SharedFrameObject(env);
  if (onImage == nullptr || image == nullptr || frame == nullptr || env->ExceptionCheck()) return;
  CopyFrameImage(env, data, info->nFrameLen, image);
  const FrameClasses classes{context.bcrInfoClassRef, context.waybillInfoClassRef, context.pixelTypeClassRef,
                             context.imageTypeClassRef};
  FillImageOutInfoEx2(env, *info, frame, classes, OneDQuality::kWritten);
  if (env->ExceptionCheck()) return;  // never call into Java with an error pending
  env->CallIntMethod(context.callbackRef, onImage, image, frame);
  env->ExceptionCheck();  // whatever Java threw is reported when the thread detaches
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterImageCallBackEx2(JNIEnv* env, jclass,
                                                                                         jobject handle,
                                                                                         jobject callback) {
  return RegisterCallback<ImageCallbackContext>(
      env, handle, callback, handlefield::kImageContext,
      [](void* h, ImageCallbackContext* context) {
        return QUORIN_RegisterImageCallBackEx2(h, context ? ImageCallBack : nullptr, context);
      },
      [env](ImageCallbackContext& context) { RegisterFrameClasses(env, context); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1MSC_1RegisterImageCallBack(JNIEnv* env, jclass,
                                                                                           jobject handle,
                                                                                           jint channel,
                                                                                           jobject callback) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  if (channel < 0) return kStatusBadArgument;
  // Both registrations share one context: whichever came last owns every channel's frames.
  return RegisterCallback<ImageCallbackContext>(
      env, handle, callback, handlefield::kImageContext,
      [channel](void* h, ImageCallbackContext* context) {
        return QUORIN_MSC_RegisterImageCallBack(h, static_cast<unsigned int>(channel),
                                                context ? ImageCallBack : nullptr, context);
      },
      [env](ImageCallbackContext& context) { RegisterFrameClasses(env, context); });
}
