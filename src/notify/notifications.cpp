// Device exceptions, device events and trigger notices, delivered to Java callback objects
// on the SDK's own threads.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/records.h"
#include "notify/callback_context.h"
#include "notify/delivery_scope.h"

using jmap::ClassId;

namespace {

// The one record instance every delivery of this context hands to Java, made on first use.
jobject ReusedRecord(JNIEnv* env, RecordCallbackContext& context, ClassId recordClass) {
  if (context.recordRef.get() != nullptr || context.recordClassRef.get() == nullptr) return context.recordRef.get();
  jmethodID constructor = jmap::MethodOf(env, context.recordClassRef.get(), recordClass, jmap::kNoArgConstructor);
  if (constructor == nullptr) return nullptr;
  ScopedLocalRef<jobject> record(env, env->NewObject(context.recordClassRef.get(), constructor));
  if (record) context.recordRef.ref = env->NewGlobalRef(record.get());
  return context.recordRef.get();
}

// Calls the Java method with the context's record filled by `fill`; nothing reaches Java
// when the thread cannot attach or the record cannot be made.
template <typename Fill>
void DeliverRecord(void* user, const jmap::JavaMethod& method, ClassId recordClass, Fill fill) {
  if (user == nullptr) return;
  auto& context = *static_cast<RecordCallbackContext*>(user);
  DeliveryScope delivery(context.javaVM);
  JNIEnv* env = delivery.env();
  if (env == nullptr) return;
  jmethodID onRecord = CallbackMethod(env, context.callbackRef.get(), method);
  jobject record = ReusedRecord(env, context, recordClass);
  if (onRecord == nullptr || record == nullptr || env->ExceptionCheck()) return;
  fill(env, jmap::JavaObject(env, record));
  if (env->ExceptionCheck()) return;
  env->CallIntMethod(context.callbackRef.get(), onRecord, record);
}

void FillEvent(JNIEnv* env, const jmap::JavaObject& record, const QUORIN_EVENT_OUT_INFO& event) {
  // The name is taken as it stands, bounded by its array.
  char name[sizeof event.EventName + 1] = {};
  std::memcpy(name, event.EventName, sizeof event.EventName);
  ScopedLocalRef<jstring> eventName(env, env->NewStringUTF(name));
  record.SetObject(F::EventOutInfo_EventName, eventName.get());
  jmap::WriteMembers(record, &event, jmap::kEventWords);
  ScopedLocalRef<jbyteArray> data(env, NewByteArrayOf(env, event.pEventData, event.nEventDataSize));
  record.SetObject(F::EventOutInfo_pEventData, data.get());
  record.Set(F::EventOutInfo_nEventDataSize, event.nEventDataSize);
}

// Record kinds also keep their Java record class, found here on the Java thread.
auto RecordClass(JNIEnv* env, ClassId recordClass) {
  return [env, recordClass](RecordCallbackContext& context) {
    context.recordClassRef.ref = GlobalClassOr(env, recordClass, context.recordClassRef.get());
  };
}

}  // namespace

extern "C" JNIEXPORT void ExceptionCallBack(unsigned int msgType, void* user) {
  if (user == nullptr) return;
  auto& context = *static_cast<CallbackContext*>(user);
  DeliveryScope delivery(context.javaVM);
  JNIEnv* env = delivery.env();
  if (env == nullptr) return;
  jmethodID onException = CallbackMethod(env, context.callbackRef.get(), jmap::kOnException);
  if (onException == nullptr) return;
  env->CallIntMethod(context.callbackRef.get(), onException, static_cast<jint>(msgType));
}

extern "C" JNIEXPORT void AllEventCallBack(QUORIN_EVENT_OUT_INFO* event, void* user) {
  if (event == nullptr) return;
  DeliverRecord(user, jmap::kOnEvent, ClassId::EventOutInfo,
                [event](JNIEnv* env, const jmap::JavaObject& record) { FillEvent(env, record, *event); });
}

extern "C" JNIEXPORT void TriggerCallBack(QUORIN_TRIGGER_INFO_DATA* trigger, void* user) {
  if (trigger == nullptr) return;
  DeliverRecord(user, jmap::kOnTrigger, ClassId::TriggerInfo,
                [trigger](JNIEnv*, const jmap::JavaObject& record) { jmap::WriteMembers(record, trigger, jmap::kTrigger); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterExceptionCallBack(JNIEnv* env, jclass,
                                                                                          jobject handle,
                                                                                          jobject callback) {
  return RegisterCallback<CallbackContext>(
      env, handle, callback, F::Handle_lExceptionCallParam,
      [](void* h, CallbackContext* context) {
        return QUORIN_RegisterExceptionCallBack(h, context ? ExceptionCallBack : nullptr, context);
      },
      [](CallbackContext&) {});
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterAllEventCallBack(JNIEnv* env, jclass,
                                                                                         jobject handle,
                                                                                         jobject callback) {
  return RegisterCallback<RecordCallbackContext>(
      env, handle, callback, F::Handle_lAllEventCallParam,
      [](void* h, RecordCallbackContext* context) {
        return QUORIN_RegisterAllEventCallBack(h, context ? AllEventCallBack : nullptr, context);
      },
      RecordClass(env, ClassId::EventOutInfo));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterTriggerCallBack(JNIEnv* env, jclass,
                                                                                        jobject handle,
                                                                                        jobject callback) {
  return RegisterCallback<RecordCallbackContext>(
      env, handle, callback, F::Handle_lTriggerCallParam,
      [](void* h, RecordCallbackContext* context) {
        return QUORIN_RegisterTriggerCallBack(h, context ? TriggerCallBack : nullptr, context);
      },
      RecordClass(env, ClassId::TriggerInfo));
}
