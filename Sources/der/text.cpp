#include "text.h"

#include <cstring>

using namespace Tavo::Der;

namespace Tavo::Der {

Code ReadField(Text& text, uint8_t width, Code badCode, int32_t& value) {
  if (text.remaining < width) return CSResult_BUFFER_TOO_SMALL;
  const char* in = text.position;
  const char* const end = in + width;
  while (in != end && (*in == ' ' || (*in >= '\t' && *in <= '\r'))) ++in;
  const bool negative = in != end && *in == '-';
  if (in != end && (*in == '-' || *in == '+')) ++in;
  if (in == end && width != 0) return badCode;
  int64_t magnitude = 0;
  for (; in != end; ++in) {
    if (!IsDigit(*in)) return badCode;
    magnitude = magnitude * 10 + (*in - '0');
    if (magnitude > int64_t{INT32_MAX} + (negative ? 1 : 0)) return badCode;
  }
  value = static_cast<int32_t>(negative ? -magnitude : magnitude);
  text.Skip(width);
  return CSResult_OK;
}

Code WriteField(char* out, uint64_t capacity, uint8_t width, int32_t value, bool forcePlus) {
  const uint64_t magnitude = Magnitude(value);
  const bool sign = value < 0 || forcePlus;
  if (width > capacity || DecimalDigits(magnitude) + (sign ? 1 : 0) > width) return CSResult_BUFFER_TOO_SMALL;
  memset(out, '0', width);
  WriteDecimal(magnitude, out + width);
  if (sign) *out = value < 0 ? '-' : '+';
  return CSResult_OK;
}

}  // namespace Tavo::Der

namespace {

// `terminated`: a NUL follows and counts.
template <class Character>
Code WriteNumber(int32_t value, Character* out, uint64_t capacity, uint64_t* count, bool terminated) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  const uint64_t characters = CSASNUtil_IntToStringLengthWithoutNull(value);
  const uint64_t needed = characters + (terminated ? 1 : 0);
  if (capacity < needed) return CSResult_BUFFER_TOO_SMALL;
  WriteDecimal(Magnitude(value), out + characters);
  if (value < 0) *out = '-';
  if (terminated) out[characters] = 0;
  if (count != nullptr) *count = needed;
  return CSResult_OK;
}

}  // namespace

uint32_t CSASNUtil_IntToStringLengthWithoutNull(int32_t value) {
  return static_cast<uint32_t>(DecimalDigits(Magnitude(value))) + (value < 0 ? 1 : 0);
}

uint32_t CSASNUtil_IntToStringLength(int32_t value) { return CSASNUtil_IntToStringLengthWithoutNull(value) + 1; }

uint32_t CSASNUtil_IntToStringWithoutNull(int32_t value, char* out, uint64_t capacity, uint64_t* count) {
  return WriteNumber(value, out, capacity, count, false);
}

uint32_t CSASNUtil_IntToString(int32_t value, char* out, uint64_t capacity, uint64_t* count) {
  return WriteNumber(value, out, capacity, count, true);
}

uint32_t CSASNUtil_IntToWString(int32_t value, wchar_t* out, uint64_t capacity, uint64_t* count) {
  return WriteNumber(value, out, capacity, count, true);
}

uint32_t CSASNUtil_SignedLongToExactlyNChars(char* out, uint64_t capacity, uint8_t width, int32_t value,
                                             uint8_t forcePlus) {
  return out == nullptr ? static_cast<Code>(CSResult_BAD_PARAMETER)
                        : WriteField(out, capacity, width, value, forcePlus != 0);
}

uint32_t CSASNUtil_ExactlyNCharsToSignedLong(char** cursor, uint64_t* remaining, uint8_t width, int32_t* value,
                                             uint32_t badCode) {
  if (cursor == nullptr || *cursor == nullptr || remaining == nullptr || value == nullptr) {
    return CSResult_BAD_PARAMETER;
  }
  Text text{*cursor, *remaining};
  CS_TRY(ReadField(text, width, badCode, *value));
  *cursor += width;
  *remaining -= width;
  return CSResult_OK;
}

uint32_t CSASNUtil_FractionalSecondsToDouble(char** cursor, uint64_t* remaining, double* value) {
  constexpr int kSignificant = 15;
  if (cursor == nullptr || *cursor == nullptr || remaining == nullptr || value == nullptr) {
    return CSResult_BAD_PARAMETER;
  }
  char* in = *cursor;
  char* const end = in + *remaining;
  if (in != end && *in == ',') *in = '.';
  double mantissa = 0;
  int significant = 0;
  double scale = 1;
  bool anyDigit = false;
  bool afterMark = false;
  for (; in != end && (IsDigit(*in) || (*in == '.' && !afterMark)); ++in) {
    if (*in == '.') {
      afterMark = true;
      continue;
    }
    anyDigit = true;
    const bool counts = significant < kSignificant;
    if (counts) mantissa = mantissa * 10 + (*in - '0');
    if (counts && mantissa != 0) ++significant;
    if (counts && afterMark) scale *= 10;
    if (!counts && !afterMark) mantissa *= 10;
  }
  *value = 0;
  if (!anyDigit) return CSResult_OK;
  *value = mantissa / scale;
  *remaining -= static_cast<uint64_t>(in - *cursor);
  *cursor = in;
  return CSResult_OK;
}
