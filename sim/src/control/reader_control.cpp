// The control interface of the reader's slower jobs.
#include <chrono>
#include <stdexcept>
#include <string>

#include "QuorinSimJobs.h"
#include "model/handle_state.h"
#include "model/pace.h"
#include "model/reader_registry.h"

namespace qsim {
namespace {

// A test that names no live device handle has a mistake in it, and hears so at once.
[[noreturn]] void NotLive(const char* control) {
  throw std::invalid_argument(std::string("qsim::") + control + ": not a live device handle");
}

template <typename Work>
void OnReader(void* handle, const char* control, Work work) {
  if (!ReaderRegistry::Instance().WithReader(handle, work)) {
    NotLive(control);
  }
}

}  // namespace

WaybillRequest LastWaybillRequest(void* handle) {
  const std::shared_ptr<HandleJobs> jobs = JobsOf(handle);
  if (jobs == nullptr) {
    NotLive(__func__);
  }
  std::lock_guard<std::mutex> lock(jobs->mutex);
  return jobs->waybills.LastRequest();
}

bool WaybillEnabled(void* handle) {
  bool enabled = false;
  OnReader(handle, __func__, [&](VirtualReader& reader) { enabled = reader.WaybillsEnabled(); });
  return enabled;
}

void SetAlgorithmInt(void* handle, const std::string& key, int value, int min, int max) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Algorithm().Define(key, value, min, max); });
}

std::vector<unsigned char> DeviceFile(void* handle, const std::string& name) {
  std::vector<unsigned char> bytes;
  OnReader(handle, __func__, [&](VirtualReader& reader) { bytes = reader.Files().Get(name); });
  return bytes;
}

void PutDeviceFile(void* handle, const std::string& name, const std::vector<unsigned char>& bytes) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Files().Put(name, bytes); });
}

void SetTransferPace(unsigned int bytesPerChunk, unsigned int millisecondsPerChunk) {
  SetTransferPace(TransferPace{bytesPerChunk, std::chrono::milliseconds(millisecondsPerChunk)});
}

void SetUpgradeDuration(unsigned int milliseconds) { SetUpgradeDuration(std::chrono::milliseconds(milliseconds)); }

}  // namespace qsim
