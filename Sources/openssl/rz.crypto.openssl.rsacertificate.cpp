#include "rz.crypto.openssl.rsacertificate.h"

#include "rz.crypto.openssl.rsacertificate.module.h"
#include "rz.crypto.openssl.rsapublickey.h"
#include "rz.openssl.x509.h"
#include "rz.openssl.x509.plain.h"

namespace Tavo::Framework {

using namespace Certificate;

namespace {

/// What every operation that this platform does not have throws.
[[noreturn]] void NotImplemented(const char* operation, const void* object) {
  Traced(operation, object, [] { throw kModule.Error(__LINE__, "Not Implemented", CRYPTO_NOT_IMPLEMENTED); });
  __builtin_unreachable();
}

}  // namespace

ByteArray Certificate::BitOctets(const DerSteps& check, const char* step, const CSASNBitString* bits) {
  const std::uint8_t* data = nullptr;
  std::uint64_t size = 0;
  check(step, CSASNBitString_GetAllBits(bits, &data, &size));
  ByteArray octets;
  AssignBytes(octets, data, size);
  return octets;
}

COpensslRSACertificate::COpensslRSACertificate(const ByteArray& encoded) {
  Reading("COpensslRSACertificate::COpensslRSACertificate", this, [&](const DerSteps& check) {
    if (encoded.empty()) throw kModule.Error(__LINE__, "X509 encoded buffer should not be empty", CRYPTO_BAD_PARAM);
    AssignBytes(m_baEncoded, encoded);
    if (!IsPlainX509(m_baEncoded)) GetX509Certificate();  // whether libcrypto accepts it, it alone can say
    std::uint64_t length = m_baEncoded.size();
    check("CSCertificate_DERDecode", CSCertificate_DERDecodeTLV(m_baEncoded.data(), &length, 0, Out(m_pCertificate)));
    check("CSCertificate_GetTbsCertificate", CSCertificate_GetTbsCertificate(m_pCertificate.get(), &m_pTBSCertificate));
    ReadKeyUsage(check);
  });
}

COpensslRSACertificate::~COpensslRSACertificate() {
  Traced("COpensslRSACertificate::~COpensslRSACertificate", this, [&] {
    if (m_pPublicKey) {
      m_pPublicKey.reset();
      LogDetail("COpensslRSACertificate::~COpensslRSACertificate : m_pPublicKey has been deleted");
    }
    CSCertificate* record = m_pCertificate.release();
    if (CSCertificate_Delete(&record) != CSResult_OK) {
      LogError(
          "COpensslRSACertificate::~COpensslRSACertificate : CSCertificate_Delete failed with error = "
          "\"CSResult_BAD_PARAMETER\"");
    }
  });
}

x509_st* COpensslRSACertificate::GetX509Certificate() const {
  if (!m_pX509) {
    m_pX509 = ParseX509(m_baEncoded, "COpensslRSACertificate::COpensslRSACertificate");
    if (!m_pX509) throw kModule.Error(__LINE__, "d2i_X509() failed", CRYPTO_INTERNAL_ERROR);
  }
  return m_pX509.get();
}

ICertificate* COpensslRSACertificate::Clone() const {
  return Traced("COpensslRSACertificate::Clone", this, [&] { return new COpensslRSACertificate(m_baEncoded); });
}

void COpensslRSACertificate::GetEncoded(ByteArray& encoded) {
  Traced("COpensslRSACertificate::GetEncoded", this, [&] { AssignBytes(encoded, m_baEncoded); });
}

SecureString COpensslRSACertificate::GetFormat() {
  return Traced("COpensslRSACertificate::GetFormat", this, [] { return SecureString("X509"); });
}

IPublicKey* COpensslRSACertificate::GetPublicKey() {
  return Reading("COpensslRSACertificate::GetPublicKey", this, [&](const DerSteps& check) {
    if (!m_pPublicKey) {
      CSSubjectPublicKeyInfo* info = nullptr;
      CSASNBitString* bits = nullptr;
      check("CSTBSCertificate_GetSubjectPublicKeyInfo",
            CSTBSCertificate_GetSubjectPublicKeyInfo(m_pTBSCertificate, &info));
      check("CSSubjectPublicKeyInfo_GetSubjectPublicKey", CSSubjectPublicKeyInfo_GetSubjectPublicKey(info, &bits));
      const ByteArray encoded = BitOctets(check, "CSASNBitString_GetAllBits", bits);
      Rewrapping(kModule, __LINE__, "Error while creating Public Key",
                 [&] { m_pPublicKey = std::make_unique<COpensslRSAPublicKey>(GetX509Certificate(), encoded); });
    }
    return m_pPublicKey.get();
  });
}

void COpensslRSACertificate::GetTBSCertificate(ByteArray& tbs) {
  Reading("COpensslRSACertificate::GetTBSCertificate", this, [&](const DerSteps& check) {
    DerOwned<CSASNAny_Delete> any;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    check("CSTBSCertificate_DERToAny", CSTBSCertificate_DERToAny(m_pTBSCertificate, Out(any)));
    check("CSASNAny_GetBytes", CSASNAny_GetBytes(any.get(), &data, &size));
    AssignBytes(tbs, data, size);
  });
}

int COpensslRSACertificate::GetVersion() {
  return Reading("COpensslRSACertificate::GetVersion", this, [&](const DerSteps& check) {
    CSASNInteger* version = nullptr;
    std::int32_t number = 0;  // stays 0 for an INTEGER without octets
    check("CSTBSCertificate_GetVersion", CSTBSCertificate_GetVersion(m_pTBSCertificate, &version));
    check("CSASNInteger_ToSigned32", CSASNInteger_ToSigned32(version, &number));
    return static_cast<int>(number);
  });
}

ByteArray COpensslRSACertificate::GetSerialNumber() {
  return Reading("COpensslRSACertificate::GetSerialNumber", this, [&](const DerSteps& check) {
    CSASNInteger* serial = nullptr;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    check("CSTBSCertificate_GetSerialNumber", CSTBSCertificate_GetSerialNumber(m_pTBSCertificate, &serial));
    check("CSASNInteger_GetBytes", CSASNInteger_GetBytes(serial, &data, &size));
    ByteArray octets;
    AssignBytes(octets, data, size);
    return octets;
  });
}

IX500Name* COpensslRSACertificate::Name(const char* operation, const char* step,
                                        std::uint32_t (*get)(const CSTBSCertificate*, CSName**)) const {
  return Reading(operation, this, [&](const DerSteps& check) {
    CSName* name = nullptr;
    DerBuffer buffer;
    std::uint64_t length = 0;
    check(step, get(m_pTBSCertificate, &name));
    check("CSName_DEREncode", CSName_DEREncodeTLV(name, Out(buffer), &length, 1, 1, 1));
    ByteArray encoded;
    AssignBytes(encoded, buffer.get(), length);
    return IX500Name::Create(encoded);
  });
}

IX500Name* COpensslRSACertificate::GetIssuerDN() {
  return Name("COpensslRSACertificate::GetIssuerDN", "CSTBSCertificate_GetIssuer", CSTBSCertificate_GetIssuer);
}

IX500Name* COpensslRSACertificate::GetSubjectDN() {
  return Name("COpensslRSACertificate::GetSubjectDN", "CSTBSCertificate_GetSubject", CSTBSCertificate_GetSubject);
}

ByteArray COpensslRSACertificate::UniqueID(const char* operation, const char* step,
                                           std::uint32_t (*get)(const CSTBSCertificate*, CSASNBitString**)) const {
  return Reading(operation, this, [&](const DerSteps& check) {
    CSASNBitString* bits = nullptr;
    check(step, get(m_pTBSCertificate, &bits));
    return BitOctets(check, "CSUniqueIdentifier_GetAllBits", bits);
  });
}

ByteArray COpensslRSACertificate::GetIssuerUniqueID() {
  return UniqueID("COpensslRSACertificate::GetIssuerUniqueID", "CSTBSCertificate_GetIssuerUniqueID",
                  CSTBSCertificate_GetIssuerUniqueID);
}

ByteArray COpensslRSACertificate::GetSubjectUniqueID() {
  return UniqueID("COpensslRSACertificate::GetSubjectUniqueID", "CSTBSCertificate_GetSubjectUniqueID",
                  CSTBSCertificate_GetSubjectUniqueID);
}

bool COpensslRSACertificate::VerifySignature(IPublicKey*) {
  NotImplemented("COpensslRSACertificate::VerifySignature", this);
}
bool COpensslRSACertificate::VerifyTrust(ICryptoParserParameterMap*) {
  NotImplemented("COpensslRSACertificate::VerifyTrust", this);
}
ByteArray COpensslRSACertificate::GetSignature() { NotImplemented("COpensslRSACertificate::GetSignature", this); }
bool COpensslRSACertificate::Compare(ICertificate*) { NotImplemented("COpensslRSACertificate::Compare", this); }
ByteArray COpensslRSACertificate::GetHash() { NotImplemented("COpensslRSACertificate::GetHash", this); }
SecureStringList COpensslRSACertificate::ListExtensions(ICryptoParserFilter*) {
  NotImplemented("COpensslRSACertificate::ListExtensions", this);
}
bool COpensslRSACertificate::GetExtensionValue(SecureString, ByteArray&) {
  NotImplemented("COpensslRSACertificate::GetExtensionValue", this);
}

}  // namespace Tavo::Framework
