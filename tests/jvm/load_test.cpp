// JNI_OnLoad on its unusual paths, driven through a JavaVM whose environment is ours.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "jvm_harness.h"

namespace quorin_test {
namespace {

using OnLoad = jint (*)(JavaVM*, void*);

const JNINativeInterface_* g_vmFunctionsOfEnv = nullptr;
JNINativeInterface_ g_withoutFrameClass;
JNIInvokeInterface_ g_invokeFunctions;
JavaVM_ g_vm;
jint g_getEnvResult = JNI_OK;

// FindClass as if the API jar lacked the frame class: null, with the VM's own error pending.
jclass JNICALL FindClassWithoutFrameClass(JNIEnv* env, const char* name) {
  if (std::strcmp(name, "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_OUT_INFO_EX2") == 0) {
    name = "QuorinCtrlWrapper/QuorinCtrlDefine$NoSuchFrameClass";
  }
  return g_vmFunctionsOfEnv->FindClass(env, name);
}

jint JNICALL GetEnvOfTest(JavaVM*, void** env, jint) {
  *env = Env();
  return g_getEnvResult;
}

OnLoad BridgeOnLoad() {
  // Using the class loads the bridge, as any Java program would.
  jclass ctrl = Env()->FindClass("QuorinCtrlWrapper/QuorinCtrl");
  Env()->CallStaticObjectMethod(ctrl, Env()->GetStaticMethodID(ctrl, "QUORIN_GetSDKVersion", "()Ljava/lang/String;"));
  Env()->ExceptionCheck();
  void* library = dlopen(QUORIN_BRIDGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  return library ? reinterpret_cast<OnLoad>(dlsym(library, "JNI_OnLoad")) : nullptr;
}

// A JavaVM that hands out this thread's environment, whose FindClass no longer sees the
// frame class. The environment's own function table is swapped for the child's lifetime.
JavaVM* VmWithoutFrameClass() {
  g_vmFunctionsOfEnv = Env()->functions;
  g_withoutFrameClass = *g_vmFunctionsOfEnv;
  g_withoutFrameClass.FindClass = FindClassWithoutFrameClass;
  Env()->functions = &g_withoutFrameClass;
  g_invokeFunctions = JNIInvokeInterface_{};
  g_invokeFunctions.GetEnv = GetEnvOfTest;
  g_vm.functions = &g_invokeFunctions;
  return &g_vm;
}

using LoadDeathTest = JvmTest;

// Run in a child process: a second JNI_OnLoad would replace the shared frame object.
TEST_F(LoadDeathTest, LoadingAlwaysAnswersTheJniVersion) {
  EXPECT_EXIT(
      {
        OnLoad onLoad = BridgeOnLoad();
        if (onLoad == nullptr) std::exit(2);
        JavaVM* vm = VmWithoutFrameClass();
        g_getEnvResult = JNI_EDETACHED;  // no environment: nothing is looked up
        if (onLoad(vm, nullptr) != 0x10004 || Env()->ExceptionCheck()) std::exit(3);
        g_getEnvResult = JNI_OK;  // the frame class is missing: its error stays for the loader
        if (onLoad(vm, nullptr) != 0x10004) std::exit(4);
        if (TakeException() != "java.lang.NoClassDefFoundError") std::exit(5);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quorin_test
