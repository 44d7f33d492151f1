// The one implementation behind all type families. Objects are `void*` here: what they are, their descriptor says. Null
// arguments are allowed where the exported functions allow them; out arguments are null after a failure.
#pragma once

#include <bit>

#include "type.h"

namespace Tavo::Der {

// ---- objects ----

void* Create(const Type& type);
void Destroy(const Type& type, void* object);  // with everything it owns; null is fine
Code Copy(const Type& type, const void* from, void*& to);
bool Equal(const Type& type, const void* a, const void* b);

// Appends an empty place to a list, in amortised constant time; null when out of memory. The caller fills it.
void** AppendPlace(List& list);
void* RemovePlace(List& list, uint64_t index);

// ---- decoding ----

// An element of which the caller has read nothing (mode 0), the identifier (1) or identifier and length (above 1).
// `rest` is what follows it.
struct Element {
  uint8_t identifier;
  Input contents;
  Input rest;
};

// Checks the identifier in mode 0, and in every mode for types whose identifier says what they hold.
Code Open(const Type& type, const uint8_t* in, const uint64_t* length, uint32_t mode, uint8_t identifier,
          Element& element);

// On success `*ioLength` becomes the octets consumed.
Code Decode(const Type& type, const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t identifier, void*& out);

// ---- encoding ----

// Octets that DER needs for a length.
inline uint64_t LengthOctets(uint64_t length) {
  return length < 0x80 ? 1 : 1 + (static_cast<uint64_t>(std::bit_width(length)) + 7) / 8;
}
// The length so that it ends at `end`; its start.
uint8_t* WriteLength(uint64_t length, uint8_t* end);

struct Sizes {
  uint64_t tag, length, contents;
};
struct Parts {
  uint8_t tag, length, contents;  // non-zero: to be written
};

// With `strict`, 420 for what the encoder cannot write; else what is missing counts nothing.
Code SizeOf(const Type& type, const void* object, bool strict, Sizes& sizes);

// Code of the encoder; `*buffer` and `*ioLength` change on success only.
Code Encode(const Type& type, const void* object, uint8_t** buffer, uint64_t* ioLength, Parts parts);

// The contents of an object of which SizeOf was taken, so that they end at `end`; their start.
uint8_t* WriteContents(const Type& type, const void* object, uint8_t* end);

// ---- finding ----

// Offsets count from the start of the buffer.
struct Place {
  uint64_t tagOffset, lengthOffset, contentsOffset, tagOctets, lengthOctets, contentOctets, endOffset;
};

// The component or item `index` of an encoded record or list.
Code Locate(const Type& type, const uint8_t* encoded, uint64_t length, uint32_t mode, uint64_t index, Place& place);

// ---- fields ----

inline bool Matches(const Field& field, uint8_t identifier) {
  return ((identifier ^ field.identifier) & field.mask) == 0;
}
const Field* AlternativeFor(const Type& choice, uint8_t identifier);  // null: none
Code CheckIdentifier(const Type& type, uint8_t identifier);

}  // namespace Tavo::Der
