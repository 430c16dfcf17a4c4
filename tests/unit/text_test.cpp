// The text and address helpers on the inputs no Java caller can hand them.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "bridge.h"

namespace {

TEST(TextHelpers, RefuseBadArgumentsAndStopAtTheFirstMalformedByte) {
  EXPECT_FALSE(IsStrUTF8(nullptr, 0));
  EXPECT_FALSE(IsStrUTF8("abc", -1));
  const char* nearTop = reinterpret_cast<const char*>(UINTPTR_MAX - 1);
  EXPECT_FALSE(IsStrUTF8(nearTop, 16));  // the range would wrap past the top of memory
  EXPECT_TRUE(IsStrUTF8("ok\xD6\xD0", 2));  // the length decides, not the terminator

  char out[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
  EXPECT_EQ(MultiByteToUTFchar(out, nullptr, 3), 0);
  EXPECT_EQ(MultiByteToUTFchar(out, "abc", 0), 0);
  EXPECT_EQ(std::string(out, 8), "xxxxxxxx");  // nothing written, not even a terminator
  EXPECT_EQ(MultiByteToUTFchar(out, "ab\xFF" "cd", 5), 2);
  EXPECT_EQ(std::string(out, 4), std::string("ab\0x", 4));  // a zero where it stopped, nothing after
  EXPECT_EQ(MultiByteToUTFchar(nullptr, "hi", 10), 2);      // a length query, bounded by the text
  EXPECT_EQ(iptoint(nullptr), 0u);
}

}  // namespace
