#include "acquire/frame_record.h"

#include <algorithm>
#include <cstddef>

#include "acquire/java_list.h"
#include "jmap/records.h"

using jmap::ClassId;
using jmap::JavaObject;

namespace {

// The code text, bounded by its array even when the SDK left no terminator in it.
jstring CodeTextToJava(JNIEnv* env, const char (&code)[sizeof(QUORIN_BCR_INFO_EX::chCode)]) {
  if (std::memchr(code, '\0', sizeof code) != nullptr) return DeviceTextToJava(env, code);
  std::string terminated(code, sizeof code);
  return DeviceTextToJava(env, terminated.c_str());
}

// The text is made first: it is the one step of an entry that can raise, so that one check after
// it covers every write into a resolved entry, its corner points and its quality record. The text
// and the held objects are freed with the entry's local frame.
void WriteCodeEntry(JNIEnv* env, const JavaObject& entry, const QUORIN_BCR_INFO_EX& code, OneDQuality oneDQuality) {
  const jstring text = CodeTextToJava(env, code.chCode);
  const bool direct = text != nullptr && entry.Direct(F::Code_nID);
  jmap::WriteMembers(entry, &code, jmap::kCodeId, direct);
  if (direct) {
    entry.SetDirect(F::Code_chCode, PointerWord(text));
  } else {
    entry.SetObject(F::Code_chCode, text);
  }
  jmap::WriteMembers(entry, &code, jmap::kCodeKind, direct);
  for (const jmap::Corner& corner : jmap::kCodeCorners) {
    jmap::WriteHeldMembers(env, entry, corner.field, ClassId::PointI,
                           reinterpret_cast<const char*>(&code) + corner.offset, jmap::kPoint, direct);
  }
  jmap::WriteHeldMembers(env, entry, F::Code_stCodeQuality, ClassId::Quality, &code.stCodeQuality, jmap::kQuality,
                         direct);
  jmap::WriteMembers(entry, &code, jmap::kCodeMeasures, direct);
  if (oneDQuality == OneDQuality::kWritten) jmap::WriteMembers(entry, &code, jmap::kCodeOneDQuality, direct);
  jmap::WriteMembers(entry, &code, jmap::kCodeTiming, direct);
}

void WriteWaybillEntry(JNIEnv* env, const JavaObject& entry, const QUORIN_WAYBILL_INFO& waybill) {
  jmap::WriteMembers(entry, &waybill, jmap::kWaybillPlace);
  ScopedLocalRef<jbyteArray> image(env, NewByteArrayOf(env, waybill.pImageWaybill, waybill.nImageLen));
  if (!image) return;
  entry.SetObject(F::Waybill_pImageWaybill, image.get());
  entry.Set(F::Waybill_nImageLen, waybill.nImageLen);
}

// Counts the SDK reports are trusted only up to what its lists can hold.
void FillCodeList(JNIEnv* env, const QUORIN_RESULT_BCR_EX* codes, const JavaObject& target,
                  const FrameClasses& classes, OneDQuality oneDQuality) {
  ScopedLocalRef<jobject> owner(env, target.GetObject(F::FrameEx2_pstCodeListEx));
  if (!owner) return;
  const unsigned int count = codes ? std::min<unsigned int>(codes->nCodeNum, QUORIN_MAX_BCR_EX_NUM) : 0;
  jmap::Set(env, owner.get(), F::CodeList_nCodeNum, count);
  FillList(env, owner.get(), F::CodeList_stBcrInfoEx, ClassId::Code, classes.bcrInfo,
           codes ? codes->stBcrInfoEx : nullptr, count,
           [&](const JavaObject& entry, const QUORIN_BCR_INFO_EX& code) { WriteCodeEntry(env, entry, code, oneDQuality); });
}

}  // namespace

void SetEnumConstant(JNIEnv* env, const JavaObject& owner, jmap::FieldId field, ClassId id, jclass enumClass,
                     unsigned int number) {
  ScopedLocalRef<jobject> constant(env, jmap::EnumConstant(env, id, enumClass, number));
  if (constant) owner.SetObject(field, constant.get());
}

void FillWaybillList(JNIEnv* env, const QUORIN_WAYBILL_LIST* waybills, jobject target, const FrameClasses& classes) {
  ScopedLocalRef<jobject> list(env, jmap::JavaObject(env, target).GetObject(F::FrameEx2_pstWaybillList));
  if (!list) return;
  const JavaObject owner(env, list.get());
  const unsigned int count = waybills ? std::min<unsigned int>(waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM) : 0;
  owner.Set(F::WaybillList_nWaybillNum, count);
  if (waybills != nullptr) {
    SetEnumConstant(env, owner, F::WaybillList_enWaybillImageType, ClassId::ImageType, classes.imageType,
                    waybills->enWaybillImageType);
  }
  FillList(env, list.get(), F::WaybillList_stWaybillInfo, ClassId::Waybill, classes.waybillInfo,
           waybills ? waybills->stWaybillInfo : nullptr, count,
           [&](const JavaObject& entry, const QUORIN_WAYBILL_INFO& waybill) { WriteWaybillEntry(env, entry, waybill); });
}

bool EnumNumber(JNIEnv* env, const JavaObject& owner, jmap::FieldId field, ClassId enumClass, int* number) {
  ScopedLocalRef<jobject> constant(env, owner.GetObject(field));
  if (!constant) return false;
  return jmap::EnumNumber(env, constant.get(), enumClass, number);
}

LocalFrameClasses::LocalFrameClasses(JNIEnv* env)
    : env_(env),
      classes_{jmap::FindClass(env, ClassId::Code), jmap::FindClass(env, ClassId::Waybill),
               jmap::FindClass(env, ClassId::PixelType), jmap::FindClass(env, ClassId::ImageType)} {}

LocalFrameClasses::~LocalFrameClasses() {
  for (jclass cls : {classes_.bcrInfo, classes_.waybillInfo, classes_.pixelType, classes_.imageType}) {
    if (cls != nullptr) env_->DeleteLocalRef(cls);
  }
}

void FillImageOutInfoEx2(JNIEnv* env, const QUORIN_IMAGE_OUT_INFO_EX2& info, jobject target,
                         const FrameClasses& classes, OneDQuality oneDQuality) {
  if (env->ExceptionCheck()) return;  // a class lookup failed: that error is what Java sees
  const JavaObject frame(env, target);
  jmap::WriteMembers(frame, &info, jmap::kFrameSize);
  SetEnumConstant(env, frame, F::FrameEx2_enPixelType, ClassId::PixelType, classes.pixelType, info.enPixelType);
  jmap::WriteMembers(frame, &info, jmap::kFrameCounters);
  FillCodeList(env, info.pstCodeListEx, frame, classes, oneDQuality);
  FillWaybillList(env, info.pstWaybillList, target, classes);
  jmap::WriteMembers(frame, &info, jmap::kFrameOrigin);
}
