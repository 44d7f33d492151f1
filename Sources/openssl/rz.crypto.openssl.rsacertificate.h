#ifndef RZ_CRYPTO_OPENSSL_RSACERTIFICATE_H
#define RZ_CRYPTO_OPENSSL_RSACERTIFICATE_H

#include <memory>
#include <optional>

#include "../common/rz.crypto.der.h"
#include "rz.openssl.owners.h"
#include "tavo/framework/certificate.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

/// The certificate behind ICertificate::Create. Its parts: rsacertificate.cpp holds the object, its fields and key,
/// rsacertificate.extensions.cpp what the extensions say, rsacertificate.validity.cpp the times.
class COpensslRSACertificate final : public IX509Certificate {
 public:
  explicit COpensslRSACertificate(const ByteArray& encoded);
  COpensslRSACertificate(const COpensslRSACertificate&) = delete;
  COpensslRSACertificate& operator=(const COpensslRSACertificate&) = delete;
  ~COpensslRSACertificate() override;

  ICertificate* Clone() const override;
  void GetEncoded(ByteArray& encoded) override;
  SecureString GetFormat() override;
  IPublicKey* GetPublicKey() override;
  bool VerifySignature(IPublicKey* key) override;
  bool VerifyTrust(ICryptoParserParameterMap* parameters) override;
  ByteArray GetSignature() override;
  bool Compare(ICertificate* other) override;
  void GetTBSCertificate(ByteArray& tbs) override;
  int GetVersion() override;
  ByteArray GetSerialNumber() override;
  ByteArray GetHash() override;
  IX500Name* GetIssuerDN() override;
  SecureString GetNotAfter() override;
  SecureString GetNotBefore() override;
  IX500Name* GetSubjectDN() override;
  ByteArray GetIssuerUniqueID() override;
  ByteArray GetSubjectUniqueID() override;
  SecureStringList ListExtensions(ICryptoParserFilter* filter) override;
  bool GetExtensionValue(SecureString oid, ByteArray& value) override;
  ByteArray GetKeyUsage() override;
  SecureStringList GetExtendedKeyUsage() override;
  GeneralNameList GetSubjectAlternativeNames() override;
  bool CheckValidity() override;
  bool CheckValidity(SecureString date) override;
  bool IsDigitalSignature() override;
  bool IsNonRepudiation() override;
  bool IsKeyEncipherment() override;
  bool IsDataEncipherment() override;
  bool IsKeyAgreement() override;
  bool IsKeyCertSign() override;
  bool IsCRLSign() override;
  bool IsEncipherOnly() override;
  bool IsDecipherOnly() override;

  /// GetX509Certificate lends libcrypto's certificate. It is parsed at the first call; the constructor calls only when
  /// the encoding is not of the plain shape that libcrypto is known to accept. Throws 4004 "d2i_X509() failed".
  x509_st* GetX509Certificate() const;
  /// GetExtension lends the first extension of `pTBS`, which is this certificate's, whose identifier is `sOID` (dotted)
  /// in the one encoding that DER gives it, or returns null when there is none. Throws 4000 "sOID parameter is NULL!".
  CSExtension* GetExtension(const CSTBSCertificate* pTBS, const char* sOID) const;

 private:
  /// The octets of an extension's value; they belong to the certificate.
  struct Octets {
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
  };
  /// ExtensionValue returns nothing when there is no such extension.
  std::optional<Octets> ExtensionValue(const DerSteps& check, const char* sOID) const;
  void ReadKeyUsage(const DerSteps& check);
  bool HasUsage(const char* operation, std::size_t octet, unsigned char mask) const;
  ByteArray UniqueID(const char* operation, const char* step,
                     std::uint32_t (*get)(const CSTBSCertificate*, CSASNBitString**)) const;
  IX500Name* Name(const char* operation, const char* step,
                  std::uint32_t (*get)(const CSTBSCertificate*, CSName**)) const;
  SecureString Time(const char* operation, const char* step, std::uint32_t (*get)(const CSValidity*, CSTime**)) const;
  bool IsValidAt(const DerSteps& check, std::int64_t moment) const;

  ByteArray m_baEncoded;
  mutable OpensslCertificate m_pX509;
  DerOwned<CSCertificate_Delete> m_pCertificate;
  CSTBSCertificate* m_pTBSCertificate = nullptr;  // part of m_pCertificate
  ByteArray m_baKeyUsage;
  std::unique_ptr<IPublicKey> m_pPublicKey;
};

}  // namespace Tavo::Framework

#endif
