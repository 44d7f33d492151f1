#ifndef RZ_CRYPTO_OPENSSL_HMAC_H
#define RZ_CRYPTO_OPENSSL_HMAC_H

#include "../common/rz.crypto.keyedmessage.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/mac.h"
#include "tavo/framework/parameters.h"

namespace Tavo::Framework {

class COpensslHMAC final : public MAC {
 public:
  COpensslHMAC(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslHMAC(const COpensslHMAC&) = delete;
  COpensslHMAC& operator=(const COpensslHMAC&) = delete;
  ~COpensslHMAC() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  unsigned long GetMacLength() override;
  void Init(IKey* key) override;
  void Mac(const ByteArray& in, ByteArray& out) override;
  void Mac(ByteArray& out) override;
  void Update(const ByteArray& in) override;

 private:
  /// Finish computes the code of the message followed by `tail`.
  void Finish(const ByteArray& tail, ByteArray& out);

  IAlgorithm* m_pAlgorithm;                               // not owned
  [[maybe_unused]] ICryptoParserParameterMap* m_pParams;  // not owned, not read after construction
  KeyedMessage m_message;
};

}  // namespace Tavo::Framework

#endif
