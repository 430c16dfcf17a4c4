#include "model/handle_state.h"

#include <iterator>
#include <unordered_map>
#include <utility>

#include "model/image_encoding.h"
#include "model/reader_registry.h"

namespace qsim {
namespace {

std::mutex g_mutex;  // taken before the registry's lock, never after it
std::unordered_map<const void*, std::shared_ptr<HandleState>> g_states;

bool Live(const void* handle) { return ReaderRegistry::Instance().ReaderOf(handle) != nullptr; }

// Handles are never reused, so the state of a destroyed one can only be dropped; it goes whenever
// state is made for a new handle.
void DropDeadHandles() {
  for (auto entry = g_states.begin(); entry != g_states.end();) {
    entry = Live(entry->first) ? std::next(entry) : g_states.erase(entry);
  }
}

}  // namespace

Status HandleState::SaveImage(QUORIN_SAVE_IMAGE_PARAM& param) {
  std::vector<unsigned char> encoded;
  const Status status = EncodeSavedImage(param, encoded);
  if (status == 0) {
    savedImage = std::move(encoded);  // the bytes handed out before stay valid until now
    param.pImageBuffer = savedImage.data();
    param.nImageLen = static_cast<unsigned int>(savedImage.size());
  }
  return status;
}

Status Admit(const void* handle, Needs needs) {
  ReaderRegistry& registry = ReaderRegistry::Instance();
  if (needs == Needs::kOpenReader) {
    return registry.WithOpenReader(handle, [](VirtualReader&) { return Status{0}; });
  }
  Status status = kInvalidHandle;
  registry.WithReader(handle, [&](VirtualReader& reader) {
    status = reader.IsOpenBy(handle) && reader.ConnectionLost() ? kDeviceGone : Status{0};
  });
  return status;
}

std::shared_ptr<HandleState> StateOf(const void* handle) {
  if (!Live(handle)) {
    return nullptr;
  }
  std::lock_guard<std::mutex> lock(g_mutex);
  auto found = g_states.find(handle);
  if (found != g_states.end()) {
    return found->second;
  }
  DropDeadHandles();
  return g_states[handle] = std::make_shared<HandleState>();
}

}  // namespace qsim
