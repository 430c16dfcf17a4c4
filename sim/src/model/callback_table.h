// The callbacks registered on one reader, and the running of them. A callback runs on the thread
// that asks for it, outside every lock of the table, so that it may call the SDK back.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/status.h"

namespace qsim {

class CallbackTable {
 public:
  // A null function with null user data unregisters; a null function with user data is neither,
  // and is refused (kBadParameter).
  Status Set(QuorinExceptionCallBack function, void* user);
  Status Set(QuorinEventCallBack function, void* user);
  Status Set(QuorinTriggerCallBack function, void* user);
  Status SetImage(unsigned int channel, QuorinImageCallBackEx2 function, void* user);
  void Clear();  // the client let the reader go

  // Each runs the registered callback once, on this thread; false when none is registered.
  bool Exception(unsigned int msgType);
  bool Event(QUORIN_EVENT_OUT_INFO event);
  bool Trigger(QUORIN_TRIGGER_INFO_DATA trigger);
  // `deliver(function, user)` materialises the frame and calls; it runs only once a callback is found.
  template <typename Deliver>
  bool Image(unsigned int channel, Deliver deliver) {
    return Run(images_[channel], [&](QuorinImageCallBackEx2 function, void* user) {
      ++imageDeliveries_[channel];
      deliver(function, user);
    });
  }

  unsigned long long ImageDeliveries(unsigned int channel) const { return imageDeliveries_[channel]; }
  void RestartImageCount();

  // Returns once no callback of this table runs, apart from those the calling thread is inside.
  void Drain();

 private:
  template <typename Function>
  struct Entry {
    Function function = nullptr;
    void* user = nullptr;
  };

  // Counts a running callback from construction to destruction, also for the calling thread.
  class Running {
   public:
    explicit Running(CallbackTable& table);
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

   private:
    CallbackTable& table_;
  };

  template <typename Function>
  Status Store(Entry<Function>& entry, Function function, void* user) {
    if (function == nullptr && user != nullptr) {
      return kBadParameter;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    entry = Entry<Function>{function, user};
    return 0;
  }

  // The entry is read under the lock; the call runs after it is released.
  template <typename Function, typename Call>
  bool Run(const Entry<Function>& registered, Call call) {
    Entry<Function> taken;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      taken = registered;
      if (taken.function == nullptr) {
        return false;
      }
      ++running_;
    }
    Running running(*this);
    call(taken.function, taken.user);
    return true;
  }

  std::mutex mutex_;  // guards the entries and the count of running callbacks
  std::condition_variable idle_;
  Entry<QuorinExceptionCallBack> exception_;
  Entry<QuorinEventCallBack> event_;
  Entry<QuorinTriggerCallBack> trigger_;
  std::array<Entry<QuorinImageCallBackEx2>, kMaxChannels> images_{};
  size_t running_ = 0;
  std::array<std::atomic<unsigned long long>, kMaxChannels> imageDeliveries_{};
};

}  // namespace qsim
