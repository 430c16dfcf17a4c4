// Device texts (ASCII, UTF-8 or GBK) to Java strings, and dotted IPv4 text to address words.
#include <arpa/inet.h>

#include <algorithm>
#include <vector>

#include "bridge.h"
#include "jmap/java_map.h"

namespace {

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Byte classes shared by the UTF-8 test and the prefix copy.
enum class LeadKind { kAscii, kContinuation, kTwoByte, kThreeByte, kInvalid };

LeadKind KindOfLead(unsigned char byte) {
  if (byte <= 0x7F) return LeadKind::kAscii;
  if (byte <= 0xBF) return LeadKind::kContinuation;
  if (byte <= 0xDF) return LeadKind::kTwoByte;
  if (byte <= 0xEF) return LeadKind::kThreeByte;
  return LeadKind::kInvalid;  // four-byte sequences are not accepted
}

}  // namespace

bool IsStrUTF8(const char* text, int len) {
  if (len < 0 || text == nullptr) return false;
  const auto start = reinterpret_cast<uintptr_t>(text);
  if (start + static_cast<uintptr_t>(len) < start) return false;  // the range wraps
  if (len == 0) return true;
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  const auto* end = p + len;
  while (p < end) {
    switch (KindOfLead(*p)) {
      case LeadKind::kAscii: p += 1; break;
      case LeadKind::kContinuation: return false;
      case LeadKind::kTwoByte:
        if (end - p < 2) return true;  // a sequence cut by the end of the range is accepted
        if (!IsContinuation(p[1])) return false;
        p += 2;
        break;
      case LeadKind::kThreeByte:
        if (end - p < 3) return true;
        if (!IsContinuation(p[1]) || !IsContinuation(p[2])) return false;
        p += 3;
        break;
      case LeadKind::kInvalid: return false;
    }
  }
  return true;
}

int MultiByteToUTFchar(char* out, const char* in, unsigned int len) {
  if (in == nullptr) return 0;
  const size_t n = std::min<size_t>(std::strlen(in), len);
  if (out == nullptr) return static_cast<int>(n);
  const auto* bytes = reinterpret_cast<const unsigned char*>(in);
  size_t i = 0;
  while (i < n) {
    size_t sequence = 0;
    switch (KindOfLead(bytes[i])) {
      case LeadKind::kAscii: sequence = 1; break;
      case LeadKind::kTwoByte:
        if (n - i >= 2 && IsContinuation(bytes[i + 1])) sequence = 2;
        break;
      case LeadKind::kThreeByte:
        if (n - i >= 3 && IsContinuation(bytes[i + 1]) && IsContinuation(bytes[i + 2])) sequence = 3;
        break;
      case LeadKind::kContinuation:
      case LeadKind::kInvalid: break;
    }
    if (sequence == 0) {  // the well-formed prefix ends here
      out[i] = '\0';
      return static_cast<int>(i);
    }
    std::memcpy(out + i, in + i, sequence);
    i += sequence;
  }
  return static_cast<int>(n);
}

jstring cToJstringutf(JNIEnv* env, const char* text) {
  RETURN_IF_PENDING(env, nullptr);
  ScopedLocalRef<jclass> stringClass(env, jmap::FindClass(env, jmap::ClassId::String));
  RETURN_IF_NULL(stringClass.get(), nullptr);
  jmethodID constructor = jmap::MethodOf(env, stringClass.get(), jmap::ClassId::String, jmap::kStringFromBytes);
  RETURN_IF_NULL(constructor, nullptr);
  const auto length = static_cast<jsize>(std::strlen(text));
  ScopedLocalRef<jbyteArray> bytes(env, env->NewByteArray(length));
  RETURN_IF_NULL(bytes.get(), nullptr);
  env->SetByteArrayRegion(bytes.get(), 0, length, reinterpret_cast<const jbyte*>(text));
  // The charset name is deliberately left to the end of the native frame.
  jstring charsetName = env->NewStringUTF(jmap::kGbkCharset);
  RETURN_IF_NULL(charsetName, nullptr);
  auto result = static_cast<jstring>(env->NewObject(stringClass.get(), constructor, bytes.get(), charsetName));
  return env->ExceptionCheck() ? nullptr : result;
}

unsigned int iptoint(const char* text) {
  if (text == nullptr) return 0;
  // First dotted number in the most significant byte, as the SDK's address words have it.
  return ntohl(inet_addr(text));
}

jstring DeviceTextToJava(JNIEnv* env, const char* text) {
  RETURN_IF_PENDING(env, nullptr);
  const size_t length = std::strlen(text);
  if (!IsStrUTF8(text, static_cast<int>(length))) return cToJstringutf(env, text);
  // The staging buffer always holds the whole text: a long text is never cut or overrun.
  constexpr size_t kStackStaging = 4096;
  char stackBuffer[kStackStaging];
  std::vector<char> heapBuffer;
  char* staging = stackBuffer;
  if (length >= kStackStaging) {
    heapBuffer.resize(length + 1);
    staging = heapBuffer.data();
  }
  // The copy stops with a terminator of its own or fills exactly `length` bytes; only the
  // byte after them needs zeroing, not the whole buffer (this runs once per decoded code).
  staging[length] = '\0';
  MultiByteToUTFchar(staging, text, static_cast<unsigned int>(length));
  return env->NewStringUTF(staging);
}
