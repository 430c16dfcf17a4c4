// Times frame polling through the Java API: an in-process JVM calls
// QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2 on a virtual reader that hands out one installed frame
// again and again, and a plain Java copy of the same image bytes shows what the image alone costs.
// Usage: quorin_bench [--frames N]
#include <dlfcn.h>
#include <jni.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"

namespace {

const std::string kDefine = "QuorinCtrlWrapper/QuorinCtrlDefine$";
const std::string kHandleSig = "L" + kDefine + "Handle;";
const std::string kDeviceSig = "L" + kDefine + "QUORIN_DEVICE_INFO;";
const std::string kFrameSig = "L" + kDefine + "QUORIN_IMAGE_OUT_INFO_EX2;";

// ---------------------------------------------------------------------------
// The JVM and calls into it.

// A Java exception left by a call stops the run; the VM prints it first.
void ThrowIfPending(JNIEnv* env, const std::string& what) {
  if (!env->ExceptionCheck()) return;
  env->ExceptionDescribe();
  throw std::runtime_error(what + " threw");
}

class Jvm {
 public:
  Jvm() {
    void* library = dlopen(QUORIN_JVM_LIBRARY, RTLD_NOW | RTLD_GLOBAL);  // never closed: a JVM is not unloaded
    if (library == nullptr) throw std::runtime_error(std::string("cannot load the JVM: ") + dlerror());
    using CreateJavaVM = jint (*)(JavaVM**, void**, void*);
    auto create = reinterpret_cast<CreateJavaVM>(dlsym(library, "JNI_CreateJavaVM"));
    if (create == nullptr) throw std::runtime_error("no JNI_CreateJavaVM in " QUORIN_JVM_LIBRARY);

    std::string options[] = {
        std::string("-Djava.class.path=") + QUORIN_CLASS_PATH,
        std::string("-Djava.library.path=") + QUORIN_LIBRARY_DIR,
        "-Xms512m",  // a fixed heap: no resizing in the middle of a timed loop
        "-Xmx512m",
    };
    std::vector<JavaVMOption> vmOptions;
    for (std::string& option : options) vmOptions.push_back({option.data(), nullptr});
    JavaVMInitArgs args{};
    args.version = JNI_VERSION_1_8;
    args.nOptions = static_cast<jint>(vmOptions.size());
    args.options = vmOptions.data();
    args.ignoreUnrecognized = JNI_FALSE;
    if (create(&vm_, reinterpret_cast<void**>(&env_), &args) != JNI_OK) {
      throw std::runtime_error("the JVM did not start");
    }
  }
  ~Jvm() { vm_->DestroyJavaVM(); }
  Jvm(const Jvm&) = delete;
  Jvm& operator=(const Jvm&) = delete;

  JNIEnv* Env() const { return env_; }

 private:
  JavaVM* vm_ = nullptr;
  JNIEnv* env_ = nullptr;
};

// The static methods of one Java class, called by name and JNI signature.
class JavaClass {
 public:
  JavaClass(JNIEnv* env, const std::string& name) : env_(env), name_(name), class_(env->FindClass(name.c_str())) {
    ThrowIfPending(env_, "loading " + name_);
  }

  template <typename Result, typename... Args>
  Result Call(const char* method, const std::string& sig, Args... args) {
    const jmethodID id = env_->GetStaticMethodID(class_, method, sig.c_str());
    ThrowIfPending(env_, name_ + "." + method + " " + sig);
    if constexpr (std::is_void_v<Result>) {
      env_->CallStaticVoidMethod(class_, id, args...);
      ThrowIfPending(env_, name_ + "." + method);
    } else {
      const Result result = Invoke<Result>(id, args...);
      ThrowIfPending(env_, name_ + "." + method);
      return result;
    }
  }

 private:
  template <typename Result, typename... Args>
  Result Invoke(jmethodID id, Args... args) {
    if constexpr (std::is_same_v<Result, jint>) {
      return env_->CallStaticIntMethod(class_, id, args...);
    } else if constexpr (std::is_same_v<Result, jlong>) {
      return env_->CallStaticLongMethod(class_, id, args...);
    } else {
      return static_cast<Result>(env_->CallStaticObjectMethod(class_, id, args...));
    }
  }

  JNIEnv* env_;
  std::string name_;
  jclass class_;
};

jobject NewObject(JNIEnv* env, const std::string& className) {
  jclass cls = env->FindClass(className.c_str());
  ThrowIfPending(env, "loading " + className);
  jobject object = env->NewObject(cls, env->GetMethodID(cls, "<init>", "()V"));
  ThrowIfPending(env, "constructing " + className);
  env->DeleteLocalRef(cls);
  return object;
}

jfieldID FieldOf(JNIEnv* env, jobject object, const char* field, const char* sig) {
  jclass cls = env->GetObjectClass(object);
  const jfieldID id = env->GetFieldID(cls, field, sig);
  env->DeleteLocalRef(cls);
  ThrowIfPending(env, std::string("field ") + field);
  return id;
}

jobject FirstItem(JNIEnv* env, jobject list) {
  jclass cls = env->FindClass("java/util/ArrayList");
  const jint size = env->CallIntMethod(list, env->GetMethodID(cls, "size", "()I"));
  ThrowIfPending(env, "ArrayList.size");
  if (size == 0) throw std::runtime_error("the list is empty");
  jobject item = env->CallObjectMethod(list, env->GetMethodID(cls, "get", "(I)Ljava/lang/Object;"), 0);
  ThrowIfPending(env, "ArrayList.get");
  env->DeleteLocalRef(cls);
  return item;
}

void ExpectSuccess(jint status, const char* what) {
  if (status == 0) return;
  char text[96];
  std::snprintf(text, sizeof text, "%s returned 0x%08x", what, static_cast<unsigned int>(status));
  throw std::runtime_error(text);
}

// ---------------------------------------------------------------------------
// Frames as a reader reports them.

constexpr double kPi = 3.14159265358979323846;
constexpr unsigned int kQrCode = 1;
constexpr unsigned int kDataMatrix = 2;
constexpr unsigned int kCode128 = 3;
constexpr unsigned int kBarTypes[] = {kQrCode, kDataMatrix, kCode128};

constexpr int QUORIN_CODE_INFO::*kGrades[] = {
    &QUORIN_CODE_INFO::nOverQuality, &QUORIN_CODE_INFO::nDeCode,      &QUORIN_CODE_INFO::nSCGrade,
    &QUORIN_CODE_INFO::nModGrade,    &QUORIN_CODE_INFO::nFPDGrade,    &QUORIN_CODE_INFO::nANGrade,
    &QUORIN_CODE_INFO::nGNGrade,     &QUORIN_CODE_INFO::nUECGrade,    &QUORIN_CODE_INFO::nPGHGrade,
    &QUORIN_CODE_INFO::nPGVGrade,    &QUORIN_CODE_INFO::nRMGrade,     &QUORIN_CODE_INFO::n1DEdgeGrade,
    &QUORIN_CODE_INFO::n1DMinRGrade, &QUORIN_CODE_INFO::n1DMinEGrade, &QUORIN_CODE_INFO::n1DDcdGrade,
    &QUORIN_CODE_INFO::n1DDefGrade,  &QUORIN_CODE_INFO::n1DQZGrade};

constexpr float QUORIN_CODE_INFO::*kScores[] = {
    &QUORIN_CODE_INFO::fSCScore,     &QUORIN_CODE_INFO::fModScore,    &QUORIN_CODE_INFO::fFPDScore,
    &QUORIN_CODE_INFO::fAnScore,     &QUORIN_CODE_INFO::fGNScore,     &QUORIN_CODE_INFO::fUECScore,
    &QUORIN_CODE_INFO::fPGHScore,    &QUORIN_CODE_INFO::fPGVScore,    &QUORIN_CODE_INFO::fRMScore,
    &QUORIN_CODE_INFO::f1DEdgeScore, &QUORIN_CODE_INFO::f1DMinRScore, &QUORIN_CODE_INFO::f1DMinEScore,
    &QUORIN_CODE_INFO::f1DDcdScore,  &QUORIN_CODE_INFO::f1DDefScore,  &QUORIN_CODE_INFO::f1DQZScore};

// Grades 1..4 with scores to match, different from code to code.
QUORIN_CODE_INFO QualityOf(unsigned int index) {
  QUORIN_CODE_INFO quality{};
  for (size_t i = 0; i < std::size(kGrades); ++i) quality.*kGrades[i] = 1 + static_cast<int>((index + i) % 4);
  for (size_t i = 0; i < std::size(kScores); ++i) {
    quality.*kScores[i] = 55.0f + static_cast<float>((index * 7 + i * 3) % 45) + 0.25f;
  }
  return quality;
}

// The codes lie on a grid over the image, each a square tilted by its own angle.
void PlaceCorners(QUORIN_BCR_INFO_EX& code, unsigned int index, unsigned int count, unsigned int width,
                  unsigned int height) {
  const unsigned int columns = std::max(1u, static_cast<unsigned int>(std::ceil(std::sqrt(
                                                  static_cast<double>(count) * width / height))));
  const unsigned int rows = (count + columns - 1) / columns;
  const double cellWidth = static_cast<double>(width) / columns;
  const double cellHeight = static_cast<double>(height) / rows;
  const double centreX = cellWidth * (index % columns + 0.5);
  const double centreY = cellHeight * (index / columns + 0.5);
  const double half = 0.35 * std::min(cellWidth, cellHeight);
  const double angle = code.nAngle * kPi / 180.0;
  const double cosine = std::cos(angle) * half;
  const double sine = std::sin(angle) * half;
  auto corner = [&](double dx, double dy) {
    return QUORIN_POINT_I{static_cast<int>(std::lround(centreX + dx * cosine - dy * sine)),
                          static_cast<int>(std::lround(centreY + dx * sine + dy * cosine))};
  };
  code.stCornerLeftTop = corner(-1, -1);
  code.stCornerRightTop = corner(1, -1);
  code.stCornerRightBottom = corner(1, 1);
  code.stCornerLeftBottom = corner(-1, 1);
}

QUORIN_BCR_INFO_EX CodeOf(unsigned int index, unsigned int count, unsigned int width, unsigned int height) {
  QUORIN_BCR_INFO_EX code{};
  code.nID = index;
  // A parcel number: 21 characters.
  const int length = std::snprintf(code.chCode, sizeof code.chCode, "QN%013llu-%03u-%u",
                                   7312000000000ULL + 7919ULL * index, 100 + index % 900, 1 + index % 3);
  code.nLen = static_cast<unsigned int>(length);
  code.nBarType = kBarTypes[index % std::size(kBarTypes)];
  code.nAngle = static_cast<int>(index * 37 % 181) - 90;
  PlaceCorners(code, index, count, width, height);
  code.stCodeQuality = QualityOf(index);
  code.nMainPackageId = 4711;
  code.nSubPackageId = index + 1;
  code.sAppearCount = static_cast<unsigned short>(1 + index % 4);
  code.sPPM = static_cast<unsigned short>(180 + index % 60);
  code.sAlgoCost = static_cast<unsigned short>(3 + index % 12);
  code.sSharpness = static_cast<unsigned short>(60 + index % 40);
  code.bIsGetQuality = 1;
  code.nIDRScore = 70 + index % 30;
  code.n1DIsGetQuality = code.nBarType == kCode128 ? 1 : 0;
  code.nTotalProcCost = 12 + index % 20;
  code.nTriggerTimeTvLow = 1718000000;
  code.nTriggerTimeUtvLow = 250000 + index;
  return code;
}

struct Scenario {
  const char* name;
  unsigned int width;
  unsigned int height;
  unsigned int codes;
  int frames;  // by default
};

qsim::Frame FrameOf(const Scenario& scenario) {
  qsim::Frame frame;
  const unsigned int bytes = scenario.width * scenario.height;
  frame.image.resize(bytes);
  for (unsigned int i = 0; i < bytes; ++i) {
    frame.image[i] = static_cast<unsigned char>((i % scenario.width) ^ (i / scenario.width));  // a grey pattern
  }
  QUORIN_IMAGE_OUT_INFO_EX2& info = frame.info;
  info.nWidth = static_cast<unsigned short>(scenario.width);
  info.nHeight = static_cast<unsigned short>(scenario.height);
  info.enPixelType = PixelType_Gvsp_Mono8;
  info.nFrameNum = 1;
  info.nFrameLen = bytes;
  info.nTimeStampLow = 123456789;
  info.nFocusScore = 640;
  info.bIsGetCode = scenario.codes > 0;
  info.nEventID = 1;
  info.nImageCost = 18;
  for (unsigned int i = 0; i < scenario.codes; ++i) {
    frame.codes.push_back(CodeOf(i, scenario.codes, scenario.width, scenario.height));
  }
  return frame;
}

// ---------------------------------------------------------------------------
// The benchmark.

// The first two share their image, so that their difference is the cost of the codes alone.
constexpr Scenario kScenarios[] = {
    {"5 MP Mono8, 10 codes", 2448, 2048, 10, 10000},
    {"5 MP Mono8, 300 codes", 2448, 2048, 300, 2000},
    {"1 KB, 1 code", 32, 32, 1, 200000},
};
constexpr long long kLargestFrame = 2448LL * 2048;  // the PayloadSize node, so every frame fits

// A reader opened and grabbing through the Java API, with the buffers every fetch fills.
struct Session {
  jobject handle = nullptr;
  void* sdk = nullptr;
  jbyteArray data = nullptr;
  jobject info = nullptr;
};

Session OpenGrabbingReader(JNIEnv* env, JavaClass& ctrl) {
  Session session;
  jobject devices = ctrl.Call<jobject>("QUORIN_EnumDevices", "()Ljava/util/ArrayList;");
  if (devices == nullptr) throw std::runtime_error("QUORIN_EnumDevices failed");
  session.handle = ctrl.Call<jobject>("QUORIN_CreateHandle", "(" + kDeviceSig + ")" + kHandleSig,
                                      FirstItem(env, devices));
  const std::string handleOnly = "(" + kHandleSig + ")I";
  ExpectSuccess(ctrl.Call<jint>("QUORIN_OpenDevice", handleOnly, session.handle), "QUORIN_OpenDevice");

  const jlong sdk = env->GetLongField(session.handle, FieldOf(env, session.handle, "hHandle", "J"));
  session.sdk = reinterpret_cast<void*>(static_cast<uintptr_t>(sdk));
  qsim::SetAutoFrames(false);  // only the installed frames are fetched
  qsim::SetIntNode(session.sdk, "PayloadSize", kLargestFrame, 0, kLargestFrame, 1, qsim::Access::kReadOnly);
  ExpectSuccess(ctrl.Call<jint>("QUORIN_StartGrabbing", handleOnly, session.handle), "QUORIN_StartGrabbing");

  const jint payload = env->GetIntField(session.handle, FieldOf(env, session.handle, "PayloadSize", "I"));
  session.data = env->NewByteArray(payload);
  ThrowIfPending(env, "allocating the image buffer");
  session.info = NewObject(env, kDefine + "QUORIN_IMAGE_OUT_INFO_EX2");
  return session;
}

void CloseReader(JavaClass& ctrl, const Session& session) {
  const std::string handleOnly = "(" + kHandleSig + ")I";
  ExpectSuccess(ctrl.Call<jint>("QUORIN_StopGrabbing", handleOnly, session.handle), "QUORIN_StopGrabbing");
  ExpectSuccess(ctrl.Call<jint>("QUORIN_CloseDevice", handleOnly, session.handle), "QUORIN_CloseDevice");
  ExpectSuccess(ctrl.Call<jint>("QUORIN_DestroyHandle", handleOnly, session.handle), "QUORIN_DestroyHandle");
}

// Microseconds per frame.
struct Result {
  const Scenario* scenario;
  int frames;
  double pollUs;  // fetched through Java
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

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

// Polling and copying take turns, and each reports its median round: a burst of other load on
// the machine then spoils one round, not the whole figure or only one side of the difference.
constexpr int kRounds = 5;

Result Measure(JNIEnv* env, JavaClass& bench, const Session& session, const Scenario& scenario, int frames) {
  const qsim::Frame frame = FrameOf(scenario);
  const jint frameLen = static_cast<jint>(frame.image.size());
  qsim::RepeatFrame(session.sdk, frame);
  jbyteArray image = env->NewByteArray(frameLen);
  ThrowIfPending(env, "allocating the copy source");

  const std::string pollSig = "(" + kHandleSig + "[B" + kFrameSig + "I)J";
  const int perRound = std::max(1, frames / kRounds);
  std::vector<double> pollUs, copyUs, sdkUs;
  for (int round = 0; round < kRounds; ++round) {
    qsim::ClearCalls();  // the stand-in logs every fetch: keep the log short
    const jlong pollNs = bench.Call<jlong>("poll", pollSig, session.handle, session.data, session.info, perRound);
    pollUs.push_back(pollNs / 1e3 / perRound);
    const jlong copyNs = bench.Call<jlong>("copy", "([B[BI)J", image, session.data, perRound);
    copyUs.push_back(copyNs / 1e3 / perRound);
    sdkUs.push_back(SdkFetchUs(session.sdk, perRound));
  }
  env->DeleteLocalRef(image);
  bench.Call<void>("expectFrame", "(" + kFrameSig + "II)V", session.info, frameLen,
                   static_cast<jint>(scenario.codes));
  return {&scenario, perRound * kRounds, Median(pollUs), Median(copyUs), Median(sdkUs)};
}

void PrintTable(const std::vector<Result>& results) {
  std::printf("%-22s %11s %6s %7s %9s %9s %9s %12s %9s\n", "", "image", "", "", "", "", "copy", "beyond copy",
              "SDK");
  std::printf("%-22s %11s %6s %7s %9s %9s %9s %12s %9s\n", "scenario", "bytes", "codes", "frames", "frames/s",
              "us/frame", "us/frame", "us/frame", "us/frame");
  for (const Result& r : results) {
    std::printf("%-22s %11u %6u %7d %9.1f %9.2f %9.2f %12.2f %9.2f\n", r.scenario->name,
                r.scenario->width * r.scenario->height, r.scenario->codes, r.frames, 1e6 / r.pollUs, r.pollUs,
                r.copyUs, r.pollUs - r.copyUs, r.sdkUs);
  }
}

// What one more code adds to a frame, from two results of the same image size.
void PrintCostPerCode(const Result& few, const Result& many) {
  const double extra = (many.pollUs - many.copyUs) - (few.pollUs - few.copyUs);
  std::printf("each code adds about %.2f us per frame (%u against %u codes on the same image)\n",
              extra / (many.scenario->codes - few.scenario->codes), many.scenario->codes, few.scenario->codes);
}

void PrintUsage(std::FILE* out, const char* program) {
  std::fprintf(out,
               "usage: %s [--frames N]\n"
               "  times N frame fetches for every scenario (defaults: %d, %d and %d)\n",
               program, kScenarios[0].frames, kScenarios[1].frames, kScenarios[2].frames);
}

// --frames N: N frames for every scenario instead of each one's default; 0 when not given.
int FramesOption(int argc, char** argv) {
  if (argc == 1) return 0;
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    PrintUsage(stdout, argv[0]);
    std::exit(0);
  }
  if (argc == 3 && std::strcmp(argv[1], "--frames") == 0) {
    char* end = nullptr;
    const long frames = std::strtol(argv[2], &end, 10);
    if (*end == '\0' && frames > 0 && frames <= 100000000) return static_cast<int>(frames);
  }
  PrintUsage(stderr, argv[0]);
  std::exit(2);
}

void Run(int framesOption) {
  Jvm jvm;
  JNIEnv* env = jvm.Env();
  JavaClass ctrl(env, "QuorinCtrlWrapper/QuorinCtrl");
  JavaClass bench(env, "PollBench");
  const Session session = OpenGrabbingReader(env, ctrl);

  std::vector<Result> results;
  for (const Scenario& scenario : kScenarios) {
    results.push_back(Measure(env, bench, session, scenario, framesOption > 0 ? framesOption : scenario.frames));
  }
  CloseReader(ctrl, session);

  std::printf("Polling QuorinCtrl.QUORIN_GetOneFrameTimeoutEx2 from Java on a virtual reader.\n"
              "copy: System.arraycopy of the image bytes; beyond copy: per frame minus copy;\n"
              "SDK: the stand-in's fetch called directly, included in per frame and beyond copy.\n"
              "Each figure is the median of %d rounds.\n\n",
              kRounds);
  PrintTable(results);
  PrintCostPerCode(results[0], results[1]);
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = FramesOption(argc, argv);
  try {
    Run(frames);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quorin_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
