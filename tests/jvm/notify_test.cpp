// Exception, event and trigger callbacks delivered from the stand-in's own threads, and what
// destroying a Handle releases and keeps.
#include <dlfcn.h>

#include <cstring>
#include <memory>

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
  jint Register(const char* method, jobject handle, jobject callback) {
    return CallInt(method, ("(" + kHandleSig + "Ljava/lang/Object;)I").c_str(), handle, callback);
  }
  jobject Recorder(const char* name) { return New(std::string("QuorinTest/") + name); }
  jlong ThisThreadId() {
    jclass probes = env_->FindClass("QuorinTest/Probes");
    const jlong id = env_->CallStaticLongMethod(probes, env_->GetStaticMethodID(probes, "currentThreadId", "()J"));
    Checked();
    return id;
  }
  // A weak reference to `target`; the caller's own local reference to it is dropped.
  jobject Weakly(jobject target) {
    jclass probes = env_->FindClass("QuorinTest/Probes");
    jobject ref = env_->CallStaticObjectMethod(
        probes, env_->GetStaticMethodID(probes, "weakly", "(Ljava/lang/Object;)Ljava/lang/ref/WeakReference;"), target);
    Checked();
    env_->DeleteLocalRef(target);
    return ref;
  }
  bool Survives(jobject weak) {
    jclass probes = env_->FindClass("QuorinTest/Probes");
    const bool alive = env_->CallStaticBooleanMethod(
        probes, env_->GetStaticMethodID(probes, "survivesCollection", "(Ljava/lang/ref/WeakReference;)Z"), weak);
    Checked();
    return alive;
  }
  jobject handle_ = nullptr;
  void* sdk_ = nullptr;
};

TEST_F(NotifyTest, ExceptionMessagesReachJavaOnAnSdkThread) {
  jobject recorder = Recorder("ExceptionRecorder");
  // A null callback with nothing registered clears the SDK's side and makes no context.
  EXPECT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, nullptr), 0);
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), 0);
  EXPECT_FALSE(qsim::FireException(sdk_, 1));

  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, recorder), 0);
  EXPECT_NE(Long(handle_, "lExceptionCallParam"), 0);
  ASSERT_TRUE(qsim::FireException(sdk_, 0x80000001u));
  EXPECT_EQ(Int(recorder, "calls"), 1);
  EXPECT_EQ(Int(recorder, "lastMsgType"), -2147483647);  // the same 32 bits
  EXPECT_NE(Long(recorder, "threadId"), ThisThreadId());
}

TEST_F(NotifyTest, ReRegistrationReusesTheContextAndKeepsTheOldCallbackAlive) {
  jobject first = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, first), 0);
  const jlong context = Long(handle_, "lExceptionCallParam");
  jobject second = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, second), 0);
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), context);
  ASSERT_TRUE(qsim::FireException(sdk_, 7));
  EXPECT_EQ(Int(first, "calls"), 0);
  EXPECT_EQ(Int(second, "calls"), 1);
  // The earlier reference is deliberately left alive.
  EXPECT_TRUE(Survives(Weakly(first)));

  // Unregistering clears only the SDK's side; the context stays for the next registration.
  EXPECT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, nullptr), 0);
  EXPECT_FALSE(qsim::FireException(sdk_, 7));
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), context);
}

TEST_F(NotifyTest, CallbacksThatThrowOrLackTheMethodDoNotHurtTheProcess) {
  jobject thrower = New("QuorinTest/ThrowingCallback");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, thrower), 0);
  EXPECT_TRUE(qsim::FireException(sdk_, 1));
  EXPECT_TRUE(qsim::FireException(sdk_, 2));
  EXPECT_EQ(Int(thrower, "calls"), 2);

  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, Str("not a callback")), 0);
  EXPECT_TRUE(qsim::FireException(sdk_, 3));  // delivered to nothing

  jobject recorder = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, recorder), 0);
  EXPECT_TRUE(qsim::FireException(sdk_, 4));
  EXPECT_EQ(Int(recorder, "lastMsgType"), 4);
}

TEST_F(NotifyTest, EventsFillOneReusedRecord) {
  jobject recorder = Recorder("EventRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterAllEventCallBack", handle_, recorder), 0);
  QUORIN_EVENT_OUT_INFO event{};
  std::strcpy(event.EventName, "AcquisitionStart");
  event.nEventID = 0xFFFF;
  event.nStreamChannel = 2;
  event.nBlockIdLow = 0x80000000;
  event.nTimestampHigh = 12;
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(String(recorder, "name"), "AcquisitionStart");
  EXPECT_EQ(Short(recorder, "eventId"), -1);
  EXPECT_EQ(Short(recorder, "streamChannel"), 2);
  EXPECT_EQ(Int(recorder, "blockIdLow"), static_cast<jint>(0x80000000u));
  EXPECT_EQ(Int(recorder, "timestampHigh"), 12);
  EXPECT_EQ(Int(recorder, "dataSize"), 8);
  EXPECT_EQ(Bytes(Object(recorder, "data", "[B")), (std::vector<unsigned char>{1, 2, 3, 4, 5, 6, 7, 8}));

  std::strcpy(event.EventName, "AcquisitionEnd");
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {}));
  EXPECT_EQ(String(recorder, "name"), "AcquisitionEnd");
  EXPECT_EQ(Int(recorder, "dataSize"), 0);
  ASSERT_NE(Object(recorder, "data", "[B"), nullptr);  // an empty array, not null
  EXPECT_EQ(Bytes(Object(recorder, "data", "[B")).size(), 0u);
  EXPECT_TRUE(env_->IsSameObject(Object(recorder, "firstRecord", "Ljava/lang/Object;"),
                                 Object(recorder, "lastRecord", "Ljava/lang/Object;")));

  // A new registration keeps the record made by earlier deliveries.
  jobject next = Recorder("EventRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterAllEventCallBack", handle_, next), 0);
  ASSERT_TRUE(qsim::FireEvent(sdk_, event, {9}));
  EXPECT_TRUE(env_->IsSameObject(Object(next, "lastRecord", "Ljava/lang/Object;"),
                                 Object(recorder, "firstRecord", "Ljava/lang/Object;")));
}

TEST_F(NotifyTest, GrabbingReportsStartAndEndEvents) {
  jobject recorder = Recorder("EventRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterAllEventCallBack", handle_, recorder), 0);
  qsim::SetAutoFrames(false);
  ASSERT_EQ(CallInt("QUORIN_StartGrabbing", ("(" + kHandleSig + ")I").c_str(), handle_), 0);
  ASSERT_EQ(CallInt("QUORIN_StopGrabbing", ("(" + kHandleSig + ")I").c_str(), handle_), 0);
  EXPECT_EQ(Int(recorder, "calls"), 2);
  EXPECT_EQ(String(recorder, "name"), "AcquisitionEnd");
  EXPECT_NE(Long(recorder, "threadId"), ThisThreadId());
}

TEST_F(NotifyTest, TriggerNoticesCarryTheirWordsAsTheyAre) {
  jobject recorder = Recorder("TriggerRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterTriggerCallBack", handle_, recorder), 0);
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
  EXPECT_EQ(Int(recorder, "triggerIndex"), 42);
  EXPECT_EQ(Int(recorder, "timeLow"), -2);
  EXPECT_EQ(Short(recorder, "forceOver"), -1);
  EXPECT_EQ(Short(recorder, "mainCam"), 1);
  EXPECT_EQ(Long(recorder, "hostTimeStamp"), static_cast<jlong>(0x8000000000000123ull));
  EXPECT_TRUE(env_->IsSameObject(Object(recorder, "firstRecord", "Ljava/lang/Object;"),
                                 Object(recorder, "lastRecord", "Ljava/lang/Object;")));
}

TEST_F(NotifyTest, DestroyReleasesEveryContextButTheTriggers) {
  jobject exceptions = Recorder("ExceptionRecorder");
  jobject events = Recorder("EventRecorder");
  jobject triggers = Recorder("TriggerRecorder");
  jobject images = Recorder("ImageRecorder");
  for (const auto& [method, callback] : {std::pair{"QUORIN_RegisterExceptionCallBack", exceptions},
                                         {"QUORIN_RegisterAllEventCallBack", events},
                                         {"QUORIN_RegisterTriggerCallBack", triggers},
                                         {"QUORIN_RegisterImageCallBackEx2", images}}) {
    ASSERT_EQ(Register(method, handle_, callback), 0) << method;
  }
  const jlong triggerContext = Long(handle_, "lTriggerCallParam");
  ASSERT_NE(triggerContext, 0);
  jobject weakExceptions = Weakly(exceptions);
  jobject weakEvents = Weakly(events);
  jobject weakTriggers = Weakly(triggers);
  jobject weakImages = Weakly(images);

  ASSERT_EQ(CallInt("QUORIN_CloseDevice", ("(" + kHandleSig + ")I").c_str(), handle_), 0);
  ASSERT_EQ(CallInt("QUORIN_DestroyHandle", ("(" + kHandleSig + ")I").c_str(), handle_), 0);
  EXPECT_EQ(Long(handle_, "lExceptionCallParam"), 0);
  EXPECT_EQ(Long(handle_, "lAllEventCallParam"), 0);
  EXPECT_EQ(Long(handle_, "lImageCallParam"), 0);
  EXPECT_EQ(Long(handle_, "lTriggerCallParam"), triggerContext);  // outlives the handle, by design
  EXPECT_FALSE(Survives(weakExceptions));
  EXPECT_FALSE(Survives(weakEvents));
  EXPECT_FALSE(Survives(weakImages));
  EXPECT_TRUE(Survives(weakTriggers));
}

// A registration the SDK refuses changes nothing: the standing callback keeps its deliveries, and
// a refused first registration keeps nothing of the callback alive.
TEST_F(NotifyTest, RefusedRegistrationLeavesTheStandingOneInPlace) {
  jobject first = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, first), 0);
  qsim::ScriptStatus("QUORIN_RegisterExceptionCallBack", qsim::kBusy);
  EXPECT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, Recorder("ExceptionRecorder")),
            static_cast<jint>(qsim::kBusy));
  ASSERT_TRUE(qsim::FireException(sdk_, 7));
  EXPECT_EQ(Int(first, "calls"), 1);
  EXPECT_EQ(Int(first, "lastMsgType"), 7);

  jobject other = OpenReader(1);
  qsim::ScriptStatus("QUORIN_RegisterAllEventCallBack", qsim::kBusy);
  jobject refused = Recorder("EventRecorder");
  EXPECT_EQ(Register("QUORIN_RegisterAllEventCallBack", other, refused), static_cast<jint>(qsim::kBusy));
  EXPECT_NE(Long(other, "lAllEventCallParam"), 0);  // the record stays with the Handle
  EXPECT_FALSE(Survives(Weakly(refused)));
}

// A context word Java made up, or copied from another Handle or field, is refused and never freed;
// the Handle that owns the context keeps its deliveries.
TEST_F(NotifyTest, ContextWordsJavaForgedAreNeverUsed) {
  jobject owner = Recorder("ExceptionRecorder");
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, owner), 0);
  const jlong context = Long(handle_, "lExceptionCallParam");
  jobject other = OpenReader(1);
  SetLong(other, "lExceptionCallParam", context);
  SetLong(other, "lAllEventCallParam", 0x5A5A5A5A);
  SetLong(handle_, "lImageCallParam", context);
  qsim::ClearCalls();
  EXPECT_EQ(Register("QUORIN_RegisterExceptionCallBack", other, Recorder("ExceptionRecorder")), kBadArgument);
  EXPECT_EQ(Register("QUORIN_RegisterAllEventCallBack", other, Recorder("EventRecorder")), kBadArgument);
  EXPECT_EQ(Register("QUORIN_RegisterImageCallBackEx2", handle_, Recorder("ImageRecorder")), kBadArgument);
  EXPECT_TRUE(qsim::Calls().empty());

  ASSERT_EQ(CallInt("QUORIN_DestroyHandle", ("(" + kHandleSig + ")I").c_str(), other), 0);
  EXPECT_EQ(Long(other, "lExceptionCallParam"), context);  // left as Java wrote it
  EXPECT_EQ(Long(other, "lAllEventCallParam"), 0x5A5A5A5A);
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
  ASSERT_EQ(CallInt("QUORIN_RegisterImageCallBackEx2", ("(" + kHandleSig + "Ljava/lang/Object;)I").c_str(), handle_,
                    images), 0);
  ASSERT_EQ(Register("QUORIN_RegisterExceptionCallBack", handle_, thrower), 0);
  SetInt(handle_, "PayloadSize", 64);
  void* library = dlopen(QUORIN_BRIDGE_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr);
  using ImageCallBack = void (*)(unsigned char*, QUORIN_IMAGE_OUT_INFO_EX2*, void*);
  using ExceptionCallBack = void (*)(unsigned int, void*);
  auto deliverImage = reinterpret_cast<ImageCallBack>(dlsym(library, "ImageCallBack"));
  auto deliverException = reinterpret_cast<ExceptionCallBack>(dlsym(library, "ExceptionCallBack"));
  ASSERT_NE(deliverImage, nullptr);
  ASSERT_NE(deliverException, nullptr);
  auto* imageContext = reinterpret_cast<void*>(static_cast<uintptr_t>(Long(handle_, "lImageCallParam")));
  auto* exceptionContext = reinterpret_cast<void*>(static_cast<uintptr_t>(Long(handle_, "lExceptionCallParam")));

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
  JNIEnv* stillAttached = nullptr;
  JavaVM* vm = nullptr;
  env_->GetJavaVM(&vm);
  EXPECT_EQ(vm->GetEnv(reinterpret_cast<void**>(&stillAttached), JNI_VERSION_1_4), JNI_OK);
}

}  // namespace
}  // namespace quorin_test
