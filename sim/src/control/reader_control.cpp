// Controls of one reader behind a device handle: its feature nodes, the frames it produces, and
// its slower jobs (waybill extraction, algorithm parameters, device files).
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QuorinSim.h"
#include "QuorinSimJobs.h"
#include "control/live_handle.h"
#include "model/feature_nodes.h"
#include "model/handle_state.h"

namespace qsim {
namespace {

void DefineNode(void* handle, const char* control, const std::string& name, FeatureNode node) {
  OnReader(handle, control, [&](VirtualReader& reader) { reader.Nodes().Define(name, std::move(node)); });
}

}  // namespace

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

WaybillRequest LastWaybillRequest(void* handle) {
  const std::shared_ptr<HandleState> state = StateOf(handle);
  if (state == nullptr) {
    NotLive(__func__);
  }
  std::lock_guard<std::mutex> lock(state->mutex);
  return state->waybills.LastRequest();
}

bool WaybillEnabled(void* handle) {
  bool enabled = false;
  OnReader(handle, __func__, [&](VirtualReader& reader) { enabled = reader.WaybillsEnabled(); });
  return enabled;
}

void SetAlgorithmInt(void* handle, const std::string& key, int value, int min, int max) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Algorithm().Define(key, value, min, max); });
}

std::vector<unsigned char> DeviceFile(void* handle, const std::string& name) {
  std::vector<unsigned char> bytes;
  OnReader(handle, __func__, [&](VirtualReader& reader) { bytes = reader.Files().Get(name); });
  return bytes;
}

void PutDeviceFile(void* handle, const std::string& name, const std::vector<unsigned char>& bytes) {
  OnReader(handle, __func__, [&](VirtualReader& reader) { reader.Files().Put(name, bytes); });
}

}  // namespace qsim
