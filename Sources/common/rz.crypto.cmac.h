#ifndef RZ_CRYPTO_CMAC_H
#define RZ_CRYPTO_CMAC_H

#include <memory>

#include "rz.crypto.keyedmessage.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/mac.h"
#include "tavo/framework/parameters.h"

namespace Tavo::Framework {

/// CMACCMAC is CMAC over the AES of Cipher::Create.
class CMACCMAC final : public MAC {
 public:
  CMACCMAC(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  CMACCMAC(const CMACCMAC&) = delete;
  CMACCMAC& operator=(const CMACCMAC&) = delete;
  ~CMACCMAC() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm.get(); }
  unsigned long GetMacLength() override;
  void Init(IKey* key) override;
  void Mac(const ByteArray& in, ByteArray& out) override;
  void Mac(ByteArray& out) override;
  void Update(const ByteArray& in) override;

 private:
  /// Finish computes the code of the message followed by `tail`.
  void Finish(const ByteArray& tail, ByteArray& out);

  std::unique_ptr<IAlgorithm> m_pAlgorithm;
  ICryptoParserParameterMap* m_pParams;  // not owned
  KeyedMessage m_message;
};

}  // namespace Tavo::Framework

#endif
