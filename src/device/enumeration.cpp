// Device enumeration, the device query of an open handle, and the accessibility test.
#include <algorithm>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "device/device_record.h"

namespace {

// An ArrayList of new device objects, one per entry the SDK reported.
jobject DeviceList(JNIEnv* env, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial) {
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

// The list for a successful enumeration; null, with one diagnostic line, for a failed one.
jobject EnumerationResult(JNIEnv* env, int status, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial,
                          const char* failureFormat) {
  if (status != 0) {
    QN_RunInfo(failureFormat, static_cast<unsigned int>(status));
    return nullptr;
  }
  return DeviceList(env, list, serial);
}

}  // namespace

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1EnumDevices(JNIEnv* env, jclass) {
  QUORIN_DEVICE_INFO_LIST list{};
  const int status = QUORIN_EnumDevices(&list, QUORIN_GIGE_DEVICE);
  return EnumerationResult(env, status, list, SerialText::kUtf8OrGbk,
                           "JNI test QUORIN_EnumDevices error nRet[%#x]\r\n");
}

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1EnumIDDevices(JNIEnv* env, jclass) {
  QUORIN_DEVICE_INFO_LIST list{};
  const int status = QUORIN_EnumIDDevices(&list);
  return EnumerationResult(env, status, list, SerialText::kAsStored,
                           "JNI test QUORIN_EnumIDDevices error nRet[%#x]\r\n");
}

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1EnumCodeReader(JNIEnv* env, jclass) {
  QUORIN_DEVICE_INFO_LIST list{};
  const int status = QUORIN_EnumCodeReader(&list);
  return EnumerationResult(env, status, list, SerialText::kAsStored,
                           "JNI test QUORIN_EnumCodeReader error nRet[%#x]\r\n");
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetDeviceInfo(JNIEnv* env, jclass, jobject handle,
                                                                              jobject devInfo) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(devInfo, kStatusBadArgument);
  QUORIN_DEVICE_INFO info{};
  const int status = QUORIN_GetDeviceInfo(SdkHandleOf(env, handle), &info);
  if (status != 0) return status;
  ScopedLocalRef<jobject> gige(env, GetObjectFieldValue(env, devInfo, "stGigEInfo", jsig::kGigEDeviceInfo));
  WriteDeviceInfo(env, info, devInfo, gige.get(), SerialText::kAsStored);
  return kStatusOk;
}

JNIEXPORT jboolean JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1IsDeviceAccessible(JNIEnv* env, jclass,
                                                                                       jobject devInfo,
                                                                                       jint accessMode) {
  if (devInfo == nullptr) return JNI_FALSE;
  QUORIN_DEVICE_INFO info;
  ReadDeviceInfo(env, devInfo, TextCopy::kUtf16CountUtf8Maker, &info);
  return QUORIN_IsDeviceAccessible(&info, static_cast<unsigned int>(accessMode)) ? JNI_TRUE : JNI_FALSE;
}
