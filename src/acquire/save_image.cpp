// Encoding a raw image into a file format through the SDK, and the waybill switch.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/frame_record.h"
#include "bridge.h"
#include "jmap/records.h"

namespace {

using jmap::ClassId;

// Everything but the image bytes; false when an enumeration is missing.
bool ReadSaveParameters(JNIEnv* env, const jmap::JavaObject& param, QUORIN_SAVE_IMAGE_PARAM* record) {
  int pixelType = 0;
  int imageType = 0;
  if (!EnumNumber(env, param, F::SaveImageParam_enPixelType, ClassId::PixelType, &pixelType) ||
      !EnumNumber(env, param, F::SaveImageParam_enImageType, ClassId::ImageType, &imageType)) {
    return false;
  }
  jmap::ReadMembers(param, record, jmap::kSaveImageRead);
  record->enPixelType = pixelType;  // sign-extended into its eight bytes
  record->enImageType = static_cast<QUORIN_IMAGE_TYPE>(imageType);
  return true;
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SaveImage(JNIEnv* env, jclass, jobject handle,
                                                                          jobject param) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(param, kStatusBadArgument);
  void* sdkHandle = SdkHandleOf(env, handle);
  const jmap::JavaObject request(env, param);
  ScopedLocalRef<jbyteArray> raw(env, static_cast<jbyteArray>(request.GetObject(F::SaveImageParam_pData)));
  RETURN_IF_NULL(raw.get(), kStatusBadArgument);
  ScopedByteArrayElements pixels(env, raw.get(), 0);  // released, copied back, on every path
  QUORIN_SAVE_IMAGE_PARAM record{};
  record.pData = pixels.data();
  // A missing pixel or image type is refused rather than read through a null reference.
  if (!ReadSaveParameters(env, request, &record)) return kStatusBadArgument;
  RETURN_IF_PENDING(env, kStatusBadArgument);
  // The SDK reads nDataLen bytes from pData; the array must hold every one of them.
  if (record.nDataLen > static_cast<unsigned int>(env->GetArrayLength(raw.get()))) return kStatusBadArgument;
  const int status = QUORIN_SaveImage(sdkHandle, &record);
  if (status != 0) return status;  // the caller's output fields stay as they were
  ScopedLocalRef<jbyteArray> encoded(env, NewByteArrayOf(env, record.pImageBuffer, record.nImageLen));
  request.SetObject(F::SaveImageParam_pImageBuffer, encoded.get());
  request.Set(F::SaveImageParam_nImageLen, record.nImageLen);
  RETURN_IF_PENDING(env, kStatusBadArgument);  // no array could be made for the encoded bytes
  return kStatusOk;
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetWayBillEnable(JNIEnv* env, jclass, jobject handle,
                                                                                 jboolean enable) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_SetWayBillEnable(SdkHandleOf(env, handle), enable != 0 ? 1 : 0);
}
