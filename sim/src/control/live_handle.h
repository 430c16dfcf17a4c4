// How a control reaches the reader behind a device handle. A test that names no live device
// handle has a mistake in it, and hears so at once (std::invalid_argument).
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "model/reader_registry.h"

namespace qsim {

[[noreturn]] inline void NotLive(const char* control) {
  throw std::invalid_argument(std::string("qsim::") + control + ": not a live device handle");
}

// Runs `work` on the reader, open or not, under the registry's lock.
template <typename Work>
void OnReader(void* handle, const char* control, Work work) {
  if (!ReaderRegistry::Instance().WithReader(handle, work)) {
    NotLive(control);
  }
}

// The reader, for work that may run callbacks: that must happen outside the registry's lock,
// which a callback calling the SDK needs.
inline std::shared_ptr<VirtualReader> ReaderFor(void* handle, const char* control) {
  std::shared_ptr<VirtualReader> reader = ReaderRegistry::Instance().ReaderOf(handle);
  if (reader == nullptr) {
    NotLive(control);
  }
  return reader;
}

}  // namespace qsim
