// Device exceptions, device events and trigger notices, delivered to Java callback objects
// on the SDK's own threads.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "notify/attached_thread.h"
#include "notify/callback_context.h"

namespace jclassname {
constexpr const char* kEventOutInfo = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_EVENT_OUT_INFO";
constexpr const char* kTriggerInfo = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_TRIGGER_INFO_DATA";
}  // namespace jclassname

namespace {

constexpr const char* kOnEvent = "(LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_EVENT_OUT_INFO;)I";
constexpr const char* kOnTrigger = "(LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_TRIGGER_INFO_DATA;)I";

// The one record instance every delivery of this context hands to Java, made on first use.
jobject ReusedRecord(JNIEnv* env, RecordCallbackContext& context) {
  if (context.recordRef != nullptr || context.recordClassRef == nullptr) return context.recordRef;
  jmethodID constructor = env->GetMethodID(context.recordClassRef, "<init>", jsig::kNoArgConstructor);
  if (constructor == nullptr) return nullptr;
  ScopedLocalRef<jobject> record(env, env->NewObject(context.recordClassRef, constructor));
  if (record) context.recordRef = env->NewGlobalRef(record.get());
  return context.recordRef;
}

// Calls the Java method with the context's record filled by `fill`; nothing reaches Java
// when the thread cannot attach or the record cannot be made.
template <typename Fill>
void DeliverRecord(void* user, const char* method, const char* sig, Fill fill) {
  if (user == nullptr) return;
  auto& context = *static_cast<RecordCallbackContext*>(user);
  AttachedThread thread(context.javaVM);
  JNIEnv* env = thread.env();
  if (env == nullptr) return;
  jmethodID onRecord = CallbackMethod(env, context.callbackRef, method, sig);
  jobject record = ReusedRecord(env, context);
  if (onRecord == nullptr || record == nullptr || env->ExceptionCheck()) return;
  fill(env, record);
  if (env->ExceptionCheck()) return;
  env->CallIntMethod(context.callbackRef, onRecord, record);
  env->ExceptionCheck();  // whatever Java threw is reported when the thread detaches
}

void FillEvent(JNIEnv* env, jobject record, const QUORIN_EVENT_OUT_INFO& event) {
  // The name is taken as it stands, bounded by its array.
  char name[sizeof event.EventName + 1] = {};
  std::memcpy(name, event.EventName, sizeof event.EventName);
  ScopedLocalRef<jstring> eventName(env, env->NewStringUTF(name));
  SetFieldValue(env, record, "EventName", jsig::kString, PointerWord(eventName.get()));
  SetFieldValue(env, record, "nEventID", jsig::kShort, event.nEventID);
  SetFieldValue(env, record, "nStreamChannel", jsig::kShort, event.nStreamChannel);
  SetFieldValue(env, record, "nBlockIdHigh", jsig::kInt, event.nBlockIdHigh);
  SetFieldValue(env, record, "nBlockIdLow", jsig::kInt, event.nBlockIdLow);
  SetFieldValue(env, record, "nTimestampHigh", jsig::kInt, event.nTimestampHigh);
  SetFieldValue(env, record, "nTimestampLow", jsig::kInt, event.nTimestampLow);
  ScopedLocalRef<jbyteArray> data(env, NewByteArrayOf(env, event.pEventData, event.nEventDataSize));
  SetFieldValue(env, record, "pEventData", jsig::kByteArray, PointerWord(data.get()));
  SetFieldValue(env, record, "nEventDataSize", jsig::kInt, event.nEventDataSize);
}

void FillTrigger(JNIEnv* env, jobject record, const QUORIN_TRIGGER_INFO_DATA& trigger) {
  SetFieldValue(env, record, "nTriggerIndex", jsig::kInt, trigger.nTriggerIndex);
  SetFieldValue(env, record, "nTriggerFlag", jsig::kInt, trigger.nTriggerFlag);
  SetFieldValue(env, record, "nTriggerTimeHigh", jsig::kInt, trigger.nTriggerTimeHigh);
  SetFieldValue(env, record, "nTriggerTimeLow", jsig::kInt, trigger.nTriggerTimeLow);
  SetFieldValue(env, record, "nOriginalTrigger", jsig::kInt, trigger.nOriginalTrigger);
  SetFieldValue(env, record, "nIsForceOver", jsig::kShort, trigger.nIsForceOver);
  SetFieldValue(env, record, "nIsMainCam", jsig::kShort, trigger.nIsMainCam);
  SetFieldValue(env, record, "nHostTimeStamp", jsig::kLong, trigger.nHostTimeStamp);
}

// Record kinds also keep their Java record class, found here on the Java thread.
auto RecordClass(JNIEnv* env, const char* className) {
  return [env, className](RecordCallbackContext& context) {
    context.recordClassRef = GlobalClassOr(env, className, context.recordClassRef);
  };
}

}  // namespace

extern "C" JNIEXPORT void ExceptionCallBack(unsigned int msgType, void* user) {
  if (user == nullptr) return;
  auto& context = *static_cast<CallbackContext*>(user);
  AttachedThread thread(context.javaVM);
  JNIEnv* env = thread.env();
  if (env == nullptr) return;
  jmethodID onException = CallbackMethod(env, context.callbackRef, "OnExceptionCallBack", "(I)I");
  if (onException == nullptr) return;
  env->CallIntMethod(context.callbackRef, onException, static_cast<jint>(msgType));
  env->ExceptionCheck();  // whatever Java threw is reported when the thread detaches
}

extern "C" JNIEXPORT void AllEventCallBack(QUORIN_EVENT_OUT_INFO* event, void* user) {
  if (event == nullptr) return;
  DeliverRecord(user, "OnAllEventCallBack", kOnEvent, [event](JNIEnv* env, jobject record) { FillEvent(env, record, *event); });
}

extern "C" JNIEXPORT void TriggerCallBack(QUORIN_TRIGGER_INFO_DATA* trigger, void* user) {
  if (trigger == nullptr) return;
  DeliverRecord(user, "OnTriggerCallBack", kOnTrigger,
                [trigger](JNIEnv* env, jobject record) { FillTrigger(env, record, *trigger); });
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterExceptionCallBack(JNIEnv* env, jclass,
                                                                                          jobject handle,
                                                                                          jobject callback) {
  return RegisterCallback<CallbackContext>(
      env, handle, callback, handlefield::kExceptionContext,
      [](void* h, CallbackContext* context) {
        return QUORIN_RegisterExceptionCallBack(h, context ? ExceptionCallBack : nullptr, context);
      },
      [](CallbackContext&) {});
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterAllEventCallBack(JNIEnv* env, jclass,
                                                                                         jobject handle,
                                                                                         jobject callback) {
  return RegisterCallback<RecordCallbackContext>(
      env, handle, callback, handlefield::kAllEventContext,
      [](void* h, RecordCallbackContext* context) {
        return QUORIN_RegisterAllEventCallBack(h, context ? AllEventCallBack : nullptr, context);
      },
      RecordClass(env, jclassname::kEventOutInfo));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1RegisterTriggerCallBack(JNIEnv* env, jclass,
                                                                                        jobject handle,
                                                                                        jobject callback) {
  return RegisterCallback<RecordCallbackContext>(
      env, handle, callback, handlefield::kTriggerContext,
      [](void* h, RecordCallbackContext* context) {
        return QUORIN_RegisterTriggerCallBack(h, context ? TriggerCallBack : nullptr, context);
      },
      RecordClass(env, jclassname::kTriggerInfo));
}
