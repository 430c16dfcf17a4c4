// The older frame fetch, with its own flat frame record and code entries.
#include <algorithm>
#include <memory>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/fetch_checks.h"
#include "acquire/frame_record.h"
#include "acquire/java_list.h"
#include "bridge.h"

namespace jclassname {
constexpr const char* kBcrInfo = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_BcrInfo";
constexpr const char* kPoint = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_POINT";
}  // namespace jclassname

namespace {

// An enumeration constant by its SDK number, the class found on this thread; a number no
// constant carries leaves the field as it was.
void SetEnumByName(JNIEnv* env, jobject target, const char* field, const char* fieldSig, const char* className,
                   unsigned int number) {
  if (env->ExceptionCheck()) return;
  ScopedLocalRef<jclass> enumClass(env, env->FindClass(className));
  ScopedLocalRef<jobject> constant(env, GetEnumObject(env, enumClass.get(), className, "nValue", jsig::kInt, number));
  if (constant) SetFieldValue(env, target, field, fieldSig, PointerWord(constant.get()));
}

void WriteCorners(JNIEnv* env, jobject entry, const QUORIN_BcrInfo& code, jclass pointClass) {
  FillList(env, entry, "pointList", pointClass, code.pt, 4, [env](jobject point, const QUORIN_POINT_I& corner) {
    SetFieldValue(env, point, "x", jsig::kInt, static_cast<uint32_t>(corner.nX));
    SetFieldValue(env, point, "y", jsig::kInt, static_cast<uint32_t>(corner.nY));
  });
}

void WriteCode(JNIEnv* env, jobject entry, const QUORIN_BcrInfo& code, jclass pointClass) {
  SetFieldValue(env, entry, "nID", jsig::kInt, code.nID);
  // The text travels as bytes; a length beyond its array is never read past it.
  const unsigned int textLength = std::min<unsigned int>(code.nLen, sizeof code.chCode);
  ScopedLocalRef<jbyteArray> text(env, NewByteArrayOf(env, code.chCode, textLength));
  SetFieldValue(env, entry, "chCode", jsig::kByteArray, PointerWord(text.get()));
  SetFieldValue(env, entry, "nLen", jsig::kInt, code.nLen);
  SetFieldValue(env, entry, "nBarType", jsig::kInt, code.nBarType);
  WriteCorners(env, entry, code, pointClass);
  SetFieldValue(env, entry, "nAngle", jsig::kInt, static_cast<uint32_t>(code.nAngle));
  SetFieldValue(env, entry, "nMainPackageId", jsig::kInt, code.nMainPackageId);
  SetFieldValue(env, entry, "nSubPackageId", jsig::kInt, code.nSubPackageId);
  SetFieldValue(env, entry, "sAppearCount", jsig::kShort, code.sAppearCount);
  SetFieldValue(env, entry, "sPPM", jsig::kShort, code.sPPM);
  SetFieldValue(env, entry, "sAlgoCost", jsig::kShort, code.sAlgoCost);
  SetFieldValue(env, entry, "sSharpness", jsig::kShort, code.sSharpness);
}

void FillLegacyFrame(JNIEnv* env, const QUORIN_FRAME_OUT_INFO& info, jobject target) {
  SetFieldValue(env, target, "nWidth", jsig::kShort, info.nWidth);
  SetFieldValue(env, target, "nHeight", jsig::kShort, info.nHeight);
  SetEnumByName(env, target, "enPixelType", jsig::kPixelType, jclassname::kPixelType, info.enPixelType);
  SetFieldValue(env, target, "nTriggerIndex", jsig::kInt, info.nTriggerIndex);
  SetFieldValue(env, target, "nFrameNum", jsig::kInt, info.nFrameNum);
  SetFieldValue(env, target, "nFrameLen", jsig::kInt, info.nFrameLen);
  SetFieldValue(env, target, "nTimeStampHigh", jsig::kInt, info.nTimeStampHigh);
  SetFieldValue(env, target, "nTimeStampLow", jsig::kInt, info.nTimeStampLow);
  SetFieldValue(env, target, "nChannelID", jsig::kInt, info.nChannelID);
  SetFieldValue(env, target, "nImageCost", jsig::kInt, info.nImageCost);
  ScopedLocalRef<jbyteArray> waybill(env, NewByteArrayOf(env, info.pImageWaybill, info.nImageWaybillLen));
  SetFieldValue(env, target, "pImageWaybill", jsig::kByteArray, PointerWord(waybill.get()));
  SetFieldValue(env, target, "nImageWaybillLen", jsig::kInt, info.nImageWaybillLen);
  SetEnumByName(env, target, "enWaybillImageType", jsig::kImageType, jclassname::kImageType, info.enWaybillImageType);
  SetFieldValue(env, target, "bFlaseTrigger", jsig::kInt, info.bFlaseTrigger);
  SetFieldValue(env, target, "nFocusScore", jsig::kInt, info.nFocusScore);

  // The code area holds at most 204 entries; a larger count is never read past it.
  const unsigned int count = std::min<unsigned int>(info.nCodeNumber, QUORIN_MAX_BCRINFO_NUM);
  SetFieldValue(env, target, "nCodeNumber", jsig::kInt, count);
  if (env->ExceptionCheck()) return;
  ScopedLocalRef<jclass> codeClass(env, env->FindClass(jclassname::kBcrInfo));
  ScopedLocalRef<jclass> pointClass(env, env->FindClass(jclassname::kPoint));
  FillList(env, target, "bcrinfoList", codeClass.get(), info.stBcrInfo, count,
           [&](jobject entry, const QUORIN_BcrInfo& code) { WriteCode(env, entry, code, pointClass.get()); });
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetOneFrameTimeout(JNIEnv* env, jclass,
                                                                                   jobject handle, jbyteArray data,
                                                                                   jobject info, jint timeout) {
  static const FetchRules kRules{"JNI QUORIN_GetOneFrameTimeout, param is error", "JNI test PayloadSize is 0"};
  const jint check = CheckFetch(env, handle, data, info, timeout, kRules);
  if (check != kStatusOk) return check;
  // 64 KiB is more than a Java thread's stack should be asked for; the record lives on the heap.
  auto record = std::make_unique<QUORIN_FRAME_OUT_INFO>();
  unsigned char* image = nullptr;
  const int status = QUORIN_GetOneFrameTimeout(SdkHandleOf(env, handle), &image, record.get(), timeout);
  if (status != 0) return status;  // nothing of the caller's is touched
  CopyFrameImage(env, image, record->nFrameLen, data);
  FillLegacyFrame(env, *record, info);
  RETURN_IF_PENDING(env, kStatusBadArgument);  // a list that would not take the frame's entries
  return kStatusOk;
}
