#ifndef RZ_CRYPTO_OPENSSL_RANDOM_H
#define RZ_CRYPTO_OPENSSL_RANDOM_H

#include "../common/rz.crypto.random.h"
#include "tavo/framework/random.h"

namespace Tavo::Framework {

class COpensslRandomGenerator final : public RandomGenerator, public RandomOutcome {
 public:
  explicit COpensslRandomGenerator(IAlgorithm* algorithm);
  COpensslRandomGenerator(const COpensslRandomGenerator&) = delete;
  COpensslRandomGenerator& operator=(const COpensslRandomGenerator&) = delete;
  ~COpensslRandomGenerator() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  void SetSeed(const ByteArray& seed) override;
  void GenerateRandom(int count, ByteArray& out) override;

 private:
  IAlgorithm* m_pAlgorithm;  // not owned
};

class COpensslGUIDGenerator final : public GUIDGenerator, public RandomOutcome {
 public:
  COpensslGUIDGenerator();
  COpensslGUIDGenerator(const COpensslGUIDGenerator&) = delete;
  COpensslGUIDGenerator& operator=(const COpensslGUIDGenerator&) = delete;
  ~COpensslGUIDGenerator() override;

  void GenerateGUID(ByteArray& out) override;
};

}  // namespace Tavo::Framework

#endif
