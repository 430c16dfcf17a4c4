// Exception, event and trigger callbacks delivered from the stand-in's own threads, and what
// destroying a Handle releases and keeps.
#include <dlfcn.h>

#include <cstring>
#include <memory>
#include <tuple>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

class NotifyTest : public JvmTest {
 protected:
  void SetUp() override {
    JvmTest::SetUp();
    handle_ = OpenReader(0);
    sdk_ = SdkHandle(handle_);
  }
  jobject Recorder(const char* name) { return New(std::string("QuorinTest/") + name); }
  jobject Record(jobject recorder, const char* which) { return Object(recorder, which, "Ljava/lang/Object;"); }
  jlong Probe(const char* method) {
    jclass probes = env_->FindClass("QuorinTest/Probes");
    const jlong result = env_->CallStaticLongMethod(probes, env_->GetStaticMethodID(probes, method, "()J"));
    Checked();
    return result;
  }
  jlong ThisThreadId() { return Probe("currentThreadId"); }
  // A weak reference to `target`; the caller's own local reference to it is dropped.
  jweak Weakly(jobject target) {
    jweak weak = env_->NewWeakGlobalRef(target);
    env_->DeleteLocalRef(target);
    return weak;
  }
  // Whether the target is still reachable after full collections; the weak reference is spent.
  bool Survives(jweak weak) {
    Probe("usedHeapAfterCollection");
    const bool alive = !env_->IsSameObject(weak, nullptr);
    env_->DeleteWeakGlobalRef(weak);
    return alive;
  }
  jobject handle_ = nullptr;
  void* sdk_ = nullptr;
};

constexpr const char* kOnException = "QUORIN_RegisterExceptionCallBack";
constexpr const char* kOnEvent = "QUORIN_RegisterAllEventCallBack";
constexpr const char* kOnTrigger = "QUORIN_RegisterTriggerCallBack";
constexpr const char* kOnImage = "QUORIN_RegisterImageCallBackEx2";

// Deliveries reach the last callback registered, on an SDK thread; re-registering reuses the
// context and keeps the earlier callback alive; a callback that throws or lacks the method is
// survived; unregistering clears only the SDK's side.
TEST_F(NotifyTest, ExceptionsReachTheLastRegisteredCallbackOnAnSdkThread) {
  // A null callback with nothing registered makes no context.
  EXPECT_EQ(Register(kOnException, handle_, nullptr), 0);
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), 0);
  EXPECT_FALSE(qsim::FireException(sdk_, 1));

  jobject thrower = Recorder("ThrowingCallback");
  ASSERT_EQ(Register(kOnException, handle_, thrower), 0);
  const jlong context = Long(handle_, "lExceptionCallParam");
  EXPECT_NE(context, 0);
  EXPECT_TRUE(qsim::FireException(sdk_, 1));
  EXPECT_TRUE(qsim::FireException(sdk_, 2));
  EXPECT_EQ(Int(thrower, "calls"), 2);
  ASSERT_EQ(Register(kOnException, handle_, Str("not a callback")), 0);
  EXPECT_TRUE(qsim::FireException(sdk_, 3));  // delivered to nothing

  jobject recorder = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register(kOnException, handle_, recorder), 0);
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), context);
  ASSERT_TRUE(qsim::FireException(sdk_, 0x80000001u));
  EXPECT_EQ(Int(recorder, "calls"), 1);
  EXPECT_EQ(Int(recorder, "lastMsgType"), -2147483647);  // the same 32 bits
  EXPECT_NE(Long(recorder, "threadId"), ThisThreadId());
  EXPECT_EQ(Int(thrower, "calls"), 2);
  EXPECT_TRUE(Survives(Weakly(thrower)));  // a delivery under way may still hold it

  EXPECT_EQ(Register(kOnException, handle_, nullptr), 0);
  EXPECT_FALSE(qsim::FireException(sdk_, 7));
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), context);
}

TEST_F(NotifyTest, EventsFillOneReusedRecordOnAnSdkThread) {
  jobject recorder = Recorder("EventRecorder");
  ASSERT_EQ(Register(kOnEvent, handle_, recorder), 0);
  QUORIN_EVENT_OUT_INFO event{};
  std::strcpy(event.EventName, "AcquisitionStart");
  event.nEventID = 0xFFFF;
  event.nStreamChannel = 2;
  event.nBlockIdLow = 0x80000000;
  event.nTimestampHigh = 12;
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {1, 2, 3, 4, 5, 6, 7, 8}));
  jobject record = Record(recorder, "lastRecord");
  EXPECT_EQ(String(record, "EventName"), "AcquisitionStart");
  EXPECT_EQ(Short(record, "nEventID"), -1);
  EXPECT_EQ(Short(record, "nStreamChannel"), 2);
  EXPECT_EQ(Int(record, "nBlockIdLow"), static_cast<jint>(0x80000000u));
  EXPECT_EQ(Int(record, "nTimestampHigh"), 12);
  EXPECT_EQ(Int(record, "nEventDataSize"), 8);
  EXPECT_EQ(Bytes(Object(record, "pEventData", "[B")), (std::vector<unsigned char>{1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_NE(Long(recorder, "threadId"), ThisThreadId());

  std::strcpy(event.EventName, "AcquisitionEnd");
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {}));
  ASSERT_TRUE(env_->IsSameObject(Record(recorder, "lastRecord"), record));
  EXPECT_EQ(String(record, "EventName"), "AcquisitionEnd");
  EXPECT_EQ(Int(record, "nEventDataSize"), 0);
  ASSERT_NE(Object(record, "pEventData", "[B"), nullptr);  // an empty array, not null
  EXPECT_EQ(Bytes(Object(record, "pEventData", "[B")).size(), 0u);

  // A new registration keeps the record made by earlier deliveries.
  jobject next = Recorder("EventRecorder");
  ASSERT_EQ(Register(kOnEvent, handle_, next), 0);
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {9}));
  EXPECT_TRUE(env_->IsSameObject(Record(next, "lastRecord"), record));
}

TEST_F(NotifyTest, TriggerNoticesCarryTheirWordsAsTheyAre) {
  jobject recorder = Recorder("TriggerRecorder");
  ASSERT_EQ(Register(kOnTrigger, handle_, recorder), 0);
  QUORIN_TRIGGER_INFO_DATA trigger{};
  trigger.nTriggerIndex = 41;
  trigger.nTriggerTimeLow = 0xFFFFFFFE;
  trigger.nIsForceOver = 0xFFFF;
  trigger.nIsMainCam = 1;
  trigger.nHostTimeStamp = 0x8000000000000123ull;
  ASSERT_TRUE(qsim::FireTrigger(sdk_, trigger));
  trigger.nTriggerIndex = 42;
  ASSERT_TRUE(qsim::FireTrigger(sdk_, trigger));
  EXPECT_EQ(Int(recorder, "calls"), 2);
  jobject record = Record(recorder, "lastRecord");
  EXPECT_TRUE(env_->IsSameObject(Record(recorder, "firstRecord"), record));
  EXPECT_EQ(Int(record, "nTriggerIndex"), 42);
  EXPECT_EQ(Int(record, "nTriggerTimeLow"), -2);
  EXPECT_EQ(Short(record, "nIsForceOver"), -1);
  EXPECT_EQ(Short(record, "nIsMainCam"), 1);
  EXPECT_EQ(Long(record, "nHostTimeStamp"), static_cast<jlong>(0x8000000000000123ull));
}

TEST_F(NotifyTest, DestroyReleasesEveryContextButTheTriggers) {
  const std::vector<std::tuple<const char*, const char*, const char*>> kinds = {
      {kOnException, "ExceptionRecorder", "lExceptionCallParam"},
      {kOnEvent, "EventRecorder", "lAllEventCallParam"},
      {kOnImage, "ImageRecorder", "lImageCallParam"},
      {kOnTrigger, "TriggerRecorder", "lTriggerCallParam"}};
  std::vector<jweak> weak;
  for (const auto& [method, recorder, field] : kinds) {
    jobject callback = Recorder(recorder);
    ASSERT_EQ(Register(method, handle_, callback), 0) << method;
    weak.push_back(Weakly(callback));
  }
  const jlong triggerContext = Long(handle_, "lTriggerCallParam");
  ASSERT_NE(triggerContext, 0);
  ASSERT_EQ(OnHandle("QUORIN_CloseDevice", handle_), 0);
  ASSERT_EQ(OnHandle("QUORIN_DestroyHandle", handle_), 0);
  // The trigger context and its callback outlive the handle, by design.
  for (size_t i = 0; i < kinds.size(); ++i) {
    const bool trigger = i + 1 == kinds.size();
    EXPECT_EQ(Long(handle_, std::get<2>(kinds[i])), trigger ? triggerContext : 0) << std::get<2>(kinds[i]);
    EXPECT_EQ(Survives(weak[i]), trigger) << std::get<1>(kinds[i]);
  }
}

// A registration the SDK refuses changes nothing: the standing callback keeps its deliveries, and
// a refused first registration keeps nothing of the callback alive.
TEST_F(NotifyTest, RefusedRegistrationLeavesTheStandingOneInPlace) {
  jobject first = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register(kOnException, handle_, first), 0);
  qsim::ScriptStatus(kOnException, qsim::kBusy);
  EXPECT_EQ(Register(kOnException, handle_, Recorder("ExceptionRecorder")),
            static_cast<jint>(qsim::kBusy));
  ASSERT_TRUE(qsim::FireException(sdk_, 7));
  EXPECT_EQ(Int(first, "calls"), 1);
  EXPECT_EQ(Int(first, "lastMsgType"), 7);

  jobject other = OpenReader(1);
  qsim::ScriptStatus(kOnEvent, qsim::kBusy);
  jobject refused = Recorder("EventRecorder");
  EXPECT_EQ(Register(kOnEvent, other, refused), static_cast<jint>(qsim::kBusy));
  EXPECT_NE(Long(other, "lAllEventCallParam"), 0);  // the record stays with the Handle
  EXPECT_FALSE(Survives(Weakly(refused)));
}

// A context word Java made up, or copied from another Handle or field, is refused and never freed;
// the Handle that owns the context keeps its deliveries.
TEST_F(NotifyTest, ContextWordsJavaForgedAreNeverUsed) {
  jobject owner = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register(kOnException, handle_, owner), 0);
  const jlong context = Long(handle_, "lExceptionCallParam");
  jobject other = OpenReader(1);
  SetLong(other, "lExceptionCallParam", context);
  SetLong(other, "lAllEventCallParam", 0x5A5A5A5A);
  SetLong(other, "lTriggerCallParam", 0x5A5A);
  SetLong(handle_, "lImageCallParam", context);
  qsim::ClearCalls();
  EXPECT_EQ(Register(kOnException, other, Recorder("ExceptionRecorder")), kBadArgument);
  EXPECT_EQ(Register(kOnEvent, other, Recorder("EventRecorder")), kBadArgument);
  EXPECT_EQ(Register(kOnImage, handle_, Recorder("ImageRecorder")), kBadArgument);
  EXPECT_TRUE(qsim::Calls().empty());

  ASSERT_EQ(OnHandle("QUORIN_DestroyHandle", other), 0);
  EXPECT_EQ(Long(other, "lExceptionCallParam"), context);  // left as Java wrote it
  EXPECT_EQ(Long(other, "lAllEventCallParam"), 0x5A5A5A5A);
  EXPECT_EQ(Long(other, "lTriggerCallParam"), 0x5A5A);
  ASSERT_TRUE(qsim::FireException(sdk_, 9));
  EXPECT_EQ(Int(owner, "calls"), 1);
  EXPECT_EQ(Int(owner, "lastMsgType"), 9);
}

// The SDK may call back on a thread the VM already knows. Such a delivery leaves the thread
// attached, frees every local reference it made, and reports a thrown exception itself instead
// of leaving it pending for the thread's owner.
TEST_F(NotifyTest, DeliveriesOnAnAttachedThreadLeaveNothingBehind) {
  jobject images = Recorder("ImageRecorder");
  jobject thrower = Recorder("ThrowingCallback");
  ASSERT_EQ(Register(kOnImage, handle_, images), 0);
  ASSERT_EQ(Register(kOnException, handle_, thrower), 0);
  SetInt(handle_, "PayloadSize", 64);
  // The bridge's own SDK callbacks, called here as the SDK would call them.
  void* library = dlopen(QUORIN_BRIDGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  auto deliverImage = reinterpret_cast<void (*)(unsigned char*, QUORIN_IMAGE_OUT_INFO_EX2*, void*)>(dlsym(library, "ImageCallBack"));
  auto deliverException = reinterpret_cast<void (*)(unsigned int, void*)>(dlsym(library, "ExceptionCallBack"));
  ASSERT_TRUE(deliverImage != nullptr && deliverException != nullptr);
  void* imageContext = SdkHandle(handle_, "lImageCallParam");
  void* exceptionContext = SdkHandle(handle_, "lExceptionCallParam");

  auto codes = std::make_unique<QUORIN_RESULT_BCR_EX>();
  codes->nCodeNum = 2;
  std::strcpy(codes->stBcrInfoEx[0].chCode, "ON-THIS-THREAD");
  QUORIN_IMAGE_OUT_INFO_EX2 frame{};
  frame.nWidth = 8;
  frame.nHeight = 8;
  frame.nFrameLen = 64;
  frame.pstCodeListEx = codes.get();
  unsigned char pixels[64] = {9};
  jvmtiEnv* jvmti = FootprintJvmti(env_);
  ASSERT_NE(jvmti, nullptr);
  deliverImage(pixels, &frame, imageContext);  // the image array is made once, before counting
  const Footprint before = MeasureFootprint(env_, jvmti);
  for (int i = 0; i < 200; ++i) deliverImage(pixels, &frame, imageContext);
  for (int i = 0; i < 3; ++i) {  // each prints its stack trace through the default handler
    deliverException(7, exceptionContext);
    ASSERT_FALSE(env_->ExceptionCheck()) << "a callback's exception was left pending, delivery " << i;
  }
  const Footprint after = MeasureFootprint(env_, jvmti);
  jvmti->DisposeEnvironment();
  EXPECT_EQ(after.localRefs, before.localRefs);
  EXPECT_EQ(after.globalRefs, before.globalRefs);
  EXPECT_EQ(Int(images, "calls"), 201);
  EXPECT_EQ(Int(images, "codeCount"), 2);
  EXPECT_EQ(String(images, "firstCode"), "ON-THIS-THREAD");
  EXPECT_EQ(Int(thrower, "calls"), 3);
}

}  // namespace
}  // namespace quorin_test
