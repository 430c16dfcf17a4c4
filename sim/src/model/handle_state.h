// What the SDK functions keep for one device handle beside the registry: the time-out of its
// control channel, and the bytes handed out to it, valid until its next call of the same kind.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "QuorinSim.h"
#include "model/status.h"
#include "model/waybill_cutter.h"

namespace qsim {

struct HandleJobs {
  std::mutex mutex;  // guards the rest: one call at a time per handle works on it
  unsigned int gvcpTimeoutMs = kDefaultGvcpTimeoutMs;
  std::vector<unsigned char> savedImage;  // behind pImageBuffer of the last QUORIN_SaveImage
  WaybillCutter waybills;
};

// The jobs of a live device handle, made on first use; null for any other handle. Never call it
// under the registry's lock: it asks the registry which handles still live.
std::shared_ptr<HandleJobs> JobsOf(const void* handle);

enum class Needs { kOpenReader, kLiveHandle };

// 0 when `handle` may do a job: it holds its reader open, or for kLiveHandle is any live device
// handle. Otherwise kInvalidHandle, kNotOpen, or kDeviceGone while its open reader is lost.
Status Admit(const void* handle, Needs needs);

// Runs `work` on the handle's jobs under their lock, outside the registry's, once admitted.
template <typename Work>
Status WithJobs(const void* handle, Needs needs, Work work) {
  const Status admitted = Admit(handle, needs);
  if (admitted != 0) {
    return admitted;
  }
  const std::shared_ptr<HandleJobs> jobs = JobsOf(handle);
  if (jobs == nullptr) {
    return kInvalidHandle;  // destroyed since it was admitted
  }
  std::lock_guard<std::mutex> lock(jobs->mutex);
  return work(*jobs);
}

}  // namespace qsim
