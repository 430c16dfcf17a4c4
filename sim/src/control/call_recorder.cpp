#include "control/call_recorder.h"

#include <algorithm>
#include <iterator>

namespace qsim {

CallRecorder& CallRecorder::Instance() {
  static CallRecorder recorder;
  return recorder;
}

Scripted CallRecorder::Record(const Call& call) {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
  auto output = outputs_.find(call.function);
  if (output != outputs_.end()) {
    return output->second;
  }
  auto status = scripts_.find(call.function);
  return Scripted{status == scripts_.end() ? 0 : status->second, std::nullopt};
}

void CallRecorder::Script(const std::string& function, unsigned int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (status == 0) {
    scripts_.erase(function);
  } else {
    scripts_[function] = status;
  }
}

void CallRecorder::ScriptOutput(const std::string& function, const std::vector<unsigned char>& bytes,
                                unsigned int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (bytes.empty()) {
    outputs_.erase(function);
  } else {
    outputs_[function] = Scripted{status, bytes};
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
  outputs_.clear();
}

}  // namespace qsim
