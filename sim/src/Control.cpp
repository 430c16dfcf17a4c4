// The control interface: what tests do to the stand-in besides calling the SDK.
#include "CallRecorder.h"
#include "QuorinSim.h"
#include "ReaderRegistry.h"

namespace qsim {

void Reset() {
  CallRecorder::Instance().Reset();
  ReaderRegistry::Instance().Reset();
}

void ScriptStatus(const std::string& function, unsigned int status) {
  CallRecorder::Instance().Script(function, status);
}

std::vector<Call> Calls() { return CallRecorder::Instance().Calls(); }

std::vector<Call> CallsTo(const std::string& function) {
  return CallRecorder::Instance().CallsTo(function);
}

void ClearCalls() { CallRecorder::Instance().ClearCalls(); }

void SetReaders(const std::vector<QUORIN_DEVICE_INFO>& readers) {
  ReaderRegistry::Instance().SetReaders(readers);
}

void SetSdkVersion(unsigned int version) { ReaderRegistry::Instance().SetSdkVersion(version); }

void SetAccessible(bool accessible) { ReaderRegistry::Instance().SetAccessible(accessible); }

}  // namespace qsim
