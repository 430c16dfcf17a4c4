// The frame result record (EX2) and its code and waybill lists, native to Java.
#pragma once

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

// Copies one native frame record into a Java QUORIN_IMAGE_OUT_INFO_EX2 object. The object's
// code and waybill lists are cleared and refilled; nothing is read past a list's capacity.
void FillImageOutInfoEx2(JNIEnv* env, const QUORIN_IMAGE_OUT_INFO_EX2& info, jobject target,
                         const FrameClasses& classes, OneDQuality oneDQuality);
