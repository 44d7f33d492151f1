#ifndef RZ_CRYPTO_PADDING_X931_H
#define RZ_CRYPTO_PADDING_X931_H

#include "tavo/framework/padding.h"

namespace Tavo::Framework {

class CX931Padding final : public IPadding {
 public:
  CX931Padding(unsigned int keyLength, ICryptoParserParameterMap* parameters);
  CX931Padding(const CX931Padding&) = delete;
  CX931Padding& operator=(const CX931Padding&) = delete;
  ~CX931Padding() override;

  void EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) override;
  bool DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) override;

 private:
  unsigned int m_unKeyLength;
  ICryptoParserParameterMap* m_pParameters;  // not owned
};

}  // namespace Tavo::Framework

#endif
