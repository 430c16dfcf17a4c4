// Encoding a raw image into a file format through the SDK, and the waybill switch.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/frame_record.h"
#include "bridge.h"

namespace {

// Everything but the image bytes; false when an enumeration is missing.
bool ReadSaveParameters(JNIEnv* env, jobject param, QUORIN_SAVE_IMAGE_PARAM* record) {
  int pixelType = 0;
  int imageType = 0;
  if (!EnumNumber(env, param, "enPixelType", jsig::kPixelType, jclassname::kPixelType, &pixelType) ||
      !EnumNumber(env, param, "enImageType", jsig::kImageType, jclassname::kImageType, &imageType)) {
    return false;
  }
  record->nDataLen = static_cast<unsigned int>(GetFieldValue(env, param, "nDataLen", jsig::kInt));
  record->enPixelType = pixelType;  // sign-extended into its eight bytes
  record->nWidth = static_cast<unsigned short>(GetFieldValue(env, param, "nWidth", jsig::kShort));
  record->nHeight = static_cast<unsigned short>(GetFieldValue(env, param, "nHeight", jsig::kShort));
  record->nBufferSize = static_cast<unsigned int>(GetFieldValue(env, param, "nBufferSize", jsig::kInt));
  record->enImageType = static_cast<QUORIN_IMAGE_TYPE>(imageType);
  record->nJpgQuality = static_cast<unsigned int>(GetFieldValue(env, param, "nJpgQuality", jsig::kInt));
  record->iMethodValue = static_cast<unsigned int>(GetFieldValue(env, param, "iMethodValue", jsig::kInt));
  return true;
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SaveImage(JNIEnv* env, jclass, jobject handle,
                                                                          jobject param) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(param, kStatusBadArgument);
  void* sdkHandle = SdkHandleOf(env, handle);
  ScopedLocalRef<jbyteArray> raw(env, static_cast<jbyteArray>(GetObjectFieldValue(env, param, "pData", jsig::kByteArray)));
  RETURN_IF_NULL(raw.get(), kStatusBadArgument);
  ScopedByteArrayElements pixels(env, raw.get(), 0);  // released, copied back, on every path
  QUORIN_SAVE_IMAGE_PARAM record{};
  record.pData = pixels.data();
  // A missing pixel or image type is refused rather than read through a null reference.
  if (!ReadSaveParameters(env, param, &record)) return kStatusBadArgument;
  RETURN_IF_PENDING(env, kStatusBadArgument);
  // The SDK reads nDataLen bytes from pData; the array must hold every one of them.
  if (record.nDataLen > static_cast<unsigned int>(env->GetArrayLength(raw.get()))) return kStatusBadArgument;
  const int status = QUORIN_SaveImage(sdkHandle, &record);
  if (status != 0) return status;  // the caller's output fields stay as they were
  ScopedLocalRef<jbyteArray> encoded(env, NewByteArrayOf(env, record.pImageBuffer, record.nImageLen));
  SetFieldValue(env, param, "pImageBuffer", jsig::kByteArray, PointerWord(encoded.get()));
  SetFieldValue(env, param, "nImageLen", jsig::kInt, record.nImageLen);
  RETURN_IF_PENDING(env, kStatusBadArgument);  // no array could be made for the encoded bytes
  return kStatusOk;
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1SetWayBillEnable(JNIEnv* env, jclass, jobject handle,
                                                                                 jboolean enable) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_SetWayBillEnable(SdkHandleOf(env, handle), enable != 0 ? 1 : 0);
}
