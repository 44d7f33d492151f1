#ifndef RZ_CRYPTO_OPENSSL_RSAPRIVATECRTKEY_H
#define RZ_CRYPTO_OPENSSL_RSAPRIVATECRTKEY_H

#include <array>
#include <memory>

#include "rz.openssl.owners.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/rsa.h"

namespace Tavo::Framework {

class COpensslRSAPrivateCRTKey final : public IRSAPrivateCRTKey {
 public:
  /// From a key of libcrypto, to which it adds a reference. Throws 4003 "Unable to encode private key" for null and for
  /// a key without private numbers.
  COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, rsa_st* rsa);
  /// From a DER PrivateKeyInfo, or from a DER RSAPrivateKey.
  COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, const ByteArray& encoded, bool isPKCS8);
  /// From the eight numbers, least significant byte first.
  COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, const ByteArray& p, const ByteArray& q, const ByteArray& dP,
                           const ByteArray& dQ, const ByteArray& qInv, const ByteArray& modulus,
                           const ByteArray& publicExponent, const ByteArray& privateExponent);
  COpensslRSAPrivateCRTKey& operator=(const COpensslRSAPrivateCRTKey&) = delete;
  ~COpensslRSAPrivateCRTKey() override;

  IKey* Clone() const override;
  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm.get(); }
  SecureString GetFormat() override;
  void GetEncoded(ByteArray& encoded) override;
  void GetPubExponent(ByteArray& exponent) override;
  void GetPrivExponent(ByteArray& exponent) override;
  void GetModulus(ByteArray& modulus) override;
  void GetPFactor(ByteArray& p) override;
  void GetQFactor(ByteArray& q) override;
  void GetPExponent(ByteArray& dP) override;
  void GetQExponent(ByteArray& dQ) override;
  void GetCRTCoefficient(ByteArray& qInv) override;

  /// GetRSAKey lends libcrypto's key, which is never null.
  rsa_st* GetRSAKey() const { return m_rsa.get(); }

  /// The components, in the order in which the DER records are filled and read.
  enum Component { kModulus, kPExponent, kQExponent, kPFactor, kQFactor, kCoefficient, kPrivExponent, kPubExponent };
  static constexpr int kComponentCount = kPubExponent + 1;

 private:
  COpensslRSAPrivateCRTKey(const COpensslRSAPrivateCRTKey& other);
  void TakeComponents(const ByteArray& pkcs1);
  void Get(const char* operation, Component component, ByteArray& out);

  std::unique_ptr<IAlgorithm> m_pAlgorithm;
  OpensslRSA m_rsa;       // shared with clones and with whoever made it
  ByteArray m_baEncoded;  // PrivateKeyInfo
  std::array<ByteArray, kComponentCount> m_components;
};

}  // namespace Tavo::Framework

#endif
