#include "device/device_record.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// The seven address and configuration words of the GigE sub-record.
struct GigEWord {
  const char* name;
  unsigned int QUORIN_GIGE_DEVICE_INFO::*member;
};
constexpr GigEWord kGigEWords[] = {
    {"nCurrentIp", &QUORIN_GIGE_DEVICE_INFO::nCurrentIp},
    {"nNetExport", &QUORIN_GIGE_DEVICE_INFO::nNetExport},
    {"nCurUserIP", &QUORIN_GIGE_DEVICE_INFO::nCurUserIP},
    {"nCurrentSubNetMask", &QUORIN_GIGE_DEVICE_INFO::nCurrentSubNetMask},
    {"nDefultGateWay", &QUORIN_GIGE_DEVICE_INFO::nDefultGateWay},
    {"nIpCfgOption", &QUORIN_GIGE_DEVICE_INFO::nIpCfgOption},
    {"nIpCfgCurrent", &QUORIN_GIGE_DEVICE_INFO::nIpCfgCurrent},
};

// The six text arrays of the GigE sub-record, in the order they are converted.
struct GigEText {
  const char* name;
  size_t offset;
  size_t size;
};
#define GIGE_TEXT(field) \
  GigEText { #field, offsetof(QUORIN_GIGE_DEVICE_INFO, field), sizeof(QUORIN_GIGE_DEVICE_INFO::field) }
const GigEText kManufacturerName = GIGE_TEXT(chManufacturerName);
const GigEText kSerialNumber = GIGE_TEXT(chSerialNumber);
const GigEText kUserDefinedName = GIGE_TEXT(chUserDefinedName);
const GigEText kGigETexts[] = {kManufacturerName, GIGE_TEXT(chModelName), GIGE_TEXT(chDeviceVersion),
                               GIGE_TEXT(chManufacturerSpecificInfo), kSerialNumber, kUserDefinedName};
#undef GIGE_TEXT

const char* TextIn(const QUORIN_GIGE_DEVICE_INFO& gige, const GigEText& text) {
  return reinterpret_cast<const char*>(&gige) + text.offset;
}
char* TextIn(QUORIN_GIGE_DEVICE_INFO* gige, const GigEText& text) {
  return reinterpret_cast<char*>(gige) + text.offset;
}

// Only the serial number and the user-defined name may carry GBK bytes, and only the
// user-defined name is tested in every user. A text is bounded by its array even when the
// device left no terminator in it.
jstring GigETextToJava(JNIEnv* env, const QUORIN_GIGE_DEVICE_INFO& gige, const GigEText& text, SerialText serial) {
  RETURN_IF_PENDING(env, nullptr);
  const std::string terminated(TextIn(gige, text), strnlen(TextIn(gige, text), text.size));
  const char* chars = terminated.c_str();
  const bool decodes = text.offset == kUserDefinedName.offset ||
                       (text.offset == kSerialNumber.offset && serial == SerialText::kUtf8OrGbk);
  return decodes ? DeviceTextToJava(env, chars) : env->NewStringUTF(chars);
}

void WriteGigEInfo(JNIEnv* env, const QUORIN_GIGE_DEVICE_INFO& gige, jobject target, SerialText serial) {
  for (const GigEWord& word : kGigEWords) SetFieldValue(env, target, word.name, jsig::kInt, gige.*word.member);
  for (const GigEText& text : kGigETexts) {
    ScopedLocalRef<jstring> value(env, GigETextToJava(env, gige, text, serial));
    SetFieldValue(env, target, text.name, jsig::kString, PointerWord(value.get()));
  }
}

void WriteDeviceWords(JNIEnv* env, const QUORIN_DEVICE_INFO& info, jobject device) {
  SetFieldValue(env, device, "nMacAddrHigh", jsig::kInt, info.nMacAddrHigh);
  SetFieldValue(env, device, "nMacAddrLow", jsig::kInt, info.nMacAddrLow);
  SetFieldValue(env, device, "nMajorVer", jsig::kShort, info.nMajorVer);
  SetFieldValue(env, device, "nMinorVer", jsig::kShort, info.nMinorVer);
  SetFieldValue(env, device, "nTLayerType", jsig::kInt, info.nTLayerType);
  // Any non-zero byte is true.
  SetFieldValue(env, device, "bCodeReader", jsig::kBoolean, info.bCodeReader != 0);
}

jobject NewObjectOf(JNIEnv* env, const char* className) {
  RETURN_IF_PENDING(env, nullptr);
  ScopedLocalRef<jclass> cls(env, env->FindClass(className));
  RETURN_IF_NULL(cls.get(), nullptr);
  jmethodID constructor = env->GetMethodID(cls.get(), "<init>", jsig::kNoArgConstructor);
  RETURN_IF_NULL(constructor, nullptr);
  return env->NewObject(cls.get(), constructor);
}

[[noreturn]] void TextDoesNotFit(JNIEnv* env, const char* field) {
  char message[160];
  std::snprintf(message, sizeof message, "QUORIN_DEVICE_INFO text does not fit its array: %s", field);
  std::fprintf(stderr, "%s\n", message);
  env->FatalError(message);
  std::abort();  // FatalError does not return; this keeps the compiler sure of it
}

// The number of bytes a text rule copies, including the terminator for the whole-text rule.
size_t CopyCount(JNIEnv* env, jstring value, const ScopedUtfChars& chars, TextCopy rule, const GigEText& text) {
  switch (rule) {
    case TextCopy::kWholeText: return chars.size() + 1;
    case TextCopy::kUtf16CountUtf8Maker:
      if (text.offset == kManufacturerName.offset) return static_cast<size_t>(env->GetStringUTFLength(value));
      [[fallthrough]];
    case TextCopy::kUtf16Count: return static_cast<size_t>(env->GetStringLength(value));
  }
  return 0;
}

void ReadGigEText(JNIEnv* env, jobject gige, const GigEText& text, TextCopy rule, QUORIN_GIGE_DEVICE_INFO* out) {
  ScopedLocalRef<jstring> value(env, static_cast<jstring>(GetObjectFieldValue(env, gige, text.name, jsig::kString)));
  if (!value) return;  // a null text leaves the array's zero fill
  ScopedUtfChars chars(env, value.get());
  if (chars.c_str() == nullptr) return;
  const size_t count = CopyCount(env, value.get(), chars, rule, text);
  if (count > text.size) TextDoesNotFit(env, text.name);
  // Stops at the source's terminator and zero-fills up to `count`; a text as long as the array
  // fills it without a terminator.
  std::strncpy(TextIn(out, text), chars.c_str(), count);
}

}  // namespace

void WriteDeviceInfo(JNIEnv* env, const QUORIN_DEVICE_INFO& info, jobject device, jobject gige, SerialText serial) {
  WriteDeviceWords(env, info, device);
  if (gige != nullptr) WriteGigEInfo(env, info.stGigEInfo, gige, serial);
}

jobject NewDeviceInfoObject(JNIEnv* env, const QUORIN_DEVICE_INFO& info, SerialText serial) {
  jobject device = NewObjectOf(env, jclassname::kDeviceInfo);
  RETURN_IF_NULL(device, nullptr);
  // The transport type is not looked at: every record's area is read as GigE information.
  ScopedLocalRef<jobject> gige(env, NewObjectOf(env, jclassname::kGigEDeviceInfo));
  WriteDeviceInfo(env, info, device, gige.get(), serial);
  SetFieldValue(env, device, "stGigEInfo", jsig::kGigEDeviceInfo, PointerWord(gige.get()));
  return device;
}

void ReadDeviceInfo(JNIEnv* env, jobject device, TextCopy rule, QUORIN_DEVICE_INFO* info) {
  *info = QUORIN_DEVICE_INFO{};
  info->nMacAddrHigh = static_cast<unsigned int>(GetFieldValue(env, device, "nMacAddrHigh", jsig::kInt));
  info->nMacAddrLow = static_cast<unsigned int>(GetFieldValue(env, device, "nMacAddrLow", jsig::kInt));
  info->nTLayerType = static_cast<unsigned int>(GetFieldValue(env, device, "nTLayerType", jsig::kInt));
  info->nMajorVer = static_cast<unsigned short>(GetFieldValue(env, device, "nMajorVer", jsig::kShort));
  info->nMinorVer = static_cast<unsigned short>(GetFieldValue(env, device, "nMinorVer", jsig::kShort));
  info->bCodeReader = GetFieldValue(env, device, "bCodeReader", jsig::kBoolean) != 0 ? 1 : 0;

  ScopedLocalRef<jobject> gige(env, GetObjectFieldValue(env, device, "stGigEInfo", jsig::kGigEDeviceInfo));
  if (!gige) return;  // no GigE object: its part of the record stays zero
  for (const GigEText& text : kGigETexts) ReadGigEText(env, gige.get(), text, rule, &info->stGigEInfo);
  for (const GigEWord& word : kGigEWords) {
    info->stGigEInfo.*word.member = static_cast<unsigned int>(GetFieldValue(env, gige.get(), word.name, jsig::kInt));
  }
}

// An ArrayList of new device objects, one per entry the SDK reported.
jobject NewDeviceList(JNIEnv* env, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial) {
  ScopedLocalRef<jclass> listClass(env, env->FindClass(jclassname::kArrayList));
  RETURN_IF_NULL(listClass.get(), nullptr);
  jmethodID constructor = env->GetMethodID(listClass.get(), "<init>", jsig::kNoArgConstructor);
  jmethodID add = env->GetMethodID(listClass.get(), "add", "(Ljava/lang/Object;)Z");
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
