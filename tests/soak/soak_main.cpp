// A bounded soak: several virtual readers grab for minutes while Java polls frames and takes image,
// event and trigger callbacks; callbacks are registered again, parameters go back and forth, and
// readers drop off the network and come back. Memory must stay flat.
// Usage: bridge_soak [minutes]   (default 3; not part of the test suite)
#include <gtest/gtest.h>

#include <array>
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
constexpr auto kReRegisterEvery = std::chrono::seconds(1);
constexpr auto kReconnectEvery = std::chrono::seconds(2);
constexpr auto kReportEvery = std::chrono::seconds(30);
constexpr jint kWidth = 320;
constexpr jint kHeight = 240;
constexpr float kFrameRate = 50;
constexpr jint kPollTimeoutMs = 20;

// Growth allowed from the end of the warm-up to the end. A registration over another keeps the
// earlier global references by design, and a destroyed handle keeps its trigger context and its
// image array (PayloadSize bytes): both are counted and allowed for per event.
constexpr long kGlobalRefsPerRegistration = 4 * 6 + 2 + 3 + 3;  // four image channels, exception, event, trigger
constexpr long kHeapSlack = 1L << 20;
constexpr long kHeapPerNewHandle = kWidth * kHeight + 4096;
constexpr long kCHeapSlack = 2L << 20;
constexpr long kCHeapPerRegistration = 1024;
// The resident set also takes in the arenas and stacks of the threads the stand-in starts per
// grabbing session and notice (some 6 MB a minute here while the C heap in use stays flat).
constexpr long kResidentSlack = 24L << 20;
constexpr long kResidentPerMinute = 8L << 20;

// One reader and how it hands frames over: polled, or pushed to image callbacks per channel.
struct Slot {
  int reader;
  bool polled;
  int channels;
  bool decodes;
  jobject handle = nullptr;  // global references from here on
  jobject images = nullptr;
  jobject events = nullptr;
  jobject triggers = nullptr;
  jobject exceptions = nullptr;
  int lives = 0;
};

// Deliveries the recorders have seen, over every life of every slot: images, events, triggers, exceptions.
using Deliveries = std::array<long, 4>;

struct Counts {
  long polled = 0;
  long parameterCalls = 0;
  long parameterFailures = 0;
  long fetchFailures = 0;
  long reRegistrations = 0;
  long reconnects = 0;
  long reopened = 0;
  long recreated = 0;
  long missedDisconnectNotices = 0;
};

class SoakTest : public JvmTest {
 protected:
  std::string H(const std::string& rest) { return "(" + kHandleSig + rest; }
  jint Status(const char* method, jobject handle) { return CallInt(method, H(")I").c_str(), handle); }
  jobject Global(jobject local) {
    jobject global = env_->NewGlobalRef(local);
    env_->DeleteLocalRef(local);
    return global;
  }
  int Calls(jobject recorder) { return recorder == nullptr ? 0 : Int(recorder, "calls"); }
  Deliveries Delivered(const std::vector<Slot>& slots) {
    Deliveries total{};
    for (const Slot& slot : slots) {
      const jobject recorders[] = {slot.images, slot.events, slot.triggers, slot.exceptions};
      for (size_t i = 0; i < total.size(); ++i) total[i] += Calls(recorders[i]);
    }
    return total;
  }

  // Every callback of the slot, registered on its current handle.
  bool Register(Slot& slot) {
    const std::string object = "Ljava/lang/Object;)I";
    bool ok = CallInt("QUORIN_RegisterExceptionCallBack", H(object).c_str(), slot.handle, slot.exceptions) == 0;
    ok &= CallInt("QUORIN_RegisterAllEventCallBack", H(object).c_str(), slot.handle, slot.events) == 0;
    ok &= CallInt("QUORIN_RegisterTriggerCallBack", H(object).c_str(), slot.handle, slot.triggers) == 0;
    if (!slot.polled) {
      for (jint channel = 0; channel < slot.channels; ++channel) {
        ok &= CallInt("QUORIN_MSC_RegisterImageCallBack", H("I" + object).c_str(), slot.handle, channel,
                      slot.images) == 0;
      }
    }
    return ok;
  }

  // Opens the slot's handle, makes frames small and fast, registers and starts grabbing.
  bool Start(Slot& slot) {
    if (Status("QUORIN_OpenDevice", slot.handle) != 0) return false;
    const std::string key = "Ljava/lang/String;";
    bool ok = CallInt("QUORIN_SetIntValue", H(key + "J)I").c_str(), slot.handle, Str("Width"), jlong{kWidth}) == 0;
    ok &= CallInt("QUORIN_SetIntValue", H(key + "J)I").c_str(), slot.handle, Str("Height"), jlong{kHeight}) == 0;
    ok &= CallInt("QUORIN_SetFloatValue", H(key + "F)I").c_str(), slot.handle, Str("AcquisitionFrameRate"),
                  static_cast<double>(kFrameRate)) == 0;
    ok &= Register(slot);
    ok &= Status("QUORIN_StartGrabbing", slot.handle) == 0;
    return ok;
  }

  bool Create(Slot& slot) {
    jobject devices = CallObject("QUORIN_EnumIDDevices", "()Ljava/util/ArrayList;");
    if (devices == nullptr) return false;
    jobject handle = CallObject("QUORIN_CreateHandle", ("(" + kDeviceInfoSig + ")" + kHandleSig).c_str(),
                                ListGet(devices, slot.reader));
    if (handle == nullptr) return false;
    slot.handle = Global(handle);
    ++slot.lives;
    return Start(slot);
  }

  // The reader drops off the network; the handle is closed, then opened again or, every other
  // time, destroyed and made anew.
  void Reconnect(Slot& slot, Counts& counts) {
    const int noticesBefore = Calls(slot.exceptions);
    qsim::SimulateDisconnect(SdkHandle(slot.handle));
    if (Calls(slot.exceptions) != noticesBefore + 1 ||
        Int(slot.exceptions, "lastMsgType") != static_cast<jint>(QUORIN_EXCEPTION_DEV_DISCONNECT)) {
      ++counts.missedDisconnectNotices;
    }
    EXPECT_EQ(Status("QUORIN_CloseDevice", slot.handle), 0) << "reader " << slot.reader;
    ++counts.reconnects;
    if (counts.reconnects % 2 == 1) {
      ++counts.reopened;
      EXPECT_TRUE(Start(slot)) << "reader " << slot.reader;
      return;
    }
    ++counts.recreated;
    EXPECT_EQ(Status("QUORIN_DestroyHandle", slot.handle), 0) << "reader " << slot.reader;
    env_->DeleteGlobalRef(slot.handle);
    slot.handle = nullptr;
    EXPECT_TRUE(Create(slot)) << "reader " << slot.reader;
  }

  // Frames waiting on a polled reader, through the three fetches in turn.
  void Poll(Slot& slot, long iteration, Counts& counts) {
    for (int i = 0; i < 8; ++i) {
      jint status = 0;
      switch ((iteration + i) % 3) {
        case 0:
          status = CallInt("QUORIN_GetOneFrameTimeoutEx2", H("[B" + ex2Sig_ + "I)I").c_str(), slot.handle, image_,
                           frame_, kPollTimeoutMs);
          break;
        case 1:
          status = CallInt("QUORIN_MSC_GetOneFrameTimeout", H("[B" + ex2Sig_ + "II)I").c_str(), slot.handle, image_,
                           frame_, 0, kPollTimeoutMs);
          break;
        default:
          status = CallInt("QUORIN_GetOneFrameTimeout", H("[B" + legacySig_ + "I)I").c_str(), slot.handle, image_,
                           legacyFrame_, kPollTimeoutMs);
      }
      if (status == static_cast<jint>(qsim::kNoData)) return;
      if (status == 0) {
        ++counts.polled;
      } else {
        ++counts.fetchFailures;
      }
    }
  }

  // A record filled by a typed getter, or null when the call failed.
  jobject Got(const char* method, const char* record, jobject handle, const char* key) {
    jobject value = NewDefine(record);
    const std::string sig = H("Ljava/lang/String;L" + Define(record) + ";)I");
    return CallInt(method, sig.c_str(), handle, Str(key), value) == 0 ? value : nullptr;
  }

  // A round of typed parameters (and the decoder's, where there is one), read back where they can be.
  void Parameters(Slot& slot, long iteration, Counts& counts) {
    const std::string key = "Ljava/lang/String;";
    auto check = [&](bool ok) {
      ++counts.parameterCalls;
      if (!ok) ++counts.parameterFailures;
    };
    jobject h = slot.handle;
    const float exposure = 100.0f + static_cast<float>(iteration % 50) * 10.0f;
    check(CallInt("QUORIN_SetFloatValue", H(key + "F)I").c_str(), h, Str("ExposureTime"), double{exposure}) == 0);
    jobject value = Got("QUORIN_GetFloatValue", "QUORIN_FLOAT_VALUE", h, "ExposureTime");
    check(value && Float(value, "fCurValue") == exposure);
    const bool reverse = iteration % 2 == 0;
    check(CallInt("QUORIN_SetBoolValue", H(key + "Z)I").c_str(), h, Str("ReverseX"), reverse ? JNI_TRUE : JNI_FALSE) == 0);
    value = Got("QUORIN_GetBoolValue", "QUORIN_BOOL_VALUE", h, "ReverseX");
    check(value && Bool(value, "bCurValue") == reverse);
    const std::string name = "soak-" + std::to_string(iteration % 100000);
    check(CallInt("QUORIN_SetStringValue", H(key + key + ")I").c_str(), h, Str("DeviceUserID"), Str(name)) == 0);
    value = Got("QUORIN_GetStringValue", "QUORIN_STRING_VALUE", h, "DeviceUserID");
    check(value && String(value, "chCurValue") == name);
    value = Got("QUORIN_GetEnumValue", "QUORIN_ENUM_VALUE", h, "PixelFormat");
    check(value && ListSize(Object(value, "lsSupportValue", "Ljava/util/ArrayList;")) == 2);
    value = Got("QUORIN_GetIntValue", "QUORIN_INT_VALUE", h, "Width");
    check(value && Long(value, "nCurValue") == kWidth);
    if (!slot.decodes) return;
    const jint codes = 1 + static_cast<jint>(iteration % 10);
    check(CallInt("QUORIN_Algorithm_SetIntValue", H(key + "I)I").c_str(), h, Str("MaxCodeCount"), codes) == 0);
    value = Got("QUORIN_Algorithm_GetIntValue", "QUORIN_ALGORITHM_INT_VALUE", h, "MaxCodeCount");
    check(value && Long(value, "lOutValue") == codes);
  }

  // Measured with every reader stopped, so that no delivery allocates while the heap is read.
  Footprint Paused(std::vector<Slot>& slots, jvmtiEnv* jvmti) {
    for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StopGrabbing", slot.handle), 0) << "reader " << slot.reader;
    const Footprint footprint = MeasureFootprint(env_, jvmti);
    for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StartGrabbing", slot.handle), 0) << "reader " << slot.reader;
    return footprint;
  }

  std::string ex2Sig_ = "L" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";";
  std::string legacySig_ = "L" + Define("QUORIN_FRAME_OUT_INFO") + ";";
  jobject image_ = nullptr;
  jobject frame_ = nullptr;
  jobject legacyFrame_ = nullptr;
};

void Print(const std::string& when, const Footprint& footprint) {
  std::printf("%-6s resident %8.1f MB, Java heap after GC %8.1f KB, C heap %8.1f KB, JNI global references %ld\n",
              when.c_str(), static_cast<double>(footprint.resident) / (1 << 20), static_cast<double>(footprint.heap) / 1024,
              static_cast<double>(footprint.cHeap) / 1024, footprint.globalRefs);
  std::fflush(stdout);
}

TEST_F(SoakTest, ReadersPollCallBackAndComeBack) {
  jvmtiEnv* jvmti = FootprintJvmti(env_);
  ASSERT_NE(jvmti, nullptr);
  // The 2-D reader is polled; the 4-channel reader and the area camera push frames to callbacks.
  std::vector<Slot> slots = {{0, true, 1, true}, {1, false, 4, true}, {3, false, 1, false}};
  image_ = Global(env_->NewByteArray(kWidth * kHeight));
  frame_ = Global(NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"));
  legacyFrame_ = Global(NewDefine("QUORIN_FRAME_OUT_INFO"));
  for (Slot& slot : slots) {
    slot.images = Global(New("QuorinTest/ImageRecorder"));
    slot.events = Global(New("QuorinTest/EventRecorder"));
    slot.triggers = Global(New("QuorinTest/TriggerRecorder"));
    slot.exceptions = Global(New("QuorinTest/ExceptionRecorder"));
    ASSERT_TRUE(Create(slot)) << "reader " << slot.reader;
  }

  Counts counts;
  Footprint start;
  Deliveries warmDeliveries{};
  bool warm = false;
  const auto began = Clock::now();
  const auto warmUntil = began + kWarmUp;
  const auto end = warmUntil + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(g_minutes * 60));
  auto nextReRegistration = began + kReRegisterEvery;
  auto nextReconnect = began + kReconnectEvery;
  size_t reRegisterSlot = 0;
  size_t reconnectSlot = 0;
  auto nextReport = warmUntil + kReportEvery;
  for (long iteration = 0; Clock::now() < end && !HasFailure(); ++iteration) {
    ASSERT_EQ(env_->PushLocalFrame(64), 0);
    for (Slot& slot : slots) {
      if (slot.polled) Poll(slot, iteration, counts);
    }
    Slot& tuned = slots[static_cast<size_t>(iteration) % slots.size()];
    Parameters(tuned, iteration, counts);
    const auto now = Clock::now();
    if (now >= nextReRegistration) {
      Slot& slot = slots[reRegisterSlot++ % slots.size()];
      EXPECT_TRUE(Register(slot)) << "reader " << slot.reader;
      ++counts.reRegistrations;
      nextReRegistration = now + kReRegisterEvery;
    }
    if (now >= nextReconnect) {
      Reconnect(slots[reconnectSlot++ % slots.size()], counts);
      nextReconnect = now + kReconnectEvery;
    }
    env_->PopLocalFrame(nullptr);
    if (!warm && Clock::now() >= warmUntil) {
      warm = true;
      counts = Counts{};
      warmDeliveries = Delivered(slots);
      start = Paused(slots, jvmti);
      Print("start", start);
    }
    if (warm && Clock::now() >= nextReport) {
      nextReport += kReportEvery;
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - warmUntil).count();
      Print(std::to_string(seconds) + " s", Paused(slots, jvmti));
    }
  }
  ASSERT_TRUE(warm);

  for (Slot& slot : slots) EXPECT_EQ(Status("QUORIN_StopGrabbing", slot.handle), 0);
  Deliveries all = Delivered(slots);
  for (size_t i = 0; i < all.size(); ++i) all[i] -= warmDeliveries[i];
  const Footprint finish = MeasureFootprint(env_, jvmti);
  Print("end", finish);
  const long registrations = counts.reRegistrations + counts.reconnects;
  const long heapBound = kHeapSlack + counts.recreated * kHeapPerNewHandle;
  const long cHeapBound = kCHeapSlack + registrations * kCHeapPerRegistration;
  const long residentBound = kResidentSlack + static_cast<long>(g_minutes * kResidentPerMinute);
  const long globalRefsBound = registrations * kGlobalRefsPerRegistration;
  std::printf("%.1f minutes after a %lld s warm-up, on %zu readers:\n"
              "  frames polled %ld (fetch failures %ld), image callbacks %ld, events %ld, trigger notices %ld, "
              "exception notices %ld\n"
              "  parameter calls %ld (failed %ld); re-registrations %ld; disconnects %ld (reopened %ld, handle "
              "made anew %ld; notices missed %ld)\n"
              "  growth: resident %+.1f MB (bound %.0f), Java heap %+.1f KB (bound %.0f), C heap %+.1f KB (bound "
              "%.0f), JNI global references %+ld (bound %ld)\n",
              g_minutes, static_cast<long long>(kWarmUp.count()), slots.size(), counts.polled, counts.fetchFailures,
              all[0], all[1], all[2], all[3], counts.parameterCalls, counts.parameterFailures,
              counts.reRegistrations, counts.reconnects, counts.reopened, counts.recreated,
              counts.missedDisconnectNotices, static_cast<double>(finish.resident - start.resident) / (1 << 20),
              static_cast<double>(residentBound) / (1 << 20), static_cast<double>(finish.heap - start.heap) / 1024,
              static_cast<double>(heapBound) / 1024, static_cast<double>(finish.cHeap - start.cHeap) / 1024,
              static_cast<double>(cHeapBound) / 1024, finish.globalRefs - start.globalRefs, globalRefsBound);

  EXPECT_GT(counts.polled, 0);
  EXPECT_GT(all[0], 0);  // images
  EXPECT_GT(all[2], 0);  // trigger notices
  EXPECT_EQ(counts.fetchFailures, 0);
  EXPECT_EQ(counts.parameterFailures, 0);
  EXPECT_EQ(counts.missedDisconnectNotices, 0);
  EXPECT_GT(counts.reconnects, 0);
  EXPECT_LT(finish.heap - start.heap, heapBound);
  EXPECT_LE(finish.globalRefs - start.globalRefs, globalRefsBound);
  EXPECT_LT(finish.cHeap - start.cHeap, cHeapBound);
#ifndef QUORIN_TEST_ASAN  // the sanitizer's quarantine holds freed memory resident
  EXPECT_LT(finish.resident - start.resident, residentBound);
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
