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
  using JvmTest::Bool, JvmTest::Float, JvmTest::Int, JvmTest::ListGet, JvmTest::ListSize, JvmTest::NewDefine,
      JvmTest::Object, JvmTest::Short;

  std::string Bytes(jobject array);  // a null array fails
  std::string ModifiedUtf8(jstring text);  // exactly as GetStringUTFChars gives it
  // Fails when a Java exception is pending or the JNI checker has printed a warning.
  void ExpectQuiet(const char* after);
  void TestBody() override {}

 private:
  Jvm();
  int checkerOutput_ = -1;  // read end of the pipe that standard output now goes to
  std::string pendingLine_;
};

// Unicode's well-formed sequences of one to three bytes (no overlong forms, no surrogates):
// the subset both Java and the bridge take unchanged.
bool StrictUtf8(const char* text, size_t length);

}  // namespace quorin_fuzz
