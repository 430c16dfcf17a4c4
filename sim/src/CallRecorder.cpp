#include "CallRecorder.h"

#include <algorithm>
#include <iterator>

namespace qsim {

CallRecorder& CallRecorder::Instance() {
  static CallRecorder recorder;
  return recorder;
}

unsigned int CallRecorder::Record(const Call& call) {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
  auto scripted = scripts_.find(call.function);
  return scripted == scripts_.end() ? 0 : scripted->second;
}

void CallRecorder::Script(const std::string& function, unsigned int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (status == 0) {
    scripts_.erase(function);
  } else {
    scripts_[function] = status;
  }
}

std::vector<Call> CallRecorder::Calls() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return calls_;
}

std::vector<Call> CallRecorder::CallsTo(const std::string& function) const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<Call> matching;
  std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(matching),
               [&](const Call& call) { return call.function == function; });
  return matching;
}

void CallRecorder::ClearCalls() {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.clear();
}

void CallRecorder::Reset() {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.clear();
  scripts_.clear();
}

}  // namespace qsim
