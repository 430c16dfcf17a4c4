#include "model/algorithm_params.h"

#include "QuorinSim.h"

namespace qsim {
namespace {

// One bit per bar type the decoder knows: QR code, Data Matrix, Code 128, EAN-13, Code 39, PDF417.
constexpr int kAllCodeTypes = 0x3F;
constexpr int kReportedCodeTypes = 0x07;  // the types the frames carry

}  // namespace

AlgorithmParams::AlgorithmParams(bool decodes) {
  if (decodes) {
    parameters_ = {
        {"DecodeTimeout", {200, 10, 5000}},  // milliseconds
        {"MaxCodeCount", {3, 1, 300}},
        {"CodeTypes", {kReportedCodeTypes, 0, kAllCodeTypes}},
        {"Sensitivity", {0, -10, 10}},
    };
  }
}

Status AlgorithmParams::Set(const std::string& key, int value) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = parameters_.find(key);
  if (found == parameters_.end()) {
    return kUnknownNode;
  }
  Parameter& parameter = found->second;
  if (value < parameter.min || value > parameter.max) {
    return kOutOfRange;
  }
  parameter.value = value;
  return 0;
}

Status AlgorithmParams::Get(const std::string& key, int& value) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = parameters_.find(key);
  if (found == parameters_.end()) {
    return kUnknownNode;
  }
  value = found->second.value;
  return 0;
}

void AlgorithmParams::Define(const std::string& key, int value, int min, int max) {
  std::lock_guard<std::mutex> lock(mutex_);
  parameters_[key] = Parameter{value, min, max};
}

}  // namespace qsim
