// The integer parameters of a reader's decoding algorithm, each with its own range.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "model/status.h"

namespace qsim {

class AlgorithmParams {
 public:
  // A decoding reader starts with DecodeTimeout, MaxCodeCount, CodeTypes and Sensitivity;
  // a reader without a decoder with none.
  explicit AlgorithmParams(bool decodes);

  Status Set(const std::string& key, int value);  // kUnknownNode, kOutOfRange
  Status Get(const std::string& key, int& value) const;
  void Define(const std::string& key, int value, int min, int max);  // test control: whatever the range

 private:
  struct Parameter {
    int value;
    int min;
    int max;
  };

  mutable std::mutex mutex_;
  std::map<std::string, Parameter> parameters_;
};

}  // namespace qsim
