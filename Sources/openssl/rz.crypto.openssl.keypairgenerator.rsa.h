#ifndef RZ_CRYPTO_OPENSSL_KEYPAIRGENERATOR_RSA_H
#define RZ_CRYPTO_OPENSSL_KEYPAIRGENERATOR_RSA_H

#include "rz.openssl.keystore.h"
#include "tavo/framework/rsa.h"

namespace Tavo::Framework {

class COpensslRSAKeyPairGenerator final : public KeyPairGenerator {
 public:
  COpensslRSAKeyPairGenerator(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslRSAKeyPairGenerator(const COpensslRSAKeyPairGenerator&) = delete;
  COpensslRSAKeyPairGenerator& operator=(const COpensslRSAKeyPairGenerator&) = delete;
  ~COpensslRSAKeyPairGenerator() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  KeyPair* GenerateKeyPair(int bits) override;
  KeyPair* GenerateKeyPair(int bits, const ByteArray& publicExponent) override;

 private:
  IAlgorithm* m_pAlgorithm;  // not owned
  KeystoreEngine m_engine;
};

}  // namespace Tavo::Framework

#endif
