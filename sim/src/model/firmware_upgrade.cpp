#include "model/firmware_upgrade.h"

#include <algorithm>
#include <cctype>
#include <fstream>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/pace.h"

namespace qsim {
namespace {

constexpr size_t kVersionLength = sizeof(QUORIN_GIGE_DEVICE_INFO::chDeviceVersion) - 1;
constexpr std::chrono::milliseconds kShortestTick{1};
constexpr std::chrono::milliseconds kLongestTick{20};

// Reads the first line of a firmware file; an empty file is no firmware.
Status ReadFirmware(const std::string& path, std::string& firstLine) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return kNoSuchFile;
  }
  if (file.peek() == std::ifstream::traits_type::eof()) {
    return kBadFirmware;
  }
  std::getline(file, firstLine);
  if (!firstLine.empty() && firstLine.back() == '\r') {
    firstLine.pop_back();
  }
  return 0;
}

std::string BumpedBuild(std::string version) {
  const size_t last = version.find_last_of("0123456789");
  if (last == std::string::npos) {
    return (version + " build1").substr(0, kVersionLength);
  }
  // Carry through the run of digits ending at `last`, as in 199 -> 200.
  size_t digit = last + 1;
  while (digit-- > 0 && std::isdigit(static_cast<unsigned char>(version[digit]))) {
    if (version[digit] != '9') {
      ++version[digit];
      return version;
    }
    version[digit] = '0';
  }
  version.insert(digit + 1, "1");
  return version.substr(0, kVersionLength);
}

}  // namespace

std::string UpgradedVersion(const std::string& current, const std::string& firstLine) {
  if (!firstLine.empty() && firstLine[0] == 'V') {
    return firstLine.substr(0, kVersionLength);
  }
  return BumpedBuild(current);
}

Status FirmwareUpgrade::Start(const std::string& firmwarePath, const std::string& currentVersion,
                              Install install) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (closed_) {
    return kInvalidHandle;
  }
  if (running_) {
    return kBusy;
  }
  std::string firstLine;
  const Status status = ReadFirmware(firmwarePath, firstLine);
  if (status != 0) {
    return status;
  }
  if (thread_.joinable()) {
    thread_.join();  // the previous upgrade has finished: only its thread is left to reclaim
  }
  running_ = true;
  progress_ = 0;
  thread_ = std::thread(&FirmwareUpgrade::Run, this, UpgradedVersion(currentVersion, firstLine),
                        CurrentUpgradeDuration(), std::move(install));
  return 0;
}

unsigned int FirmwareUpgrade::Progress() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return progress_;
}

void FirmwareUpgrade::Close() {
  std::thread finishing;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    finishing = std::move(thread_);
  }
  stop_.notify_all();
  if (finishing.joinable()) {
    finishing.join();
  }
}

void FirmwareUpgrade::Run(const std::string& version, std::chrono::milliseconds duration, const Install& install) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  const std::chrono::milliseconds tick = std::clamp(duration / 100, kShortestTick, kLongestTick);
  std::unique_lock<std::mutex> lock(mutex_);
  for (auto elapsed = Clock::duration::zero(); elapsed < duration; elapsed = Clock::now() - begin) {
    progress_ = static_cast<unsigned int>(std::min<long long>(99, elapsed * 100 / duration));
    if (stop_.wait_for(lock, tick, [&] { return closed_; })) {
      running_ = false;
      return;
    }
  }
  lock.unlock();
  install(version);
  lock.lock();
  progress_ = 100;
  running_ = false;
}

}  // namespace qsim
