// The shape every SDK entry point shares: record the call, answer a scripted
// status if there is one, otherwise let the model do the work.
#pragma once

#include "CallRecorder.h"
#include "ReaderRegistry.h"

namespace qsim {

inline ReaderRegistry& Model() { return ReaderRegistry::Instance(); }

// `work` returns the model's status word; the SDK hands it out as an int.
template <typename Work>
int Dispatch(const CallBuilder& call, Work work) {
  const unsigned int scripted = CallRecorder::Instance().Record(call.Get());
  return static_cast<int>(scripted != 0 ? scripted : work());
}

}  // namespace qsim
