#ifndef RZ_CRYPTO_OPENSSL_SIGNATURE_H
#define RZ_CRYPTO_OPENSSL_SIGNATURE_H

#include "../common/rz.crypto.keyedmessage.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/parameters.h"
#include "tavo/framework/signature.h"

namespace Tavo::Framework {

class COpensslSignature final : public Signature {
 public:
  COpensslSignature(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslSignature(const COpensslSignature&) = delete;
  COpensslSignature& operator=(const COpensslSignature&) = delete;
  ~COpensslSignature() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  void Init(IPrivateKey* key) override;
  void Init(IPublicKey* key) override;
  void Sign(const ByteArray& data, ByteArray& signature) override;
  void Sign(ByteArray& signature) override;
  void Update(const ByteArray& data) override;
  bool Verify(const ByteArray& data, const ByteArray& signature) override;
  bool Verify(const ByteArray& signature) override;

 private:
  /// RefuseSigning is all that Sign does: it throws.
  void RefuseSigning(unsigned long line, unsigned long operationLine) const;

  IAlgorithm* m_pAlgorithm;              // not owned
  ICryptoParserParameterMap* m_pParams;  // not owned, read at every Verify
  KeyedMessage m_message;                // never ended: initialized, it verifies for life
};

}  // namespace Tavo::Framework

#endif
