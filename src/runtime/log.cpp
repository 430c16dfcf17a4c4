// Diagnostics and the object-based method lookup.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "bridge.h"

namespace {
constexpr size_t kRunInfoBufferSize = 8192;
}

void QN_RunInfo(const char* format, ...) {
  char buffer[kRunInfoBufferSize];
  va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  // A diagnostic that does not fit is a programming error, never a silent truncation.
  if (length < 0 || static_cast<size_t>(length) >= sizeof buffer) {
    std::fputs("QN_RunInfo: diagnostic text exceeds 8192 bytes\n", stderr);
    std::abort();
  }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  // The expanded text is deliberately used as a format once more; no message expands to a '%'.
  std::printf(buffer);
#pragma GCC diagnostic pop
  std::fflush(stdout);
}

jmethodID GetMethodID(JNIEnv* env, jobject obj, const char* name, const char* sig) {
  RETURN_IF_PENDING(env, nullptr);
  // The class reference lives until the native frame ends (or the thread detaches).
  jclass cls = env->GetObjectClass(obj);
  return env->GetMethodID(cls, name, sig);
}
