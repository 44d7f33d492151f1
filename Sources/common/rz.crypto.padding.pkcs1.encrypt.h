#ifndef RZ_CRYPTO_PADDING_PKCS1_ENCRYPT_H
#define RZ_CRYPTO_PADDING_PKCS1_ENCRYPT_H

#include "tavo/framework/padding.h"

namespace Tavo::Framework {

class CPKCS1EncryptPadding final : public IPadding {
 public:
  CPKCS1EncryptPadding(unsigned int keyLength, ICryptoParserParameterMap* parameters);
  CPKCS1EncryptPadding(const CPKCS1EncryptPadding&) = delete;
  CPKCS1EncryptPadding& operator=(const CPKCS1EncryptPadding&) = delete;
  ~CPKCS1EncryptPadding() override;

  void EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) override;
  bool DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) override;

 private:
  unsigned int m_unKeyLength;
  [[maybe_unused]] ICryptoParserParameterMap* m_pParameters;  // not owned, not read
};

}  // namespace Tavo::Framework

#endif
