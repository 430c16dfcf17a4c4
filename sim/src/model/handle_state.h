// What the stand-in keeps for one device handle beside the registry: the time-out of its control
// channel, and the bytes handed out to it, valid until its next call of the same kind.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/reader_registry.h"
#include "model/status.h"
#include "model/waybill_cutter.h"

namespace qsim {

struct HandleState {
  std::mutex mutex;  // guards the rest: one call at a time per handle works on it
  unsigned int gvcpTimeoutMs = kDefaultGvcpTimeoutMs;
  std::vector<unsigned char> savedImage;  // behind pImageBuffer of the last QUORIN_SaveImage
  WaybillCutter waybills;

  // Encodes the request's image and points it at the bytes, which stay valid until the next save.
  Status SaveImage(QUORIN_SAVE_IMAGE_PARAM& param);
};

// The state of a live device handle, made on first use; null for any other handle. Never call it
// under the registry's lock: it asks the registry which handles still live.
std::shared_ptr<HandleState> StateOf(const void* handle);

enum class Needs { kOpenReader, kLiveHandle };

// 0 when `handle` may do a job: it holds its reader open, or for kLiveHandle is any live device
// handle. Otherwise kInvalidHandle, kNotOpen, or kDeviceGone while its open reader is lost.
Status Admit(const void* handle, Needs needs);

// Runs `work` on the handle's state under its lock, outside the registry's, once admitted.
template <typename Work>
Status WithHandleState(const void* handle, Needs needs, Work work) {
  const Status admitted = Admit(handle, needs);
  if (admitted != 0) {
    return admitted;
  }
  const std::shared_ptr<HandleState> state = StateOf(handle);
  if (state == nullptr) {
    return kInvalidHandle;  // destroyed since it was admitted
  }
  std::lock_guard<std::mutex> lock(state->mutex);
  return work(*state);
}

// Runs `work` on the handle's reader outside the registry's lock, once admitted: slow work whose
// progress may be asked meanwhile, or work that takes the reader's own locks.
template <typename Work>
Status WithAdmittedReader(const void* handle, Needs needs, Work work) {
  const Status admitted = Admit(handle, needs);
  if (admitted != 0) {
    return admitted;
  }
  const std::shared_ptr<VirtualReader> reader = ReaderRegistry::Instance().ReaderOf(handle);
  return reader == nullptr ? kInvalidHandle : work(*reader);
}

}  // namespace qsim
