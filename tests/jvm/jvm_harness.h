// An in-process JVM for the bridge's tests, and a fixture that calls QuorinCtrl's natives
// through the VM and reads Java fields for assertions.
#pragma once

#include <gtest/gtest.h>
#include <jni.h>
#include <jvmti.h>

#include <cstring>
#include <string>
#include <vector>

// QUORIN_TEST_ASAN: built with AddressSanitizer, whose quarantine keeps freed memory resident.
#if defined(__SANITIZE_ADDRESS__)
#define QUORIN_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORIN_TEST_ASAN 1
#endif
#endif

namespace quorin_test {

// Creates the JVM once per process (QUORIN_XCHECK_JNI=1 adds -Xcheck:jni).
class JvmEnvironment : public testing::Environment {
 public:
  void SetUp() override;
};

JNIEnv* Env();

// Full class name of a QuorinCtrlDefine nested class: Define("Handle").
std::string Define(const char* nested);

class JvmTest : public testing::Test {
 protected:
  void SetUp() override;     // fresh stand-in SDK, a local frame for the test's references
  void TearDown() override;  // no Java exception may be left pending

  // Static methods of QuorinCtrlWrapper.QuorinCtrl by name and JNI signature.
  jint CallInt(const char* method, const char* sig, ...);
  jobject CallObject(const char* method, const char* sig, ...);
  bool CallBoolean(const char* method, const char* sig, ...);
  // The natives of shape (Handle)I and (Handle, Object callback)I.
  jint OnHandle(const char* method, jobject handle);
  jint Register(const char* method, jobject handle, jobject callback);

  jobject New(const std::string& className);  // no-argument constructor
  jobject NewDefine(const char* nested) { return New(Define(nested)); }
  jstring Str(const std::string& utf8);

  // Field access on Java objects, by name.
  jint Int(jobject obj, const char* field);
  jlong Long(jobject obj, const char* field);
  jshort Short(jobject obj, const char* field);
  bool Bool(jobject obj, const char* field);
  float Float(jobject obj, const char* field);
  jobject Object(jobject obj, const char* field, const std::string& sig);
  std::string String(jobject obj, const char* field);  // "<null>" for a null reference
  void SetInt(jobject obj, const char* field, jint value);
  void SetShort(jobject obj, const char* field, jshort value);
  void SetLong(jobject obj, const char* field, jlong value);
  void SetBool(jobject obj, const char* field, bool value);
  void SetString(jobject obj, const char* field, const std::string& utf8);  // "" stays "", use SetNull for null
  void SetNull(jobject obj, const char* field, const std::string& sig);
  void SetObject(jobject obj, const char* field, const std::string& sig, jobject value);

  jobject NewInteger(jint value);
  jobject Constant(const char* enumClass, const char* name);  // a QuorinCtrlDefine enum constant
  std::string EnumName(jobject constant);                     // "<null>" for a null reference
  std::vector<unsigned char> Bytes(jobject array);            // empty for a null array
  jbyteArray ArrayOf(const std::vector<unsigned char>& bytes);

  std::string Utf8(jstring text);
  // A no-argument String method of `obj` declared by class `cls`: Text(e, "java/lang/Throwable", "toString").
  std::string Text(jobject obj, const char* cls, const char* method);
  // Class name of the pending exception ("" when none); the exception is cleared.
  std::string TakeException(std::string* message = nullptr);
  int ListSize(jobject list);
  jobject ListGet(jobject list, int index);

  bool Checked();  // after every call into Java

  // A Handle on default reader `index` (0..3), opened when asked.
  jobject OpenReader(int index, bool open = true);
  // A Handle on default reader `reader`, opened, grabbing through the bridge with the given
  // PayloadSize, and delivering only the frames the test pushes or fires.
  jobject GrabbingPushedFrames(int reader, long long payload);
  // The SDK handle a Java Handle carries.
  void* SdkHandle(jobject handle, const char* field = "hHandle");

  JNIEnv* env_ = nullptr;

 private:
  jclass Ctrl();
  jmethodID ListMethod(const char* name, const char* sig);
  jfieldID Field(jobject obj, const char* field, const char* sig);
};

// A native record as the stand-in scripts it.
template <typename Record>
std::vector<unsigned char> RecordBytes(const Record& record) {
  std::vector<unsigned char> bytes(sizeof record);
  std::memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

// The bridge's own status words, as Java sees them.
constexpr jint kNullHandle = static_cast<jint>(0x80020000u);
constexpr jint kPayloadUnknown = static_cast<jint>(0x80020003u);
constexpr jint kBadArgument = static_cast<jint>(0x80020004u);
constexpr jint kBufferTooSmall = static_cast<jint>(0x8002000au);

// Signatures the tests use often.
inline const std::string kHandleSig = "LQuorinCtrlWrapper/QuorinCtrlDefine$Handle;";
inline const std::string kDeviceInfoSig = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_DEVICE_INFO;";
inline const std::string kGigESig = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_GIGE_DEVICE_INFO;";

// What the process holds, for checks that repeated work leaves nothing behind.
struct Footprint {
  long globalRefs = 0;  // JNI global references, the VM's own included
  long localRefs = 0;   // JNI local references of the calling thread, its current frame included
  long heap = 0;        // Java heap in use after full collections
  long cHeap = 0;       // bytes the C heap has handed out and not had back
  long resident = 0;    // resident set of the process
};
// A JVMTI environment that may count references (can_tag_objects); null when the VM refuses.
jvmtiEnv* FootprintJvmti(JNIEnv* env);
Footprint MeasureFootprint(JNIEnv* env, jvmtiEnv* jvmti);

}  // namespace quorin_test
