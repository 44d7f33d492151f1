// OCTET STRING, IA5String and ANY.
#include "tavo/der/primitive.h"

#include "catalogue.h"
#include "engine.h"

using namespace Tavo::Der;

namespace {

struct AnyLeaf : OctetLeaf<CSASNAny> {
  static Code Read(uint8_t identifier, Input contents, void*& object) {
    CS_TRY(OctetLeaf::Read(identifier, contents, object));
    static_cast<CSASNAny*>(object)->identifier = identifier;
    return CSResult_OK;
  }
  static Code Copy(const void* from, void*& to) {
    CS_TRY(OctetLeaf::Copy(from, to));
    static_cast<CSASNAny*>(to)->identifier = Object(from).identifier;
    return CSResult_OK;
  }
  static bool Equal(const void* a, const void* b) {
    return Object(a).identifier == Object(b).identifier && OctetLeaf::Equal(a, b);
  }
};

// Text of one character for each octet, and a NUL.
template <class Character>
Code NewText(const CSASNIA5String* string, Character** text) {
  if (text == nullptr) return CSResult_BAD_PARAMETER;
  *text = nullptr;
  if (string == nullptr) return CSResult_BAD_PARAMETER;
  const Octets& octets = string->octets;
  if (octets.length >= PTRDIFF_MAX / sizeof(Character)) return CSResult_OUT_OF_MEMORY;
  auto* copy = static_cast<Character*>(Allocate((octets.length + 1) * sizeof(Character)));
  if (copy == nullptr) return CSResult_OUT_OF_MEMORY;
  for (uint64_t i = 0; i < octets.length; ++i) copy[i] = static_cast<Character>(octets.data[i]);
  copy[octets.length] = 0;
  *text = copy;
  return CSResult_OK;
}

}  // namespace

const Leaf Tavo::Der::kOctetString = {OctetLeaf<CSASNOctetString>::Read,  OctetLeaf<CSASNOctetString>::Size,
                                      OctetLeaf<CSASNOctetString>::Write, OctetLeaf<CSASNOctetString>::Copy,
                                      OctetLeaf<CSASNOctetString>::Equal, OctetLeaf<CSASNOctetString>::Destroy};
const Leaf Tavo::Der::kAny = {AnyLeaf::Read, AnyLeaf::Size,  AnyLeaf::Write,
                              AnyLeaf::Copy, AnyLeaf::Equal, AnyLeaf::Destroy};

// ---- OCTET STRING ----

uint32_t CSASNOctetString_FromBytes(const uint8_t* bytes, uint64_t length, CSASNOctetString** out) {
  return FromOctets(bytes, length, out);
}

uint32_t CSASNOctetString_SetBytes(CSASNOctetString* octets, const uint8_t* bytes, uint64_t length) {
  return SetOctets(octets, bytes, length);
}

uint32_t CSASNOctetString_GetBytes(const CSASNOctetString* octets, const uint8_t** bytes, uint64_t* length) {
  return GetOctets(octets, bytes, length);
}

uint32_t CSASNOctetString_DEREncodeWithTag(const CSASNOctetString* octets, uint32_t number, uint32_t tagClass,
                                           uint8_t constructed, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                           uint8_t writeLength, uint8_t writeContents) {
  if (tagClass > CSTagClass_PRIVATE) return CSResult_BAD_PARAMETER;
  Type tagged = kTypeOf<CSASNOctetString>;
  tagged.identifier = IdentifierOf(number, tagClass, constructed);
  return Encode(tagged, octets, buffer, ioLength, {writeTag, writeLength, writeContents});
}

uint32_t CSASNOctetString_DERDecodeWithTag(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t number,
                                           uint32_t tagClass, uint8_t constructed, CSASNOctetString** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (in == nullptr || ioLength == nullptr) return CSResult_BAD_PARAMETER;
  if (mode == 0 && (number > kHighestNumber || tagClass > CSTagClass_PRIVATE)) return CSResult_EXPECTED_OCTET_STRING;
  Type tagged = kTypeOf<CSASNOctetString>;
  tagged.identifier = IdentifierOf(number, tagClass, constructed);
  void* object = nullptr;
  const Code code = Decode(tagged, in, ioLength, mode, tagged.identifier, object);
  *out = static_cast<CSASNOctetString*>(object);
  return code;
}

// ---- IA5String ----

uint32_t CSASNIA5String_FromBytes(const uint8_t* bytes, uint64_t length, CSASNIA5String** out) {
  return FromOctets(bytes, length, out);
}

uint32_t CSASNIA5String_SetBytes(CSASNIA5String* string, const uint8_t* bytes, uint64_t length) {
  return SetOctets(string, bytes, length);
}

uint32_t CSASNIA5String_GetBytes(const CSASNIA5String* string, const uint8_t** bytes, uint64_t* length) {
  return GetOctets(string, bytes, length);
}

uint32_t CSASNIA5String_DEREncodeWithTag(const CSASNIA5String* string, uint32_t number, uint32_t tagClass,
                                         uint8_t constructed, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                         uint8_t writeLength, uint8_t writeContents) {
  return CSASNOctetString_DEREncodeWithTag(string, number, tagClass, constructed, buffer, ioLength, writeTag,
                                           writeLength, writeContents);
}

uint32_t CSASNIA5String_DERDecodeWithTag(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t number,
                                         uint32_t tagClass, uint8_t constructed, CSASNIA5String** out) {
  return CSASNOctetString_DERDecodeWithTag(in, ioLength, mode, number, tagClass, constructed, out);
}

uint32_t CSASNIA5String_ToString(const CSASNIA5String* string, char** text) { return NewText(string, text); }

uint32_t CSASNIA5String_ToWString(const CSASNIA5String* string, wchar_t** text) { return NewText(string, text); }

uint32_t CSASNIA5String_GetStringLength(const CSASNIA5String* string, uint64_t* length) {
  if (string == nullptr || length == nullptr) return CSResult_BAD_PARAMETER;
  *length = string->octets.length + 1;
  return CSResult_OK;
}

// ---- ANY ----

uint32_t CSASNAny_GetBytes(const CSASNAny* any, const uint8_t** bytes, uint64_t* length) {
  return GetOctets(any, bytes, length);
}

uint32_t CSASNAny_SetBytes(CSASNAny* any, const uint8_t* bytes, uint64_t length) {
  return SetOctets(any, bytes, length);
}

uint32_t CSASNAny_GetTag(const CSASNAny* any, uint32_t* number, uint32_t* tagClass, uint8_t* constructed) {
  if (any == nullptr) return CSResult_BAD_PARAMETER;
  if (number != nullptr) *number = NumberOf(any->identifier);
  if (tagClass != nullptr) *tagClass = ClassOf(any->identifier);
  if (constructed != nullptr) *constructed = any->identifier & kConstructed;
  return CSResult_OK;
}

uint32_t CSASNAny_SetTag(CSASNAny* any, uint32_t number, uint32_t tagClass, uint8_t constructed) {
  if (any == nullptr || tagClass > CSTagClass_PRIVATE) return CSResult_BAD_PARAMETER;
  if (number > kHighestNumber) return CSResult_BAD_FORMAT;
  any->identifier = IdentifierOf(number, tagClass, constructed);
  return CSResult_OK;
}

uint32_t CSASNAny_TagMatches(const CSASNAny* any, uint32_t number, uint32_t tagClass, uint8_t constructed,
                             uint8_t* match) {
  if (any == nullptr || match == nullptr) return CSResult_BAD_PARAMETER;
  const bool possible = number <= kHighestNumber && tagClass <= CSTagClass_PRIVATE;
  *match = possible && any->identifier == IdentifierOf(number, tagClass, constructed) ? 1 : 0;
  return CSResult_OK;
}
