#ifndef RZ_CRYPTO_PADDING_OAEP_H
#define RZ_CRYPTO_PADDING_OAEP_H

#include <optional>

#include "tavo/framework/padding.h"

namespace Tavo::Framework {

class COAEPPadding final : public IPadding {
 public:
  COAEPPadding(unsigned int keyLength, ICryptoParserParameterMap* parameters);
  COAEPPadding(const COAEPPadding&) = delete;
  COAEPPadding& operator=(const COAEPPadding&) = delete;
  ~COAEPPadding() override;

  void EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) override;
  bool DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) override;

  /// RsaOaep_MGF is MGF1 with SHA-1 (RFC 8017, B.2.1): `mask` becomes `maskLength` bytes made from `seed`. A length of
  /// 0 costs one round too.
  void RsaOaep_MGF(ByteArray seed, unsigned int maskLength, ByteArray& mask);

 private:
  ByteArray Encode(const ByteArray& message);
  std::optional<ByteArray> Decode(const ByteArray& block);
  std::optional<ByteArray> Open(const ByteArray& block, const ByteArray& label);
  ByteArray LabelFor(const char* operation, unsigned long line) const;
  void ApplyMask(unsigned long line, const unsigned char* seed, std::size_t seedLength, unsigned char* to,
                 std::size_t length);

  unsigned int m_unKeyLength;
  ICryptoParserParameterMap* m_pParameters;  // not owned
};

}  // namespace Tavo::Framework

#endif
