// Bounded decimal text, narrow and wide.
#pragma once

#include "input.h"

namespace Tavo::Der {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

inline uint64_t DecimalDigits(uint64_t value) {
  uint64_t digits = 1;
  for (; value > 9; value /= 10) ++digits;
  return digits;
}

// The digits of `value` so that they end at `end`; their start.
template <class Character>
Character* WriteDecimal(uint64_t value, Character* end) {
  do {
    *--end = static_cast<Character>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  return end;
}

inline uint64_t Magnitude(int32_t value) { return static_cast<uint64_t>(value < 0 ? -int64_t{value} : int64_t{value}); }

struct Text {
  const char* position;
  uint64_t remaining;

  void Skip(uint64_t characters) {
    position += characters;
    remaining -= characters;
  }
};

// A field of exactly `width` characters in decimal: blanks, one sign, digits. 6 when fewer remain, else `badCode`.
Code ReadField(Text& text, uint8_t width, Code badCode, int32_t& value);

// Exactly `width` characters: sign, zeros, digits. 6 when `value` needs more, or more than `capacity` are needed.
Code WriteField(char* out, uint64_t capacity, uint8_t width, int32_t value, bool forcePlus);

}  // namespace Tavo::Der
