#include "cert_names.h"

#include <arpa/inet.h>

#include <algorithm>

#include "encoding.h"
#include "oid_names.h"
#include "printable.h"
#include "tavo/text.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr const char* kPrincipalName = "1.3.6.1.4.1.311.20.2.3";
constexpr std::uint32_t kOtherName = 1;  // numbers of the choice
constexpr std::uint32_t kDirectoryName = 5;

struct StringType {
  std::uint32_t tag;
  const char* name;
};
constexpr StringType kStringTypes[] = {{12, "UTF8String"},      {18, "NumericString"}, {19, "PrintableString"},
                                       {20, "T61String"},       {22, "IA5String"},     {26, "VisibleString"},
                                       {28, "UniversalString"}, {30, "BMPString"}};

struct Kind {
  const char* kind;
  const char* name;
};
constexpr Kind kKinds[] = {{"rfc822Name", "e-mail"},         {"dNSName", "DNS"},
                           {"x400Address", "X.400 address"}, {"directoryName", "directory name"},
                           {"ediPartyName", "EDI party"},    {"uniformResourceIdentifier", "URI"},
                           {"IpAddress", "IP address"},      {"registeredID", "registered identifier"}};

/// The general names of the certificate's extension, as the certificate object takes them: the first extension with the
/// current identifier, else the first with the obsolete one.
DerOwned<CSGeneralNames_Delete> DecodeNames(const CSTBSCertificate* tbs) {
  DerOwned<CSGeneralNames_Delete> names;
  CSExtensions* extensions = nullptr;
  std::uint64_t count = 0;
  if (CSTBSCertificate_GetExtensions(tbs, &extensions) != CSResult_OK) return names;
  CSExtensions_GetItemCount(extensions, &count);
  for (const char* wanted : {"2.5.29.17", "2.5.29.7"}) {
    for (std::uint64_t i = 0; i < count; ++i) {
      CSExtension* extension = nullptr;
      CSASNOID* oid = nullptr;
      CSASNOctetString* value = nullptr;
      const std::uint8_t* data = nullptr;
      std::uint64_t size = 0;
      std::uint8_t match = 0;
      CSExtensions_GetItemAt(extensions, i, &extension);
      CSExtension_GetExtID(extension, &oid);
      if (CSASNOID_MatchesString(oid, wanted, &match) != CSResult_OK || match == 0) continue;
      CSExtension_GetExtnValue(extension, &value);
      CSASNOctetString_GetBytes(value, &data, &size);
      CSGeneralNames_DERDecodeTLV(data, &size, 0, Out(names));
      return names;
    }
  }
  return names;
}

void DecodeOtherName(const CSGeneralName* encoded, AlternativeName& name) {
  CSOtherName* other = nullptr;
  CSASNAny* value = nullptr;
  std::uint32_t tag = 0;
  std::uint32_t tagClass = 0;
  std::uint8_t constructed = 0;
  if (CSGeneralName_GetOtherName(encoded, &other) != CSResult_OK ||
      CSOtherName_GetValue(other, &value) != CSResult_OK ||
      CSASNAny_GetTag(value, &tag, &tagClass, &constructed) != CSResult_OK || tagClass != 0 || constructed != 0) {
    return;
  }
  const auto* type = std::find_if(std::begin(kStringTypes), std::end(kStringTypes),
                                  [&](const StringType& candidate) { return candidate.tag == tag; });
  if (type == std::end(kStringTypes)) return;
  if (StringToUtf8(tag, name.octets.data(), name.octets.size(), name.text)) name.stringType = type->name;
}

AlternativeName DecodeDirectoryName(const CSGeneralName* encoded) {
  AlternativeName name{"directoryName", "", "", "", {}};
  CSName* directory = nullptr;
  DerBuffer buffer;
  std::uint64_t length = 0;
  if (CSGeneralName_GetDirectoryName(encoded, &directory) != CSResult_OK) return name;
  if (CSName_DEREncodeTLV(directory, Out(buffer), &length, 1, 1, 1) != CSResult_OK) return name;
  AssignBytes(name.octets, buffer.get(), length);
  Checked([&] { name.text = Own(IX500Name::Create(name.octets))->GetName(0).c_str(); });
  return name;
}

AlternativeName FromObject(IGeneralName& object) {
  AlternativeName name{object.GetNameType().c_str(), object.GetOID().c_str(), "", "", {}};
  const SecureString text = object.GetString();
  name.text.assign(text.data(), text.size());
  object.GetEncoded(name.octets);
  return name;
}

std::string AddressText(const ByteArray& octets) {
  char text[INET6_ADDRSTRLEN];
  const int family = octets.size() == 4 ? AF_INET : octets.size() == 16 ? AF_INET6 : AF_UNSPEC;
  if (family == AF_UNSPEC || inet_ntop(family, octets.data(), text, sizeof text) == nullptr) return "";
  return text;
}

}  // namespace

std::vector<AlternativeName> ReadAlternativeNames(const OwnedNames& names, const CSTBSCertificate* tbs) {
  std::vector<AlternativeName> all;
  const auto encodedNames = DecodeNames(tbs);
  std::uint64_t count = 0;
  if (encodedNames) CSGeneralNames_GetItemCount(encodedNames.get(), &count);
  auto object = names.begin();
  for (std::uint64_t i = 0; i < count; ++i) {
    CSGeneralName* encoded = nullptr;
    std::uint32_t chosen = 0;
    CSGeneralNames_GetItemAt(encodedNames.get(), i, &encoded);
    CSGeneralName_WhatIsChosen(encoded, &chosen);
    if (chosen == kDirectoryName) {
      all.push_back(DecodeDirectoryName(encoded));
    } else if (object != names.end()) {
      all.push_back(FromObject(**object++));
      if (chosen == kOtherName) DecodeOtherName(encoded, all.back());
      if (all.back().kind == "IpAddress") all.back().text = AddressText(all.back().octets);
    }
  }
  return all;
}

std::string KindName(const AlternativeName& name) {
  if (name.kind == "OtherName") return OidName(name.oid).empty() ? "other name" : std::string(OidName(name.oid));
  for (const Kind& kind : kKinds) {
    if (name.kind == kind.kind) return kind.name;
  }
  return name.kind;
}

std::string Shown(const AlternativeName& name) {
  if (!name.text.empty()) return Printable(name.text);
  const std::string octets(reinterpret_cast<const char*>(name.octets.data()), name.octets.size());
  return octets.empty() ? "(empty)" : "hex " + Hex(name.octets) + " (" + Printable(octets) + ")";
}

bool IsPrincipalName(const AlternativeName& name) { return name.kind == "OtherName" && name.oid == kPrincipalName; }

}  // namespace rzcrypto
