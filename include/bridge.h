// Internal declarations shared by the bridge's entry points: status words, Java names,
// the field helpers, text conversion and the RAII wrappers for JNI resources.
#pragma once

#include <jni.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "QuorinCtrl.h"

// ---------------------------------------------------------------------------
// Status words the bridge answers itself, before the SDK is reached.
// They are unsigned 32-bit words; Java sees the same bits as a negative int.
constexpr jint kStatusOk = 0;
constexpr jint kStatusNullHandle = static_cast<jint>(0x80020000u);
constexpr jint kStatusPayloadUnknown = static_cast<jint>(0x80020003u);
constexpr jint kStatusBadArgument = static_cast<jint>(0x80020004u);
constexpr jint kStatusBufferTooSmall = static_cast<jint>(0x8002000au);

// Returns `status` from the enclosing native when a required reference is null.
#define RETURN_IF_NULL(ref, status) \
  do {                              \
    if ((ref) == nullptr) {         \
      return (status);              \
    }                               \
  } while (0)

// Returns `status` once a JNI call has left an exception pending: nothing more may reach the
// SDK or the VM, and Java sees that first exception.
#define RETURN_IF_PENDING(env, status) \
  do {                                 \
    if ((env)->ExceptionCheck()) {     \
      return (status);                 \
    }                                  \
  } while (0)

// ---------------------------------------------------------------------------
// Runtime: diagnostics, method and field access, enumerations, errors.

// Prints a diagnostic line to standard output; the expanded text is used as a format again.
void QN_RunInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Method of an object's own class (not of a class reference); null with the VM's error pending.
jmethodID GetMethodID(JNIEnv* env, jobject obj, const char* name, const char* sig);

// Reads or writes one field by name and signature; every value travels in one 64-bit word.
unsigned long long GetFieldValue(JNIEnv* env, jobject obj, const char* name, const char* sig);
void SetFieldValue(JNIEnv* env, jobject obj, const char* name, const char* sig, unsigned long long value);
// The same conversions through a field identifier already resolved.
unsigned long long ReadFieldById(JNIEnv* env, jobject obj, jfieldID field, const char* sig);
void WriteFieldById(JNIEnv* env, jobject obj, jfieldID field, const char* sig, unsigned long long value);
// A read with the field looked up on a named class instead of the object's own; the caller
// makes sure the object is an instance of it.
unsigned long long GetFieldValue(JNIEnv* env, jobject obj, jclass declaringClass, const char* name, const char* sig);

// Pointers and references travel in the value word zero-extended, at their native width.
inline unsigned long long PointerWord(const void* pointer) {
  return static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer));
}
inline jobject ObjectFromWord(unsigned long long word) {
  return reinterpret_cast<jobject>(static_cast<uintptr_t>(word));
}
// Stores into a caller's java.lang.Integer in place: the caller's own object changes value.
void SetIntegerValue(JNIEnv* env, jobject integer, unsigned int value);

// The enumeration constant whose `fieldName` equals `value`, or null.
jobject GetEnumObject(JNIEnv* env, jclass enumClass, const char* className, const char* fieldName,
                      const char* fieldSig, unsigned long long value);

// The QUORIN_XML_AccessMode constant for an SDK access mode number.
jobject getType(JNIEnv* env, int accessMode);

// Makes a ParameterException pending; the caller returns right after.
void throwError(JNIEnv* env, int code, std::string message);

// The process-wide frame object that the image callback fills, and its maker.
extern std::atomic<jobject> g_frameInfoEx2;
jobject NewFrameInfoEx2Global(JNIEnv* env);

// A new Java array holding a copy of `length` bytes; empty when there are none to copy.
jbyteArray NewByteArrayOf(JNIEnv* env, const void* bytes, unsigned int length);

// ---------------------------------------------------------------------------
// Text and address conversion.
bool IsStrUTF8(const char* text, int len);
int MultiByteToUTFchar(char* out, const char* in, unsigned int len);
jstring cToJstringutf(JNIEnv* env, const char* text);
unsigned int iptoint(const char* text);

// A Java string from a device text: UTF-8 text keeps its well-formed prefix, anything else
// is decoded as GBK.
jstring DeviceTextToJava(JNIEnv* env, const char* text);

// ---------------------------------------------------------------------------
// The Java Handle object.

// Which of a Handle's long fields holds the SDK pointer.
enum class HandleKind { kDevice, kUpgrade };

// The SDK pointer kept, zero-extended, in a long field of a Handle (`hHandle` unless told).
void* SdkHandleOf(JNIEnv* env, jobject handle, HandleKind kind = HandleKind::kDevice);

// The shape of an entry point whose answer is a number for a caller's Integer: the Handle and
// the Integer are tested, the SDK is asked, and the number is stored whatever the status
// (0 when a failing SDK left it alone).
template <typename SdkGet>
jint GetIntoInteger(JNIEnv* env, jobject handle, jobject integer, HandleKind kind, SdkGet sdkGet) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(integer, kStatusBadArgument);
  unsigned int value = 0;
  const int status = sdkGet(SdkHandleOf(env, handle, kind), &value);
  SetIntegerValue(env, integer, value);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  return status;
}

// A new Handle object whose device or upgrade field holds `sdkHandle`.
jobject NewHandleObject(JNIEnv* env, HandleKind kind, void* sdkHandle);


// ---------------------------------------------------------------------------
// RAII for JNI resources. Each releases in its destructor; the explicit escapes
// (`release`, `leak`) are for the few places where keeping the resource is intended.

template <typename T = jobject>
class ScopedLocalRef {
 public:
  ScopedLocalRef(JNIEnv* env, T ref) : env_(env), ref_(ref) {}
  ScopedLocalRef(ScopedLocalRef&& other) noexcept : env_(other.env_), ref_(other.release()) {}
  ScopedLocalRef(const ScopedLocalRef&) = delete;
  ScopedLocalRef& operator=(const ScopedLocalRef&) = delete;
  ~ScopedLocalRef() { reset(); }

  T get() const { return ref_; }
  explicit operator bool() const { return ref_ != nullptr; }
  T release() {
    T ref = ref_;
    ref_ = nullptr;
    return ref;
  }
  void reset(T ref = nullptr) {
    if (ref_ != nullptr) env_->DeleteLocalRef(ref_);
    ref_ = ref;
  }

 private:
  JNIEnv* env_;
  T ref_;
};

// Modified-UTF-8 characters of a Java string; a null string, or one met with an exception
// pending, gives a null, empty object.
class ScopedUtfChars {
 public:
  ScopedUtfChars(JNIEnv* env, jstring string)
      : env_(env),
        string_(string),
        chars_(string && !env->ExceptionCheck() ? env->GetStringUTFChars(string, nullptr) : nullptr) {}
  ScopedUtfChars(const ScopedUtfChars&) = delete;
  ScopedUtfChars& operator=(const ScopedUtfChars&) = delete;
  ~ScopedUtfChars() {
    if (chars_ != nullptr) env_->ReleaseStringUTFChars(string_, chars_);
  }

  const char* c_str() const { return chars_; }
  size_t size() const { return chars_ ? std::strlen(chars_) : 0; }
  // Keeps the characters pinned for good; only where that is the entry point's defined behaviour.
  const char* leak() {
    const char* chars = chars_;
    chars_ = nullptr;
    return chars;
  }

 private:
  JNIEnv* env_;
  jstring string_;
  const char* chars_;
};

// The elements of a Java byte array, released with the mode given where the array is taken;
// null for a null array or one met with an exception pending.
class ScopedByteArrayElements {
 public:
  ScopedByteArrayElements(JNIEnv* env, jbyteArray array, jint releaseMode)
      : env_(env), array_(array), mode_(releaseMode),
        elements_(array && !env->ExceptionCheck() ? env->GetByteArrayElements(array, nullptr) : nullptr) {}
  ScopedByteArrayElements(const ScopedByteArrayElements&) = delete;
  ScopedByteArrayElements& operator=(const ScopedByteArrayElements&) = delete;
  ~ScopedByteArrayElements() {
    if (elements_ != nullptr) env_->ReleaseByteArrayElements(array_, elements_, mode_);
  }

  unsigned char* data() const { return reinterpret_cast<unsigned char*>(elements_); }
  // Leaves the array pinned; only where that is the entry point's defined behaviour.
  void leak() { elements_ = nullptr; }

 private:
  JNIEnv* env_;
  jbyteArray array_;
  jint mode_;
  jbyte* elements_;
};

// A local reference frame around a block that makes many references.
class ScopedLocalFrame {
 public:
  ScopedLocalFrame(JNIEnv* env, jint capacity) : env_(env), pushed_(env->PushLocalFrame(capacity) == 0) {}
  ScopedLocalFrame(const ScopedLocalFrame&) = delete;
  ScopedLocalFrame& operator=(const ScopedLocalFrame&) = delete;
  ~ScopedLocalFrame() {
    if (pushed_) env_->PopLocalFrame(nullptr);
  }
  bool ok() const { return pushed_; }

 private:
  JNIEnv* env_;
  bool pushed_;
};
