#include "fuzz_jvm.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace quorin_fuzz {
namespace {

// A failed expectation outside a running test is only recorded; here it ends the process.
class AbortOnFailure : public testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (!result.failed()) return;
    std::fprintf(stderr, "%s:%d: %s\n", result.file_name() ? result.file_name() : "?", result.line_number(),
                 result.message());
    std::abort();
  }
};

}  // namespace

Jvm::Jvm() {
  testing::UnitTest::GetInstance()->listeners().Append(new AbortOnFailure);
  // The JNI checker prints its warnings to standard output and carries on; a pipe lets each
  // iteration look at what it printed.
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) std::abort();
  fcntl(fds[0], F_SETPIPE_SZ, 1 << 20);
  fcntl(fds[0], F_SETFL, O_NONBLOCK);
  std::fflush(stdout);
  dup2(fds[1], STDOUT_FILENO);
  close(fds[1]);
  checkerOutput_ = fds[0];

  setenv("QUORIN_XCHECK_JNI", "1", 1);
  quorin_test::JvmEnvironment().SetUp();
  env_ = quorin_test::Env();
  if (env_ == nullptr) std::abort();
}

Jvm& Jvm::Instance() {
  static Jvm* jvm = new Jvm;  // lives as long as the VM, which is never destroyed
  return *jvm;
}

std::string Jvm::Bytes(jobject array) {
  EXPECT_NE(array, nullptr);
  const std::vector<unsigned char> bytes = JvmTest::Bytes(array);
  return std::string(bytes.begin(), bytes.end());
}

std::string Jvm::ModifiedUtf8(jstring text) {
  EXPECT_NE(text, nullptr);
  if (text == nullptr) return "";
  const char* chars = env_->GetStringUTFChars(text, nullptr);
  std::string result(chars, static_cast<size_t>(env_->GetStringUTFLength(text)));
  env_->ReleaseStringUTFChars(text, chars);
  return result;
}

void Jvm::ExpectQuiet(const char* after) {
  std::string message;
  EXPECT_EQ(TakeException(&message), "") << after << ": " << message;
  char buffer[4096];
  ssize_t got;
  while ((got = read(checkerOutput_, buffer, sizeof buffer)) > 0) {
    pendingLine_.append(buffer, static_cast<size_t>(got));
    size_t end;
    while ((end = pendingLine_.find('\n')) != std::string::npos) {
      const std::string line = pendingLine_.substr(0, end);
      pendingLine_.erase(0, end + 1);
      std::fprintf(stderr, "stdout: %s\n", line.c_str());
      EXPECT_EQ(line.find("WARNING"), std::string::npos) << after << ": the JNI checker complained";
    }
  }
}

bool StrictUtf8(const char* text, size_t length) {
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  for (size_t i = 0; i < length; ++i) {
    if (p[i] < 0x80) continue;
    if (p[i] < 0xC2 || p[i] > 0xEF) return false;
    const size_t more = p[i] >= 0xE0 ? 2 : 1;
    // Ranges of the byte after the lead: E0 has shorter forms below A0, ED's above 9F are surrogates.
    const unsigned char low = p[i] == 0xE0 ? 0xA0 : 0x80, high = p[i] == 0xED ? 0x9F : 0xBF;
    if (length - i <= more || p[i + 1] < low || p[i + 1] > high) return false;
    if (more == 2 && (p[i + 2] & 0xC0) != 0x80) return false;
    i += more;
  }
  return true;
}

}  // namespace quorin_fuzz

// The VM starts before libFuzzer sets its signal handlers, so that the VM's own stay in place.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quorin_fuzz::Jvm::Instance();
  return 0;
}
