// The control interface: what tests do to the stand-in besides calling the SDK.
#include <memory>
#include <stdexcept>
#include <string>

#include "QuorinSim.h"
#include "control/call_recorder.h"
#include "model/acquisition.h"
#include "model/feature_nodes.h"
#include "model/reader_registry.h"
#include "model/stand_in_thread.h"

namespace qsim {
namespace {

// Runs `work` on the reader behind a device handle; a test that names no live handle has a
// mistake in it, and hears so at once.
template <typename Work>
void OnReader(void* handle, const char* control, Work work) {
  if (!ReaderRegistry::Instance().WithReader(handle, work)) {
    throw std::invalid_argument(std::string("qsim::") + control + ": not a live device handle");
  }
}

void DefineNode(void* handle, const char* control, const std::string& name, FeatureNode node) {
  OnReader(handle, control, [&](VirtualReader& reader) { reader.Nodes().Define(name, std::move(node)); });
}

// The reader behind a device handle, for work that may run callbacks: that must happen outside the
// registry's lock, which a callback calling the SDK needs.
std::shared_ptr<VirtualReader> ReaderFor(void* handle, const char* control) {
  std::shared_ptr<VirtualReader> reader = ReaderRegistry::Instance().ReaderOf(handle);
  if (reader == nullptr) {
    throw std::invalid_argument(std::string("qsim::") + control + ": not a live device handle");
  }
  return reader;
}

// Runs `deliver` on the reader's callbacks on a thread of the stand-in; whether a callback ran.
template <typename Deliver>
bool Fire(void* handle, const char* control, Deliver deliver) {
  const std::shared_ptr<VirtualReader> reader = ReaderFor(handle, control);
  bool delivered = false;
  RunOnStandInThread([&] { delivered = deliver(reader->Callbacks()); });
  return delivered;
}

// What an event's data points to when it has none: a reader of zero bytes never gets null.
unsigned char kNoEventData[1] = {0};

}  // namespace

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

void SetIntNode(void* handle, const std::string& name, long long value, long long min, long long max,
                long long inc, Access access) {
  DefineNode(handle, __func__, name, {IntegerNode{value, min, max, inc}, access});
}

void SetFloatNode(void* handle, const std::string& name, float value, float min, float max, Access access) {
  DefineNode(handle, __func__, name, {FloatNode{value, min, max}, access});
}

void SetStringNode(void* handle, const std::string& name, const std::string& bytes, long long maxLength,
                   Access access) {
  DefineNode(handle, __func__, name, {StringNode{bytes, maxLength}, access});
}

void SetEnumNode(void* handle, const std::string& name, unsigned int value,
                 const std::vector<std::pair<std::string, unsigned int>>& entries, Access access) {
  DefineNode(handle, __func__, name, {EnumNode{value, entries}, access});
}

void SetBoolNode(void* handle, const std::string& name, bool value, Access access) {
  DefineNode(handle, __func__, name, {BoolNode{value}, access});
}

void RemoveNode(void* handle, const std::string& name) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Nodes().Remove(name); });
}

void SetAutoFrames(bool on) { Acquisition::SetAutoFrames(on); }

void PushFrame(void* handle, const Frame& frame, unsigned int channel) {
  ReaderFor(handle, __func__)->Frames().Push(frame, channel);
}

void RepeatFrame(void* handle, const Frame& frame, unsigned int channel) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Frames().Repeat(frame, channel); });
}

unsigned long long FramesDropped(void* handle, unsigned int channel) {
  unsigned long long dropped = 0;
  OnReader(handle, __func__, [&](VirtualReader& reader) { dropped = reader.Frames().Dropped(channel); });
  return dropped;
}

bool FireException(void* handle, unsigned int msgType) {
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Exception(msgType); });
}

bool FireEvent(void* handle, const QUORIN_EVENT_OUT_INFO& event, const std::vector<unsigned char>& data) {
  std::vector<unsigned char> bytes = data;  // the callback's own copy, valid for the call
  QUORIN_EVENT_OUT_INFO delivered = event;
  if (!bytes.empty() || event.pEventData == nullptr) {
    delivered.pEventData = bytes.empty() ? kNoEventData : bytes.data();
    delivered.nEventDataSize = static_cast<unsigned int>(bytes.size());
  }
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Event(delivered); });
}

bool FireTrigger(void* handle, const QUORIN_TRIGGER_INFO_DATA& trigger) {
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Trigger(trigger); });
}

bool FireImage(void* handle, const Frame& frame, unsigned int channel) {
  return ReaderFor(handle, __func__)->Frames().Fire(frame, channel);
}

void SimulateDisconnect(void* handle) {
  const std::shared_ptr<VirtualReader> reader = ReaderFor(handle, __func__);
  const Status status = ReaderRegistry::Instance().WithOpenReader(handle, [](VirtualReader& open) {
    open.Disconnect();
    return Status{0};
  });
  if (status == kDeviceGone) {
    return;  // lost before: its message went out then
  }
  if (status != 0) {
    throw std::invalid_argument("qsim::SimulateDisconnect: the handle does not hold its reader open");
  }
  reader->Settle();  // no frame follows the message
  RunOnStandInThread([&] { reader->Callbacks().Exception(QUORIN_EXCEPTION_DEV_DISCONNECT); });
}

unsigned long long CallbackDeliveries(void* handle, unsigned int channel) {
  return ReaderFor(handle, __func__)->Callbacks().ImageDeliveries(CheckedChannel(channel));
}

}  // namespace qsim
