#include "device/device_record.h"

#include "jmap/records.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using jmap::JavaObject;
using jmap::Member;

const char* TextIn(const QUORIN_GIGE_DEVICE_INFO& gige, const Member& text) {
  return reinterpret_cast<const char*>(&gige) + text.offset;
}
char* TextIn(QUORIN_GIGE_DEVICE_INFO* gige, const Member& text) { return reinterpret_cast<char*>(gige) + text.offset; }

// Only the serial number and the user-defined name may carry GBK bytes, and only the
// user-defined name is tested in every user. A text is bounded by its array even when the
// device left no terminator in it.
jstring GigETextToJava(JNIEnv* env, const QUORIN_GIGE_DEVICE_INFO& gige, const Member& text, SerialText serial) {
  RETURN_IF_PENDING(env, nullptr);
  const std::string terminated(TextIn(gige, text), strnlen(TextIn(gige, text), text.size));
  const char* chars = terminated.c_str();
  const bool decodes = text.field == F::GigEInfo_chUserDefinedName ||
                       (text.field == F::GigEInfo_chSerialNumber && serial == SerialText::kUtf8OrGbk);
  return decodes ? DeviceTextToJava(env, chars) : env->NewStringUTF(chars);
}

void WriteGigEInfo(JNIEnv* env, const QUORIN_GIGE_DEVICE_INFO& gige, jobject target, SerialText serial) {
  const JavaObject record(env, target);
  jmap::WriteMembers(record, &gige, jmap::kGigEWords);
  for (const Member& text : jmap::kGigETexts) {
    ScopedLocalRef<jstring> value(env, GigETextToJava(env, gige, text, serial));
    record.SetObject(text.field, value.get());
  }
}

[[noreturn]] void TextDoesNotFit(JNIEnv* env, jmap::FieldId field) {
  char message[160];
  std::snprintf(message, sizeof message, "QUORIN_DEVICE_INFO text does not fit its array: %s", jmap::Info(field).name);
  std::fprintf(stderr, "%s\n", message);
  env->FatalError(message);
  std::abort();  // FatalError does not return; this keeps the compiler sure of it
}

// The number of bytes a text rule copies, including the terminator for the whole-text rule.
size_t CopyCount(JNIEnv* env, jstring value, const ScopedUtfChars& chars, TextCopy rule, const Member& text) {
  switch (rule) {
    case TextCopy::kWholeText: return chars.size() + 1;
    case TextCopy::kUtf16CountUtf8Maker:
      if (text.field == F::GigEInfo_chManufacturerName) return static_cast<size_t>(env->GetStringUTFLength(value));
      [[fallthrough]];
    case TextCopy::kUtf16Count: return static_cast<size_t>(env->GetStringLength(value));
  }
  return 0;
}

void ReadGigEText(JNIEnv* env, const JavaObject& gige, const Member& text, TextCopy rule, QUORIN_GIGE_DEVICE_INFO* out) {
  ScopedLocalRef<jstring> value(env, static_cast<jstring>(gige.GetObject(text.field)));
  if (!value) return;  // a null text leaves the array's zero fill
  ScopedUtfChars chars(env, value.get());
  if (chars.c_str() == nullptr) return;
  const size_t count = CopyCount(env, value.get(), chars, rule, text);
  if (count > text.size) TextDoesNotFit(env, text.field);
  // Stops at the source's terminator and zero-fills up to `count`; a text as long as the array
  // fills it without a terminator.
  std::strncpy(TextIn(out, text), chars.c_str(), count);
}

}  // namespace

void WriteDeviceInfo(JNIEnv* env, const QUORIN_DEVICE_INFO& info, jobject device, jobject gige, SerialText serial) {
  jmap::WriteMembers(JavaObject(env, device), &info, jmap::kDeviceWordsWritten);
  if (gige != nullptr) WriteGigEInfo(env, info.stGigEInfo, gige, serial);
}

jobject NewDeviceInfoObject(JNIEnv* env, const QUORIN_DEVICE_INFO& info, SerialText serial) {
  jobject device = jmap::NewObject(env, jmap::ClassId::DeviceInfo);
  RETURN_IF_NULL(device, nullptr);
  // The transport type is not looked at: every record's area is read as GigE information.
  ScopedLocalRef<jobject> gige(env, jmap::NewObject(env, jmap::ClassId::GigEInfo));
  WriteDeviceInfo(env, info, device, gige.get(), serial);
  jmap::JavaObject(env, device).SetObject(F::DeviceInfo_stGigEInfo, gige.get());
  return device;
}

void ReadDeviceInfo(JNIEnv* env, jobject device, TextCopy rule, QUORIN_DEVICE_INFO* info) {
  *info = QUORIN_DEVICE_INFO{};
  const JavaObject record(env, device);
  jmap::ReadMembers(record, info, jmap::kDeviceWordsRead);
  ScopedLocalRef<jobject> gigeObject(env, record.GetObject(F::DeviceInfo_stGigEInfo));
  if (!gigeObject) return;  // no GigE object: its part of the record stays zero
  const JavaObject gige(env, gigeObject.get());
  for (const Member& text : jmap::kGigETexts) ReadGigEText(env, gige, text, rule, &info->stGigEInfo);
  jmap::ReadMembers(gige, &info->stGigEInfo, jmap::kGigEWords);
}

// An ArrayList of new device objects, one per entry the SDK reported.
jobject NewDeviceList(JNIEnv* env, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial) {
  ScopedLocalRef<jclass> listClass(env, jmap::FindClass(env, jmap::ClassId::ArrayList));
  RETURN_IF_NULL(listClass.get(), nullptr);
  jmethodID constructor = jmap::MethodOf(env, listClass.get(), jmap::ClassId::ArrayList, jmap::kNoArgConstructor);
  jmethodID add = jmap::MethodOf(env, listClass.get(), jmap::ClassId::ArrayList, jmap::kListAdd);
  RETURN_IF_NULL(constructor, nullptr);
  RETURN_IF_NULL(add, nullptr);
  ScopedLocalRef<jobject> devices(env, env->NewObject(listClass.get(), constructor));
  RETURN_IF_NULL(devices.get(), nullptr);
  // A count beyond the list's capacity is never read past its end.
  const unsigned int count = std::min<unsigned int>(list.nDeviceNum, QUORIN_MAX_DEVICE_NUM);
  for (unsigned int i = 0; i < count; ++i) {
    if (list.pDeviceInfo[i] == nullptr) continue;
    ScopedLocalRef<jobject> device(env, NewDeviceInfoObject(env, *list.pDeviceInfo[i], serial));
    RETURN_IF_NULL(device.get(), nullptr);
    env->CallBooleanMethod(devices.get(), add, device.get());
    if (env->ExceptionCheck()) return nullptr;
  }
  return devices.release();
}
