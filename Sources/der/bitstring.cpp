// BIT STRING and BOOLEAN.
#include "tavo/der/primitive.h"

#include "catalogue.h"
#include "engine.h"

using namespace Tavo::Der;

namespace {

uint64_t OctetsFor(uint64_t bits) { return bits / 8 + (bits % 8 != 0 ? 1 : 0); }

Code NewBits(const uint8_t* bytes, uint64_t octets, uint64_t bitCount, CSASNBitString*& bits) {
  bits = NewWithOctets<CSASNBitString>(bytes, octets);
  if (bits == nullptr) return CSResult_OUT_OF_MEMORY;
  bits->bitCount = bitCount;
  bits->capacity = octets;
  return CSResult_OK;
}

struct BitLeaf : OctetLeaf<CSASNBitString> {
  // The unused-bits octet is not checked, but the count does not fall below 0.
  static Code Read(uint8_t, Input contents, void*& object) {
    if (contents.remaining == 0) return CSResult_BUFFER_TOO_SMALL;
    const uint64_t unused = contents.position[0];
    contents.Skip(1);
    const uint64_t all = contents.remaining * 8;
    CSASNBitString* bits = nullptr;
    CS_TRY(NewBits(contents.position, contents.remaining, all < unused ? 0 : all - unused, bits));
    object = bits;
    return CSResult_OK;
  }
  static Code Size(const void* object, uint64_t& octets) {
    octets = 1 + Object(object).octets.length;
    return CSResult_OK;
  }
  static uint8_t* Write(const void* object, uint8_t* end) {
    uint8_t* start = OctetLeaf::Write(object, end);
    *--start = static_cast<uint8_t>((0 - Object(object).bitCount) & 7);
    return start;
  }
  static Code Copy(const void* from, void*& to) {
    const CSASNBitString& bits = Object(from);
    CSASNBitString* copy = nullptr;
    CS_TRY(NewBits(bits.octets.data, bits.octets.length, bits.bitCount, copy));
    to = copy;
    return CSResult_OK;
  }
  static bool Equal(const void* a, const void* b) {
    return Object(a).bitCount == Object(b).bitCount && OctetLeaf::Equal(a, b);
  }
};

// Makes octet `index` part of the string.
Code Cover(CSASNBitString* bits, uint64_t index) {
  const uint64_t length = bits->octets.length;
  if (index < length) return CSResult_OK;
  if (index >= bits->capacity) {
    const uint64_t doubled = 2 * bits->capacity;
    const uint64_t capacity = index < doubled ? doubled : index + 1;
    auto* data = static_cast<uint8_t*>(Allocate(capacity));
    if (data == nullptr) return CSResult_OUT_OF_MEMORY;
    CopyOctets(data, bits->octets.data, length);
    ReplaceOctets(bits, {data, length});
    bits->capacity = capacity;
  }
  memset(bits->octets.data + length, 0, index + 1 - length);
  bits->octets.length = index + 1;
  return CSResult_OK;
}

uint8_t Mask(uint64_t index) { return static_cast<uint8_t>(0x80 >> index % 8); }

Code ReadBoolean(Input contents, uint8_t& value) {
  if (contents.remaining != 1) return CSResult_BAD_BOOLEAN_LENGTH;
  if (contents.position[0] != 0x00 && contents.position[0] != 0xFF) return CSResult_BAD_BOOLEAN_VALUE;
  value = contents.position[0];
  return CSResult_OK;
}

struct BooleanLeaf {
  static Code New(uint8_t value, void*& object) {
    object = Allocate(sizeof(Boolean));
    if (object == nullptr) return CSResult_OUT_OF_MEMORY;
    static_cast<Boolean*>(object)->value = value;
    return CSResult_OK;
  }
  static uint8_t Value(const void* object) { return static_cast<const Boolean*>(object)->value; }

  static Code Read(uint8_t, Input contents, void*& object) {
    uint8_t value = 0;
    CS_TRY(ReadBoolean(contents, value));
    return New(value, object);
  }
  static Code Size(const void*, uint64_t& octets) {
    octets = 1;
    return CSResult_OK;
  }
  static uint8_t* Write(const void* object, uint8_t* end) {
    *--end = Value(object) != 0 ? 0xFF : 0x00;
    return end;
  }
  static Code Copy(const void* from, void*& to) { return New(Value(from), to); }
  static bool Equal(const void* a, const void* b) { return Value(a) == Value(b); }
  static void Destroy(void* object) { Release(object); }
};

}  // namespace

const Leaf Tavo::Der::kBitString = {BitLeaf::Read, BitLeaf::Size,  BitLeaf::Write,
                                    BitLeaf::Copy, BitLeaf::Equal, BitLeaf::Destroy};
const Leaf Tavo::Der::kBoolean = {BooleanLeaf::Read, BooleanLeaf::Size,  BooleanLeaf::Write,
                                  BooleanLeaf::Copy, BooleanLeaf::Equal, BooleanLeaf::Destroy};

// ---- BIT STRING ----

uint32_t CSASNBitString_GetBit(const CSASNBitString* bits, uint64_t index, uint8_t* value) {
  if (bits == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  if (index >= bits->bitCount) return CSResult_INDEX_OUT_OF_RANGE;
  *value = index / 8 < bits->octets.length ? bits->octets.data[index / 8] & Mask(index) : 0;
  return CSResult_OK;
}

uint32_t CSASNBitString_SetBit(CSASNBitString* bits, uint64_t index, uint8_t on) {
  if (bits == nullptr) return CSResult_BAD_PARAMETER;
  if (index == UINT64_MAX) return CSResult_OUT_OF_MEMORY;
  CS_TRY(Cover(bits, index / 8));
  if (bits->bitCount <= index) bits->bitCount = index + 1;
  uint8_t& octet = bits->octets.data[index / 8];
  octet = static_cast<uint8_t>(on != 0 ? octet | Mask(index) : octet & ~Mask(index));
  return CSResult_OK;
}

uint32_t CSASNBitString_GetAllBits(const CSASNBitString* bits, const uint8_t** bytes, uint64_t* byteCount) {
  return GetOctets(bits, bytes, byteCount);
}

uint32_t CSASNBitString_SetAllBits(CSASNBitString* bits, const uint8_t* bytes, uint64_t bitCount) {
  const uint64_t octets = OctetsFor(bitCount);
  CS_TRY(SetOctets(bits, bytes, octets));
  bits->bitCount = bitCount;
  bits->capacity = octets;
  return CSResult_OK;
}

uint32_t CSASNBitString_GetBitCount(const CSASNBitString* bits, uint64_t* bitCount) {
  if (bits == nullptr || bitCount == nullptr) return CSResult_BAD_PARAMETER;
  *bitCount = bits->bitCount;
  return CSResult_OK;
}

uint32_t CSASNBitString_FromBytes(const uint8_t* bytes, uint64_t byteCount, CSASNBitString** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (bytes == nullptr && byteCount != 0) return CSResult_BAD_PARAMETER;
  if (byteCount > PTRDIFF_MAX) return CSResult_OUT_OF_MEMORY;
  return NewBits(bytes, byteCount, byteCount * 8, *out);
}

uint32_t CSASNBitString_FromOctetString(const CSASNOctetString* octets, CSASNBitString** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (octets == nullptr) return CSResult_BAD_PARAMETER;
  return CSASNBitString_FromBytes(octets->octets.data, octets->octets.length, out);
}

// ---- BOOLEAN ----

uint32_t CSASNBoolean_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t* value) {
  if (value == nullptr) return CSResult_BAD_PARAMETER;
  Element element{};
  CS_TRY(Open(kTypeOf<Boolean>, in, ioLength, mode, 0, element));
  CS_TRY(ReadBoolean(element.contents, *value));
  *ioLength -= element.rest.remaining;
  return CSResult_OK;
}

uint32_t CSASNBoolean_DERDecodeFinish(const CSASNDecodeContext* context, uint8_t* value) {
  uint64_t length = CSASNUtil_GetDecodeContextLength(context);
  return CSASNBoolean_DERDecodeTLV(CSASNUtil_GetDecodeContextData(context), &length, 0, value);
}

uint32_t CSASNBoolean_DEREncodeTLV(uint8_t value, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                   uint8_t writeLength, uint8_t writeContents) {
  const Boolean boolean{value};
  return Encode(kTypeOf<Boolean>, &boolean, buffer, ioLength, {writeTag, writeLength, writeContents});
}

uint32_t CSASNBoolean_DEREncodedLength(uint8_t, uint64_t* total) {
  if (total == nullptr) return CSResult_BAD_PARAMETER;
  *total = 3;
  return CSResult_OK;
}

uint32_t CSASNBoolean_DEREncodedLengthTLV(uint8_t, uint64_t* tagOctets, uint64_t* lengthOctets,
                                          uint64_t* contentOctets) {
  for (uint64_t* octets : {tagOctets, lengthOctets, contentOctets}) {
    if (octets != nullptr) *octets = 1;
  }
  return CSResult_OK;
}
