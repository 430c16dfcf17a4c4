// Controls of the stand-in as a whole: reset, scripted statuses and outputs, the call log, the
// readers it reports, and the pace of its slower jobs.
#include <chrono>
#include <string>
#include <vector>

#include "QuorinSim.h"
#include "control/call_recorder.h"
#include "model/acquisition.h"
#include "model/pace.h"
#include "model/reader_registry.h"

namespace qsim {

void Reset() {
  CallRecorder::Instance().Reset();
  ReaderRegistry::Instance().Reset();
  Acquisition::SetAutoFrames(true);
}

void ScriptStatus(const std::string& function, unsigned int status) {
  CallRecorder::Instance().Script(function, status);
}

void ScriptOutput(const std::string& function, const std::vector<unsigned char>& bytes, unsigned int status) {
  CallRecorder::Instance().ScriptOutput(function, bytes, status);
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

void SetAutoFrames(bool on) { Acquisition::SetAutoFrames(on); }

void SetTransferPace(unsigned int bytesPerChunk, unsigned int millisecondsPerChunk) {
  SetTransferPace(TransferPace{bytesPerChunk, std::chrono::milliseconds(millisecondsPerChunk)});
}

void SetUpgradeDuration(unsigned int milliseconds) { SetUpgradeDuration(std::chrono::milliseconds(milliseconds)); }

}  // namespace qsim
