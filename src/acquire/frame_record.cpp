#include "acquire/frame_record.h"

#include "acquire/java_list.h"

#include <algorithm>
#include <cstddef>

namespace {

unsigned long long Word(unsigned int value) { return value; }
unsigned long long Word(int value) { return static_cast<uint32_t>(value); }

void SetEnumConstant(JNIEnv* env, jobject target, const char* field, const char* fieldSig, jclass enumClass,
                     const char* enumClassName, unsigned int number) {
  ScopedLocalRef<jobject> constant(env, GetEnumObject(env, enumClass, enumClassName, "nValue", jsig::kInt, number));
  // A number no constant carries leaves the field as it was.
  if (constant) SetFieldValue(env, target, field, fieldSig, PointerWord(constant.get()));
}

// The code text, bounded by its array even when the SDK left no terminator in it.
jstring CodeTextToJava(JNIEnv* env, const char (&code)[sizeof(QUORIN_BCR_INFO_EX::chCode)]) {
  if (std::memchr(code, '\0', sizeof code) != nullptr) return DeviceTextToJava(env, code);
  std::string terminated(code, sizeof code);
  return DeviceTextToJava(env, terminated.c_str());
}

void WriteCorner(JNIEnv* env, jobject entry, const char* field, const QUORIN_POINT_I& point) {
  ScopedLocalRef<jobject> corner(env, GetObjectFieldValue(env, entry, field, jsig::kPointI));
  if (!corner) return;
  SetFieldValue(env, corner.get(), "nX", jsig::kInt, Word(point.nX));
  SetFieldValue(env, corner.get(), "nY", jsig::kInt, Word(point.nY));
}

}  // namespace

#define GRADE(field) QualityField{#field, offsetof(QUORIN_CODE_INFO, field), jsig::kInt}
#define SCORE(field) QualityField{#field, offsetof(QUORIN_CODE_INFO, field), jsig::kFloat}
const QualityField kQualityFields[kQualityFieldCount] = {
    GRADE(nOverQuality), GRADE(nDeCode),       GRADE(nSCGrade),      GRADE(nModGrade),     GRADE(nFPDGrade),
    GRADE(nANGrade),     GRADE(nGNGrade),      GRADE(nUECGrade),     GRADE(nPGHGrade),     GRADE(nPGVGrade),
    SCORE(fSCScore),     SCORE(fModScore),     SCORE(fFPDScore),     SCORE(fAnScore),      SCORE(fGNScore),
    SCORE(fUECScore),    SCORE(fPGHScore),     SCORE(fPGVScore),     GRADE(nRMGrade),      SCORE(fRMScore),
    GRADE(n1DEdgeGrade), GRADE(n1DMinRGrade),  GRADE(n1DMinEGrade),  GRADE(n1DDcdGrade),   GRADE(n1DDefGrade),
    GRADE(n1DQZGrade),   SCORE(f1DEdgeScore),  SCORE(f1DMinRScore),  SCORE(f1DMinEScore),  SCORE(f1DDcdScore),
    SCORE(f1DDefScore),  SCORE(f1DQZScore),
};
#undef GRADE
#undef SCORE

namespace {

void WriteCodeQuality(JNIEnv* env, jobject entry, const QUORIN_CODE_INFO& quality) {
  ScopedLocalRef<jobject> target(env, GetObjectFieldValue(env, entry, "stCodeQuality", jsig::kCodeInfo));
  if (!target) return;
  for (const QualityField& field : kQualityFields) {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const char*>(&quality) + field.offset, sizeof word);
    SetFieldValue(env, target.get(), field.name, field.sig, word);
  }
}

void WriteCodeEntry(JNIEnv* env, jobject entry, const QUORIN_BCR_INFO_EX& code, OneDQuality oneDQuality) {
  SetFieldValue(env, entry, "nID", jsig::kInt, Word(code.nID));
  ScopedLocalRef<jstring> text(env, CodeTextToJava(env, code.chCode));
  SetFieldValue(env, entry, "chCode", jsig::kString, PointerWord(text.get()));
  SetFieldValue(env, entry, "nLen", jsig::kInt, Word(code.nLen));
  SetFieldValue(env, entry, "nBarType", jsig::kInt, Word(code.nBarType));
  WriteCorner(env, entry, "stCornerLeftTop", code.stCornerLeftTop);
  WriteCorner(env, entry, "stCornerRightTop", code.stCornerRightTop);
  WriteCorner(env, entry, "stCornerRightBottom", code.stCornerRightBottom);
  WriteCorner(env, entry, "stCornerLeftBottom", code.stCornerLeftBottom);
  WriteCodeQuality(env, entry, code.stCodeQuality);
  SetFieldValue(env, entry, "nAngle", jsig::kInt, Word(code.nAngle));
  SetFieldValue(env, entry, "nMainPackageId", jsig::kInt, Word(code.nMainPackageId));
  SetFieldValue(env, entry, "nSubPackageId", jsig::kInt, Word(code.nSubPackageId));
  SetFieldValue(env, entry, "sAppearCount", jsig::kShort, code.sAppearCount);
  SetFieldValue(env, entry, "sPPM", jsig::kShort, code.sPPM);
  SetFieldValue(env, entry, "sAlgoCost", jsig::kShort, code.sAlgoCost);
  SetFieldValue(env, entry, "sSharpness", jsig::kShort, code.sSharpness);
  SetFieldValue(env, entry, "bIsGetQuality", jsig::kBoolean, code.bIsGetQuality);
  SetFieldValue(env, entry, "nIDRScore", jsig::kInt, Word(code.nIDRScore));
  if (oneDQuality == OneDQuality::kWritten) {
    SetFieldValue(env, entry, "n1DIsGetQuality", jsig::kInt, Word(code.n1DIsGetQuality));
  }
  SetFieldValue(env, entry, "nTotalProcCost", jsig::kInt, Word(code.nTotalProcCost));
  SetFieldValue(env, entry, "nTriggerTimeTvHigh", jsig::kInt, Word(code.nTriggerTimeTvHigh));
  SetFieldValue(env, entry, "nTriggerTimeTvLow", jsig::kInt, Word(code.nTriggerTimeTvLow));
  SetFieldValue(env, entry, "nTriggerTimeUtvHigh", jsig::kInt, Word(code.nTriggerTimeUtvHigh));
  SetFieldValue(env, entry, "nTriggerTimeUtvLow", jsig::kInt, Word(code.nTriggerTimeUtvLow));
}

void WriteWaybillEntry(JNIEnv* env, jobject entry, const QUORIN_WAYBILL_INFO& waybill) {
  SetFieldValue(env, entry, "fCenterX", jsig::kFloat, FloatBits(waybill.fCenterX));
  SetFieldValue(env, entry, "fCenterY", jsig::kFloat, FloatBits(waybill.fCenterY));
  SetFieldValue(env, entry, "fWidth", jsig::kFloat, FloatBits(waybill.fWidth));
  SetFieldValue(env, entry, "fHeight", jsig::kFloat, FloatBits(waybill.fHeight));
  SetFieldValue(env, entry, "fAngle", jsig::kFloat, FloatBits(waybill.fAngle));
  SetFieldValue(env, entry, "fConfidence", jsig::kFloat, FloatBits(waybill.fConfidence));
  ScopedLocalRef<jbyteArray> image(env, NewByteArrayOf(env, waybill.pImageWaybill, waybill.nImageLen));
  if (!image) return;
  SetFieldValue(env, entry, "pImageWaybill", jsig::kByteArray, PointerWord(image.get()));
  SetFieldValue(env, entry, "nImageLen", jsig::kInt, Word(waybill.nImageLen));
}

// Counts the SDK reports are trusted only up to what its lists can hold.
void FillCodeList(JNIEnv* env, const QUORIN_RESULT_BCR_EX* codes, jobject target, const FrameClasses& classes,
                  OneDQuality oneDQuality) {
  ScopedLocalRef<jobject> owner(env, GetObjectFieldValue(env, target, "pstCodeListEx", jsig::kResultBcrEx));
  if (!owner) return;
  const unsigned int count = codes ? std::min<unsigned int>(codes->nCodeNum, QUORIN_MAX_BCR_EX_NUM) : 0;
  SetFieldValue(env, owner.get(), "nCodeNum", jsig::kInt, count);
  FillList(env, owner.get(), "stBcrInfoEx", classes.bcrInfo, codes ? codes->stBcrInfoEx : nullptr, count,
           [&](jobject entry, const QUORIN_BCR_INFO_EX& code) { WriteCodeEntry(env, entry, code, oneDQuality); });
}

}  // namespace

void FillWaybillList(JNIEnv* env, const QUORIN_WAYBILL_LIST* waybills, jobject target, const FrameClasses& classes) {
  ScopedLocalRef<jobject> owner(env, GetObjectFieldValue(env, target, "pstWaybillList", jsig::kWaybillList));
  if (!owner) return;
  const unsigned int count = waybills ? std::min<unsigned int>(waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM) : 0;
  SetFieldValue(env, owner.get(), "nWaybillNum", jsig::kInt, count);
  if (waybills != nullptr) {
    SetEnumConstant(env, owner.get(), "enWaybillImageType", jsig::kImageType, classes.imageType,
                    jclassname::kImageType, waybills->enWaybillImageType);
  }
  FillList(env, owner.get(), "stWaybillInfo", classes.waybillInfo, waybills ? waybills->stWaybillInfo : nullptr,
           count, [&](jobject entry, const QUORIN_WAYBILL_INFO& waybill) { WriteWaybillEntry(env, entry, waybill); });
}

bool EnumNumber(JNIEnv* env, jobject target, const char* field, const char* fieldSig, const char* className,
                int* number) {
  ScopedLocalRef<jobject> constant(env, GetObjectFieldValue(env, target, field, fieldSig));
  if (!constant) return false;
  ScopedLocalRef<jclass> enumClass(env, env->FindClass(className));
  if (!enumClass) return false;
  jmethodID getnValue = env->GetMethodID(enumClass.get(), "getnValue", "()I");
  if (getnValue == nullptr) return false;
  *number = env->CallIntMethod(constant.get(), getnValue);
  return !env->ExceptionCheck();
}

namespace {
// A class found by name, or null without a lookup once an earlier one has failed.
jclass FindClassUnlessPending(JNIEnv* env, const char* name) {
  return env->ExceptionCheck() ? nullptr : env->FindClass(name);
}
}  // namespace

LocalFrameClasses::LocalFrameClasses(JNIEnv* env)
    : env_(env),
      classes_{FindClassUnlessPending(env, jclassname::kBcrInfoEx), FindClassUnlessPending(env, jclassname::kWaybillInfo),
               FindClassUnlessPending(env, jclassname::kPixelType), FindClassUnlessPending(env, jclassname::kImageType)} {}

LocalFrameClasses::~LocalFrameClasses() {
  for (jclass cls : {classes_.bcrInfo, classes_.waybillInfo, classes_.pixelType, classes_.imageType}) {
    if (cls != nullptr) env_->DeleteLocalRef(cls);
  }
}

void FillImageOutInfoEx2(JNIEnv* env, const QUORIN_IMAGE_OUT_INFO_EX2& info, jobject target,
                         const FrameClasses& classes, OneDQuality oneDQuality) {
  if (env->ExceptionCheck()) return;  // a class lookup failed: that error is what Java sees
  SetFieldValue(env, target, "nWidth", jsig::kShort, info.nWidth);
  SetFieldValue(env, target, "nHeight", jsig::kShort, info.nHeight);
  SetEnumConstant(env, target, "enPixelType", jsig::kPixelType, classes.pixelType, jclassname::kPixelType,
                  info.enPixelType);
  SetFieldValue(env, target, "nTriggerIndex", jsig::kInt, info.nTriggerIndex);
  SetFieldValue(env, target, "nFrameNum", jsig::kInt, info.nFrameNum);
  SetFieldValue(env, target, "nFrameLen", jsig::kInt, info.nFrameLen);
  SetFieldValue(env, target, "nTimeStampHigh", jsig::kInt, info.nTimeStampHigh);
  SetFieldValue(env, target, "nTimeStampLow", jsig::kInt, info.nTimeStampLow);
  SetFieldValue(env, target, "bFlaseTrigger", jsig::kInt, info.bFlaseTrigger);
  SetFieldValue(env, target, "nFocusScore", jsig::kInt, info.nFocusScore);
  SetFieldValue(env, target, "bIsGetCode", jsig::kBoolean, info.bIsGetCode);
  FillCodeList(env, info.pstCodeListEx, target, classes, oneDQuality);
  FillWaybillList(env, info.pstWaybillList, target, classes);
  SetFieldValue(env, target, "nEventID", jsig::kInt, info.nEventID);
  SetFieldValue(env, target, "nChannelID", jsig::kInt, info.nChannelID);
  SetFieldValue(env, target, "nImageCost", jsig::kInt, info.nImageCost);
}
