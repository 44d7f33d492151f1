#ifndef RZ_CRYPTO_OPENSSL_DIGEST_H
#define RZ_CRYPTO_OPENSSL_DIGEST_H

#include <memory>

#include "tavo/framework/algorithm.h"
#include "tavo/framework/digest.h"

namespace Tavo::Framework {

class COpensslMessageDigest final : public MessageDigest {
 public:
  COpensslMessageDigest(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslMessageDigest(const COpensslMessageDigest&) = delete;
  COpensslMessageDigest& operator=(const COpensslMessageDigest&) = delete;
  ~COpensslMessageDigest() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm.get(); }
  unsigned long GetDigestLength() override;
  void Digest(const ByteArray& data, ByteArray& digest) override;
  void Digest(ByteArray& digest) override;
  void Update(const ByteArray& data) override;

 private:
  void Finish(const ByteArray& message, ByteArray& digest);

  std::unique_ptr<IAlgorithm> m_pAlgorithm;
  [[maybe_unused]] ICryptoParserParameterMap* m_pParameters;  // not owned, not read after construction
  ByteArray m_data;
};

}  // namespace Tavo::Framework

#endif
