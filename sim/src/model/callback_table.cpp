#include "model/callback_table.h"

#include <algorithm>
#include <vector>

namespace qsim {
namespace {

// The tables whose callbacks this thread is inside, innermost last.
thread_local std::vector<const CallbackTable*> t_inside;

}  // namespace

CallbackTable::Running::Running(CallbackTable& table) : table_(table) { t_inside.push_back(&table_); }

CallbackTable::Running::~Running() {
  t_inside.pop_back();
  {
    std::lock_guard<std::mutex> lock(table_.mutex_);
    --table_.running_;
  }
  table_.idle_.notify_all();
}

Status CallbackTable::Set(QuorinExceptionCallBack function, void* user) { return Store(exception_, function, user); }

Status CallbackTable::Set(QuorinEventCallBack function, void* user) { return Store(event_, function, user); }

Status CallbackTable::Set(QuorinTriggerCallBack function, void* user) { return Store(trigger_, function, user); }

Status CallbackTable::SetImage(unsigned int channel, QuorinImageCallBackEx2 function, void* user) {
  return Store(images_[channel], function, user);
}

void CallbackTable::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  exception_ = {};
  event_ = {};
  trigger_ = {};
  images_.fill({});
}

bool CallbackTable::Exception(unsigned int msgType) {
  return Run(exception_, [&](QuorinExceptionCallBack function, void* user) { function(msgType, user); });
}

bool CallbackTable::Event(QUORIN_EVENT_OUT_INFO event) {
  return Run(event_, [&](QuorinEventCallBack function, void* user) { function(&event, user); });
}

bool CallbackTable::Trigger(QUORIN_TRIGGER_INFO_DATA trigger) {
  return Run(trigger_, [&](QuorinTriggerCallBack function, void* user) { function(&trigger, user); });
}

void CallbackTable::RestartImageCount() {
  for (std::atomic<unsigned long long>& count : imageDeliveries_) {
    count = 0;
  }
}

void CallbackTable::Drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto own = static_cast<size_t>(std::count(t_inside.begin(), t_inside.end(), this));
  idle_.wait(lock, [&] { return running_ == own; });
}

}  // namespace qsim
