#include "jvm_start.h"

#include <dlfcn.h>

namespace quorin_test {

JNIEnv* StartJvm(const std::string& jvmLibrary, const std::string& classPath, const std::string& libraryDir,
                 const std::vector<std::string>& extraOptions, JavaVM** vm, std::string* error) {
  void* library = dlopen(jvmLibrary.c_str(), RTLD_NOW | RTLD_GLOBAL);  // never closed: a JVM is not unloaded
  if (library == nullptr) {
    *error = std::string("cannot load the JVM: ") + dlerror();
    return nullptr;
  }
  using CreateJavaVM = jint (*)(JavaVM**, void**, void*);
  auto create = reinterpret_cast<CreateJavaVM>(dlsym(library, "JNI_CreateJavaVM"));
  if (create == nullptr) {
    *error = "no JNI_CreateJavaVM in " + jvmLibrary;
    return nullptr;
  }
  std::vector<std::string> options = {"-Djava.class.path=" + classPath, "-Djava.library.path=" + libraryDir};
  options.insert(options.end(), extraOptions.begin(), extraOptions.end());
  std::vector<JavaVMOption> vmOptions;
  for (std::string& option : options) vmOptions.push_back({option.data(), nullptr});
  JavaVMInitArgs args{};
  args.version = JNI_VERSION_1_8;
  args.nOptions = static_cast<jint>(vmOptions.size());
  args.options = vmOptions.data();
  args.ignoreUnrecognized = JNI_FALSE;
  JNIEnv* env = nullptr;
  if (create(vm, reinterpret_cast<void**>(&env), &args) != JNI_OK) {
    *error = "the JVM did not start";
    return nullptr;
  }
  return env;
}

}  // namespace quorin_test
