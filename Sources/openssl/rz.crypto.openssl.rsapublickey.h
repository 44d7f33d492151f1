#ifndef RZ_CRYPTO_OPENSSL_RSAPUBLICKEY_H
#define RZ_CRYPTO_OPENSSL_RSAPUBLICKEY_H

#include <memory>

#include "rz.openssl.owners.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/rsa.h"

namespace Tavo::Framework {

class COpensslRSAPublicKey final : public IRSAPublicKey {
 public:
  /// From the two numbers, least significant byte first.
  COpensslRSAPublicKey(IAlgorithm* algorithm, const ByteArray& modulus, const ByteArray& exponent);
  /// From a DER certificate.
  COpensslRSAPublicKey(IAlgorithm* algorithm, const ByteArray& certificate);
  /// From a certificate that libcrypto has parsed, of which nothing is kept; its encoding is not needed. The key's
  /// algorithm is "RSA". Throws as the constructor from an encoded certificate does.
  COpensslRSAPublicKey(x509_st* certificate, const ByteArray& encoded);
  /// From a key of libcrypto, to which it adds a reference. Throws 4003 "Unable to encode public key" for null and for
  /// a key without numbers.
  COpensslRSAPublicKey(IAlgorithm* algorithm, rsa_st* rsa);
  COpensslRSAPublicKey& operator=(const COpensslRSAPublicKey&) = delete;
  ~COpensslRSAPublicKey() override;

  IKey* Clone() const override;
  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm.get(); }
  SecureString GetFormat() override;
  void GetEncoded(ByteArray& encoded) override;
  unsigned int GetExponent() override;
  void GetModulus(ByteArray& modulus) override;

  /// GetRSAKey lends libcrypto's key, which is never null.
  rsa_st* GetRSAKey() const { return m_rsa.get(); }

 private:
  COpensslRSAPublicKey(const COpensslRSAPublicKey& other);
  void TakeKeyOf(const x509_st* certificate);

  std::unique_ptr<IAlgorithm> m_pAlgorithm;
  OpensslRSA m_rsa;  // shared with clones and with whoever made it
  ByteArray m_baEncoded;
};

}  // namespace Tavo::Framework

#endif
