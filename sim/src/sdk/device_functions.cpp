// SDK functions of the library, device enumeration and handle families.
#include "QuorinCtrl.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::Model;
using qsim::VirtualReader;

extern "C" {

QUORIN_API unsigned int QUORIN_GetSDKVersion(void) {
  const unsigned int scripted = qsim::CallRecorder::Instance().Record(CallBuilder(__func__).Get()).status;
  return scripted != 0 ? scripted : Model().SdkVersion();
}

QUORIN_API int QUORIN_EnumDevices(QUORIN_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType) {
  return Dispatch(CallBuilder(__func__).Number(nTLayerType), [&] {
    return Model().List(pstDevList,
                        [&](const VirtualReader& reader) { return reader.IsOnLayer(nTLayerType); });
  });
}

QUORIN_API int QUORIN_EnumIDDevices(QUORIN_DEVICE_INFO_LIST* pstDevList) {
  return Dispatch(CallBuilder(__func__), [&] {
    return Model().List(pstDevList, [](const VirtualReader&) { return true; });
  });
}

QUORIN_API int QUORIN_EnumCodeReader(QUORIN_DEVICE_INFO_LIST* pstDevList) {
  return Dispatch(CallBuilder(__func__), [&] {
    return Model().List(pstDevList, [](const VirtualReader& reader) { return reader.IsCodeReader(); });
  });
}

QUORIN_API int QUORIN_DiscoveryUpgDevice(QUORIN_DEVICE_INFO_LIST* pstDevList) {
  return Dispatch(CallBuilder(__func__), [&] {
    return Model().List(pstDevList, [](const VirtualReader&) { return true; });
  });
}

QUORIN_API bool QUORIN_IsDeviceAccessible(QUORIN_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode) {
  const CallBuilder call =
      CallBuilder(__func__).Record(pstDevInfo, sizeof *pstDevInfo).Number(nAccessMode);
  const unsigned int scripted = qsim::CallRecorder::Instance().Record(call.Get()).status;
  return scripted == 0 && pstDevInfo != nullptr && Model().Accessible();
}

QUORIN_API int QUORIN_GetDeviceInfo(void* handle, QUORIN_DEVICE_INFO* pstDevInfo) {
  return DispatchInto(CallBuilder(__func__).Handle(handle), pstDevInfo, sizeof *pstDevInfo,
                      [&] { return Model().GetDeviceInfo(handle, pstDevInfo); });
}

QUORIN_API int QUORIN_CreateHandle(void** handle, QUORIN_DEVICE_INFO* pstDevInfo) {
  return Dispatch(CallBuilder(__func__).Record(pstDevInfo, sizeof *pstDevInfo),
                  [&] { return Model().CreateHandle(handle, pstDevInfo); });
}

QUORIN_API int QUORIN_CreateHandleBySerialNumber(void** handle, const char* chSerialNumber) {
  return Dispatch(CallBuilder(__func__).Text(chSerialNumber),
                  [&] { return Model().CreateHandleBySerialNumber(handle, chSerialNumber); });
}

QUORIN_API int QUORIN_DestroyHandle(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle), [&] { return Model().DestroyHandle(handle); });
}

QUORIN_API int QUORIN_OpenDevice(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle), [&] { return Model().OpenDevice(handle); });
}

QUORIN_API int QUORIN_CloseDevice(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle), [&] { return Model().CloseDevice(handle); });
}

QUORIN_API int QUORIN_CreateHandleForUpgradeAndEncryption(void** handle) {
  return Dispatch(CallBuilder(__func__), [&] { return Model().CreateUpgradeHandle(handle); });
}

QUORIN_API int QUORIN_DestroyHandleForUpgradeAndEncryption(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle),
                  [&] { return Model().DestroyUpgradeHandle(handle); });
}

}  // extern "C"
