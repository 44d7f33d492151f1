// Reading identifiers and lengths: the only code that walks raw input. Every length is tested against what remains,
// never added to a position first.
#pragma once

#include "tavo/der/core.h"

namespace Tavo::Der {

using Code = uint32_t;

#define CS_TRY(expression)                                         \
  do {                                                             \
    if (const Code tried = (expression); tried != 0) return tried; \
  } while (false)

// What is left of a range. `afterIndefinite`: the element just read had the indefinite form, so its closing 00 00 is
// still in front of what follows.
struct Input {
  const uint8_t* position;
  uint64_t remaining;
  bool afterIndefinite = false;

  void Skip(uint64_t octets) {
    position += octets;
    remaining -= octets;
  }
};

struct Length {
  uint64_t value;   // content octets
  uint64_t octets;  // length octets
  bool indefinite;
};

// How far a walk over the contents of an indefinite element has come; kept between calls when input arrives in pieces.
struct Walk {
  uint64_t position = 0;  // always at the start of an element or of a 00 00
  uint64_t open = 1;      // indefinite elements not yet closed
};

// Walks from `contents`, the octet after the 80, until the closing 00 00 is passed. 6 when the input ends first, 400
// for a length that no input can hold, 9 for a multi-octet tag. One counter replaces a stack: definite elements are
// skipped whole, only indefinite ones are entered.
Code WalkIndefinite(const uint8_t* contents, uint64_t available, Walk& walk);

// The identifier octet; skips the 00 00 of a preceding indefinite element. 6, or 400 for a multi-octet tag.
Code ReadIdentifier(Input& in, uint8_t& identifier);

// The length at `in`, without requiring definite contents to be there. 400 for more than 64 bits. `walk` goes on where
// an earlier call over the same, shorter input stopped.
Code ReadLength(const uint8_t* in, uint64_t available, Walk& walk, Length& length);

// Length and contents of the element whose identifier has been read; `in` moves past them.
Code ReadContents(Input& in, Input& contents);

// The size of the element at `in` from its identifier on, without the closing 00 00 of an indefinite one.
Code Measure(const uint8_t* in, uint64_t available, Walk& walk, uint64_t& total, bool& indefinite);

// Nothing is left but, perhaps, the 00 00 of an indefinite last element.
inline bool AtEnd(const Input& in) {
  return in.remaining == 0 || (in.afterIndefinite && in.remaining == 2 && in.position[0] == 0 && in.position[1] == 0);
}

// 0 to 3 in the order of the two class bits <-> class codes, where application and context-specific change places: the
// same table both ways.
constexpr uint8_t kClassOrder[4] = {CSTagClass_UNIVERSAL, CSTagClass_APPLICATION, CSTagClass_CONTEXT_SPECIFIC,
                                    CSTagClass_PRIVATE};
constexpr uint8_t kConstructed = 0x20;
constexpr uint8_t kNumberMask = 0x1F;
constexpr uint32_t kHighestNumber = 30;

constexpr uint8_t IdentifierOf(uint32_t number, uint32_t tagClass, uint8_t constructed) {
  return static_cast<uint8_t>(number | (kClassOrder[tagClass & 3] << 6) | (constructed != 0 ? kConstructed : 0));
}
constexpr uint32_t NumberOf(uint8_t identifier) { return identifier & kNumberMask; }
constexpr uint32_t ClassOf(uint8_t identifier) { return kClassOrder[identifier >> 6]; }

}  // namespace Tavo::Der
