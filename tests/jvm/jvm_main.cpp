#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "jvm_harness.h"

int main(int argc, char** argv) {
  std::vector<char*> args;
  // Death tests re-execute argv[0]; under an emulator that has to be the emulator itself.
  const char* emulator = std::getenv("QUORIN_TEST_EMULATOR");
  if (emulator != nullptr && *emulator != '\0') args.push_back(const_cast<char*>(emulator));
  args.insert(args.end(), argv, argv + argc);
  int count = static_cast<int>(args.size());
  args.push_back(nullptr);
  // A fresh process per death test: forking a running JVM is not safe.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  testing::InitGoogleTest(&count, args.data());
  testing::AddGlobalTestEnvironment(new quorin_test::JvmEnvironment);
  return RUN_ALL_TESTS();
}
