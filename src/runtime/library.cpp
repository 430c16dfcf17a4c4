// Library load: identification texts, the shared frame object, and the SDK version.
#include <cstdio>
#include <string>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/java_map.h"

namespace {

constexpr jint kJniVersion = 0x10004;

// Never read: they exist so that the texts stand in the loaded library.
[[gnu::used]] const std::string kLibFileName = "[LIB_INFO]FileName: libQuorinCtrlWrapper.so";
[[gnu::used]] const std::string kLibVersion = "[LIB_INFO]Version: 1.5.3.1";
[[gnu::used]] const std::string kLibDescription = "[LIB_INFO]Description: BaseLine_L Build20231221";

}  // namespace

// Set once at load (or by the first image delivery), never released or replaced.
std::atomic<jobject> g_frameInfoEx2{nullptr};

jobject NewFrameInfoEx2Global(JNIEnv* env) {
  // A missing class leaves its NoClassDefFoundError pending: the API jar does not match the library.
  ScopedLocalRef<jobject> frame(env, jmap::NewObject(env, jmap::ClassId::FrameEx2));
  RETURN_IF_NULL(frame.get(), nullptr);
  return env->NewGlobalRef(frame.get());
}

JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void* /*reserved*/) {
  JNIEnv* env = nullptr;
  if (vm->GetEnv(reinterpret_cast<void**>(&env), kJniVersion) != JNI_OK) return kJniVersion;
  // Intended: looked up only to be released again, as loading is defined to do.
  ScopedLocalRef<jclass> classLoader(env, jmap::FindClass(env, jmap::ClassId::ClassLoader));
  jmap::ResolveAtLoad(env);
  // Made here, on a Java thread, so the image callback finds it ready on the SDK's threads.
  g_frameInfoEx2 = NewFrameInfoEx2Global(env);
  return kJniVersion;
}

JNIEXPORT jstring JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetSDKVersion(JNIEnv* env, jclass) {
  const unsigned int version = QUORIN_GetSDKVersion();
  char text[64] = {};
  std::snprintf(text, sizeof text, "%d.%d.%d.%d", (version >> 24) & 0xFF, (version >> 16) & 0xFF,
                (version >> 8) & 0xFF, version & 0xFF);
  return env->NewStringUTF(text);
}
