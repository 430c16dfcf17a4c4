// A bounded soak: readers grab for minutes while Java polls frames and takes image, event and
// trigger callbacks; callbacks are registered again, parameters go back and forth, and readers
// drop off the network and come back. Memory must stay flat.
// Usage: bridge_soak [minutes]   (default 3; not part of the test suite)
#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

using Clock = std::chrono::steady_clock;
double g_minutes = 3;

constexpr auto kWarmUp = std::chrono::seconds(20);  // every slot has reconnected by then
constexpr jint kWidth = 320;
constexpr jint kHeight = 240;
// Growth allowed after the warm-up. A registration over another keeps the earlier global
// references by design (four image channels, exception, event, trigger), and a destroyed handle
// keeps its trigger context and its image array.
constexpr long kGlobalRefsPerRegistration = 4 * 6 + 2 + 3 + 3;
constexpr long kHeapSlack = 1L << 20;
constexpr long kHeapPerNewHandle = kWidth * kHeight + 4096;
constexpr long kCHeapSlack = 2L << 20;
constexpr long kCHeapPerRegistration = 1024;
// The resident set also takes in the arenas and stacks of the threads the stand-in starts per
// grabbing session and notice, while the C heap in use stays flat.
constexpr long kResidentSlack = 24L << 20;
constexpr long kResidentPerMinute = 8L << 20;

enum Recorder { kExceptions, kEvents, kTriggers, kImages, kRecorders };
constexpr const char* kRecorderClasses[] = {"QuorinTest/ExceptionRecorder", "QuorinTest/EventRecorder",
                                            "QuorinTest/TriggerRecorder", "QuorinTest/ImageRecorder"};

// One reader: polled (no image channels), or pushing frames to a callback per channel.
struct Slot {
  int reader;
  int imageChannels;
  bool decodes;
  jobject handle = nullptr;  // global references, as are the recorders
  jobject recorders[kRecorders] = {};
};

class SoakTest : public JvmTest {
 protected:
  static std::string Sig(const std::string& arguments) { return "(" + kHandleSig + arguments + ")I"; }
  jint Status(const char* method, jobject handle) { return CallInt(method, Sig("").c_str(), handle); }
  jobject Global(jobject local) {
    jobject global = env_->NewGlobalRef(local);
    env_->DeleteLocalRef(local);
    return global;
  }
  long Delivered(const std::vector<Slot>& slots, Recorder recorder) {
    long total = 0;
    for (const Slot& slot : slots) total += Int(slot.recorders[recorder], "calls");
    return total;
  }

  void Register(Slot& slot) {
    const char* kObject = "Ljava/lang/Object;";
    const char* methods[] = {"QUORIN_RegisterExceptionCallBack", "QUORIN_RegisterAllEventCallBack",
                             "QUORIN_RegisterTriggerCallBack"};
    for (int r = kExceptions; r <= kTriggers; ++r) {
      EXPECT_EQ(CallInt(methods[r], Sig(kObject).c_str(), slot.handle, slot.recorders[r]), 0) << methods[r];
    }
    for (jint channel = 0; channel < slot.imageChannels; ++channel) {
      EXPECT_EQ(CallInt("QUORIN_MSC_RegisterImageCallBack", Sig(std::string("I") + kObject).c_str(), slot.handle,
                        channel, slot.recorders[kImages]),
                0);
    }
  }

  void Start(Slot& slot) {
    ASSERT_EQ(Status("QUORIN_OpenDevice", slot.handle), 0) << "reader " << slot.reader;
    const std::string setInt = Sig("Ljava/lang/String;J");
    EXPECT_EQ(CallInt("QUORIN_SetIntValue", setInt.c_str(), slot.handle, Str("Width"), jlong{kWidth}), 0);
    EXPECT_EQ(CallInt("QUORIN_SetIntValue", setInt.c_str(), slot.handle, Str("Height"), jlong{kHeight}), 0);
    EXPECT_EQ(CallInt("QUORIN_SetFloatValue", Sig("Ljava/lang/String;F").c_str(), slot.handle,
                      Str("AcquisitionFrameRate"), 50.0),
              0);
    Register(slot);
    EXPECT_EQ(Status("QUORIN_StartGrabbing", slot.handle), 0);
  }

  void Create(Slot& slot) {
    jobject devices = CallObject("QUORIN_EnumIDDevices", "()Ljava/util/ArrayList;");
    ASSERT_NE(devices, nullptr);
    slot.handle = Global(CallObject("QUORIN_CreateHandle", ("(" + kDeviceInfoSig + ")" + kHandleSig).c_str(),
                                    ListGet(devices, slot.reader)));
    ASSERT_NE(slot.handle, nullptr);
    Start(slot);
  }

  // The reader drops off the network and is closed, then opened again or made anew in turns.
  void Reconnect(Slot& slot, bool anew) {
    const int notices = Int(slot.recorders[kExceptions], "calls");
    qsim::SimulateDisconnect(SdkHandle(slot.handle));
    EXPECT_EQ(Int(slot.recorders[kExceptions], "calls"), notices + 1) << "reader " << slot.reader;
    EXPECT_EQ(Int(slot.recorders[kExceptions], "lastMsgType"), static_cast<jint>(QUORIN_EXCEPTION_DEV_DISCONNECT));
    EXPECT_EQ(Status("QUORIN_CloseDevice", slot.handle), 0);
    if (!anew) return Start(slot);
    EXPECT_EQ(Status("QUORIN_DestroyHandle", slot.handle), 0);
    env_->DeleteGlobalRef(slot.handle);
    Create(slot);
  }

  // Frames waiting on a polled reader, through the three fetches in turn; the count of frames.
  long Poll(Slot& slot, long iteration) {
    const std::string ex2 = "[BL" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";";
    const std::string legacy = "[BL" + Define("QUORIN_FRAME_OUT_INFO") + ";";
    for (int i = 0; i < 8; ++i) {
      jint status = 0;
      switch ((iteration + i) % 3) {
        case 0:
          status = CallInt("QUORIN_GetOneFrameTimeoutEx2", Sig(ex2 + "I").c_str(), slot.handle, image_, frame_, 20);
          break;
        case 1:
          status = CallInt("QUORIN_MSC_GetOneFrameTimeout", Sig(ex2 + "II").c_str(), slot.handle, image_, frame_, 0, 20);
          break;
        default:
          status = CallInt("QUORIN_GetOneFrameTimeout", Sig(legacy + "I").c_str(), slot.handle, image_, legacyFrame_, 20);
      }
      if (status == static_cast<jint>(qsim::kNoData)) return i;
      EXPECT_EQ(status, 0) << "fetch " << (iteration + i) % 3;
    }
    return 8;
  }

  // The record a typed getter filled (its status expected to be 0).
  jobject Got(const std::string& type, jobject handle, const char* key, const char* prefix = "") {
    std::string record = std::string("QUORIN_") + (*prefix ? "ALGORITHM_" : "") + type + "_VALUE";
    for (char& c : record) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    jobject value = NewDefine(record.c_str());
    const std::string method = std::string("QUORIN_") + prefix + "Get" + type + "Value";
    EXPECT_EQ(CallInt(method.c_str(), Sig("Ljava/lang/String;L" + Define(record.c_str()) + ";").c_str(), handle,
                      Str(key), value),
              0)
        << method;
    return value;
  }

  // Typed parameters set and read back, and the decoder's where there is one.
  void Parameters(Slot& slot, long iteration) {
    const std::string key = "Ljava/lang/String;";
    jobject h = slot.handle;
    const float exposure = 100.0f + static_cast<float>(iteration % 50) * 10.0f;
    EXPECT_EQ(CallInt("QUORIN_SetFloatValue", Sig(key + "F").c_str(), h, Str("ExposureTime"), double{exposure}), 0);
    EXPECT_EQ(Float(Got("Float", h, "ExposureTime"), "fCurValue"), exposure);
    const bool reverse = iteration % 2 == 0;
    EXPECT_EQ(CallInt("QUORIN_SetBoolValue", Sig(key + "Z").c_str(), h, Str("ReverseX"), jboolean{reverse}), 0);
    EXPECT_EQ(Bool(Got("Bool", h, "ReverseX"), "bCurValue"), reverse);
    const std::string name = "soak-" + std::to_string(iteration % 100000);
    EXPECT_EQ(CallInt("QUORIN_SetStringValue", Sig(key + key).c_str(), h, Str("DeviceUserID"), Str(name)), 0);
    EXPECT_EQ(String(Got("String", h, "DeviceUserID"), "chCurValue"), name);
    EXPECT_EQ(ListSize(Object(Got("Enum", h, "PixelFormat"), "lsSupportValue", "Ljava/util/ArrayList;")), 2);
    EXPECT_EQ(Long(Got("Int", h, "Width"), "nCurValue"), kWidth);
    if (!slot.decodes) return;
    const jint codes = 1 + static_cast<jint>(iteration % 10);
    EXPECT_EQ(CallInt("QUORIN_Algorithm_SetIntValue", Sig(key + "I").c_str(), h, Str("MaxCodeCount"), codes), 0);
    EXPECT_EQ(Long(Got("Int", h, "MaxCodeCount", "Algorithm_"), "lOutValue"), codes);
  }

  // Measured with every reader stopped, so that no delivery allocates while the heap is read.
  Footprint Paused(std::vector<Slot>& slots, jvmtiEnv* jvmti, const char* when) {
    for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StopGrabbing", slot.handle), 0);
    const Footprint f = MeasureFootprint(env_, jvmti);
    for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StartGrabbing", slot.handle), 0);
    std::printf("%-6s resident %.1f MB, Java heap %.1f KB, C heap %.1f KB, global references %ld\n", when,
                f.resident / 1048576.0, f.heap / 1024.0, f.cHeap / 1024.0, f.globalRefs);
    std::fflush(stdout);
    return f;
  }

  jobject image_ = nullptr;
  jobject frame_ = nullptr;
  jobject legacyFrame_ = nullptr;
};

TEST_F(SoakTest, ReadersPollCallBackAndComeBack) {
  jvmtiEnv* jvmti = FootprintJvmti(env_);
  ASSERT_NE(jvmti, nullptr);
  // The 2-D reader is polled; the 4-channel reader and the area camera push frames to callbacks.
  std::vector<Slot> slots = {{0, 0, true}, {1, 4, true}, {3, 1, false}};
  image_ = Global(env_->NewByteArray(kWidth * kHeight));
  frame_ = Global(NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"));
  legacyFrame_ = Global(NewDefine("QUORIN_FRAME_OUT_INFO"));
  for (Slot& slot : slots) {
    for (int r = 0; r < kRecorders; ++r) slot.recorders[r] = Global(New(kRecorderClasses[r]));
    Create(slot);
  }

  long polled = 0, registrations = 0, recreated = 0, imagesBefore = 0, triggersBefore = 0;
  Footprint start;
  bool warm = false;
  const auto warmUntil = Clock::now() + kWarmUp;
  const auto end = warmUntil + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(g_minutes * 60));
  auto nextReRegistration = Clock::now(), nextReconnect = Clock::now(), nextReport = warmUntil;
  for (long i = 0, turn = 0, reconnects = 0; Clock::now() < end && !HasFailure(); ++i) {
    ASSERT_EQ(env_->PushLocalFrame(64), 0);
    polled += Poll(slots[0], i);
    Parameters(slots[i % slots.size()], i);
    if (Clock::now() >= nextReRegistration) {  // one slot a second
      Register(slots[turn++ % slots.size()]);
      registrations++;
      nextReRegistration = Clock::now() + std::chrono::seconds(1);
    }
    if (Clock::now() >= nextReconnect) {  // one slot every two seconds
      const bool anew = reconnects % 2 == 1;
      Reconnect(slots[reconnects++ % slots.size()], anew);
      registrations++;
      recreated += anew;
      nextReconnect = Clock::now() + std::chrono::seconds(2);
    }
    env_->PopLocalFrame(nullptr);
    if (Clock::now() < nextReport) continue;
    nextReport += std::chrono::seconds(30);
    if (!warm) {
      warm = true;
      polled = registrations = recreated = 0;
      imagesBefore = Delivered(slots, kImages);
      triggersBefore = Delivered(slots, kTriggers);
      start = Paused(slots, jvmti, "start");
    } else {
      Paused(slots, jvmti, "later");
    }
  }
  ASSERT_TRUE(warm);

  for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StopGrabbing", slot.handle), 0);
  const Footprint finish = MeasureFootprint(env_, jvmti);
  std::printf("%.1f minutes: %ld frames polled, %ld image callbacks, %ld registrations, %ld handles made anew\n",
              g_minutes, polled, Delivered(slots, kImages) - imagesBefore, registrations, recreated);
  EXPECT_GT(polled, 0);
  EXPECT_GT(Delivered(slots, kImages), imagesBefore);
  EXPECT_GT(Delivered(slots, kTriggers), triggersBefore);
  EXPECT_GT(recreated, 0);
  EXPECT_LT(finish.heap - start.heap, kHeapSlack + recreated * kHeapPerNewHandle);
  EXPECT_LE(finish.globalRefs - start.globalRefs, registrations * kGlobalRefsPerRegistration);
  EXPECT_LT(finish.cHeap - start.cHeap, kCHeapSlack + registrations * kCHeapPerRegistration);
#ifndef QUORIN_TEST_ASAN  // the sanitizer's quarantine holds freed memory resident
  EXPECT_LT(finish.resident - start.resident, kResidentSlack + static_cast<long>(g_minutes * kResidentPerMinute));
#endif
  for (Slot& slot : slots) {
    EXPECT_EQ(Status("QUORIN_CloseDevice", slot.handle), 0);
    EXPECT_EQ(Status("QUORIN_DestroyHandle", slot.handle), 0);
  }
  jvmti->DisposeEnvironment();
}

}  // namespace
}  // namespace quorin_test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc > 1) quorin_test::g_minutes = std::atof(argv[1]);
  if (quorin_test::g_minutes <= 0) {
    std::fprintf(stderr, "usage: %s [minutes]\n", argv[0]);
    return 2;
  }
  testing::AddGlobalTestEnvironment(new quorin_test::JvmEnvironment);
  return RUN_ALL_TESTS();
}
