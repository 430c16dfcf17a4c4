// The files a reader keeps, and their transfer to and from host files at the device's pace.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "QuorinCtrl.h"
#include "model/status.h"

namespace qsim {

class DeviceFiles {
 public:
  using Bytes = std::vector<unsigned char>;

  // "UserSet1" (the reader's start-up settings) and "DeviceLog", written for this reader.
  explicit DeviceFiles(const QUORIN_DEVICE_INFO& info);

  // Both run in chunks at the current transfer pace and return once done; one transfer at a time
  // (kBusy otherwise). kNoSuchFile: the host file cannot be read, or written; kNoSuchDeviceFile.
  Status Upload(const std::string& hostPath, const std::string& deviceName);    // host to device
  Status Download(const std::string& deviceName, const std::string& hostPath);  // device to host
  // The transfer under way, or else the last one; 0 of 0 before any.
  void Progress(QUORIN_FILE_ACCESS_PROGRESS& out) const;

  Bytes Get(const std::string& name) const;  // empty if there is none
  void Put(const std::string& name, Bytes bytes);

 private:
  // Claims the transfer, runs `start()`, then `move(offset, length)` chunk by chunk with the
  // pause after each, counting progress; stops at the first status that is not 0.
  template <typename Start, typename Move>
  Status Transfer(size_t total, Start start, Move move);

  mutable std::mutex mutex_;
  std::map<std::string, Bytes> files_;
  bool transferring_ = false;
  long long completed_ = 0;
  long long total_ = 0;
};

// The transfers of a device handle, on the reader it holds open; a device file needs a name
// (kBadParameter). They run outside the registry's lock, so that their progress can be asked meanwhile.
Status UploadFile(const void* handle, const char* hostPath, const char* deviceName);
Status DownloadFile(const void* handle, const char* deviceName, const char* hostPath);

}  // namespace qsim
