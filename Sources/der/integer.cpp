#include "tavo/der/primitive.h"

#include "catalogue.h"
#include "engine.h"

using namespace Tavo::Der;

const Leaf Tavo::Der::kInteger = {OctetLeaf<CSASNInteger>::Read,  OctetLeaf<CSASNInteger>::Size,
                                  OctetLeaf<CSASNInteger>::Write, OctetLeaf<CSASNInteger>::Copy,
                                  OctetLeaf<CSASNInteger>::Equal, OctetLeaf<CSASNInteger>::Destroy};

namespace {

constexpr const Type& kType = kTypeOf<CSASNInteger>;

// ---- native numbers ----

// The minimal contents of a 32-bit number, as an INTEGER that needs no allocation.
class Native {
 public:
  explicit Native(int64_t value) {
    for (int i = 4; i >= 0; --i, value >>= 8) m_contents[i] = static_cast<uint8_t>(value);
    int start = 0;
    while (start < 4 && IsRedundant(m_contents[start], m_contents[start + 1])) ++start;
    m_integer.octets = {m_contents + start, static_cast<uint64_t>(5 - start)};
  }
  const CSASNInteger* Get() const { return &m_integer; }

 private:
  static bool IsRedundant(uint8_t octet, uint8_t next) { return octet == (next & 0x80 ? 0xFF : 0x00); }

  uint8_t m_contents[5];
  CSASNInteger m_integer;
};

Code NewNative(int64_t value, CSASNInteger** out) {
  const Native native(value);
  return FromOctets(native.Get()->octets.data, native.Get()->octets.length, out);
}

Code EncodeNative(int64_t value, uint8_t** buffer, uint64_t* ioLength, Parts parts) {
  const Native native(value);
  return Encode(kType, native.Get(), buffer, ioLength, parts);
}

Code NativeLength(int64_t value, uint64_t* total) {
  const Native native(value);
  return CSASNInteger_DEREncodedLength(native.Get(), total);
}

Code NativeLengths(int64_t value, uint64_t* tagOctets, uint64_t* lengthOctets, uint64_t* contentOctets) {
  const Native native(value);
  return CSASNInteger_DEREncodedLengthTLV(native.Get(), tagOctets, lengthOctets, contentOctets);
}

// Empty contents leave the value alone; of more than four octets the last four count.
Code ReadSigned(Octets contents, int32_t* value) {
  if (contents.length == 0) return CSResult_OK;
  uint32_t bits = contents.data[0] & 0x80 ? UINT32_MAX : 0;
  for (uint64_t i = 0; i < contents.length; ++i) bits = bits << 8 | contents.data[i];
  *value = static_cast<int32_t>(bits);
  return CSResult_OK;
}

// Leading zero octets are free and there is no sign. Empty contents leave the value alone.
template <class Unsigned>
Code ReadUnsigned(Octets contents, Unsigned* value) {
  if (contents.length == 0) return CSResult_OK;
  uint64_t start = 0;
  while (start < contents.length && contents.data[start] == 0) ++start;
  if (contents.length - start > sizeof(Unsigned)) return CSResult_BUFFER_TOO_SMALL;
  uint32_t bits = 0;
  for (uint64_t i = start; i < contents.length; ++i) bits = bits << 8 | contents.data[i];
  *value = static_cast<Unsigned>(bits);
  return CSResult_OK;
}

// Decodes without an object; `read` is one of the two above.
template <class Number>
Code DecodeNative(const uint8_t* in, uint64_t* ioLength, uint32_t mode, Number* value, Code (*read)(Octets, Number*)) {
  if (value == nullptr) return CSResult_BAD_PARAMETER;
  Element element{};
  CS_TRY(Open(kType, in, ioLength, mode, kType.identifier, element));
  // Never written through: the readers only look.
  CS_TRY(read({const_cast<uint8_t*>(element.contents.position), element.contents.remaining}, value));
  *ioLength -= element.rest.remaining;
  return CSResult_OK;
}

template <class Number>
Code FinishNative(const CSASNDecodeContext* context, Number* value) {
  uint64_t length = CSASNUtil_GetDecodeContextLength(context);
  return DecodeNative(CSASNUtil_GetDecodeContextData(context), &length, 0, value, ReadUnsigned<Number>);
}

// ---- comparison ----

bool IsNegative(const Octets& number) { return number.length != 0 && (number.data[0] & 0x80) != 0; }

Octets WithoutLeading(uint8_t sign, Octets number) {
  while (number.length != 0 && number.data[0] == sign) number = {number.data + 1, number.length - 1};
  return number;
}

int32_t Sign(int64_t difference) { return difference == 0 ? 0 : difference < 0 ? -1 : 1; }

// Of numbers of one sign, without their redundant octets: the longer one is further from zero, equal lengths order as
// octets do in two's complement.
int32_t CompareSameSign(Octets a, Octets b, bool negative) {
  const uint8_t sign = negative ? 0xFF : 0;
  a = WithoutLeading(sign, a);
  b = WithoutLeading(sign, b);
  if (a.length != b.length) return (a.length < b.length) != negative ? -1 : 1;
  return a.length == 0 ? 0 : Sign(memcmp(a.data, b.data, a.length));
}

}  // namespace

uint32_t CSASNInteger_FromUnsigned32(uint32_t value, CSASNInteger** out) { return NewNative(value, out); }

uint32_t CSASNInteger_FromSigned32(int32_t value, CSASNInteger** out) { return NewNative(value, out); }

uint32_t CSASNInteger_ToUnsigned32(const CSASNInteger* integer, uint32_t* value) {
  if (integer == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  return ReadUnsigned(integer->octets, value);
}

uint32_t CSASNInteger_ToSigned32(const CSASNInteger* integer, int32_t* value) {
  if (integer == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  return ReadSigned(integer->octets, value);
}

uint32_t CSASNInteger_DERDecodeSigned32TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, int32_t* value) {
  return DecodeNative(in, ioLength, mode, value, ReadSigned);
}

uint32_t CSASNInteger_DERDecodeUnsigned32TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t* value) {
  return DecodeNative(in, ioLength, mode, value, ReadUnsigned<uint32_t>);
}

uint32_t CSASNInteger_DERDecodeUnsigned8TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t* value) {
  return DecodeNative(in, ioLength, mode, value, ReadUnsigned<uint8_t>);
}

uint32_t CSASNInteger_DERDecodeFinishUnsigned32(const CSASNDecodeContext* context, uint32_t* value) {
  return FinishNative(context, value);
}

uint32_t CSASNInteger_DERDecodeFinishUnsigned8(const CSASNDecodeContext* context, uint8_t* value) {
  return FinishNative(context, value);
}

uint32_t CSASNInteger_DEREncodeSigned32TLV(int32_t value, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                           uint8_t writeLength, uint8_t writeContents) {
  return EncodeNative(value, buffer, ioLength, {writeTag, writeLength, writeContents});
}

uint32_t CSASNInteger_DEREncodeUnsigned32TLV(uint32_t value, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                             uint8_t writeLength, uint8_t writeContents) {
  return EncodeNative(value, buffer, ioLength, {writeTag, writeLength, writeContents});
}

uint32_t CSASNInteger_DEREncodedLengthSigned32(int32_t value, uint64_t* total) { return NativeLength(value, total); }

uint32_t CSASNInteger_DEREncodedLengthSigned32TLV(int32_t value, uint64_t* tagOctets, uint64_t* lengthOctets,
                                                  uint64_t* contentOctets) {
  return NativeLengths(value, tagOctets, lengthOctets, contentOctets);
}

uint32_t CSASNInteger_DEREncodedLengthUnsigned32(uint32_t value, uint64_t* total) { return NativeLength(value, total); }

uint32_t CSASNInteger_DEREncodedLengthUnsigned32TLV(uint32_t value, uint64_t* tagOctets, uint64_t* lengthOctets,
                                                    uint64_t* contentOctets) {
  return NativeLengths(value, tagOctets, lengthOctets, contentOctets);
}

uint32_t CSASNInteger_Compare(const CSASNInteger* a, const CSASNInteger* b, int32_t* result) {
  if (a == nullptr || b == nullptr || result == nullptr) return CSResult_BAD_PARAMETER;
  const bool negative = IsNegative(a->octets);
  if (negative != IsNegative(b->octets)) {
    *result = negative ? -1 : 1;
  } else {
    *result = CompareSameSign(a->octets, b->octets, negative);
  }
  return CSResult_OK;
}

uint32_t CSASNInteger_ToHex(const CSASNInteger* integer, char** text, uint64_t* capacity, uint8_t upperCase) {
  if (integer == nullptr || text == nullptr || capacity == nullptr) return CSResult_BAD_PARAMETER;
  const uint64_t length = integer->octets.length;
  const uint64_t needed = length == 0 ? 3 : 2 * length + 1;
  if (*text == nullptr) {
    *text = static_cast<char*>(Allocate(needed));
    if (*text == nullptr) return CSResult_OUT_OF_MEMORY;
    *capacity = needed;
  } else if (*capacity < needed) {
    *capacity = needed;
    return CSResult_BUFFER_TOO_SMALL;
  }
  const char* digits = upperCase != 0 ? "0123456789ABCDEF" : "0123456789abcdef";
  const Octets shown = WithoutLeading(0, integer->octets);
  char* out = *text;
  for (uint64_t i = 0; i < shown.length; ++i) {
    *out++ = digits[shown.data[i] >> 4];
    *out++ = digits[shown.data[i] & 15];
  }
  *out = 0;
  if (shown.length == 0) memcpy(*text, "00", 3);
  return CSResult_OK;
}

uint32_t CSASNInteger_GetBytes(const CSASNInteger* integer, const uint8_t** bytes, uint64_t* length) {
  return GetOctets(integer, bytes, length);
}

uint32_t CSASNInteger_FromString(const char*, CSASNInteger**) { return CSResult_NOT_IMPLEMENTED; }
uint32_t CSASNInteger_ToString(const CSASNInteger*, char**) { return CSResult_NOT_IMPLEMENTED; }
uint32_t CSASNInteger_Add(const CSASNInteger*, const CSASNInteger*, CSASNInteger**) { return CSResult_NOT_IMPLEMENTED; }
uint32_t CSASNInteger_Subtract(const CSASNInteger*, const CSASNInteger*, CSASNInteger**) {
  return CSResult_NOT_IMPLEMENTED;
}
