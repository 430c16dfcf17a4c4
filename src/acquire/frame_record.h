// The frame result record (EX2) and its code and waybill lists, native to Java.
#pragma once

#include <cstddef>

#include "bridge.h"

namespace jclassname {
constexpr const char* kBcrInfoEx = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_BCR_INFO_EX";
constexpr const char* kWaybillInfo = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_WAYBILL_INFO";
constexpr const char* kPixelType = "QuorinCtrlWrapper/QuorinCtrlDefine$QuorinGvspPixelType";
constexpr const char* kImageType = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_TYPE";
}  // namespace jclassname

namespace jsig {
constexpr const char* kPixelType = "LQuorinCtrlWrapper/QuorinCtrlDefine$QuorinGvspPixelType;";
constexpr const char* kImageType = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_TYPE;";
constexpr const char* kResultBcrEx = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_RESULT_BCR_EX;";
constexpr const char* kWaybillList = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_WAYBILL_LIST;";
constexpr const char* kPointI = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_POINT_I;";
constexpr const char* kCodeInfo = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_CODE_INFO;";
}  // namespace jsig

// The four classes the conversion creates or looks constants up in. On an SDK thread they
// come from references saved at registration; a class lookup there would not see them.
struct FrameClasses {
  jclass bcrInfo;
  jclass waybillInfo;
  jclass pixelType;
  jclass imageType;
};

// The classes found by name on the calling Java thread, released when it goes.
class LocalFrameClasses {
 public:
  explicit LocalFrameClasses(JNIEnv* env);
  LocalFrameClasses(const LocalFrameClasses&) = delete;
  LocalFrameClasses& operator=(const LocalFrameClasses&) = delete;
  ~LocalFrameClasses();
  const FrameClasses& get() const { return classes_; }

 private:
  JNIEnv* env_;
  FrameClasses classes_;
};

enum class OneDQuality { kWritten, kLeftAsConstructed };

// The words of the quality record in layout order: grades are int32, scores travel as their
// float bits. The first 18 (ten grades, eight scores) are the ones a waybill request sends.
struct QualityField {
  const char* name;
  size_t offset;
  const char* sig;
};
constexpr size_t kQualityFieldCount = 32;
constexpr size_t kSentQualityFields = 18;
extern const QualityField kQualityFields[kQualityFieldCount];

// Sets a frame object's waybill list from the native list: count, image type and entries.
void FillWaybillList(JNIEnv* env, const QUORIN_WAYBILL_LIST* waybills, jobject target, const FrameClasses& classes);

// The SDK number an enumeration constant held in `field` carries (its getnValue()); false
// when the field is null.
bool EnumNumber(JNIEnv* env, jobject target, const char* field, const char* fieldSig, const char* className,
                int* number);

// Copies one native frame record into a Java QUORIN_IMAGE_OUT_INFO_EX2 object. The object's
// code and waybill lists are cleared and refilled; nothing is read past a list's capacity.
void FillImageOutInfoEx2(JNIEnv* env, const QUORIN_IMAGE_OUT_INFO_EX2& info, jobject target,
                         const FrameClasses& classes, OneDQuality oneDQuality);
