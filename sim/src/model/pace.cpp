#include "model/pace.h"

#include <algorithm>
#include <mutex>

namespace qsim {
namespace {

constexpr std::chrono::milliseconds kDefaultUpgradeDuration{1000};

std::mutex g_mutex;
TransferPace g_pace;
std::chrono::milliseconds g_upgradeDuration = kDefaultUpgradeDuration;

}  // namespace

TransferPace CurrentTransferPace() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_pace;
}

void SetTransferPace(TransferPace pace) {
  pace.bytesPerChunk = std::max(pace.bytesPerChunk, 1u);
  std::lock_guard<std::mutex> lock(g_mutex);
  g_pace = pace;
}

std::chrono::milliseconds CurrentUpgradeDuration() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_upgradeDuration;
}

void SetUpgradeDuration(std::chrono::milliseconds duration) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_upgradeDuration = duration;
}

void RestoreDefaultPace() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_pace = TransferPace{};
  g_upgradeDuration = kDefaultUpgradeDuration;
}

}  // namespace qsim
