// The log of SDK calls and the statuses scripted in place of their work.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include "QuorinSim.h"

namespace qsim {

class CallRecorder {
 public:
  static CallRecorder& Instance();

  // Logs the call and returns the status scripted for its function (0 when none).
  unsigned int Record(const Call& call);

  void Script(const std::string& function, unsigned int status);
  std::vector<Call> Calls() const;
  std::vector<Call> CallsTo(const std::string& function) const;
  void ClearCalls();
  void Reset();

 private:
  mutable std::mutex mutex_;
  std::vector<Call> calls_;
  std::map<std::string, unsigned int> scripts_;
};

// Builds the log entry of one SDK call from its arguments.
class CallBuilder {
 public:
  explicit CallBuilder(const char* function) { call_.function = function; }

  CallBuilder& Handle(void* handle) {
    call_.handle = handle;
    return *this;
  }

  CallBuilder& Text(const char* text) {
    if (text != nullptr) {
      call_.texts.emplace_back(text);
    }
    return *this;
  }

  template <typename Integer>
  CallBuilder& Number(Integer value) {
    static_assert(std::is_integral_v<Integer>, "numbers are integer arguments");
    call_.numbers.push_back(static_cast<std::make_unsigned_t<Integer>>(value));
    return *this;
  }

  // Byte copy of an input record; a null record leaves it empty.
  CallBuilder& Record(const void* record, size_t size) {
    if (record != nullptr) {
      const auto* bytes = static_cast<const unsigned char*>(record);
      call_.record.assign(bytes, bytes + size);
    }
    return *this;
  }

  const Call& Get() const { return call_; }

 private:
  Call call_;
};

}  // namespace qsim
