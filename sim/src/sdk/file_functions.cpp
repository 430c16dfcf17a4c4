// SDK functions that move files to and from a reader: its device files, and firmware upgrades
// through an upgrade handle.
#include "QuorinCtrl.h"
#include "model/device_files.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::FirmwareUpgrade;
using qsim::Model;
using qsim::Status;
using qsim::VirtualReader;

namespace {

const char* HostFile(const QUORIN_FILE_ACCESS* access) { return access != nullptr ? access->pUserFileName : nullptr; }
const char* DeviceFile(const QUORIN_FILE_ACCESS* access) { return access != nullptr ? access->pDevFileName : nullptr; }

CallBuilder FileCall(const char* function, void* handle, const QUORIN_FILE_ACCESS* access) {
  return CallBuilder(function)
      .Handle(handle)
      .Text(HostFile(access))
      .Text(DeviceFile(access))
      .Record(access, sizeof *access);
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_FileAccessRead(void* handle, QUORIN_FILE_ACCESS* pstFileAccess) {
  return Dispatch(FileCall(__func__, handle, pstFileAccess),
                  [&] { return qsim::DownloadFile(handle, DeviceFile(pstFileAccess), HostFile(pstFileAccess)); });
}

QUORIN_API int QUORIN_FileAccessWrite(void* handle, QUORIN_FILE_ACCESS* pstFileAccess) {
  return Dispatch(FileCall(__func__, handle, pstFileAccess),
                  [&] { return qsim::UploadFile(handle, HostFile(pstFileAccess), DeviceFile(pstFileAccess)); });
}

QUORIN_API int QUORIN_GetFileAccessProgress(void* handle, QUORIN_FILE_ACCESS_PROGRESS* pstProgress) {
  return DispatchInto(CallBuilder(__func__).Handle(handle), pstProgress, sizeof *pstProgress, [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      if (pstProgress == nullptr) {
        return qsim::kBadParameter;
      }
      reader.Files().Progress(*pstProgress);
      return Status{0};
    });
  });
}

QUORIN_API int QUORIN_StartUpgradeDeviceByHandle(void* handle, QUORIN_DEVICE_INFO* pstDevInfo,
                                                 const char* pFilePathName) {
  const CallBuilder call =
      CallBuilder(__func__).Handle(handle).Record(pstDevInfo, sizeof *pstDevInfo).Text(pFilePathName);
  return Dispatch(call, [&] { return Model().StartUpgrade(handle, pstDevInfo, pFilePathName); });
}

QUORIN_API int QUORIN_GetUpgradeProcessByHandle(void* handle, unsigned int* pnProcess) {
  return DispatchInto(CallBuilder(__func__).Handle(handle), pnProcess, sizeof *pnProcess, [&] {
    return Model().WithUpgrade(handle, [&](FirmwareUpgrade& upgrade) {
      if (pnProcess == nullptr) {
        return qsim::kBadParameter;
      }
      *pnProcess = upgrade.Progress();
      return Status{0};
    });
  });
}

}  // extern "C"
