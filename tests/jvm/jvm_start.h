// Starts the one JVM of a process for the tests, the soak, the fuzzers and the benchmark alike.
#pragma once

#include <jni.h>

#include <string>
#include <vector>

namespace quorin_test {

// Loads the JVM library and creates a VM with the class path and library path given, the options
// every user shares, and `extraOptions`. Null with the reason in `error` when it cannot.
JNIEnv* StartJvm(const std::string& jvmLibrary, const std::string& classPath, const std::string& libraryDir,
                 const std::vector<std::string>& extraOptions, JavaVM** vm, std::string* error);

}  // namespace quorin_test
