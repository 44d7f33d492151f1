#include <cstring>

#include "rz.crypto.openssl.rsacertificate.generalnames.h"
#include "rz.crypto.openssl.rsacertificate.module.h"

namespace Tavo::Framework {

using namespace Certificate;

namespace {

constexpr const char* kKeyUsage = "2.5.29.15";
constexpr const char* kExtendedKeyUsage = "2.5.29.37";
constexpr const char* kSubjectAltName = "2.5.29.17";
constexpr const char* kObsoleteSubjectAltName = "2.5.29.7";

/// Some octets of the certificate.
struct Part {
  const std::uint8_t* data;
  std::uint64_t size;
};

/// Whether an object was encoded, and to the octets that were received.
bool IsSame(std::uint32_t result, const DerBuffer& encoded, std::uint64_t length, Part received) {
  return result == CSResult_OK && length == received.size && std::memcmp(encoded.get(), received.data, length) == 0;
}

/// Whether the list encodes to the octets that it came from. An object identifier has encodings that read as another
/// one, so a purpose counts only in the one that DER gives it.
bool IsDer(const CSExtKeyUsageSyntax* purposes, Part received) {
  DerBuffer encoded;
  std::uint64_t length = 0;
  const std::uint32_t result = CSExtKeyUsageSyntax_DEREncodeTLV(purposes, Out(encoded), &length, 1, 1, 1);
  return IsSame(result, encoded, length, received);
}

/// Narrow goes from an element to a component of it, or to an item of a list, which `find` locates in it.
template <auto find, class... Index>
bool Narrow(Part& part, Index... index) {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  if (find(part.data, part.size, index..., &begin, nullptr, nullptr, nullptr, nullptr, nullptr, &end, 0) !=
      CSResult_OK) {
    return false;
  }
  part = {part.data + begin, end - begin};
  return true;
}

/// The extensions without the tag around their list.
bool NarrowToExtensions(Part& part) {
  std::uint64_t begin = 0;
  std::uint64_t size = 0;
  if (!Narrow<CSCertificate_DEROffsetOfTbsCertificateTLV>(part) ||
      CSTBSCertificate_DEROffsetOfExtensionsTLV(part.data, part.size, nullptr, nullptr, &begin, nullptr, nullptr, &size,
                                                nullptr, 0) != CSResult_OK) {
    return false;
  }
  part = {part.data + begin, size};
  return true;
}

/// Whether the identifier of the extension at `index` stands in the certificate as DER encodes it: an arc of more than
/// 32 bits, or one that begins with padding, reads as another identifier.
bool IsDerIdentifier(Part certificate, std::uint64_t index, const CSASNOID* identifier) {
  if (!NarrowToExtensions(certificate) || !Narrow<CSExtensions_DEROffsetOfNthTLV>(certificate, index) ||
      !Narrow<CSExtension_DEROffsetOfExtIDTLV>(certificate)) {
    return false;
  }
  DerBuffer encoded;
  std::uint64_t length = 0;
  const std::uint32_t result = CSASNOID_DEREncodeTLV(identifier, Out(encoded), &length, 1, 1, 1);
  return IsSame(result, encoded, length, certificate);
}

}  // namespace

CSExtension* COpensslRSACertificate::GetExtension(const CSTBSCertificate* pTBS, const char* sOID) const {
  return Reading("COpensslRSACertificate::GetExtension", this, [&](const DerSteps& check) -> CSExtension* {
    if (sOID == nullptr) throw kModule.Error(__LINE__, "sOID parameter is NULL!", CRYPTO_BAD_PARAM);
    CSExtensions* extensions = nullptr;
    const std::uint32_t found = CSTBSCertificate_GetExtensions(pTBS, &extensions);
    if (found == CSResult_NOT_PRESENT) return nullptr;
    check("CSTBSCertificate_GetExtensions", found);
    std::uint64_t count = 0;
    check("CSExtensions_GetItemCount", CSExtensions_GetItemCount(extensions, &count));
    for (std::uint64_t i = 0; i < count; ++i) {
      CSExtension* extension = nullptr;
      CSASNOID* identifier = nullptr;
      std::uint8_t match = 0;
      check("CSExtensions_GetItemAt", CSExtensions_GetItemAt(extensions, i, &extension));
      check("CSExtension_GetExtID", CSExtension_GetExtID(extension, &identifier));
      check("CSASNOID_MatchesString", CSASNOID_MatchesString(identifier, sOID, &match));
      if (match != 0 && IsDerIdentifier({m_baEncoded.data(), m_baEncoded.size()}, i, identifier)) return extension;
    }
    return nullptr;
  });
}

std::optional<COpensslRSACertificate::Octets> COpensslRSACertificate::ExtensionValue(const DerSteps& check,
                                                                                     const char* sOID) const {
  const CSExtension* extension = GetExtension(m_pTBSCertificate, sOID);
  if (extension == nullptr) return std::nullopt;
  CSASNOctetString* value = nullptr;
  Octets octets;
  check("CSExtension_GetExtnValue", CSExtension_GetExtnValue(extension, &value));
  check("CSASNOctetString_GetBytes", CSASNOctetString_GetBytes(value, &octets.data, &octets.size));
  return octets;
}

void COpensslRSACertificate::ReadKeyUsage(const DerSteps& check) {
  auto value = ExtensionValue(check, kKeyUsage);
  if (!value) return;
  DerOwned<CSASNBitString_Delete> bits;
  check("CSKeyUsage_DERDecode", CSASNBitString_DERDecodeTLV(value->data, &value->size, 0, Out(bits)));
  m_baKeyUsage = BitOctets(check, "CSKeyUsage_GetAllBits", bits.get());
}

ByteArray COpensslRSACertificate::GetKeyUsage() {
  return Traced("COpensslRSACertificate::GetKeyUsage", this, [&] { return m_baKeyUsage; });
}

SecureStringList COpensslRSACertificate::GetExtendedKeyUsage() {
  return Reading("COpensslRSACertificate::GetExtendedKeyUsage", this, [&](const DerSteps& check) {
    SecureStringList purposes;
    const auto value = ExtensionValue(check, kExtendedKeyUsage);
    if (!value) return purposes;
    DerOwned<CSExtKeyUsageSyntax_Delete> list;
    std::uint64_t consumed = value->size;
    check("CSExtKeyUsageSyntax_DERDecode", CSExtKeyUsageSyntax_DERDecodeTLV(value->data, &consumed, 0, Out(list)));
    check("CSExtKeyUsageSyntax_DERDecode",
          IsDer(list.get(), {value->data, consumed}) ? CSResult_OK : CSResult_BAD_FORMAT);
    std::uint64_t count = 0;
    check("CSExtKeyUsageSyntax_GetItemCount", CSExtKeyUsageSyntax_GetItemCount(list.get(), &count));
    for (std::uint64_t i = 0; i < count; ++i) {
      CSASNOID* purpose = nullptr;
      check("CSExtKeyUsageSyntax_GetItemAt", CSExtKeyUsageSyntax_GetItemAt(list.get(), i, &purpose));
      purposes.push_back(DottedText(check, "CSKeyPurposeId_ToString", purpose));
    }
    return purposes;
  });
}

GeneralNameList COpensslRSACertificate::GetSubjectAlternativeNames() {
  return Reading("COpensslRSACertificate::GetSubjectAlternativeNames", this, [&](const DerSteps& check) {
    auto value = ExtensionValue(check, kSubjectAltName);
    if (!value) value = ExtensionValue(check, kObsoleteSubjectAltName);
    return value ? ReadGeneralNames(check, value->data, value->size) : GeneralNameList();
  });
}

bool COpensslRSACertificate::HasUsage(const char* operation, std::size_t octet, unsigned char mask) const {
  return Traced(operation, this, [&] { return octet < m_baKeyUsage.size() && (m_baKeyUsage[octet] & mask) != 0; });
}

bool COpensslRSACertificate::IsDigitalSignature() {
  return HasUsage("COpensslRSACertificate::IsDigitalSignature", 0, 0x80);
}
bool COpensslRSACertificate::IsNonRepudiation() {
  return HasUsage("COpensslRSACertificate::IsNonRepudiation", 0, 0x40);
}
bool COpensslRSACertificate::IsKeyEncipherment() {
  return HasUsage("COpensslRSACertificate::IsKeyEncipherment", 0, 0x20);
}
bool COpensslRSACertificate::IsDataEncipherment() {
  return HasUsage("COpensslRSACertificate::IsDataEncipherment", 0, 0x10);
}
bool COpensslRSACertificate::IsKeyAgreement() { return HasUsage("COpensslRSACertificate::IsKeyAgreement", 0, 0x08); }
bool COpensslRSACertificate::IsKeyCertSign() { return HasUsage("COpensslRSACertificate::IsKeyCertSign", 0, 0x04); }
bool COpensslRSACertificate::IsCRLSign() { return HasUsage("COpensslRSACertificate::IsCRLSign", 0, 0x02); }
bool COpensslRSACertificate::IsEncipherOnly() { return HasUsage("COpensslRSACertificate::IsEncipherOnly", 0, 0x01); }
bool COpensslRSACertificate::IsDecipherOnly() { return HasUsage("COpensslRSACertificate::IsDecipherOnly", 1, 0x80); }

}  // namespace Tavo::Framework
