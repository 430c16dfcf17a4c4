// What the benchmarks share: an in-process JVM and calls into it, frames as a reader reports them,
// and a virtual reader opened and grabbing through the Java API.
#pragma once

#include <jni.h>

#include <string>
#include <type_traits>
#include <vector>

#include "QuorinSim.h"
#include "bench_figures.h"

namespace bench {

extern const std::string kDefine;     // the package prefix of the record classes
extern const std::string kHandleSig;  // "L...$Handle;"
extern const std::string kFrameSig;   // "L...$QUORIN_IMAGE_OUT_INFO_EX2;"

// ---------------------------------------------------------------------------
// The JVM and calls into it.

// A Java exception left by a call stops the run; the VM prints it first.
void ThrowIfPending(JNIEnv* env, const std::string& what);
// Throws unless the status is 0.
void ExpectSuccess(jint status, const char* what);

class Jvm {
 public:
  Jvm();
  ~Jvm();
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
  JavaClass(JNIEnv* env, const std::string& name);

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

// A new instance of the class, made by its constructor without arguments.
jobject NewObject(JNIEnv* env, const std::string& className);

// ---------------------------------------------------------------------------
// Frames and readers.

struct Scenario {
  const char* name;
  unsigned int width;
  unsigned int height;
  unsigned int codes;
  int frames;  // by default
};

// A Mono8 frame of the scenario's size with a grey pattern and `codes` codes filled as a reader would.
qsim::Frame FrameOf(const Scenario& scenario);

constexpr long long kLargestFrame = 2448LL * 2048;  // the PayloadSize node, so every frame fits

// A reader opened and grabbing through the Java API.
struct Session {
  jobject handle = nullptr;
  void* sdk = nullptr;  // the SDK handle behind it
};

// Opens the first virtual reader, sets its PayloadSize to kLargestFrame, switches the stand-in's own
// frames off, registers `imageCallback` (unless null) and starts grabbing, all through the Java API.
Session OpenGrabbingReader(JNIEnv* env, JavaClass& ctrl, jobject imageCallback = nullptr);
void CloseReader(JavaClass& ctrl, const Session& session);
// The Handle's PayloadSize field, set by QUORIN_StartGrabbing.
jint PayloadSizeOf(JNIEnv* env, const Session& session);

// Each benchmark repeats its measurements over kRounds rounds and reports the median round: a burst
// of other load on the machine then spoils one round, not the whole figure.
constexpr int kRounds = 5;
double Median(std::vector<double> values);

// ---------------------------------------------------------------------------
// The benchmarks. Each opens its own reader in the JVM given, measures and prints its table and adds
// its figures of the bridge, JNA and the floor to `figures`; a `framesOption` above 0 replaces the
// default count of every scenario.

void RunPollBench(JNIEnv* env, int framesOption, Figures& figures);
void RunCallbackBench(JNIEnv* env, int framesOption, Figures& figures);

}  // namespace bench
