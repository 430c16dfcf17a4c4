#include "notify/delivery_scope.h"

#include <pthread.h>

#include "jmap/java_map.h"

namespace {

// Room for what one delivery makes beyond the frame record's entries, which have frames of their own.
constexpr jint kDeliveryLocalRefs = 32;

// Hands a pending exception to the thread's uncaught-exception handler, as a detach would.
void ReportUncaught(JNIEnv* env) {
  ScopedLocalRef<jthrowable> thrown(env, env->ExceptionOccurred());
  env->ExceptionClear();
  ScopedLocalRef<jclass> threadClass(env, jmap::FindClass(env, jmap::ClassId::Thread));
  if (!threadClass) return env->ExceptionClear();
  jmethodID current = env->GetStaticMethodID(threadClass.get(), jmap::kCurrentThread.name, jmap::kCurrentThread.sig);
  jmethodID dispatch = env->GetMethodID(threadClass.get(), jmap::kDispatchUncaught.name, jmap::kDispatchUncaught.sig);
  if (current == nullptr || dispatch == nullptr) return env->ExceptionClear();
  ScopedLocalRef<jobject> thread(env, env->CallStaticObjectMethod(threadClass.get(), current));
  if (thread && !env->ExceptionCheck()) env->CallVoidMethod(thread.get(), dispatch, thrown.get());
  env->ExceptionClear();  // a handler that throws in turn has nobody left to tell
}

#if defined(QUORIN_CACHED_IDS)
// A thread the bridge attached stays attached until it exits; the key's destructor detaches it.
pthread_key_t g_attachedThread;
pthread_once_t g_attachedThreadKey = PTHREAD_ONCE_INIT;

void DetachAtThreadExit(void* vm) { static_cast<JavaVM*>(vm)->DetachCurrentThread(); }

bool AttachForThreadLife(JavaVM* vm, JNIEnv** env) {
  pthread_once(&g_attachedThreadKey, [] { pthread_key_create(&g_attachedThread, DetachAtThreadExit); });
  // A daemon thread: the VM's shutdown does not wait for the SDK's threads.
  if (vm->AttachCurrentThreadAsDaemon(reinterpret_cast<void**>(env), nullptr) != JNI_OK) return false;
  pthread_setspecific(g_attachedThread, vm);
  return true;
}
#endif

}  // namespace

DeliveryScope::DeliveryScope(JavaVM* vm) : vm_(vm) {
  if (vm_ == nullptr) return;
  if (vm_->GetEnv(reinterpret_cast<void**>(&env_), JNI_VERSION_1_4) != JNI_OK) {
    env_ = nullptr;
#if defined(QUORIN_CACHED_IDS)
    if (!AttachForThreadLife(vm_, &env_)) env_ = nullptr;
#else
    if (vm_->AttachCurrentThread(reinterpret_cast<void**>(&env_), nullptr) == JNI_OK) {
      detachAfter_ = true;
    } else {
      env_ = nullptr;
    }
#endif
  }
  if (env_ != nullptr) framed_ = env_->PushLocalFrame(kDeliveryLocalRefs) == 0;
}

DeliveryScope::~DeliveryScope() {
  if (framed_) {
    if (!detachAfter_ && env_->ExceptionCheck()) ReportUncaught(env_);
    env_->PopLocalFrame(nullptr);
  } else if (env_ != nullptr && !detachAfter_) {
    env_->ExceptionClear();  // the frame could not be made: nothing of the delivery ran
  }
  // A pending exception is reported by the detach through the uncaught-exception handler.
  if (detachAfter_) vm_->DetachCurrentThread();
}
