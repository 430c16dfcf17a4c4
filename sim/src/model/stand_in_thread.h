// The stand-in's own threads: every callback runs on one of them, never on a caller's thread.
#pragma once

#include <functional>

namespace qsim {

// Marks the calling thread as one of the stand-in's (a producer does so first).
void MarkStandInThread();

// Runs `task` on a thread of the stand-in and returns after it. A caller that already is one (a
// callback calling back in) runs it at once, so that no delivery ever waits for another.
void RunOnStandInThread(const std::function<void()>& task);

}  // namespace qsim
