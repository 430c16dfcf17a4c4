// Frames pushed to Java as the SDK decodes them, on the SDK's own threads.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/fetch_checks.h"
#include "acquire/frame_record.h"
#include "bridge.h"
#include "notify/callback_context.h"
#include "notify/delivery_scope.h"

namespace {

// The shared frame object; made here by the first delivery if loading could not make it.
jobject SharedFrameObject(JNIEnv* env) {
  jobject frame = g_frameInfoEx2.load();
  if (frame != nullptr) return frame;
  // Looked up only to be released again, as at load.
  ScopedLocalRef<jclass> classLoader(env, jmap::FindClass(env, jmap::ClassId::ClassLoader));
  jobject made = NewFrameInfoEx2Global(env);
  if (made == nullptr) return nullptr;
  if (g_frameInfoEx2.compare_exchange_strong(frame, made)) return made;
  env->DeleteGlobalRef(made);  // another channel's thread made it first
  return frame;
}

// The Handle's image array, made once with the first frame's PayloadSize and reused by every
// later delivery; channels delivering at once agree on one array.
jbyteArray ImageArray(JNIEnv* env, ImageCallbackContext& context, jint payloadSize) {
  jbyteArray array = __atomic_load_n(&context.imageArrayRef.ref, __ATOMIC_ACQUIRE);
  if (array != nullptr) return array;
  ScopedLocalRef<jbyteArray> local(env, env->NewByteArray(payloadSize));
  if (!local) {
    env->ExceptionClear();  // no array, no delivery: the frame is dropped
    return nullptr;
  }
  auto made = static_cast<jbyteArray>(env->NewGlobalRef(local.get()));
  if (__atomic_compare_exchange_n(&context.imageArrayRef.ref, &array, made, false, __ATOMIC_ACQ_REL,
                                  __ATOMIC_ACQUIRE)) {
    return made;
  }
  env->DeleteGlobalRef(made);
  return array;
}

void RegisterFrameClasses(JNIEnv* env, ImageCallbackContext& context) {
  using jmap::ClassId;
  context.imageTypeClassRef.ref = GlobalClassOr(env, ClassId::ImageType, context.imageTypeClassRef.get());
  context.pixelTypeClassRef.ref = GlobalClassOr(env, ClassId::PixelType, context.pixelTypeClassRef.get());
  context.bcrInfoClassRef.ref = GlobalClassOr(env, ClassId::Code, context.bcrInfoClassRef.get());
  context.waybillInfoClassRef.ref = GlobalClassOr(env, ClassId::Waybill, context.waybillInfoClassRef.get());
}

}  // namespace

extern "C" JNIEXPORT void ImageCallBack(unsigned char* data, QUORIN_IMAGE_OUT_INFO_EX2* info, void* user) {
  if (user == nullptr || info == nullptr) return;
  auto& context = *static_cast<ImageCallbackContext*>(user);
  DeliveryScope delivery(context.javaVM);
  JNIEnv* env = delivery.env();
  if (env == nullptr) return;
  const auto payloadSize = static_cast<jint>(jmap::Get(env, context.handleRef.get(), F::Handle_PayloadSize));
  if (payloadSize == 0) {
    // Grabbing was not started through the bridge: no frame size is known, the frame is dropped.
    QN_RunInfo("JNI test ImageCallBack PayloadSize = 0\r\n");
    return;
  }
  jmethodID onImage = CallbackMethod(env, context.callbackRef.get(), jmap::kOnImage);
  jbyteArray image = ImageArray(env, context, payloadSize);
  jobject frame = SharedFrameObject(env);
  if (onImage == nullptr || image == nullptr || frame == nullptr || env->ExceptionCheck()) return;
  CopyFrameImage(env, data, info->nFrameLen, image);
  const FrameClasses classes{context.bcrInfoClassRef.get(), context.waybillInfoClassRef.get(),
                             context.pixelTypeClassRef.get(), context.imageTypeClassRef.get()};
  FillImageOutInfoEx2(env, *info, frame, classes, OneDQuality::kWritten);
  if (env->ExceptionCheck()) return;  // never call into Java with an error pending
  env->CallIntMethod(context.callbackRef.get(), onImage, image, frame);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterImageCallBackEx2(JNIEnv* env, jclass,
                                                                                         jobject handle,
                                                                                         jobject callback) {
  return RegisterCallback<ImageCallbackContext>(
      env, handle, callback, F::Handle_lImageCallParam,
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
      env, handle, callback, F::Handle_lImageCallParam,
      [channel](void* h, ImageCallbackContext* context) {
        return QUORIN_MSC_RegisterImageCallBack(h, static_cast<unsigned int>(channel),
                                                context ? ImageCallBack : nullptr, context);
      },
      [env](ImageCallbackContext& context) { RegisterFrameClasses(env, context); });
}
