// A firmware upgrade run through an upgrade handle: the firmware file is checked at once, then a
// thread of the stand-in advances the progress and finally installs the new device version.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "model/status.h"

namespace qsim {

// The version a reader reports after installing a firmware file whose first line is `firstLine`:
// that line when it starts with 'V' (cut to the record's 31 characters), else `current` with its
// build number, the last run of digits, one higher.
std::string UpgradedVersion(const std::string& current, const std::string& firstLine);

class FirmwareUpgrade {
 public:
  using Install = std::function<void(const std::string& version)>;

  FirmwareUpgrade() = default;
  FirmwareUpgrade(const FirmwareUpgrade&) = delete;
  FirmwareUpgrade& operator=(const FirmwareUpgrade&) = delete;
  ~FirmwareUpgrade() { Close(); }

  // kBusy while an upgrade runs; kNoSuchFile or kBadFirmware (an empty file) at once, the progress
  // untouched; kInvalidHandle once closed. Otherwise the progress runs from 0 to 100 over the
  // current upgrade duration, and `install` gets the new version just before it reaches 100.
  Status Start(const std::string& firmwarePath, const std::string& currentVersion, Install install);
  unsigned int Progress() const;
  // Stops a running upgrade, which then installs nothing, and refuses later starts. Waits for its thread.
  void Close();

 private:
  void Run(const std::string& version, std::chrono::milliseconds duration, const Install& install);

  mutable std::mutex mutex_;
  std::condition_variable stop_;
  bool running_ = false;
  bool closed_ = false;
  unsigned int progress_ = 0;
  std::thread thread_;
};

}  // namespace qsim
