// The text and address helpers on their own, without a JVM.
#include <gtest/gtest.h>

#include <string>

#include "bridge.h"

namespace {

bool Utf8(const std::string& bytes) { return IsStrUTF8(bytes.data(), static_cast<int>(bytes.size())); }

TEST(IsStrUTF8, AcceptsWhatTheDevicesSendAndRejectsGbk) {
  EXPECT_TRUE(Utf8("abc"));
  EXPECT_TRUE(Utf8(""));
  EXPECT_TRUE(Utf8("\xC3\xA9"));                      // é
  EXPECT_TRUE(Utf8("\xE4\xB8\xAD\xE6\x96\x87"));      // 中文
  EXPECT_FALSE(Utf8("\x80"));                         // continuation where a sequence starts
  EXPECT_FALSE(Utf8("\xD6\xD0\xCE\xC4"));             // 中文 in GBK
  EXPECT_FALSE(Utf8("\xF0\x9F\x98\x80"));             // four-byte sequences are refused
  EXPECT_FALSE(Utf8("a\xE4\x41\x42"));                // three-byte lead without continuations
}

TEST(IsStrUTF8, IsLenientAtTheEndAndForOverlongForms) {
  EXPECT_TRUE(Utf8("ab\xE4"));          // three-byte lead cut by the end
  EXPECT_TRUE(Utf8("ab\xE4\xB8"));      // still one byte short
  EXPECT_TRUE(Utf8("ab\xC3"));          // two-byte lead cut by the end
  EXPECT_TRUE(Utf8("\xC0\x80"));        // overlong NUL passes the structural test
  EXPECT_TRUE(Utf8("\xED\xA0\x80"));    // an encoded surrogate passes too
  // The length decides, not the terminator: the GBK tail beyond it is not looked at.
  EXPECT_TRUE(IsStrUTF8("ok\xD6\xD0", 2));
}

TEST(IsStrUTF8, RefusesBadArguments) {
  EXPECT_FALSE(IsStrUTF8(nullptr, 0));
  EXPECT_FALSE(IsStrUTF8("abc", -1));
  const char* nearTop = reinterpret_cast<const char*>(UINTPTR_MAX - 1);
  EXPECT_FALSE(IsStrUTF8(nearTop, 16));  // the range would wrap past the top of memory
}

TEST(MultiByteToUTFchar, CopiesTheWellFormedPrefixToTheSameIndex) {
  char out[16];
  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(MultiByteToUTFchar(out, "ab\xFF" "cd", 5), 2);
  EXPECT_EQ(std::string(out, 4), std::string("ab\0x", 4));  // a zero where it stopped, nothing after

  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(MultiByteToUTFchar(out, "\xC3\xA9z", 3), 3);
  EXPECT_EQ(std::string(out, 4), "\xC3\xA9zx");  // a complete copy writes no terminator

  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(MultiByteToUTFchar(out, "a\xE4\xB8", 3), 1);  // a cut tail is not copied here
  EXPECT_EQ(out[1], '\0');

  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(MultiByteToUTFchar(out, "\x80" "abc", 4), 0);
  EXPECT_EQ(out[0], '\0');
}

TEST(MultiByteToUTFchar, LengthQueriesAndEmptyInput) {
  EXPECT_EQ(MultiByteToUTFchar(nullptr, "hello", 3), 3);   // a length query writes nothing
  EXPECT_EQ(MultiByteToUTFchar(nullptr, "hi", 10), 2);     // bounded by the text itself
  char out[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(MultiByteToUTFchar(out, nullptr, 3), 0);
  EXPECT_EQ(MultiByteToUTFchar(out, "", 3), 0);
  EXPECT_EQ(MultiByteToUTFchar(out, "abc", 0), 0);
  EXPECT_EQ(std::string(out, 4), "xxxx");                  // not even a terminator
}

TEST(Iptoint, PutsTheFirstNumberInTheMostSignificantByte) {
  EXPECT_EQ(iptoint("10.0.0.1"), 0x0A000001u);
  EXPECT_EQ(iptoint("192.168.0.10"), 0xC0A8000Au);
  EXPECT_EQ(iptoint("255.255.255.0"), 0xFFFFFF00u);
  EXPECT_EQ(iptoint("bad"), 0xFFFFFFFFu);  // indistinguishable from the broadcast address
  EXPECT_EQ(iptoint("255.255.255.255"), 0xFFFFFFFFu);
  EXPECT_EQ(iptoint(nullptr), 0u);
}

}  // namespace
