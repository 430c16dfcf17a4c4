#include "model/stand_in_thread.h"

#include <thread>

namespace qsim {
namespace {

thread_local bool t_standIn = false;

}  // namespace

void MarkStandInThread() { t_standIn = true; }

void RunOnStandInThread(const std::function<void()>& task) {
  if (t_standIn) {
    task();
    return;
  }
  std::thread worker([&task] {
    MarkStandInThread();
    task();
  });
  worker.join();
}

}  // namespace qsim
