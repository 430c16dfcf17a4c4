// Dotted addresses under fuzzing: iptoint against a parser of the dotted notation written
// here, with the first number in the most significant byte of the word.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "bridge.h"

namespace {

bool Digit(char c) { return c >= '0' && c <= '9'; }

// The character at `at`, or the terminator past the end.
char At(const std::string& text, size_t at) { return at < text.size() ? text[at] : '\0'; }

int DigitValue(char c) {
  if (Digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 99;
}

// One number as C writes it: 0x... hex, 0... octal, else decimal; empty past 32 bits.
std::optional<uint32_t> Number(const std::string& text, size_t& at) {
  int base = 10;
  if (At(text, at) == '0') {
    base = 8;
    if ((At(text, at + 1) == 'x' || At(text, at + 1) == 'X') && DigitValue(At(text, at + 2)) < 16) {
      base = 16;
      at += 2;
    }
  }
  uint64_t value = 0;
  for (; DigitValue(At(text, at)) < base; ++at) {
    value = value * base + DigitValue(text[at]);
    if (value > 0xFFFFFFFFu) return std::nullopt;
  }
  return static_cast<uint32_t>(value);
}

// a.b.c.d, a.b.c (c fills 16 bits), a.b (b fills 24 bits) or a (32 bits); the text may go on
// after white space; anything else is refused.
std::optional<uint32_t> ParseDotted(const std::string& text) {
  uint32_t word = 0;
  int parts = 0;
  size_t at = 0;
  for (;;) {
    if (!Digit(At(text, at))) return std::nullopt;
    const std::optional<uint32_t> number = Number(text, at);
    if (!number) return std::nullopt;
    if (At(text, at) == '.') {
      if (parts == 3 || *number > 0xFF) return std::nullopt;
      word |= *number << (24 - 8 * parts++);
      ++at;
      continue;
    }
    if (At(text, at) != '\0' && std::string(" \t\n\v\f\r").find(At(text, at)) == std::string::npos) {
      return std::nullopt;
    }
    const uint32_t room = parts == 0 ? 0xFFFFFFFFu : (1u << (32 - 8 * parts)) - 1;
    if (*number > room) return std::nullopt;
    return word | *number;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), std::find(data, data + size, 0) - data);
  const uint32_t expected = ParseDotted(text).value_or(0xFFFFFFFFu);  // refused text reads as broadcast
  const unsigned int got = iptoint(text.c_str());
  if (got != expected) {
    std::fprintf(stderr, "iptoint(\"%s\") = 0x%08X, expected 0x%08X\n", text.c_str(), got, expected);
    std::abort();
  }
  if (iptoint(nullptr) != 0) std::abort();
  return 0;
}
