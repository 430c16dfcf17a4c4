// SDK functions of the reader's other jobs: algorithm parameters, the feature description and node
// access modes, device files, network configuration and firmware upgrades.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "QuorinCtrl.h"
#include "model/genicam_xml.h"
#include "model/handle_state.h"
#include "sdk/dispatch.h"

using qsim::Admit;
using qsim::CallBuilder;
using qsim::DeviceFiles;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::FirmwareUpgrade;
using qsim::HandleJobs;
using qsim::Model;
using qsim::Needs;
using qsim::NodeMap;
using qsim::Status;
using qsim::VirtualReader;
using qsim::WithJobs;

namespace {

// Copies the document when it fits, then a terminating zero when there is room; *length receives
// its length, without the zero, either way.
Status DeliverDocument(const std::string& document, unsigned char* data, unsigned int size, unsigned int* length) {
  if (length == nullptr || (data == nullptr && size > 0)) {
    return qsim::kBadParameter;
  }
  *length = static_cast<unsigned int>(document.size());
  if (size < document.size()) {
    return qsim::kBufferTooSmall;
  }
  std::memcpy(data, document.data(), document.size());
  if (size > document.size()) {
    data[document.size()] = 0;
  }
  return 0;
}

std::string DescriptionOf(VirtualReader& reader) {
  const QUORIN_DEVICE_INFO info = reader.Info();
  return reader.Nodes().Inspect([&](const NodeMap::Table& table) { return qsim::GenICamXml(table, info); });
}

// A transfer runs outside the registry's lock, so that its progress can be asked meanwhile.
template <typename Transfer>
Status OnDeviceFiles(void* handle, const QUORIN_FILE_ACCESS* access, Transfer transfer) {
  const Status admitted = Admit(handle, Needs::kOpenReader);
  if (admitted != 0) {
    return admitted;
  }
  if (access == nullptr || access->pUserFileName == nullptr || access->pDevFileName == nullptr ||
      *access->pDevFileName == '\0') {
    return qsim::kBadParameter;
  }
  const std::shared_ptr<VirtualReader> reader = Model().ReaderOf(handle);
  return reader == nullptr ? qsim::kInvalidHandle : transfer(reader->Files(), access->pUserFileName, access->pDevFileName);
}

CallBuilder FileCall(const char* function, void* handle, const QUORIN_FILE_ACCESS* access) {
  return CallBuilder(function)
      .Handle(handle)
      .Text(access != nullptr ? access->pUserFileName : nullptr)
      .Text(access != nullptr ? access->pDevFileName : nullptr)
      .Record(access, sizeof *access);
}

// A GigE reader takes network settings from any host on its link, so the handle need not hold it open.
template <typename Change>
Status ChangeNetwork(void* handle, Change change) {
  const Status admitted = Admit(handle, Needs::kLiveHandle);
  if (admitted != 0) {
    return admitted;
  }
  const std::shared_ptr<VirtualReader> reader = Model().ReaderOf(handle);
  if (reader == nullptr) {
    return qsim::kInvalidHandle;
  }
  Status status = 0;
  reader->ChangeInfo([&](QUORIN_DEVICE_INFO& info) { status = change(info.stGigEInfo); });
  return status;
}

bool UsableAddress(unsigned int address) { return address != 0 && address != 0xFFFFFFFFu; }

// Ones from the top, then zeros: 255.255.255.0, never 255.0.255.0.
bool ContiguousMask(unsigned int mask) {
  const unsigned int host = ~mask;
  return mask != 0 && (host & (host + 1)) == 0;
}

bool KnownIpConfig(unsigned int type) {
  return type == QUORIN_IP_CFG_STATIC || type == QUORIN_IP_CFG_DHCP || type == QUORIN_IP_CFG_LLA;
}

std::string VersionOf(const QUORIN_DEVICE_INFO& info) {
  const char* version = info.stGigEInfo.chDeviceVersion;
  return std::string(version, strnlen(version, sizeof info.stGigEInfo.chDeviceVersion));
}

void SetVersion(QUORIN_GIGE_DEVICE_INFO& gige, const std::string& version) {
  std::memset(gige.chDeviceVersion, 0, sizeof gige.chDeviceVersion);
  std::memcpy(gige.chDeviceVersion, version.data(), std::min(version.size(), sizeof gige.chDeviceVersion - 1));
}

FirmwareUpgrade::Install InstallOn(std::shared_ptr<VirtualReader> reader) {
  return [reader](const std::string& version) {
    reader->ChangeInfo([&](QUORIN_DEVICE_INFO& info) { SetVersion(info.stGigEInfo, version); });
  };
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_Algorithm_SetIntValue(void* handle, const char* strKey, int nValue) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Text(strKey).Number(nValue), [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      return strKey == nullptr ? qsim::kBadParameter : reader.Algorithm().Set(strKey, nValue);
    });
  });
}

QUORIN_API int QUORIN_Algorithm_GetIntValue(void* handle, const char* strKey, int* pnValue) {
  return DispatchInto(CallBuilder(__func__).Handle(handle).Text(strKey), pnValue, sizeof *pnValue, [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      return strKey == nullptr || pnValue == nullptr ? qsim::kBadParameter : reader.Algorithm().Get(strKey, *pnValue);
    });
  });
}

// A scripted output stands for the document, delivered by the same rules.
QUORIN_API int QUORIN_XML_GetGenICamXML(void* handle, unsigned char* pData, unsigned int nDataSize,
                                        unsigned int* pnDataLen) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Number(nDataSize);
  const qsim::Scripted scripted = qsim::CallRecorder::Instance().Record(call.Get());
  if (scripted.output) {
    const std::string document(scripted.output->begin(), scripted.output->end());
    DeliverDocument(document, pData, nDataSize, pnDataLen);
  }
  if (scripted.ReplacesWork()) {
    return static_cast<int>(scripted.status);
  }
  return static_cast<int>(Model().WithOpenReader(handle, [&](VirtualReader& reader) {
    return DeliverDocument(DescriptionOf(reader), pData, nDataSize, pnDataLen);
  }));
}

QUORIN_API int QUORIN_XML_GetNodeAccessMode(void* handle, const char* strName, unsigned int* penAccessMode) {
  return DispatchInto(CallBuilder(__func__).Handle(handle).Text(strName), penAccessMode, sizeof *penAccessMode, [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      if (strName == nullptr || penAccessMode == nullptr) {
        return qsim::kBadParameter;
      }
      return reader.Nodes().Inspect([&](const NodeMap::Table& table) {
        auto found = table.find(strName);
        if (found == table.end()) {
          return qsim::kUnknownNode;
        }
        *penAccessMode = qsim::AccessModeOf(found->second.access);
        return Status{0};
      });
    });
  });
}

QUORIN_API int QUORIN_FileAccessRead(void* handle, QUORIN_FILE_ACCESS* pstFileAccess) {
  return Dispatch(FileCall(__func__, handle, pstFileAccess), [&] {
    return OnDeviceFiles(handle, pstFileAccess, [](DeviceFiles& files, const char* host, const char* device) {
      return files.Download(device, host);
    });
  });
}

QUORIN_API int QUORIN_FileAccessWrite(void* handle, QUORIN_FILE_ACCESS* pstFileAccess) {
  return Dispatch(FileCall(__func__, handle, pstFileAccess), [&] {
    return OnDeviceFiles(handle, pstFileAccess, [](DeviceFiles& files, const char* host, const char* device) {
      return files.Upload(host, device);
    });
  });
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

QUORIN_API int QUORIN_GIGE_ForceIp(void* handle, unsigned int nIP, unsigned int nSubNetMask,
                                   unsigned int nDefaultGateWay) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Number(nIP).Number(nSubNetMask).Number(nDefaultGateWay);
  return Dispatch(call, [&] {
    return ChangeNetwork(handle, [&](QUORIN_GIGE_DEVICE_INFO& gige) {
      if (!UsableAddress(nIP) || !ContiguousMask(nSubNetMask)) {
        return qsim::kBadParameter;
      }
      gige.nCurrentIp = nIP;
      gige.nCurrentSubNetMask = nSubNetMask;
      gige.nDefultGateWay = nDefaultGateWay;
      return Status{0};
    });
  });
}

QUORIN_API int QUORIN_GIGE_SetIpConfig(void* handle, unsigned int nType) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(nType), [&] {
    return ChangeNetwork(handle, [&](QUORIN_GIGE_DEVICE_INFO& gige) {
      if (!KnownIpConfig(nType)) {
        return qsim::kBadParameter;
      }
      if ((gige.nIpCfgOption & nType) == 0) {
        return qsim::kNotSupported;
      }
      gige.nIpCfgCurrent = nType;
      return Status{0};
    });
  });
}

QUORIN_API int QUORIN_GIGE_SetGvcpTimeout(void* handle, unsigned int nMillisec) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(nMillisec), [&] {
    return WithJobs(handle, Needs::kLiveHandle, [&](HandleJobs& jobs) {
      if (nMillisec > qsim::kMaxGvcpTimeoutMs) {
        return qsim::kOutOfRange;
      }
      jobs.gvcpTimeoutMs = nMillisec;
      return Status{0};
    });
  });
}

QUORIN_API int QUORIN_GIGE_GetGvcpTimeout(void* handle, unsigned int* pnMillisec) {
  return DispatchInto(CallBuilder(__func__).Handle(handle), pnMillisec, sizeof *pnMillisec, [&] {
    return WithJobs(handle, Needs::kLiveHandle, [&](HandleJobs& jobs) {
      if (pnMillisec == nullptr) {
        return qsim::kBadParameter;
      }
      *pnMillisec = jobs.gvcpTimeoutMs;
      return Status{0};
    });
  });
}

QUORIN_API int QUORIN_StartUpgradeDeviceByHandle(void* handle, QUORIN_DEVICE_INFO* pstDevInfo,
                                                 const char* pFilePathName) {
  const CallBuilder call =
      CallBuilder(__func__).Handle(handle).Record(pstDevInfo, sizeof *pstDevInfo).Text(pFilePathName);
  return Dispatch(call, [&] {
    // Found before the upgrade handle is: the registry's lock is held while the upgrade starts.
    const std::shared_ptr<VirtualReader> reader =
        pstDevInfo != nullptr ? Model().ReaderMatching(*pstDevInfo) : nullptr;
    return Model().WithUpgrade(handle, [&](FirmwareUpgrade& upgrade) {
      if (pstDevInfo == nullptr || pFilePathName == nullptr) {
        return qsim::kBadParameter;
      }
      if (reader == nullptr) {
        return qsim::kNoSuchDevice;
      }
      return upgrade.Start(pFilePathName, VersionOf(reader->Info()), InstallOn(reader));
    });
  });
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
