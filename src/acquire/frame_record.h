// The frame result record (EX2) and its code and waybill lists, native to Java.
#pragma once

#include "bridge.h"
#include "jmap/java_map.h"

// The four classes the conversion creates or looks constants up in. On an SDK thread they
// come from references saved at registration; a class lookup there would not see them.
struct FrameClasses {
  jclass bcrInfo;
  jclass waybillInfo;
  jclass pixelType;
  jclass imageType;
};

// The classes found on the calling Java thread, released when it goes.
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

// Sets a frame object's waybill list from the native list: count, image type and entries.
void FillWaybillList(JNIEnv* env, const QUORIN_WAYBILL_LIST* waybills, jobject target, const FrameClasses& classes);

// The SDK number of the enumeration constant held in `field` (its getnValue()); false when the
// field is null or the number cannot be had.
bool EnumNumber(JNIEnv* env, const jmap::JavaObject& owner, jmap::FieldId field, jmap::ClassId enumClass, int* number);

// Sets `field` to the constant of `enumClass` carrying `number`; a number no constant carries
// leaves the field as it was.
void SetEnumConstant(JNIEnv* env, const jmap::JavaObject& owner, jmap::FieldId field, jmap::ClassId id,
                     jclass enumClass, unsigned int number);

// Copies one native frame record into a Java QUORIN_IMAGE_OUT_INFO_EX2 object. The object's
// code and waybill lists are cleared and refilled; nothing is read past a list's capacity.
void FillImageOutInfoEx2(JNIEnv* env, const QUORIN_IMAGE_OUT_INFO_EX2& info, jobject target,
                         const FrameClasses& classes, OneDQuality oneDQuality);
