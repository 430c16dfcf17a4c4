// Times frame polling through the Java API: an in-process JVM calls
// QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2 on a virtual reader that hands out one installed frame
// again and again, JNA fetches the same frames from the SDK itself, and a plain Java copy of the same
// image bytes shows what the image alone costs.
#include <jni.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "bench_figures.h"
#include "bench_support.h"

namespace bench {
namespace {

// The first two share their image, so that their difference is the cost of the codes alone.
constexpr Scenario kScenarios[] = {
    {"5 MP Mono8, 10 codes", 2448, 2048, 10, 10000},
    {"5 MP Mono8, 300 codes", 2448, 2048, 300, 1000},
    {"1 KB, 1 code", 32, 32, 1, 200000},
};

// What every fetch fills.
struct FetchBuffers {
  jbyteArray data = nullptr;
  jobject info = nullptr;
  jbyteArray jnaData = nullptr;  // JNA's own image array
};

FetchBuffers FetchBuffersFor(JNIEnv* env, const Session& session) {
  FetchBuffers buffers;
  buffers.data = env->NewByteArray(PayloadSizeOf(env, session));
  ThrowIfPending(env, "allocating the image buffer");
  buffers.info = NewObject(env, kDefine + "QUORIN_IMAGE_OUT_INFO_EX2");
  buffers.jnaData = env->NewByteArray(PayloadSizeOf(env, session));
  ThrowIfPending(env, "allocating JNA's image buffer");
  return buffers;
}

// Microseconds per frame.
struct Result {
  const Scenario* scenario;
  int frames;
  double pollUs;  // fetched through Java
  double jnaUs;   // fetched through JNA
  double copyUs;  // the image bytes copied in Java
  double sdkUs;   // the stand-in's own fetch, called directly: a share of pollUs that is not the bridge's
};

double SdkFetchUs(void* sdk, int frames) {
  unsigned char* image = nullptr;
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < frames; ++i) {
    ExpectSuccess(QUORIN_GetOneFrameTimeoutEx2(sdk, &image, &info, 1000), "QUORIN_GetOneFrameTimeoutEx2");
  }
  const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / frames;
}

// Polling, copying and the direct fetches take turns, so a burst of load hits one round of each
// rather than only one side of the difference.
Result Measure(JNIEnv* env, JavaClass& bench, JavaClass& jna, const Session& session, const FetchBuffers& buffers,
               const Scenario& scenario, int frames) {
  const qsim::Frame frame = FrameOf(scenario);
  const jint frameLen = static_cast<jint>(frame.image.size());
  qsim::RepeatFrame(session.sdk, frame);
  jbyteArray image = env->NewByteArray(frameLen);
  ThrowIfPending(env, "allocating the copy source");

  const std::string pollSig = "(" + kHandleSig + "[B" + kFrameSig + "I)J";
  const int perRound = std::max(1, frames / kRounds);
  const jlong sdk = static_cast<jlong>(reinterpret_cast<uintptr_t>(session.sdk));
  std::vector<double> pollUs, jnaUs, copyUs, sdkUs;
  for (int round = 0; round < kRounds; ++round) {
    qsim::ClearCalls();  // the stand-in logs every fetch: keep the log short
    const jlong pollNs = bench.Call<jlong>("poll", pollSig, session.handle, buffers.data, buffers.info, perRound);
    pollUs.push_back(pollNs / 1e3 / perRound);
    const jlong jnaNs = jna.Call<jlong>("poll", "(J[BI)J", sdk, buffers.jnaData, perRound);
    jnaUs.push_back(jnaNs / 1e3 / perRound);
    const jlong copyNs = bench.Call<jlong>("copy", "([B[BI)J", image, buffers.data, perRound);
    copyUs.push_back(copyNs / 1e3 / perRound);
    sdkUs.push_back(SdkFetchUs(session.sdk, perRound));
  }
  env->DeleteLocalRef(image);
  bench.Call<void>("expectFrame", "(" + kFrameSig + "II)V", buffers.info, frameLen,
                   static_cast<jint>(scenario.codes));
  jna.Call<void>("expectSameFetch", "(" + kHandleSig + "J[B" + kFrameSig + ")V", session.handle, sdk, buffers.data,
                 buffers.info);
  return {&scenario, perRound * kRounds, Median(pollUs), Median(jnaUs), Median(copyUs), Median(sdkUs)};
}

void PrintTable(const std::vector<Result>& results) {
  const char* const kHeader = "%-22s %11s %6s %7s %9s %9s %9s %9s %12s %9s\n";
  std::printf(kHeader, "", "image", "", "", "", "", "JNA", "copy", "beyond copy", "SDK");
  std::printf(kHeader, "scenario", "bytes", "codes", "frames", "frames/s", "us/frame", "us/frame", "us/frame",
              "us/frame", "us/frame");
  for (const Result& r : results) {
    std::printf("%-22s %11u %6u %7d %9.1f %9.2f %9.2f %9.2f %12.2f %9.2f\n", r.scenario->name,
                r.scenario->width * r.scenario->height, r.scenario->codes, r.frames, 1e6 / r.pollUs, r.pollUs,
                r.jnaUs, r.copyUs, r.pollUs - r.copyUs, r.sdkUs);
  }
}

// What one more code adds to a frame, from two results of the same image size.
void PrintCostPerCode(const Result& few, const Result& many) {
  const double extra = (many.pollUs - many.copyUs) - (few.pollUs - few.copyUs);
  std::printf("each code adds about %.2f us per frame (%u against %u codes on the same image)\n",
              extra / (many.scenario->codes - few.scenario->codes), many.scenario->codes, few.scenario->codes);
}

}  // namespace

void RunPollBench(JNIEnv* env, int framesOption, Figures& figures) {
  JavaClass ctrl(env, "QuorinCtrlWrapper/QuorinCtrl");
  JavaClass bench(env, "PollBench");
  JavaClass jna(env, "JnaBench");
  JavaClass(env, "QuorinJna").Call<void>("expectLayout", "(III)V", jint{sizeof(QUORIN_IMAGE_OUT_INFO_EX2)},
                                         jint{sizeof(QUORIN_BCR_INFO_EX)}, jint{sizeof(QUORIN_RESULT_BCR_EX)});
  const Session session = OpenGrabbingReader(env, ctrl);
  const FetchBuffers buffers = FetchBuffersFor(env, session);

  std::vector<Result> results;
  for (const Scenario& scenario : kScenarios) {
    results.push_back(
        Measure(env, bench, jna, session, buffers, scenario, framesOption > 0 ? framesOption : scenario.frames));
    const Result& r = results.back();
    figures.Add(std::string(scenario.name) + ", polled", Figures::kBridge, r.pollUs);
    figures.Add(std::string(scenario.name) + ", polled", Figures::kJna, r.jnaUs);
    figures.Add(std::string(scenario.name) + ", polled", Figures::kFloor, r.copyUs);
  }
  CloseReader(ctrl, session);

  std::printf("Polling QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2 from Java on a virtual reader.\n"
              "JNA: the same frames fetched from the SDK through JNA, read with Structure.read();\n"
              "copy: System.arraycopy of the image bytes; beyond copy: per frame minus copy;\n"
              "SDK: the stand-in's fetch called directly, included in per frame and beyond copy.\n"
              "Each figure is the median of %d rounds.\n\n",
              kRounds);
  PrintTable(results);
  PrintCostPerCode(results[0], results[1]);
}

}  // namespace bench
