#ifndef RZ_CRYPTO_OPENSSL_KEYGENERATOR_H
#define RZ_CRYPTO_OPENSSL_KEYGENERATOR_H

#include "tavo/framework/random.h"

namespace Tavo::Framework {

class COpensslKeyGenerator final : public KeyGenerator {
 public:
  COpensslKeyGenerator(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslKeyGenerator(const COpensslKeyGenerator&) = delete;
  COpensslKeyGenerator& operator=(const COpensslKeyGenerator&) = delete;
  ~COpensslKeyGenerator() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  ISecretKey* GenerateKey(int keySize) override;
  ISecretKey* GenerateKey(int keySize, const ByteArray& data) override;

 private:
  IAlgorithm* m_pAlgorithm;  // not owned
};

}  // namespace Tavo::Framework

#endif
