// The fuzzers' JVM: the test harness's VM, started once per process under the JNI checker,
// with the harness's field helpers usable outside a GoogleTest test.
#pragma once

#include <string>

#include "jvm_harness.h"

namespace quorin_fuzz {

// Any failed expectation aborts the process, so that libFuzzer keeps the input behind it.
class Jvm : public quorin_test::JvmTest {
 public:
  static Jvm& Instance();

  JNIEnv* env() const { return env_; }
  using JvmTest::Bool;
  using JvmTest::Checked;
  using JvmTest::Float;
  using JvmTest::Int;
  using JvmTest::ListGet;
  using JvmTest::ListSize;
  using JvmTest::NewDefine;
  using JvmTest::Object;
  using JvmTest::Short;
  using JvmTest::TakeException;
  using JvmTest::Utf8;

  // The bytes of a byte[] ("<null>" never: a null array is a failure of its own).
  std::string Bytes(jobject array);
  // The Java string as modified UTF-8 bytes, exactly as GetStringUTFChars gives them.
  std::string ModifiedUtf8(jstring text);
  // Fails when a Java exception is pending or the JNI checker has printed a warning
  // (a local reference table over its capacity, a call without an exception check).
  void ExpectQuiet(const char* after);

  void TestBody() override {}

 private:
  Jvm();
  int checkerOutput_ = -1;  // read end of the pipe that standard output now goes to
  std::string pendingLine_;
};

// Every fuzzer checks its own UTF-8 claims against this one: Unicode's well-formed sequences
// of one to three bytes (no overlong forms, no surrogates), the subset both Java and the
// bridge take unchanged.
bool StrictUtf8(const char* text, size_t length);

}  // namespace quorin_fuzz
