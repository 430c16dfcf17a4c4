// The shape every SDK entry point shares: record the call, answer what is scripted if
// anything is, otherwise let the model do the work.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "control/call_recorder.h"
#include "model/reader_registry.h"

namespace qsim {

inline ReaderRegistry& Model() { return ReaderRegistry::Instance(); }

// `work` returns the model's status word; the SDK hands it out as an int.
template <typename Work>
int Dispatch(const CallBuilder& call, Work work) {
  const Scripted scripted = CallRecorder::Instance().Record(call.Get());
  return static_cast<int>(scripted.ReplacesWork() ? scripted.status : work());
}

// For a function that fills an output record: scripted bytes are copied into it (at most
// `size` of them) in place of the work.
template <typename Work>
int DispatchInto(const CallBuilder& call, void* record, size_t size, Work work) {
  const Scripted scripted = CallRecorder::Instance().Record(call.Get());
  if (scripted.output && record != nullptr) {
    std::memcpy(record, scripted.output->data(), std::min(size, scripted.output->size()));
  }
  return static_cast<int>(scripted.ReplacesWork() ? scripted.status : work());
}

}  // namespace qsim
