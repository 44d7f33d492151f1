#include "rz.crypto.openssl.rsacertificate.generalnames.h"

#include <cstring>

#include "rz.crypto.openssl.rsacertificate.module.h"
#include "tavo/owned.h"

namespace Tavo::Framework::Certificate {

namespace {

/// One alternative of GeneralName: its kind, the getter's name for messages, and how it becomes an object.
struct Alternative {
  const char* kind;
  const char* step;
  Owned<IGeneralName> (*read)(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative);
};

Owned<IGeneralName> NewOctets(const std::uint8_t* data, std::uint64_t size, const char* kind,
                              const SecureString& oid = {}) {
  ByteArray octets;
  AssignBytes(octets, data, size);
  return Own(IGeneralName::Create(octets, kind, oid));
}

Owned<IGeneralName> ReadOtherName(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative) {
  CSOtherName* other = nullptr;
  CSASNAny* value = nullptr;
  CSASNOID* type = nullptr;
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;
  check(alternative.step, CSGeneralName_GetOtherName(name, &other));
  check("CSOtherName_GetValue", CSOtherName_GetValue(other, &value));
  check("CSASNAny_GetBytes", CSASNAny_GetBytes(value, &data, &size));
  check("CSOtherName_GetTypeID", CSOtherName_GetTypeID(other, &type));
  return NewOctets(data, size, alternative.kind, DottedText(check, "CSASNOID_ToString", type));
}

/// The texts keep their octets, zero octets included.
template <auto Get>
Owned<IGeneralName> ReadText(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative) {
  CSASNIA5String* text = nullptr;
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;
  check(alternative.step, Get(name, &text));
  check("CSASNIA5String_ToString", CSASNOctetString_GetBytes(text, &data, &size));
  return Own(IGeneralName::Create(SecureString(reinterpret_cast<const char*>(data), size), alternative.kind));
}

template <auto Get>
Owned<IGeneralName> ReadElement(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative) {
  CSASNAny* element = nullptr;
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;
  check(alternative.step, Get(name, &element));
  check("CSASNAny_GetBytes", CSASNAny_GetBytes(element, &data, &size));
  return NewOctets(data, size, alternative.kind);
}

Owned<IGeneralName> ReadAddress(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative) {
  CSASNOctetString* address = nullptr;
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;
  check(alternative.step, CSGeneralName_GetIPAddress(name, &address));
  check("CSASNOctetString_GetBytes", CSASNOctetString_GetBytes(address, &data, &size));
  return NewOctets(data, size, alternative.kind);
}

Owned<IGeneralName> ReadIdentifier(const DerSteps& check, const CSGeneralName* name, const Alternative& alternative) {
  CSASNOID* identifier = nullptr;
  check(alternative.step, CSGeneralName_GetRegisteredID(name, &identifier));
  return Own(IGeneralName::Create(DottedText(check, "CSASNOID_ToString", identifier), alternative.kind));
}

/// By number of the choice, from 1. A directory name gives no object.
constexpr std::uint32_t kOtherName = 1;
constexpr Alternative kAlternatives[] = {
    {"OtherName", "CSGeneralName_GetOtherName", ReadOtherName},
    {"rfc822Name", "CSGeneralName_GetRfc822Name", ReadText<CSGeneralName_GetRfc822Name>},
    {"dNSName", "CSGeneralName_GetDNSName", ReadText<CSGeneralName_GetDNSName>},
    {"x400Address", "CSGeneralName_GetX400Address", ReadElement<CSGeneralName_GetX400Address>},
    {"directoryName", "CSGeneralName_GetDirectoryName", nullptr},
    {"ediPartyName", "CSGeneralName_GetEdiPartyName", ReadElement<CSGeneralName_GetEdiPartyName>},
    {"uniformResourceIdentifier", "CSGeneralName_GetUniformResourceIdentifier",
     ReadText<CSGeneralName_GetUniformResourceIdentifier>},
    {"IpAddress", "CSGeneralName_GetIPAddress", ReadAddress},
    {"registeredID", "CSGeneralName_GetRegisteredID", ReadIdentifier},
};

/// ReceivedNames walks the encoded names beside the decoded ones. Only the encoding tells whether an object identifier
/// was received in the one form that DER gives it, or in another that reads as the same numbers.
class ReceivedNames {
 public:
  ReceivedNames(const DerSteps& check, const std::uint8_t* data, std::uint64_t size) : m_check(check), m_next(data) {
    std::uint64_t rest = size;
    std::uint64_t contents = 0;
    Check(CSASNUtil_DERDecodeSpecificTagInternal(&m_next, &rest, nullptr, 16, 0, 1, CSResult_EXPECTED_SEQUENCE));
    Check(CSASNUtil_DERDecodeLengthInternal(&m_next, &rest, nullptr, &contents));
    m_rest = rest;
  }

  /// Step goes to the next name.
  void Step() {
    m_next += m_length;
    m_rest -= m_length;
    Check(CSASNUtil_DERDetermineEncodingLength(m_next, m_rest, &m_length));
    if (m_length > m_rest) Check(CSResult_BUFFER_TOO_SMALL);
  }

  /// RequireType throws unless the name that Step came to is an other-name whose type-id is the encoding of `type`.
  void RequireType(const CSOtherName* other) const {
    CSASNOID* type = nullptr;
    m_check("CSOtherName_GetTypeID", CSOtherName_GetTypeID(other, &type));
    DerBuffer buffer;
    std::uint64_t length = 0;
    Check(CSASNOID_DEREncodeTLV(type, Out(buffer), &length, 0, 0, 1));
    std::uint64_t tag = m_rest;
    std::uint32_t number = 0;
    std::uint32_t tagClass = 0;
    std::uint8_t constructed = 0;
    Check(CSASNUtil_DERDecodeTag(m_next, &tag, &number, &tagClass, &constructed));
    const std::uint8_t* afterTag = m_next + tag;
    std::uint64_t at = 0;
    std::uint64_t octets = 0;
    Check(CSOtherName_DEROffsetOfTypeIDTLV(afterTag, m_rest - tag, nullptr, nullptr, &at, nullptr, nullptr, &octets,
                                           nullptr, 1));
    if (octets != length || std::memcmp(afterTag + at, buffer.get(), length) != 0) Check(CSResult_BAD_FORMAT);
  }

 private:
  void Check(std::uint32_t code) const { m_check("CSGeneralNames_DERDecode", code); }

  const DerSteps& m_check;
  const std::uint8_t* m_next;
  std::uint64_t m_rest = 0;    // from m_next to the end of the list
  std::uint64_t m_length = 0;  // of the name at m_next, without the octets that close an indefinite one
};

}  // namespace

GeneralNameList ReadGeneralNames(const DerSteps& check, const std::uint8_t* data, std::uint64_t size) {
  DerOwned<CSGeneralNames_Delete> list;
  std::uint64_t length = size;
  std::uint64_t count = 0;
  check("CSGeneralNames_DERDecode", CSGeneralNames_DERDecodeTLV(data, &length, 0, Out(list)));
  check("CSGeneralNames_GetItemCount", CSGeneralNames_GetItemCount(list.get(), &count));
  ReceivedNames received(check, data, size);
  OwnedNames names;
  for (std::uint64_t i = 0; i < count; ++i) {
    CSGeneralName* name = nullptr;
    std::uint32_t chosen = 0;
    check("CSGeneralNames_GetItemAt", CSGeneralNames_GetItemAt(list.get(), i, &name));
    check("CSGeneralName_WhatIsChosen", CSGeneralName_WhatIsChosen(name, &chosen));
    received.Step();
    if (chosen < 1 || chosen > std::size(kAlternatives)) {
      throw kModule.Error(__LINE__, "Unknown SubjectAltName type", CRYPTO_INTERNAL_ERROR);
    }
    if (chosen == kOtherName) {
      CSOtherName* other = nullptr;
      check("CSGeneralName_GetOtherName", CSGeneralName_GetOtherName(name, &other));
      received.RequireType(other);
    }
    const Alternative& alternative = kAlternatives[chosen - 1];
    if (alternative.read != nullptr) names.Add(alternative.read(check, name, alternative));
  }
  return names.Release();
}

}  // namespace Tavo::Framework::Certificate
