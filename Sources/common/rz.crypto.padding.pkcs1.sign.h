#ifndef RZ_CRYPTO_PADDING_PKCS1_SIGN_H
#define RZ_CRYPTO_PADDING_PKCS1_SIGN_H

#include "tavo/framework/padding.h"

namespace Tavo::Framework {

class CPKCS1SignPadding final : public IPadding {
 public:
  CPKCS1SignPadding(unsigned int keyLength, ICryptoParserParameterMap* parameters);
  CPKCS1SignPadding(const CPKCS1SignPadding&) = delete;
  CPKCS1SignPadding& operator=(const CPKCS1SignPadding&) = delete;
  ~CPKCS1SignPadding() override;

  void EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) override;
  bool DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) override;

 private:
  unsigned int m_unKeyLength;
  [[maybe_unused]] ICryptoParserParameterMap* m_pParameters;  // not owned, not read
};

}  // namespace Tavo::Framework

#endif
