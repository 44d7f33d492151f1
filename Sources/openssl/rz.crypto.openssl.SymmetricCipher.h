#ifndef RZ_CRYPTO_OPENSSL_SYMMETRICCIPHER_H
#define RZ_CRYPTO_OPENSSL_SYMMETRICCIPHER_H

#include <memory>

#include "../common/rz.crypto.chainingcipher.h"
#include "rz.openssl.ciphermessage.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/parameters.h"

namespace Tavo::Framework {

class COpensslSymmetricCipher final : public ChainingCipher {
 public:
  COpensslSymmetricCipher(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslSymmetricCipher(const COpensslSymmetricCipher&) = delete;
  COpensslSymmetricCipher& operator=(const COpensslSymmetricCipher&) = delete;
  ~COpensslSymmetricCipher() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  void Init(int operation, IKey* key) override;
  void Init(int operation, ICertificate* certificate) override;
  void DoFinal(const ByteArray& in, ByteArray& out) override;
  void DoFinal(ByteArray& out) override;
  void Update(const ByteArray& in) override;
  IKey* Unwrap(const ByteArray& wrapped, IAlgorithm* keyAlgorithm) override;
  void Wrap(IKey* key, ByteArray& out) override;
  void Chain(std::span<unsigned char> blocks) override;

 private:
  class Run;

  /// Cipher runs the operation over the message followed by `tail`, and ends the message.
  void Cipher(const ByteArray& tail, ByteArray& out);

  IAlgorithm* m_pAlgorithm;              // not owned
  ICryptoParserParameterMap* m_pParams;  // not owned, read by DoFinal
  CipherMessage m_message;
  std::unique_ptr<Run> m_pChain;  // from the first Chain on
};

}  // namespace Tavo::Framework

#endif
