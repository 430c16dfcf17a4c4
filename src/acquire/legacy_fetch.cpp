// The older frame fetch, with its own flat frame record and code entries.
#include <algorithm>
#include <memory>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/fetch_checks.h"
#include "acquire/frame_record.h"
#include "acquire/java_list.h"
#include "bridge.h"
#include "jmap/records.h"

namespace {

using jmap::ClassId;
using jmap::JavaObject;

// An enumeration constant by its SDK number, the class found on this thread; a number no
// constant carries leaves the field as it was.
void SetEnumByName(JNIEnv* env, const JavaObject& target, jmap::FieldId field, ClassId id, unsigned int number) {
  ScopedLocalRef<jclass> enumClass(env, jmap::FindClass(env, id));
  SetEnumConstant(env, target, field, id, enumClass.get(), number);
}

void WriteCorners(JNIEnv* env, const JavaObject& entry, const QUORIN_BcrInfo& code, jclass pointClass) {
  FillList(env, entry.get(), F::LegacyCode_pointList, ClassId::LegacyPoint, pointClass, code.pt, 4,
           [](const JavaObject& point, const QUORIN_POINT_I& corner) { jmap::WriteMembers(point, &corner, jmap::kLegacyPoint); });
}

void WriteCode(JNIEnv* env, const JavaObject& entry, const QUORIN_BcrInfo& code, jclass pointClass) {
  jmap::WriteMembers(entry, &code, jmap::kLegacyCodeId);
  // The text travels as bytes; a length beyond its array is never read past it.
  const unsigned int textLength = std::min<unsigned int>(code.nLen, sizeof code.chCode);
  ScopedLocalRef<jbyteArray> text(env, NewByteArrayOf(env, code.chCode, textLength));
  entry.SetObject(F::LegacyCode_chCode, text.get());
  jmap::WriteMembers(entry, &code, jmap::kLegacyCodeKind);
  WriteCorners(env, entry, code, pointClass);
  jmap::WriteMembers(entry, &code, jmap::kLegacyCodeMeasures);
}

void FillLegacyFrame(JNIEnv* env, const QUORIN_FRAME_OUT_INFO& info, jobject target) {
  const JavaObject frame(env, target);
  jmap::WriteMembers(frame, &info, jmap::kLegacyFrameSize);
  SetEnumByName(env, frame, F::LegacyFrame_enPixelType, ClassId::PixelType, info.enPixelType);
  jmap::WriteMembers(frame, &info, jmap::kLegacyFrameCounters);
  ScopedLocalRef<jbyteArray> waybill(env, NewByteArrayOf(env, info.pImageWaybill, info.nImageWaybillLen));
  frame.SetObject(F::LegacyFrame_pImageWaybill, waybill.get());
  frame.Set(F::LegacyFrame_nImageWaybillLen, info.nImageWaybillLen);
  SetEnumByName(env, frame, F::LegacyFrame_enWaybillImageType, ClassId::ImageType, info.enWaybillImageType);
  jmap::WriteMembers(frame, &info, jmap::kLegacyFrameTrigger);

  // The code area holds at most 204 entries; a larger count is never read past it.
  const unsigned int count = std::min<unsigned int>(info.nCodeNumber, QUORIN_MAX_BCRINFO_NUM);
  frame.Set(F::LegacyFrame_nCodeNumber, count);
  ScopedLocalRef<jclass> codeClass(env, jmap::FindClass(env, ClassId::LegacyCode));
  ScopedLocalRef<jclass> pointClass(env, jmap::FindClass(env, ClassId::LegacyPoint));
  FillList(env, target, F::LegacyFrame_bcrinfoList, ClassId::LegacyCode, codeClass.get(), info.stBcrInfo, count,
           [&](const JavaObject& entry, const QUORIN_BcrInfo& code) { WriteCode(env, entry, code, pointClass.get()); });
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetOneFrameTimeout(JNIEnv* env, jclass,
                                                                                   jobject handle, jbyteArray data,
                                                                                   jobject info, jint timeout) {
  static const FetchMessages kMessages{"JNI QUORIN_GetOneFrameTimeout, param is error", "JNI test PayloadSize is 0"};
  const jint check = CheckFetch(env, handle, data, info, timeout, kMessages);
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
