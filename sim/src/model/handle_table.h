// Handles of one kind: addresses of objects the stand-in owns, checked against the live set.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

namespace qsim {

template <typename Object>
class HandleTable {
 public:
  // The handle is read back from the table: a fresh object's address is never a live key, but GCC
  // cannot see that and warns of a use after free on the path where emplace drops the object.
  void* Add(std::unique_ptr<Object> object) {
    const void* key = object.get();
    return live_.try_emplace(key, std::move(object)).first->second.get();
  }

  // Null for a null, unknown or destroyed handle.
  Object* Find(const void* handle) const {
    auto found = live_.find(handle);
    return found == live_.end() ? nullptr : found->second.get();
  }

  bool Retire(const void* handle) {
    auto found = live_.find(handle);
    if (found == live_.end()) {
      return false;
    }
    retired_.push_back(std::move(found->second));
    live_.erase(found);
    return true;
  }

  template <typename Visit>
  void ForEachLive(Visit visit) {
    for (auto& entry : live_) {
      visit(entry.first, *entry.second);
    }
  }

  void RetireAll() {
    for (auto& entry : live_) {
      retired_.push_back(std::move(entry.second));
    }
    live_.clear();
  }

 private:
  std::unordered_map<const void*, std::unique_ptr<Object>> live_;
  // Retired objects are kept, never freed, so that a stale handle can never
  // come back to life as the address of a new one.
  std::vector<std::unique_ptr<Object>> retired_;
};

}  // namespace qsim
