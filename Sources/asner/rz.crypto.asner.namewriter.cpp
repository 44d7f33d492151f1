#include "rz.crypto.asner.namewriter.h"

#include <cstring>

#include "tavo/text.h"

namespace Tavo::Framework {

namespace {

struct ShortName {
  const char* oid;
  const char* name;
};

/// The types of RFC 4514, section 3, then what else stands in certificates under a registered name.
constexpr ShortName kShortNames[] = {
    {"2.5.4.3", "CN"},
    {"2.5.4.7", "L"},
    {"2.5.4.8", "ST"},
    {"2.5.4.10", "O"},
    {"2.5.4.11", "OU"},
    {"2.5.4.6", "C"},
    {"2.5.4.9", "STREET"},
    {"0.9.2342.19200300.100.1.25", "DC"},
    {"0.9.2342.19200300.100.1.1", "UID"},
    {"2.5.4.4", "SN"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.12", "title"},
    {"2.5.4.13", "description"},
    {"2.5.4.15", "businessCategory"},
    {"2.5.4.16", "postalAddress"},
    {"2.5.4.17", "postalCode"},
    {"2.5.4.20", "telephoneNumber"},
    {"2.5.4.41", "name"},
    {"2.5.4.42", "givenName"},
    {"2.5.4.43", "initials"},
    {"2.5.4.44", "generationQualifier"},
    {"2.5.4.46", "dnQualifier"},
    {"2.5.4.65", "pseudonym"},
    {"2.5.4.97", "organizationIdentifier"},
    {"0.9.2342.19200300.100.1.3", "mail"},
    {"1.2.840.113549.1.9.1", "emailAddress"},
};

const char* FindShortName(const SecureString& oid) {
  for (const auto& entry : kShortNames) {
    if (oid == entry.oid) return entry.name;
  }
  return nullptr;
}

void AppendHex(unsigned char octet, SecureString& text) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  text += kDigits[octet >> 4];
  text += kDigits[octet & 15];
}

void AppendEscaped(const SecureString& value, SecureString& text) {
  for (std::size_t i = 0; i < value.size(); ++i) {
    const auto octet = static_cast<unsigned char>(value[i]);
    const bool blankAtEnd = octet == ' ' && (i == 0 || i + 1 == value.size());
    if (octet < 0x20) {
      text += '\\';
      AppendHex(octet, text);
      continue;
    }
    if (blankAtEnd || std::strchr(",+\"\\<>;#", octet) != nullptr) text += '\\';
    text += value[i];
  }
}

void AppendHexEncoding(const DerSteps& check, const CSASNAny* value, SecureString& text) {
  DerBuffer buffer;
  std::uint64_t length = 0;
  check("CSASNAny_DEREncodeTLV", CSASNAny_DEREncodeTLV(value, Out(buffer), &length, 1, 1, 1));
  text += '#';
  for (std::uint64_t i = 0; i < length; ++i) AppendHex(buffer.get()[i], text);
}

/// The value in UTF-8; false when it is not a well-formed string of a universal type.
bool ReadText(const DerSteps& check, const CSASNAny* value, SecureString& text) {
  std::uint32_t number = 0;
  std::uint32_t tagClass = 0;
  std::uint8_t constructed = 0;
  check("CSASNAny_GetTag", CSASNAny_GetTag(value, &number, &tagClass, &constructed));
  const std::uint8_t* octets = nullptr;
  std::uint64_t length = 0;
  check("CSASNAny_GetBytes", CSASNAny_GetBytes(value, &octets, &length));
  return tagClass == 0 && constructed == 0 && StringToUtf8(number, octets, length, text);
}

}  // namespace

void AppendAttribute(const DerSteps& check, const CSASNOID* type, const CSASNAny* value, SecureString& text) {
  const SecureString oid = DottedText(check, "CSASNOID_ToString", type);
  const char* name = FindShortName(oid);
  SecureString string;
  text += name != nullptr ? SecureString(name) : oid;
  text += '=';
  if (name != nullptr && ReadText(check, value, string)) {
    AppendEscaped(string, text);
  } else {
    AppendHexEncoding(check, value, text);
  }
}

SecureString Contents(const DerSteps& check, const CSASNAny* value) {
  const std::uint8_t* octets = nullptr;
  std::uint64_t length = 0;
  check("CSASNAny_GetBytes", CSASNAny_GetBytes(value, &octets, &length));
  return SecureString(reinterpret_cast<const char*>(octets), length);
}

}  // namespace Tavo::Framework
