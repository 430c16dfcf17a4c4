#include "model/handle_state.h"

#include <iterator>
#include <unordered_map>

#include "model/reader_registry.h"

namespace qsim {
namespace {

std::mutex g_mutex;  // taken before the registry's lock, never after it
std::unordered_map<const void*, std::shared_ptr<HandleJobs>> g_jobs;

bool Live(const void* handle) { return ReaderRegistry::Instance().ReaderOf(handle) != nullptr; }

// Handles are never reused, so the jobs of a destroyed one can only be dropped; they go whenever
// jobs are made for a new handle.
void DropDeadHandles() {
  for (auto entry = g_jobs.begin(); entry != g_jobs.end();) {
    entry = Live(entry->first) ? std::next(entry) : g_jobs.erase(entry);
  }
}

}  // namespace

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

std::shared_ptr<HandleJobs> JobsOf(const void* handle) {
  if (!Live(handle)) {
    return nullptr;
  }
  std::lock_guard<std::mutex> lock(g_mutex);
  auto found = g_jobs.find(handle);
  if (found != g_jobs.end()) {
    return found->second;
  }
  DropDeadHandles();
  return g_jobs[handle] = std::make_shared<HandleJobs>();
}

}  // namespace qsim
