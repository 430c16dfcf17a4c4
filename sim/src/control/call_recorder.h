// The log of SDK calls and the statuses scripted in place of their work.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "QuorinSim.h"

namespace qsim {

// What a scripted function does in place of its work.
struct Scripted {
  unsigned int status = 0;
  std::optional<std::vector<unsigned char>> output;  // bytes for the function's output record

  bool ReplacesWork() const { return status != 0 || output.has_value(); }
};

class CallRecorder {
 public:
  static CallRecorder& Instance();

  // Logs the call and returns what is scripted for its function (nothing when none).
  Scripted Record(const Call& call);

  void Script(const std::string& function, unsigned int status);
  void ScriptOutput(const std::string& function, const std::vector<unsigned char>& bytes, unsigned int status);
  std::vector<Call> Calls() const;
  std::vector<Call> CallsTo(const std::string& function) const;
  void ClearCalls();
  void Reset();

 private:
  mutable std::mutex mutex_;
  std::vector<Call> calls_;
  std::map<std::string, unsigned int> scripts_;
  std::map<std::string, Scripted> outputs_;  // take precedence over plain statuses
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
