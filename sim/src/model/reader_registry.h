// The readers the stand-in can see and the handles opened on them; every SDK
// function reaches the model through here, under one lock (fetches, and the waits of stopping
// and closing for producers and callbacks, happen outside it).
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "QuorinSim.h"
#include "model/firmware_upgrade.h"
#include "model/handle_table.h"
#include "model/virtual_reader.h"

namespace qsim {

// What a device handle points to.
struct DeviceHandle {
  std::shared_ptr<VirtualReader> reader;
};

// What an upgrade-and-encryption handle points to: the firmware upgrade it runs; it carries no reader.
struct UpgradeHandle {
  FirmwareUpgrade upgrade;
};

class ReaderRegistry {
 public:
  static ReaderRegistry& Instance();

  void Reset();
  void SetReaders(const std::vector<QUORIN_DEVICE_INFO>& readers);
  void SetSdkVersion(unsigned int version);
  void SetAccessible(bool accessible);
  unsigned int SdkVersion() const;
  bool Accessible() const;

  // Fills `list` with the readers `wanted` accepts; the records stay valid until the next listing.
  Status List(QUORIN_DEVICE_INFO_LIST* list, const std::function<bool(const VirtualReader&)>& wanted);

  Status CreateHandle(void** handle, const QUORIN_DEVICE_INFO* wanted);
  Status CreateHandleBySerialNumber(void** handle, const char* serialNumber);
  Status DestroyHandle(void* handle);
  Status OpenDevice(void* handle);
  Status CloseDevice(void* handle);
  Status GetDeviceInfo(void* handle, QUORIN_DEVICE_INFO* info);

  Status CreateUpgradeHandle(void** handle);
  Status DestroyUpgradeHandle(void* handle);  // stops its upgrade first

  // Starts the upgrade handle's upgrade of the reader `target` names, found as CreateHandle finds it.
  Status StartUpgrade(const void* handle, const QUORIN_DEVICE_INFO* target, const char* firmwarePath);

  // Runs `work` on the upgrade of a live upgrade handle, or answers kInvalidHandle.
  template <typename Work>
  Status WithUpgrade(const void* handle, Work work) {
    std::lock_guard<std::mutex> lock(mutex_);
    UpgradeHandle* upgrade = upgrades_.Find(handle);
    return upgrade == nullptr ? kInvalidHandle : work(upgrade->upgrade);
  }

  // Runs `work` on the reader that `handle` holds open; kInvalidHandle, kNotOpen or kDeviceGone otherwise.
  template <typename Work>
  Status WithOpenReader(const void* handle, Work work) {
    return WithDevice(handle, [&](DeviceHandle& device) { return OnOpenReader(handle, device, work); });
  }

  // As WithOpenReader; when `work` succeeds, then waits outside the lock until the reader's stopped
  // producer and its running callbacks are done, since they may call the SDK meanwhile.
  template <typename Work>
  Status WithOpenReaderSettled(const void* handle, Work work) {
    std::shared_ptr<VirtualReader> reader;
    const Status status = WithDevice(handle, [&](DeviceHandle& device) {
      reader = device.reader;
      return OnOpenReader(handle, device, work);
    });
    if (status == 0) {
      reader->Settle();
    }
    return status;
  }

  // The reader behind a live device handle, for work outside the lock; null for any other handle.
  std::shared_ptr<VirtualReader> ReaderOf(const void* handle);

  // Runs `work` on the reader behind `handle`, open or not; false for a handle that is not live.
  template <typename Work>
  bool WithReader(const void* handle, Work work) {
    return WithDevice(handle, [&](DeviceHandle& device) {
             work(*device.reader);
             return Status{0};
           }) == 0;
  }

  Status FetchFrame(const void* handle, unsigned int channel, unsigned int timeoutMs, unsigned char** data,
                    QUORIN_IMAGE_OUT_INFO_EX2* info);

 private:
  ReaderRegistry();

  std::shared_ptr<VirtualReader> FindReader(const std::function<bool(const VirtualReader&)>& match) const;
  Status CreateHandleOn(void** handle, const std::function<bool(const VirtualReader&)>& match);

  // Runs `work` on the live device handle, or answers kInvalidHandle.
  template <typename Work>
  Status WithDevice(const void* handle, Work work) {
    std::lock_guard<std::mutex> lock(mutex_);
    DeviceHandle* device = devices_.Find(handle);
    return device == nullptr ? kInvalidHandle : work(*device);
  }

  template <typename Work>
  static Status OnOpenReader(const void* handle, DeviceHandle& device, Work&& work) {
    VirtualReader& reader = *device.reader;
    if (!reader.IsOpenBy(handle)) {
      return kNotOpen;
    }
    return reader.ConnectionLost() ? kDeviceGone : work(reader);
  }

  // Closes the reader `handle` holds open, if it does, and then waits as WithOpenReaderSettled.
  template <typename Then>
  Status CloseSettled(void* handle, Then then);

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<VirtualReader>> readers_;
  std::vector<QUORIN_DEVICE_INFO> listed_;  // records handed out by the last listing
  HandleTable<DeviceHandle> devices_;
  HandleTable<UpgradeHandle> upgrades_;
  unsigned int sdkVersion_;
  bool accessible_ = true;
};

}  // namespace qsim
