// Handle lifecycle: create, open, close, destroy, and the separate upgrade handle.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "device/device_record.h"
#include "notify/callback_context.h"

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1CreateHandle(JNIEnv* env, jclass,
                                                                                jobject devInfo) {
  if (devInfo == nullptr) {
    throwError(env, kStatusBadArgument, "QUORIN_CreateHandle pstDevInfo is null");
    return nullptr;
  }
  QUORIN_DEVICE_INFO info;
  ReadDeviceInfo(env, devInfo, TextCopy::kWholeText, &info);
  RETURN_IF_PENDING(env, nullptr);
  void* sdkHandle = nullptr;
  const int status = QUORIN_CreateHandle(&sdkHandle, &info);
  if (status != 0) {
    throwError(env, status, "QUORIN_CreateHandle create failed");
    return nullptr;
  }
  return NewHandleObject(env, HandleKind::kDevice, sdkHandle);
}

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1CreateHandleBySerialNumber(JNIEnv* env, jclass,
                                                                                              jstring serialNumber) {
  if (serialNumber == nullptr) {
    throwError(env, kStatusBadArgument, "QUORIN_CreateHandleBySerialNumber strSerialNumber is null");
    return nullptr;
  }
  ScopedUtfChars serial(env, serialNumber);
  RETURN_IF_PENDING(env, nullptr);
  void* sdkHandle = nullptr;
  const int status = QUORIN_CreateHandleBySerialNumber(&sdkHandle, serial.c_str());
  if (status != 0) {
    // Intended: on failure the characters stay pinned, as this path is defined to keep them.
    serial.leak();
    throwError(env, status, "QUORIN_CreateHandleBySerialNumber create failed");
    return nullptr;
  }
  return NewHandleObject(env, HandleKind::kDevice, sdkHandle);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1OpenDevice(JNIEnv* env, jclass, jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_OpenDevice(SdkHandleOf(env, handle));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1CloseDevice(JNIEnv* env, jclass, jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_CloseDevice(SdkHandleOf(env, handle));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1DestroyHandle(JNIEnv* env, jclass, jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  void* sdkHandle = SdkHandleOf(env, handle);
  // The callback records go first; Java has stopped grabbing and closed the device by now.
  ReleaseCallbackContexts(env, handle, sdkHandle);
  // hHandle keeps its old value: using the object again is the caller's error.
  return QUORIN_DestroyHandle(sdkHandle);
}

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1CreateHandleForUpgradeAndEncryption(JNIEnv* env,
                                                                                                       jclass) {
  void* upgradeHandle = nullptr;
  // Failure is silent here: no exception, no message, just null.
  if (QUORIN_CreateHandleForUpgradeAndEncryption(&upgradeHandle) != 0) return nullptr;
  return NewHandleObject(env, HandleKind::kUpgrade, upgradeHandle);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1DestroyHandleForUpgradeAndEncryption(JNIEnv* env,
                                                                                                     jclass,
                                                                                                     jobject handle) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_DestroyHandleForUpgradeAndEncryption(SdkHandleOf(env, handle, HandleKind::kUpgrade));
}
