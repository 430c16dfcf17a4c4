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
  if (array == nullptr) return "";
  auto bytes = static_cast<jbyteArray>(array);
  std::string result(static_cast<size_t>(env_->GetArrayLength(bytes)), '\0');
  env_->GetByteArrayRegion(bytes, 0, static_cast<jsize>(result.size()), reinterpret_cast<jbyte*>(result.data()));
  return result;
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
  const std::string pending = TakeException(&message);
  EXPECT_EQ(pending, "") << after << ": " << message;
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
  size_t i = 0;
  while (i < length) {
    const unsigned char lead = p[i];
    if (lead < 0x80) {
      ++i;
      continue;
    }
    size_t more;
    unsigned char low = 0x80, high = 0xBF;  // range of the byte after the lead
    if (lead >= 0xC2 && lead <= 0xDF) {
      more = 1;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      more = 2;
      if (lead == 0xE0) low = 0xA0;   // shorter forms exist
      if (lead == 0xED) high = 0x9F;  // surrogates
    } else {
      return false;
    }
    if (length - i <= more) return false;
    if (p[i + 1] < low || p[i + 1] > high) return false;
    if (more == 2 && (p[i + 2] & 0xC0) != 0x80) return false;
    i += more + 1;
  }
  return true;
}

}  // namespace quorin_fuzz

// The VM starts before libFuzzer sets its signal handlers, so that the VM's own stay in place.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quorin_fuzz::Jvm::Instance();
  return 0;
}
