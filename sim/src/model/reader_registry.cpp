#include "model/reader_registry.h"

#include <algorithm>
#include <cstring>

#include "model/pace.h"

namespace qsim {

ReaderRegistry& ReaderRegistry::Instance() {
  static ReaderRegistry registry;
  return registry;
}

ReaderRegistry::ReaderRegistry() { Reset(); }

void ReaderRegistry::Reset() {
  RestoreDefaultPace();
  SetReaders(DefaultReaders());
  std::vector<std::shared_ptr<VirtualReader>> released;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    listed_.clear();
    devices_.ForEachLive([&](const void* handle, DeviceHandle& device) {
      if (device.reader->Close(handle) == 0) {
        released.push_back(device.reader);
      }
    });
    devices_.RetireAll();
    // Upgrade threads never take this lock, so waiting for them here is safe.
    upgrades_.ForEachLive([](const void*, UpgradeHandle& upgrade) { upgrade.upgrade.Close(); });
    upgrades_.RetireAll();
    sdkVersion_ = kDefaultSdkVersion;
    accessible_ = true;
  }
  for (const std::shared_ptr<VirtualReader>& reader : released) {
    reader->Settle();
  }
}

void ReaderRegistry::SetReaders(const std::vector<QUORIN_DEVICE_INFO>& readers) {
  std::vector<std::shared_ptr<VirtualReader>> models;
  for (const QUORIN_DEVICE_INFO& info : readers) {
    models.push_back(std::make_shared<VirtualReader>(info));
  }
  std::lock_guard<std::mutex> lock(mutex_);
  readers_ = std::move(models);
}

void ReaderRegistry::SetSdkVersion(unsigned int version) {
  std::lock_guard<std::mutex> lock(mutex_);
  sdkVersion_ = version;
}

void ReaderRegistry::SetAccessible(bool accessible) {
  std::lock_guard<std::mutex> lock(mutex_);
  accessible_ = accessible;
}

unsigned int ReaderRegistry::SdkVersion() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return sdkVersion_;
}

bool ReaderRegistry::Accessible() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return accessible_;
}

Status ReaderRegistry::List(QUORIN_DEVICE_INFO_LIST* list,
                            const std::function<bool(const VirtualReader&)>& wanted) {
  if (list == nullptr) {
    return kBadParameter;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  listed_.clear();
  for (const auto& reader : readers_) {
    if (wanted(*reader) && listed_.size() < QUORIN_MAX_DEVICE_NUM) {
      listed_.push_back(reader->Info());
    }
  }
  std::memset(list, 0, sizeof *list);
  list->nDeviceNum = static_cast<unsigned int>(listed_.size());
  for (size_t i = 0; i < listed_.size(); ++i) {
    list->pDeviceInfo[i] = &listed_[i];
  }
  return 0;
}

std::shared_ptr<VirtualReader> ReaderRegistry::FindReader(
    const std::function<bool(const VirtualReader&)>& match) const {
  auto found = std::find_if(readers_.begin(), readers_.end(),
                            [&](const auto& reader) { return match(*reader); });
  return found == readers_.end() ? nullptr : *found;
}

Status ReaderRegistry::CreateHandleOn(void** handle,
                                      const std::function<bool(const VirtualReader&)>& match) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::shared_ptr<VirtualReader> reader = FindReader(match);
  if (reader == nullptr) {
    return kNoSuchDevice;
  }
  *handle = devices_.Add(std::make_unique<DeviceHandle>(DeviceHandle{std::move(reader)}));
  return 0;
}

Status ReaderRegistry::CreateHandle(void** handle, const QUORIN_DEVICE_INFO* wanted) {
  if (handle == nullptr || wanted == nullptr) {
    return kBadParameter;
  }
  return CreateHandleOn(handle, [&](const VirtualReader& reader) { return reader.Matches(*wanted); });
}

Status ReaderRegistry::CreateHandleBySerialNumber(void** handle, const char* serialNumber) {
  if (handle == nullptr || serialNumber == nullptr || *serialNumber == '\0') {
    return kBadParameter;
  }
  const std::string serial = serialNumber;
  return CreateHandleOn(handle,
                        [&](const VirtualReader& reader) { return reader.SerialNumber() == serial; });
}

template <typename Then>
Status ReaderRegistry::CloseSettled(void* handle, Then then) {
  std::shared_ptr<VirtualReader> closed;
  const Status status = WithDevice(handle, [&](DeviceHandle& device) {
    const Status closing = device.reader->Close(handle);
    if (closing == 0) {
      closed = device.reader;
    }
    return then(closing);
  });
  if (closed != nullptr) {
    closed->Settle();
  }
  return status;
}

Status ReaderRegistry::DestroyHandle(void* handle) {
  // Destroying an open handle closes its reader, as unplugging the client would.
  return CloseSettled(handle, [&](Status) {
    devices_.Retire(handle);
    return Status{0};
  });
}

Status ReaderRegistry::OpenDevice(void* handle) {
  return WithDevice(handle, [&](DeviceHandle& device) { return device.reader->Open(handle); });
}

Status ReaderRegistry::CloseDevice(void* handle) {
  return CloseSettled(handle, [](Status closing) { return closing; });
}

Status ReaderRegistry::GetDeviceInfo(void* handle, QUORIN_DEVICE_INFO* info) {
  return WithDevice(handle, [&](DeviceHandle& device) {
    if (device.reader->IsOpenBy(handle) && device.reader->ConnectionLost()) {
      return kDeviceGone;
    }
    if (info == nullptr) {
      return kBadParameter;
    }
    *info = device.reader->Info();
    return Status{0};
  });
}

Status ReaderRegistry::FetchFrame(const void* handle, unsigned int channel, unsigned int timeoutMs,
                                  unsigned char** data, QUORIN_IMAGE_OUT_INFO_EX2* info) {
  std::shared_ptr<VirtualReader> reader;
  const Status status = WithDevice(handle, [&](DeviceHandle& device) {
    return OnOpenReader(handle, device, [&](VirtualReader&) {
      reader = device.reader;
      return Status{0};
    });
  });
  if (status != 0) {
    return status;
  }
  if (data == nullptr || info == nullptr) {
    return kBadParameter;
  }
  // The wait runs outside the registry's lock so that other handles are served meanwhile;
  // `reader` keeps the model alive should the handle be destroyed during it.
  return reader->Frames().Fetch(channel, timeoutMs, data, info);
}

std::shared_ptr<VirtualReader> ReaderRegistry::ReaderOf(const void* handle) {
  std::lock_guard<std::mutex> lock(mutex_);
  DeviceHandle* device = devices_.Find(handle);
  return device == nullptr ? nullptr : device->reader;
}

Status ReaderRegistry::CreateUpgradeHandle(void** handle) {
  if (handle == nullptr) {
    return kBadParameter;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  *handle = upgrades_.Add(std::make_unique<UpgradeHandle>());
  return 0;
}

Status ReaderRegistry::DestroyUpgradeHandle(void* handle) {
  std::lock_guard<std::mutex> lock(mutex_);
  UpgradeHandle* upgrade = upgrades_.Find(handle);
  if (upgrade == nullptr) {
    return kInvalidHandle;
  }
  upgrade->upgrade.Close();  // its thread never takes this lock
  upgrades_.Retire(handle);
  return 0;
}

Status ReaderRegistry::StartUpgrade(const void* handle, const QUORIN_DEVICE_INFO* target, const char* firmwarePath) {
  std::shared_ptr<VirtualReader> reader;  // found first: WithUpgrade holds the lock that finding takes
  if (target != nullptr) {
    std::lock_guard<std::mutex> lock(mutex_);
    reader = FindReader([&](const VirtualReader& candidate) { return candidate.Matches(*target); });
  }
  return WithUpgrade(handle, [&](FirmwareUpgrade& upgrade) {
    if (target == nullptr || firmwarePath == nullptr) {
      return kBadParameter;
    }
    if (reader == nullptr) {
      return kNoSuchDevice;
    }
    return upgrade.Start(firmwarePath, reader->DeviceVersion(),
                         [reader](const std::string& version) { reader->InstallVersion(version); });
  });
}

}  // namespace qsim
