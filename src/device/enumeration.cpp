// Device enumeration, the device query of an open handle, and the accessibility test.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "device/device_record.h"
#include "jmap/java_map.h"

namespace {

// The list for a successful enumeration; null, with one diagnostic line, for a failed one.
jobject EnumerationResult(JNIEnv* env, int status, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial,
                          const char* failureFormat) {
  if (status != 0) {
    QN_RunInfo(failureFormat, static_cast<unsigned int>(status));
    return nullptr;
  }
  return NewDeviceList(env, list, serial);
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
  ScopedLocalRef<jobject> gige(env, jmap::JavaObject(env, devInfo).GetObject(F::DeviceInfo_stGigEInfo));
  WriteDeviceInfo(env, info, devInfo, gige.get(), SerialText::kAsStored);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  return kStatusOk;
}

JNIEXPORT jboolean JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1IsDeviceAccessible(JNIEnv* env, jclass,
                                                                                       jobject devInfo,
                                                                                       jint accessMode) {
  if (devInfo == nullptr) return JNI_FALSE;
  QUORIN_DEVICE_INFO info;
  ReadDeviceInfo(env, devInfo, TextCopy::kUtf16CountUtf8Maker, &info);
  RETURN_IF_PENDING(env, JNI_FALSE);
  return QUORIN_IsDeviceAccessible(&info, static_cast<unsigned int>(accessMode)) ? JNI_TRUE : JNI_FALSE;
}
