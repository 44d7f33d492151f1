#ifndef RZ_TESTS_HEX_H
#define RZ_TESTS_HEX_H

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tavo/framework/bytes.h"

/// Bytes of a text, and of hex digits with blanks between; what is no hex ends the program.
inline Tavo::Framework::ByteArray FromText(const std::string& text) { return {text.begin(), text.end()}; }

inline Tavo::Framework::ByteArray FromHex(const std::string& hex) {
  Tavo::Framework::ByteArray bytes;
  std::string digits;
  for (const char c : hex) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes.push_back(static_cast<unsigned char>(std::strtoul(digits.c_str(), nullptr, 16)));
    digits.clear();
  }
  if (!digits.empty() || hex.find_first_not_of("0123456789abcdefABCDEF ") != std::string::npos) {
    std::fprintf(stderr, "not hex: %s\n", hex.c_str());
    std::abort();
  }
  return bytes;
}

inline std::string ToHex(const Tavo::Framework::ByteArray& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    for (const int digit : {byte >> 4, byte & 15}) text += "0123456789abcdef"[digit];
  }
  return text;
}

#endif
