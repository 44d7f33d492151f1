// The primitive types' leaf operations, for the catalogue, and the objects that octets.h does not define.
#pragma once

#include "octets.h"

struct CSASNOID {
  uint32_t* arcs;  // right behind the object in the same block, or in a block of their own
  uint64_t count;
  uint64_t capacity;
};

struct CSASNUTCTime {
  uint8_t year, month, day, hour, minute, second;
  bool hasOffsetHours, hasOffsetMinutes;
  uint8_t offsetMinutes;
  int32_t offsetHours;
};

struct CSASNGeneralizedTime {
  int32_t year;
  uint8_t month, day, hour, minute, second;
  bool hasMinute, hasSecond, hasOffsetHours, hasOffsetMinutes, isLocal;
  uint8_t offsetMinutes;
  int32_t offsetHours;
  char* fraction;  // NUL-terminated, from the decimal mark on; null when absent
};

namespace Tavo::Der {

// BOOLEAN has no object in the interface; as a component it is one octet.
struct Boolean {
  uint8_t value;
};

extern const Leaf kInteger, kOid, kOctetString, kBitString, kBoolean, kAny, kUtcTime, kGeneralizedTime;

}  // namespace Tavo::Der
