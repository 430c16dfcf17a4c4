// Everything one callback delivery holds on an SDK thread.
#pragma once

#include "bridge.h"

// The thread attached to the VM, a local reference frame for what the delivery makes, and the
// one exception policy, released on every path out of a delivery.
// - A thread the VM did not know is attached for the delivery and detached after it; a cached
//   build keeps it attached for the thread's life and detaches it when the thread exits.
// - A thread that was already attached (the SDK called back on a Java thread) stays attached.
// - A Java exception the callback threw never travels back into the SDK: it goes to the
//   thread's uncaught-exception handler, through the detach where the delivery detaches,
//   otherwise at once, so that it is not left pending for the thread's owner.
class DeliveryScope {
 public:
  explicit DeliveryScope(JavaVM* vm);
  DeliveryScope(const DeliveryScope&) = delete;
  DeliveryScope& operator=(const DeliveryScope&) = delete;
  ~DeliveryScope();

  // Null when the thread could not be attached or the frame could not be made.
  JNIEnv* env() const { return framed_ ? env_ : nullptr; }

 private:
  JavaVM* vm_;
  JNIEnv* env_ = nullptr;
  bool detachAfter_ = false;
  bool framed_ = false;
};
