#ifndef RZ_CRYPTO_OPENSSL_RSACIPHER_H
#define RZ_CRYPTO_OPENSSL_RSACIPHER_H

#include "rz.openssl.ciphermessage.h"
#include "tavo/framework/algorithm.h"
#include "tavo/framework/parameters.h"

namespace Tavo::Framework {

class COpensslRSACipher final : public Cipher {
 public:
  COpensslRSACipher(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
  COpensslRSACipher(const COpensslRSACipher&) = delete;
  COpensslRSACipher& operator=(const COpensslRSACipher&) = delete;
  ~COpensslRSACipher() override;

  IAlgorithm* GetAlgorithm() override { return m_pAlgorithm; }
  void Init(int operation, IKey* key) override;
  void Init(int operation, ICertificate* certificate) override;
  void DoFinal(const ByteArray& in, ByteArray& out) override;
  void DoFinal(ByteArray& out) override;
  void Update(const ByteArray& in) override;
  IKey* Unwrap(const ByteArray& wrapped, IAlgorithm* keyAlgorithm) override;
  void Wrap(IKey* key, ByteArray& out) override;

 private:
  /// Cipher runs the operation over the message and ends the message.
  void Cipher(ByteArray& out);

  IAlgorithm* m_pAlgorithm;              // not owned
  ICryptoParserParameterMap* m_pParams;  // not owned, read at every run
  CipherMessage m_message;
};

}  // namespace Tavo::Framework

#endif
