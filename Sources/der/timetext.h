// What the two time types share: fields of decimal text and optional members.
#pragma once

#include "memory.h"
#include "text.h"

namespace Tavo::Der {

// Two characters as a number that is not negative.
inline Code ReadTwoDigits(Text& text, Code badCode, uint8_t& value) {
  int32_t number = 0;
  CS_TRY(ReadField(text, 2, badCode, number));
  if (number < 0) return badCode;
  value = static_cast<uint8_t>(number);
  return CSResult_OK;
}

// Text of at most `capacity` characters in the making.
template <uint64_t capacity>
class TimeText {
 public:
  // `width` digits; 6 when the value is negative or needs more.
  Code Append(uint8_t width, int32_t value) {
    if (value < 0) return CSResult_BUFFER_TOO_SMALL;
    return AppendField(width, value, false);
  }
  // Sign and two digits.
  Code AppendOffset(int32_t hours) { return AppendField(3, hours, true); }
  Code Append(char character) {
    if (m_length == capacity) return CSResult_BUFFER_TOO_SMALL;
    m_text[m_length++] = character;
    return CSResult_OK;
  }

  uint64_t Length() const { return m_length; }
  // The text so that it ends at `end`; its start.
  uint8_t* WriteTo(uint8_t* end) const {
    CopyOctets(end - m_length, m_text, m_length);
    return end - m_length;
  }

 private:
  Code AppendField(uint8_t width, int32_t value, bool sign) {
    CS_TRY(WriteField(m_text + m_length, capacity - m_length, width, value, sign));
    m_length += width;
    return CSResult_OK;
  }

  char m_text[capacity];
  uint64_t m_length = 0;
};

// ---- optional members: a flag and a value inside, a pointer or null outside ----

template <class T>
bool SameOptional(bool hasA, T a, bool hasB, T b) {
  return hasA == hasB && (!hasA || a == b);
}

template <class T>
void Give(T* out, T value) {
  if (out != nullptr) *out = value;
}

template <class T>
void Lend(const T** out, bool has, const T& value) {
  if (out != nullptr) *out = has ? &value : nullptr;
}

template <class... T>
void LendNothing(const T**... out) {
  (Give(out, static_cast<const T*>(nullptr)), ...);
}

template <class T>
void Take(const T* from, bool& has, T& value) {
  has = from != nullptr;
  value = has ? *from : T{};
}

}  // namespace Tavo::Der
