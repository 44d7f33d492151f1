#include "input.h"

namespace Tavo::Der {
namespace {

constexpr uint8_t kIndefinite = 0x80;

bool IsEndMarker(const uint8_t* in, uint64_t available) { return available >= 2 && in[0] == 0 && in[1] == 0; }

// The long form; leading zero octets are free.
Code ReadLongLength(const uint8_t* in, uint64_t available, Length& length) {
  const uint64_t count = in[0] & 0x7F;
  if (count > available - 1) return CSResult_BUFFER_TOO_SMALL;
  uint64_t value = 0;
  for (uint64_t i = 1; i <= count; ++i) {
    if (value >> 56 != 0) return CSResult_BAD_FORMAT;
    value = value << 8 | in[i];
  }
  length = {value, count + 1, false};
  return CSResult_OK;
}

// Short and long form; an 80 comes back as an indefinite length of no contents.
Code ReadLengthOctets(const uint8_t* in, uint64_t available, Length& length) {
  if (available == 0) return CSResult_BUFFER_TOO_SMALL;
  if (in[0] > kIndefinite) return ReadLongLength(in, available, length);
  length = {in[0] & uint64_t{0x7F}, 1, in[0] == kIndefinite};
  return CSResult_OK;
}

}  // namespace

Code WalkIndefinite(const uint8_t* contents, uint64_t available, Walk& walk) {
  for (;;) {
    const uint8_t* in = contents + walk.position;
    uint64_t remaining = available - walk.position;
    if (remaining < 2) return CSResult_BUFFER_TOO_SMALL;
    if (IsEndMarker(in, remaining)) {
      walk.position += 2;
      if (--walk.open == 0) return CSResult_OK;
      continue;
    }
    if ((in[0] & kNumberMask) == kNumberMask) return CSResult_NOT_SUPPORTED;
    Length length{};
    CS_TRY(ReadLengthOctets(in + 1, remaining - 1, length));
    remaining -= 1 + length.octets;
    if (length.value > remaining) {
      const uint64_t before = available - remaining;
      return length.value > UINT64_MAX - before ? CSResult_BAD_FORMAT : CSResult_BUFFER_TOO_SMALL;
    }
    if (length.indefinite) ++walk.open;
    walk.position += 1 + length.octets + length.value;
  }
}

Code ReadIdentifier(Input& in, uint8_t& identifier) {
  if (in.remaining == 0) return CSResult_BUFFER_TOO_SMALL;
  const uint64_t skipped = IsEndMarker(in.position, in.remaining) ? 2 : 0;
  if (in.remaining <= skipped) return CSResult_BUFFER_TOO_SMALL;
  const uint8_t octet = in.position[skipped];
  if ((octet & kNumberMask) == kNumberMask) return CSResult_BAD_FORMAT;
  identifier = octet;
  in.Skip(skipped + 1);
  return CSResult_OK;
}

Code ReadLength(const uint8_t* in, uint64_t available, Walk& walk, Length& length) {
  CS_TRY(ReadLengthOctets(in, available, length));
  if (!length.indefinite) return CSResult_OK;
  CS_TRY(WalkIndefinite(in + 1, available - 1, walk));
  length.value = walk.position - 2;
  return CSResult_OK;
}

Code ReadContents(Input& in, Input& contents) {
  Walk walk;
  Length length{};
  if (const Code code = ReadLength(in.position, in.remaining, walk, length); code != 0) {
    return code == CSResult_BAD_FORMAT ? static_cast<Code>(CSResult_BUFFER_TOO_SMALL) : code;
  }
  if (length.value > in.remaining - length.octets) return CSResult_BUFFER_TOO_SMALL;
  in.Skip(length.octets);
  contents = {in.position, length.value};
  in.Skip(length.value);
  in.afterIndefinite = length.indefinite;
  return CSResult_OK;
}

Code Measure(const uint8_t* in, uint64_t available, Walk& walk, uint64_t& total, bool& indefinite) {
  Input rest{in, available};
  uint8_t identifier = 0;
  CS_TRY(ReadIdentifier(rest, identifier));
  Length length{};
  CS_TRY(ReadLength(rest.position, rest.remaining, walk, length));
  const uint64_t header = available - rest.remaining + length.octets;
  if (length.value > UINT64_MAX - header) return CSResult_BAD_FORMAT;
  total = header + length.value;
  indefinite = length.indefinite;
  return CSResult_OK;
}

}  // namespace Tavo::Der
