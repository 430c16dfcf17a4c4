// Times image-callback deliveries through the Java API: frames pushed into a virtual reader reach a
// Java callback object registered with QuorinCtrl.QUORIN_RegisterImageCallBackEx2, each through the
// bridge's attach, image copy, frame record conversion and Java call. The same pushes into a second
// reader, whose callback is plain C++, time the stand-in's own share of a delivery, and what copying
// the image costs within a delivery; into a third, whose callback is registered through JNA, what
// JNA costs.
#include <jni.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "bench_support.h"

namespace bench {
namespace {

constexpr Scenario kScenarios[] = {
    {"5 MP Mono8, 10 codes", 2448, 2048, 10, 5000},
    {"1 KB, 1 code", 32, 32, 1, 50000},
};

constexpr int kAttachments = 10000;  // attach-detach pairs timed, by default

// A code's text, which fills its array without a terminator when it is that long.
template <size_t N>
std::string TextOf(const char (&text)[N]) {
  return std::string(text, strnlen(text, N));
}

std::string FirstCodeOf(const qsim::Frame& frame) { return frame.codes.empty() ? "" : TextOf(frame.codes[0].chCode); }

// Pushes frames into a reader from a thread of the stand-in, the one it makes to run the reader's
// exception callback, which this registers. A frame pushed there is delivered on that same thread,
// as a reader's producer delivers; a push from any other thread gets a new thread for its delivery,
// which costs more than the delivery being timed.
class FrameDriver {
 public:
  explicit FrameDriver(void* sdk) : sdk_(sdk) {
    ExpectSuccess(QUORIN_RegisterExceptionCallBack(sdk, &FrameDriver::OnException, this),
                  "QUORIN_RegisterExceptionCallBack");
  }
  ~FrameDriver() { QUORIN_RegisterExceptionCallBack(sdk_, nullptr, nullptr); }
  FrameDriver(const FrameDriver&) = delete;
  FrameDriver& operator=(const FrameDriver&) = delete;

  // Pushes a tenth of `frames` untimed, then `frames` timed; returns the microseconds per frame.
  double Push(const qsim::Frame& frame, int frames) {
    frame_ = &frame;
    frames_ = frames;
    error_.clear();
    if (!qsim::FireException(sdk_, kDriveMessage)) throw std::runtime_error("no frame driver on the reader");
    if (!error_.empty()) throw std::runtime_error(error_);
    return us_;
  }

  unsigned long long Pushed() const { return pushed_; }
  // The thread that pushes, while it does.
  std::thread::id Thread() const { return thread_; }

 private:
  static constexpr unsigned int kDriveMessage = 0;  // not one a reader sends

  static void OnException(unsigned int, void* user) { static_cast<FrameDriver*>(user)->Drive(); }

  // An exception must not leave a callback of the stand-in: Push throws it instead.
  void Drive() noexcept {
    thread_ = std::this_thread::get_id();
    try {
      PushFrames(std::max(1, frames_ / 10));
      const auto start = std::chrono::steady_clock::now();
      PushFrames(frames_);
      const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
      us_ = elapsed.count() / frames_;
    } catch (const std::exception& error) {
      error_ = error.what();
    }
  }

  void PushFrames(int count) {
    for (int i = 0; i < count; ++i) {
      qsim::PushFrame(sdk_, *frame_);
      ++pushed_;
    }
  }

  void* sdk_;
  const qsim::Frame* frame_ = nullptr;
  int frames_ = 0;
  double us_ = 0;
  std::string error_;
  unsigned long long pushed_ = 0;
  std::thread::id thread_;
};

// The stand-in's share of a delivery: a second reader, opened straight through the SDK, whose C++
// image callback reads what the Java one reads and, when asked, copies the image as the bridge does.
// A virtual reader opened straight through the SDK, not through the bridge.
void* OpenSdkReader(size_t index) {
  std::vector<QUORIN_DEVICE_INFO> readers = qsim::DefaultReaders();  // the Java one holds the first
  void* sdk = nullptr;
  ExpectSuccess(QUORIN_CreateHandle(&sdk, &readers.at(index)), "QUORIN_CreateHandle");
  ExpectSuccess(QUORIN_OpenDevice(sdk), "QUORIN_OpenDevice");
  return sdk;
}

void CloseSdkReader(void* sdk) {
  QUORIN_StopGrabbing(sdk);
  QUORIN_CloseDevice(sdk);
  QUORIN_DestroyHandle(sdk);
}

class DirectReader {
 public:
  DirectReader() : sdk_(OpenSdkReader(1)) {
    ExpectSuccess(QUORIN_RegisterImageCallBackEx2(sdk_, &DirectReader::OnImage, this),
                  "QUORIN_RegisterImageCallBackEx2");
    ExpectSuccess(QUORIN_StartGrabbing(sdk_), "QUORIN_StartGrabbing");
    driver_ = std::make_unique<FrameDriver>(sdk_);
  }
  ~DirectReader() { CloseSdkReader(sdk_); }
  DirectReader(const DirectReader&) = delete;
  DirectReader& operator=(const DirectReader&) = delete;

  // As FrameDriver::Push; with `copyImage` every delivery also copies the image into one buffer of
  // the largest frame's size, as the bridge copies into the Handle's one Java array.
  double Push(const qsim::Frame& frame, int frames, bool copyImage) {
    copyImage_ = copyImage;
    return driver_->Push(frame, frames);
  }

  // Throws unless every pushed frame came, on the pushing thread, the last one as `frame`.
  void ExpectDelivered(const qsim::Frame& frame) const {
    if (deliveries_ != driver_->Pushed() || offThread_ != 0 || lastFrameLen_ != frame.info.nFrameLen ||
        lastCodes_ != frame.codes.size() || lastFirstCode_ != FirstCodeOf(frame)) {
      throw std::runtime_error("the C++ callback got " + std::to_string(deliveries_) + " of " +
                               std::to_string(driver_->Pushed()) + " frames (" + std::to_string(offThread_) +
                               " on another thread), the last of " + std::to_string(lastFrameLen_) +
                               " bytes with " + std::to_string(lastCodes_) + " codes");
    }
  }

 private:
  static void OnImage(unsigned char* data, QUORIN_IMAGE_OUT_INFO_EX2* info, void* user) {
    static_cast<DirectReader*>(user)->Consume(data, *info);
  }

  void Consume(const unsigned char* data, const QUORIN_IMAGE_OUT_INFO_EX2& info) {
    ++deliveries_;
    if (std::this_thread::get_id() != driver_->Thread()) ++offThread_;
    lastFrameLen_ = info.nFrameLen;
    const QUORIN_RESULT_BCR_EX& codes = *info.pstCodeListEx;
    lastCodes_ = codes.nCodeNum;
    lastFirstCode_ = codes.nCodeNum > 0 ? TextOf(codes.stBcrInfoEx[0].chCode) : "";
    imageSum_ += data[0] + data[info.nFrameLen - 1];
    if (copyImage_) std::memcpy(imageCopy_.data(), data, std::min<size_t>(info.nFrameLen, imageCopy_.size()));
  }

  void* sdk_;
  std::unique_ptr<FrameDriver> driver_;
  unsigned long long deliveries_ = 0;
  unsigned long long offThread_ = 0;
  unsigned int lastFrameLen_ = 0;
  unsigned int lastCodes_ = 0;
  std::string lastFirstCode_;
  unsigned int imageSum_ = 0;  // keeps the image reads, as the Java callback does
  bool copyImage_ = false;
  std::vector<unsigned char> imageCopy_ = std::vector<unsigned char>(kLargestFrame);
};

// JNA's share: a third reader opened straight through the SDK, whose image callback is a
// JnaBench.Consumer registered through JNA.
class JnaReader {
 public:
  JnaReader(JNIEnv* env, JavaClass& jna) : env_(env), jna_(jna), sdk_(OpenSdkReader(2)) {
    consumer_ = jna.Call<jobject>("register", "(JI)LJnaBench$Consumer;", Handle(), jint{kLargestFrame});
    ExpectSuccess(QUORIN_StartGrabbing(sdk_), "QUORIN_StartGrabbing");
    driver_ = std::make_unique<FrameDriver>(sdk_);
  }
  ~JnaReader() {
    driver_.reset();
    CloseSdkReader(sdk_);
    env_->DeleteLocalRef(consumer_);
  }
  JnaReader(const JnaReader&) = delete;
  JnaReader& operator=(const JnaReader&) = delete;

  double Push(const qsim::Frame& frame, int frames) { return driver_->Push(frame, frames); }

  // Throws unless every pushed frame reached the JNA callback and its last equals the bridge's last.
  void ExpectDelivered(jobject bridgeConsumer) {
    const unsigned long long counted = qsim::CallbackDeliveries(sdk_);
    if (counted != driver_->Pushed()) {
      throw std::runtime_error("the JNA reader delivered " + std::to_string(counted) + " of " +
                               std::to_string(driver_->Pushed()) + " frames");
    }
    jna_.Call<void>("expectDelivered", "(LJnaBench$Consumer;JLCallbackBench;)V", consumer_,
                    static_cast<jlong>(counted), bridgeConsumer);
  }

 private:
  jlong Handle() const { return static_cast<jlong>(reinterpret_cast<uintptr_t>(sdk_)); }

  JNIEnv* env_;
  JavaClass& jna_;
  void* sdk_;
  jobject consumer_ = nullptr;
  std::unique_ptr<FrameDriver> driver_;
};

// Microseconds per delivery.
struct Result {
  const Scenario* scenario;
  int deliveries;    // timed, over all rounds
  double javaUs;     // pushed and delivered to the Java callback
  double jnaUs;      // pushed and delivered to the JNA callback
  double sdkUs;      // pushed and delivered to the C++ callback: the stand-in's share of javaUs
  double sdkCopyUs;  // the same, the C++ callback also copying the image
  double copyUs;     // the image bytes copied in Java, in a loop of copies alone
};

// What the timed loops work with.
struct Bench {
  JNIEnv* env;
  JavaClass& poll;      // PollBench, for its copy loop
  JavaClass& callback;  // CallbackBench
  jobject consumer;     // the registered CallbackBench
  FrameDriver& driver;  // pushes into the Java reader
  DirectReader& direct;
  JnaReader& jna;
};

// Java deliveries, direct ones without and with the copy, and copies in Java take turns, so a burst of
// load hits one round of each rather than only one side of a difference.
Result Measure(const Bench& bench, const Session& session, const Scenario& scenario, int frames) {
  const qsim::Frame frame = FrameOf(scenario);
  const jint frameLen = static_cast<jint>(frame.image.size());
  jbyteArray source = bench.env->NewByteArray(frameLen);
  jbyteArray target = bench.env->NewByteArray(frameLen);
  ThrowIfPending(bench.env, "allocating the copy arrays");

  const int perRound = std::max(1, frames / kRounds);
  std::vector<double> javaUs, jnaUs, sdkUs, sdkCopyUs, copyUs;
  for (int round = 0; round < kRounds; ++round) {
    javaUs.push_back(bench.driver.Push(frame, perRound));
    jnaUs.push_back(bench.jna.Push(frame, perRound));
    sdkUs.push_back(bench.direct.Push(frame, perRound, false));
    sdkCopyUs.push_back(bench.direct.Push(frame, perRound, true));
    const jlong copyNs = bench.poll.Call<jlong>("copy", "([B[BI)J", source, target, perRound);
    copyUs.push_back(copyNs / 1e3 / perRound);
  }
  bench.env->DeleteLocalRef(source);
  bench.env->DeleteLocalRef(target);

  const unsigned long long counted = qsim::CallbackDeliveries(session.sdk);
  if (counted != bench.driver.Pushed()) {
    throw std::runtime_error("the reader delivered " + std::to_string(counted) + " of " +
                             std::to_string(bench.driver.Pushed()) + " frames");
  }
  jstring firstCode = bench.env->NewStringUTF(FirstCodeOf(frame).c_str());
  bench.callback.Call<void>("expectDelivered", "(LCallbackBench;JIILjava/lang/String;)V", bench.consumer,
                            static_cast<jlong>(counted), frameLen, static_cast<jint>(scenario.codes), firstCode);
  bench.env->DeleteLocalRef(firstCode);
  bench.direct.ExpectDelivered(frame);
  bench.jna.ExpectDelivered(bench.consumer);
  return {&scenario,      perRound * kRounds, Median(javaUs),  Median(jnaUs),
          Median(sdkUs), Median(sdkCopyUs),  Median(copyUs)};
}

// What the bridge's attach of the delivering thread and its detach cost together, on a native thread
// of its own that does nothing else.
double AttachDetachUs(JNIEnv* env, int times) {
  JavaVM* vm = nullptr;
  if (env->GetJavaVM(&vm) != JNI_OK) throw std::runtime_error("no JavaVM");
  std::vector<double> us;
  std::string error;
  std::thread native([&] {
    auto attachDetach = [&](int count) {
      for (int i = 0; i < count && error.empty(); ++i) {
        JNIEnv* attached = nullptr;
        if (vm->AttachCurrentThread(reinterpret_cast<void**>(&attached), nullptr) != JNI_OK) {
          error = "attaching a native thread failed";
          return;
        }
        vm->DetachCurrentThread();
      }
    };
    const int perRound = std::max(1, times / kRounds);
    for (int round = 0; round < kRounds; ++round) {
      attachDetach(std::max(1, perRound / 10));
      const auto start = std::chrono::steady_clock::now();
      attachDetach(perRound);
      const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
      us.push_back(elapsed.count() / perRound);
    }
  });
  native.join();
  if (!error.empty()) throw std::runtime_error(error);
  return Median(us);
}

void PrintTable(const std::vector<Result>& results) {
  const char* const kHeader = "%-22s %11s %6s %10s %12s %11s %11s %11s %11s %11s %11s %11s\n";
  std::printf(kHeader, "", "image", "", "", "", "", "JNA", "SDK", "bridge", "copy", "C++ copy", "beyond copy");
  std::printf(kHeader, "scenario", "bytes", "codes", "deliveries", "deliveries/s", "us/delivery", "us/delivery",
              "us/delivery", "us/delivery", "us/delivery", "us/delivery", "us/delivery");
  for (const Result& r : results) {
    const double bridgeUs = r.javaUs - r.sdkUs;
    const double nativeCopyUs = r.sdkCopyUs - r.sdkUs;
    std::printf("%-22s %11u %6u %10d %12.1f %11.2f %11.2f %11.2f %11.2f %11.2f %11.2f %11.2f\n",
                r.scenario->name, r.scenario->width * r.scenario->height, r.scenario->codes, r.deliveries,
                1e6 / r.javaUs, r.javaUs, r.jnaUs, r.sdkUs, bridgeUs, r.copyUs, nativeCopyUs, bridgeUs - nativeCopyUs);
  }
}

}  // namespace

void RunCallbackBench(JNIEnv* env, int framesOption, Figures& figures) {
  JavaClass ctrl(env, "QuorinCtrlWrapper/QuorinCtrl");
  JavaClass poll(env, "PollBench");
  JavaClass callback(env, "CallbackBench");
  JavaClass jna(env, "JnaBench");
  const jobject consumer = NewObject(env, "CallbackBench");
  const Session session = OpenGrabbingReader(env, ctrl, consumer);

  std::vector<Result> results;
  double attachDetachUs = 0;
  {
    FrameDriver driver(session.sdk);
    DirectReader direct;
    JnaReader jnaReader(env, jna);
    const Bench bench{env, poll, callback, consumer, driver, direct, jnaReader};
    for (const Scenario& scenario : kScenarios) {
      results.push_back(Measure(bench, session, scenario, framesOption > 0 ? framesOption : scenario.frames));
      const Result& r = results.back();
      figures.Add(std::string(scenario.name) + ", delivered", Figures::kBridge, r.javaUs);
      figures.Add(std::string(scenario.name) + ", delivered", Figures::kJna, r.jnaUs);
      figures.Add(std::string(scenario.name) + ", delivered", Figures::kFloor, r.sdkCopyUs);
    }
    attachDetachUs = AttachDetachUs(env, framesOption > 0 ? framesOption : kAttachments);
  }
  CloseReader(ctrl, session);

  std::printf("Image callbacks: frames pushed one after another, from one thread of the stand-in, to a\n"
              "Java callback registered with QuorinCtrl.QUORIN_RegisterImageCallBackEx2 on a virtual reader.\n"
              "JNA: the same pushes to a callback registered through JNA on a third reader, which reads the\n"
              "frame record and codes with Structure.read() and copies the image into a Java array;\n"
              "SDK: the same pushes to a C++ callback on a second reader, the stand-in's share of us/delivery;\n"
              "bridge: us/delivery minus SDK; copy: System.arraycopy of the image bytes, in a loop of its own;\n"
              "C++ copy: what copying the image adds to the C++ callback; beyond copy: bridge minus C++ copy.\n"
              "Each figure is the median of %d rounds.\n\n",
              kRounds);
  PrintTable(results);
  std::printf("attaching a native thread and detaching it, as every delivery does, takes %.2f us\n", attachDetachUs);
}

}  // namespace bench
