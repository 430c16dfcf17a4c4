// Firmware upgrade through the separate upgrade handle kept in the Handle's upHandle.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "device/device_record.h"

JNIEXPORT jobject JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1DiscoveryUpgDevice(JNIEnv* env, jclass) {
  QUORIN_DEVICE_INFO_LIST list{};
  // Unlike the enumerations, a failed discovery prints nothing.
  if (QUORIN_DiscoveryUpgDevice(&list) != 0) return nullptr;
  return NewDeviceList(env, list, SerialText::kAsStored);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1StartUpgradeDeviceByHandle(JNIEnv* env, jclass,
                                                                                           jobject handle,
                                                                                           jobject devInfo,
                                                                                           jstring filePath) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(devInfo, kStatusBadArgument);
  RETURN_IF_NULL(filePath, kStatusBadArgument);
  void* upgradeHandle = SdkHandleOf(env, handle, HandleKind::kUpgrade);
  QUORIN_DEVICE_INFO info;
  ReadDeviceInfo(env, devInfo, TextCopy::kUtf16Count, &info);
  ScopedUtfChars path(env, filePath);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  // Intended: the path stays pinned after the call, as this entry point is defined to keep it.
  return QUORIN_StartUpgradeDeviceByHandle(upgradeHandle, &info, path.leak());
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetUpgradeProcessByHandle(JNIEnv* env, jclass,
                                                                                          jobject handle,
                                                                                          jobject progress) {
  return GetIntoInteger(env, handle, progress, HandleKind::kUpgrade, QUORIN_GetUpgradeProcessByHandle);
}
