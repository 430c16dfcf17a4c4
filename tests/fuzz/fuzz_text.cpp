// The text rules under fuzzing: the UTF-8 test, the well-formed prefix copy, and device texts
// to Java strings (UTF-8 kept exactly, anything else decoded as GBK).
#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

#include "bridge.h"
#include "fuzz_jvm.h"

namespace {

using quorin_fuzz::Jvm;
using quorin_fuzz::StrictUtf8;

constexpr char kUntouched = '\x5A';

// The copy of the prefix, checked byte by byte against what the UTF-8 test says of the same text.
void CheckPrefixCopy(const std::vector<char>& text, unsigned int len) {
  const size_t bound = std::min<size_t>(text.size() - 1, len);
  EXPECT_EQ(MultiByteToUTFchar(nullptr, text.data(), len), static_cast<int>(bound)) << "length query";
  std::vector<char> out(bound + 8, kUntouched);
  const int copied = MultiByteToUTFchar(out.data(), text.data(), len);
  ASSERT_GE(copied, 0);
  const auto k = static_cast<size_t>(copied);
  ASSERT_LE(k, bound);
  EXPECT_EQ(std::string(out.data(), k), std::string(text.data(), k));
  // A stop writes one terminator where it stopped; a complete copy writes none.
  const size_t written = k < bound ? k + 1 : k;
  if (k < bound) EXPECT_EQ(out[k], '\0');
  EXPECT_EQ(std::count(out.begin() + written, out.end(), kUntouched), static_cast<long>(out.size() - written))
      << "bytes written after the copy";

  std::vector<char> exact(text.begin(), text.begin() + bound);  // no terminator: a read past is caught
  exact.reserve(1);  // an empty text still has an address: a null one is refused on its own
  const bool lenient = IsStrUTF8(exact.data(), static_cast<int>(bound));
  // The copied prefix is whole by both rules.
  EXPECT_TRUE(IsStrUTF8(exact.data(), copied));
  std::vector<char> prefix(text.begin(), text.begin() + k);
  prefix.push_back('\0');
  EXPECT_EQ(MultiByteToUTFchar(nullptr, prefix.data(), len), copied);
  if (lenient) {
    // Accepted text loses at most a sequence cut by the end of the range.
    if (k < bound) {
      const auto lead = static_cast<unsigned char>(text[k]);
      EXPECT_TRUE(lead >= 0xC0 && lead <= 0xEF) << "stopped at " << k << " of an accepted text";
      EXPECT_LT(bound - k, lead >= 0xE0 ? 3u : 2u);
    }
  } else {
    EXPECT_LT(k, bound) << "a refused text copied whole";
  }
  if (StrictUtf8(exact.data(), bound)) EXPECT_EQ(k, bound);
}

// A device text in Java: the prefix of UTF-8 exactly, never more characters than bytes.
void CheckDeviceText(Jvm& jvm, const std::vector<char>& text) {
  JNIEnv* env = jvm.env();
  ScopedLocalFrame frame(env, 16);
  auto result = static_cast<jstring>(DeviceTextToJava(env, text.data()));
  jvm.ExpectQuiet("DeviceTextToJava");
  ASSERT_NE(result, nullptr);
  const size_t length = text.size() - 1;
  EXPECT_LE(static_cast<size_t>(env->GetStringLength(result)), length);
  if (!IsStrUTF8(text.data(), static_cast<int>(length))) return;
  std::vector<char> out(length + 1, '\0');
  const auto kept = static_cast<size_t>(MultiByteToUTFchar(out.data(), text.data(), length));
  if (StrictUtf8(text.data(), kept)) EXPECT_EQ(jvm.ModifiedUtf8(result), std::string(text.data(), kept));
}

// Text of ASCII and first-level GB2312 characters (rows 0xB0-0xD6, all assigned): one Java
// character per source character, ASCII kept, and the string encodes back to the same bytes.
void CheckGbk(Jvm& jvm, const uint8_t* data, size_t size) {
  std::vector<char> gbk;
  for (size_t i = 0; i < size; ++i) {
    const uint8_t b = data[i];
    if (b != 0 && b < 0x80) {
      gbk.push_back(static_cast<char>(b));
    } else {
      gbk.push_back(static_cast<char>(0xB0 + b % 39));
      gbk.push_back(static_cast<char>(0xA1 + (b * 7 + i) % 94));
    }
  }
  gbk.push_back('\0');
  JNIEnv* env = jvm.env();
  ScopedLocalFrame frame(env, 16);
  auto decoded = cToJstringutf(env, gbk.data());
  jvm.ExpectQuiet("cToJstringutf");
  ASSERT_NE(decoded, nullptr);
  ASSERT_EQ(static_cast<size_t>(env->GetStringLength(decoded)), size);
  std::vector<jchar> chars(size);
  env->GetStringRegion(decoded, 0, static_cast<jsize>(size), chars.data());
  for (size_t i = 0; i < size; ++i) {
    if (data[i] != 0 && data[i] < 0x80) {
      ASSERT_EQ(chars[i], data[i]) << "at " << i;
    } else {
      ASSERT_TRUE(chars[i] >= 0x4E00 && chars[i] <= 0x9FA5) << "at " << i << ": U+" << std::hex << chars[i];
    }
  }
  ScopedLocalRef<jclass> string(env, env->FindClass("java/lang/String"));
  jobject encoded = env->CallObjectMethod(
      decoded, env->GetMethodID(string.get(), "getBytes", "(Ljava/lang/String;)[B"), env->NewStringUTF("GBK"));
  jvm.ExpectQuiet("String.getBytes");
  EXPECT_EQ(jvm.Bytes(encoded), std::string(gbk.data(), gbk.size() - 1));
  // The same text as a device text is decoded the same way unless it also reads as UTF-8.
  if (!IsStrUTF8(gbk.data(), static_cast<int>(gbk.size() - 1))) {
    jstring device = DeviceTextToJava(env, gbk.data());
    jvm.ExpectQuiet("DeviceTextToJava of GBK");
    EXPECT_TRUE(env->CallBooleanMethod(decoded, env->GetMethodID(string.get(), "equals", "(Ljava/lang/Object;)Z"), device));
    jvm.ExpectQuiet("String.equals");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A heap block of exactly the text and its terminator, so any read past it is caught.
  std::vector<char> text(data, std::find(data, data + size, 0));
  const size_t textLength = text.size();
  text.push_back('\0');
  for (unsigned int len : {static_cast<unsigned int>(textLength), static_cast<unsigned int>(textLength / 2), UINT_MAX}) {
    CheckPrefixCopy(text, len);
  }
  Jvm& jvm = Jvm::Instance();
  CheckDeviceText(jvm, text);
  CheckGbk(jvm, data, std::min<size_t>(size, 2048));
  return 0;
}
