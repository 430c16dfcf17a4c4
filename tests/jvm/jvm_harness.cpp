#include "jvm_harness.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "QuorinSim.h"
#include "jvm_start.h"

#ifdef QUORIN_TEST_ASAN
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace quorin_test {
namespace {

JavaVM* g_vm = nullptr;
JNIEnv* g_env = nullptr;

}  // namespace

void JvmEnvironment::SetUp() {
  if (g_vm != nullptr) return;
  std::vector<std::string> options = {"-Xmx512m", "-XX:+UseSerialGC"};
  // Under an emulator the JIT's signal-based tricks (implicit null checks, safepoint polls in
  // compiled code) race with threads attaching and detaching; the interpreter does not use them.
  const char* emulator = std::getenv("QUORIN_TEST_EMULATOR");
  if (emulator != nullptr && *emulator != '\0') options.push_back("-Xint");
  const char* xcheck = std::getenv("QUORIN_XCHECK_JNI");
  if (xcheck != nullptr && std::string(xcheck) == "1") options.push_back("-Xcheck:jni");
  std::string error;
  g_env = StartJvm(QUORIN_JVM_LIBRARY, QUORIN_CLASS_PATH, QUORIN_LIBRARY_DIR, options, &g_vm, &error);
  ASSERT_NE(g_env, nullptr) << error;
}

JNIEnv* Env() { return g_env; }

std::string Define(const char* nested) { return std::string("QuorinCtrlWrapper/QuorinCtrlDefine$") + nested; }

void JvmTest::SetUp() {
  env_ = Env();
  ASSERT_NE(env_, nullptr) << "the JVM did not start";
  qsim::Reset();
  ASSERT_EQ(env_->PushLocalFrame(256), 0);
}

void JvmTest::TearDown() {
  std::string message;
  const std::string pending = TakeException(&message);
  EXPECT_EQ(pending, "") << message;
  env_->PopLocalFrame(nullptr);
}

jclass JvmTest::Ctrl() {
  static jclass ctrl = nullptr;
  if (ctrl == nullptr) {
    jclass local = env_->FindClass("QuorinCtrlWrapper/QuorinCtrl");
    EXPECT_NE(local, nullptr);
    ctrl = static_cast<jclass>(env_->NewGlobalRef(local));
    env_->DeleteLocalRef(local);
  }
  return ctrl;
}

#define QUORIN_CALL_STATIC(Type, method, sig)                             \
  jmethodID id = env_->GetStaticMethodID(Ctrl(), method, sig);              \
  EXPECT_NE(id, nullptr) << method << sig;                                  \
  va_list args;                                                             \
  va_start(args, sig);                                                      \
  auto result = env_->CallStatic##Type##MethodV(Ctrl(), id, args);          \
  va_end(args);                                                             \
  Checked();                                                                \
  return result

jint JvmTest::CallInt(const char* method, const char* sig, ...) { QUORIN_CALL_STATIC(Int, method, sig); }
jobject JvmTest::CallObject(const char* method, const char* sig, ...) { QUORIN_CALL_STATIC(Object, method, sig); }
bool JvmTest::CallBoolean(const char* method, const char* sig, ...) { QUORIN_CALL_STATIC(Boolean, method, sig); }
#undef QUORIN_CALL_STATIC

jint JvmTest::OnHandle(const char* method, jobject handle) {
  return CallInt(method, ("(" + kHandleSig + ")I").c_str(), handle);
}
jint JvmTest::Register(const char* method, jobject handle, jobject callback) {
  return CallInt(method, ("(" + kHandleSig + "Ljava/lang/Object;)I").c_str(), handle, callback);
}

jobject JvmTest::New(const std::string& className) {
  jclass cls = env_->FindClass(className.c_str());
  EXPECT_NE(cls, nullptr) << className;
  jmethodID constructor = env_->GetMethodID(cls, "<init>", "()V");
  jobject obj = env_->NewObject(cls, constructor);
  env_->DeleteLocalRef(cls);
  return obj;
}

jstring JvmTest::Str(const std::string& utf8) { return env_->NewStringUTF(utf8.c_str()); }

// The JNI checker wants every call into Java followed by a check; whatever is left pending
// is reported by TearDown or taken by the test.
bool JvmTest::Checked() { return env_->ExceptionCheck(); }

jfieldID JvmTest::Field(jobject obj, const char* field, const char* sig) {
  if (obj == nullptr) {
    ADD_FAILURE() << "field " << field << " of a null object";
    return nullptr;
  }
  jclass cls = env_->GetObjectClass(obj);
  jfieldID id = env_->GetFieldID(cls, field, sig);
  env_->DeleteLocalRef(cls);
  EXPECT_NE(id, nullptr) << field << " " << sig;
  return id;
}

// A failed lookup has been reported already; reads then give the type's zero.
#define QUORIN_FIELD_READ(Type, sig)                          \
  jfieldID id = Field(obj, f, sig);                           \
  return id ? env_->Get##Type##Field(obj, id) : decltype(env_->Get##Type##Field(obj, id)){}
#define QUORIN_FIELD_WRITE(Type, sig, value) \
  jfieldID id = Field(obj, f, sig);          \
  if (id) env_->Set##Type##Field(obj, id, value)

jint JvmTest::Int(jobject obj, const char* f) { QUORIN_FIELD_READ(Int, "I"); }
jlong JvmTest::Long(jobject obj, const char* f) { QUORIN_FIELD_READ(Long, "J"); }
jshort JvmTest::Short(jobject obj, const char* f) { QUORIN_FIELD_READ(Short, "S"); }
bool JvmTest::Bool(jobject obj, const char* f) { QUORIN_FIELD_READ(Boolean, "Z"); }
float JvmTest::Float(jobject obj, const char* f) { QUORIN_FIELD_READ(Float, "F"); }
jobject JvmTest::Object(jobject obj, const char* f, const std::string& sig) { QUORIN_FIELD_READ(Object, sig.c_str()); }
std::string JvmTest::String(jobject obj, const char* f) {
  return Utf8(static_cast<jstring>(Object(obj, f, "Ljava/lang/String;")));
}
void JvmTest::SetInt(jobject obj, const char* f, jint v) { QUORIN_FIELD_WRITE(Int, "I", v); }
void JvmTest::SetShort(jobject obj, const char* f, jshort v) { QUORIN_FIELD_WRITE(Short, "S", v); }
void JvmTest::SetLong(jobject obj, const char* f, jlong v) { QUORIN_FIELD_WRITE(Long, "J", v); }
void JvmTest::SetBool(jobject obj, const char* f, bool v) { QUORIN_FIELD_WRITE(Boolean, "Z", v); }
void JvmTest::SetString(jobject obj, const char* f, const std::string& utf8) {
  QUORIN_FIELD_WRITE(Object, "Ljava/lang/String;", Str(utf8));
}
void JvmTest::SetNull(jobject obj, const char* f, const std::string& sig) { QUORIN_FIELD_WRITE(Object, sig.c_str(), nullptr); }
void JvmTest::SetObject(jobject obj, const char* f, const std::string& sig, jobject v) {
  QUORIN_FIELD_WRITE(Object, sig.c_str(), v);
}
#undef QUORIN_FIELD_READ
#undef QUORIN_FIELD_WRITE

std::string JvmTest::Utf8(jstring text) {
  if (text == nullptr) return "<null>";
  const char* chars = env_->GetStringUTFChars(text, nullptr);
  std::string result(chars);
  env_->ReleaseStringUTFChars(text, chars);
  return result;
}

jobject JvmTest::NewInteger(jint value) {
  jclass integer = env_->FindClass("java/lang/Integer");
  return env_->NewObject(integer, env_->GetMethodID(integer, "<init>", "(I)V"), value);
}

jobject JvmTest::Constant(const char* enumClass, const char* name) {
  const std::string className = Define(enumClass);
  jclass cls = env_->FindClass(className.c_str());
  return env_->GetStaticObjectField(cls, env_->GetStaticFieldID(cls, name, ("L" + className + ";").c_str()));
}

std::string JvmTest::Text(jobject obj, const char* cls, const char* method) {
  jclass declaring = env_->FindClass(cls);
  jobject text = env_->CallObjectMethod(obj, env_->GetMethodID(declaring, method, "()Ljava/lang/String;"));
  Checked();
  env_->DeleteLocalRef(declaring);
  return Utf8(static_cast<jstring>(text));
}

std::string JvmTest::EnumName(jobject constant) {
  return constant == nullptr ? "<null>" : Text(constant, "java/lang/Enum", "name");
}

std::vector<unsigned char> JvmTest::Bytes(jobject array) {
  if (array == nullptr) return {};
  std::vector<unsigned char> bytes(env_->GetArrayLength(static_cast<jbyteArray>(array)));
  env_->GetByteArrayRegion(static_cast<jbyteArray>(array), 0, static_cast<jsize>(bytes.size()),
                           reinterpret_cast<jbyte*>(bytes.data()));
  return bytes;
}

jbyteArray JvmTest::ArrayOf(const std::vector<unsigned char>& bytes) {
  jbyteArray array = env_->NewByteArray(static_cast<jsize>(bytes.size()));
  env_->SetByteArrayRegion(array, 0, static_cast<jsize>(bytes.size()), reinterpret_cast<const jbyte*>(bytes.data()));
  return array;
}

std::string JvmTest::TakeException(std::string* message) {
  jthrowable thrown = env_->ExceptionOccurred();
  if (thrown == nullptr) return "";
  env_->ExceptionClear();
  if (message != nullptr) *message = Text(thrown, "java/lang/Throwable", "toString");
  return Text(env_->GetObjectClass(thrown), "java/lang/Class", "getName");
}

jobject JvmTest::OpenReader(int index, bool open) {
  jobject devices = CallObject("QUORIN_EnumIDDevices", "()Ljava/util/ArrayList;");
  const std::string sig = "(" + kDeviceInfoSig + ")" + kHandleSig;
  jobject handle = CallObject("QUORIN_CreateHandle", sig.c_str(), ListGet(devices, index));
  EXPECT_NE(handle, nullptr);
  if (open && handle != nullptr) {
    EXPECT_EQ(OnHandle("QUORIN_OpenDevice", handle), 0);
  }
  return handle;
}

jobject JvmTest::GrabbingPushedFrames(int reader, long long payload) {
  jobject handle = OpenReader(reader);
  qsim::SetAutoFrames(false);
  qsim::SetIntNode(SdkHandle(handle), "PayloadSize", payload, 0, payload, 1, qsim::Access::kReadOnly);
  EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", handle), 0);
  return handle;
}

void* JvmTest::SdkHandle(jobject handle, const char* field) {
  return reinterpret_cast<void*>(static_cast<uintptr_t>(Long(handle, field)));
}

int JvmTest::ListSize(jobject list) {
  const int size = env_->CallIntMethod(list, ListMethod("size", "()I"));
  Checked();
  return size;
}

jobject JvmTest::ListGet(jobject list, int index) {
  jobject item = env_->CallObjectMethod(list, ListMethod("get", "(I)Ljava/lang/Object;"), index);
  Checked();
  return item;
}

jmethodID JvmTest::ListMethod(const char* name, const char* sig) {
  jclass cls = env_->FindClass("java/util/ArrayList");
  jmethodID method = env_->GetMethodID(cls, name, sig);
  env_->DeleteLocalRef(cls);
  return method;
}

namespace {

struct Counting {
  Footprint* footprint;
  jlong threadId;  // whose local references count
};

jint JNICALL CountJniRoot(jvmtiHeapReferenceKind kind, const jvmtiHeapReferenceInfo* info, jlong, jlong, jlong,
                          jlong*, jlong*, jint, void* user) {
  auto* counting = static_cast<Counting*>(user);
  if (kind == JVMTI_HEAP_REFERENCE_JNI_GLOBAL) ++counting->footprint->globalRefs;
  // Other threads' references come and go with their own work (the stand-in's deliveries among it).
  if (kind == JVMTI_HEAP_REFERENCE_JNI_LOCAL && info->jni_local.thread_id == counting->threadId) {
    ++counting->footprint->localRefs;
  }
  return 0;  // roots only: nothing below them is followed
}

long CHeapInUse() {
#ifdef QUORIN_TEST_ASAN
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());  // glibc's figures miss its allocator
#else
  return static_cast<long>(mallinfo2().uordblks);
#endif
}

}  // namespace

jvmtiEnv* FootprintJvmti(JNIEnv* env) {
  JavaVM* vm = nullptr;
  jvmtiEnv* jvmti = nullptr;
  if (env->GetJavaVM(&vm) != JNI_OK || vm->GetEnv(reinterpret_cast<void**>(&jvmti), JVMTI_VERSION_1_2) != JNI_OK) {
    return nullptr;
  }
  jvmtiCapabilities capabilities{};
  capabilities.can_tag_objects = 1;
  if (jvmti->AddCapabilities(&capabilities) == JVMTI_ERROR_NONE) return jvmti;
  jvmti->DisposeEnvironment();
  return nullptr;
}

Footprint MeasureFootprint(JNIEnv* env, jvmtiEnv* jvmti) {
  Footprint footprint;
  jclass probes = env->FindClass("QuorinTest/Probes");
  footprint.heap = static_cast<long>(
      env->CallStaticLongMethod(probes, env->GetStaticMethodID(probes, "usedHeapAfterCollection", "()J")));
  env->ExceptionCheck();  // a pending error is the caller's to report
  Counting counting{&footprint, env->CallStaticLongMethod(probes, env->GetStaticMethodID(probes, "currentThreadId", "()J"))};
  env->ExceptionCheck();
  env->DeleteLocalRef(probes);
  jvmtiHeapCallbacks callbacks{};
  callbacks.heap_reference_callback = CountJniRoot;
  EXPECT_EQ(jvmti->FollowReferences(0, nullptr, nullptr, &callbacks, &counting), JVMTI_ERROR_NONE);
  footprint.cHeap = CHeapInUse();
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  statm >> pages >> footprint.resident;
  footprint.resident *= sysconf(_SC_PAGESIZE);
  return footprint;
}

}  // namespace quorin_test
