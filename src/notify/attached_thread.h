// A device-SDK thread attached to the JVM for one delivery.
#pragma once

#include "bridge.h"

// Attaches in the constructor and detaches in the destructor, so every path out of a
// delivery detaches. A thread that was already attached (the SDK called back on a Java
// thread) is left attached: detaching it would pull the thread out from under its owner.
class AttachedThread {
 public:
  explicit AttachedThread(JavaVM* vm) : vm_(vm) {
    if (vm_ == nullptr) return;
    if (vm_->GetEnv(reinterpret_cast<void**>(&env_), JNI_VERSION_1_4) == JNI_OK) return;
    env_ = nullptr;
    if (vm_->AttachCurrentThread(reinterpret_cast<void**>(&env_), nullptr) == JNI_OK) {
      attachedHere_ = true;
    } else {
      env_ = nullptr;
    }
  }
  AttachedThread(const AttachedThread&) = delete;
  AttachedThread& operator=(const AttachedThread&) = delete;
  ~AttachedThread() {
    // A Java exception the callback threw is reported by the detach through the thread's
    // uncaught-exception handler; it never travels back into the SDK.
    if (attachedHere_) vm_->DetachCurrentThread();
  }

  JNIEnv* env() const { return env_; }

 private:
  JavaVM* vm_;
  JNIEnv* env_ = nullptr;
  bool attachedHere_ = false;
};
