#include "rz.crypto.padding.pkcs1.sign.h"

#include <algorithm>

#include "padding_support.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.padding.pkcs1.sign"};

constexpr unsigned int kOverhead = 11;  // 00 01, at least eight FF, 00

}  // namespace

CPKCS1SignPadding::CPKCS1SignPadding(unsigned int keyLength, ICryptoParserParameterMap* parameters)
    : m_unKeyLength(keyLength), m_pParameters(parameters) {
  Traced("CPKCS1SignPadding::CPKCS1SignPadding", this, [] {});
}

CPKCS1SignPadding::~CPKCS1SignPadding() {
  Traced("CPKCS1SignPadding::~CPKCS1SignPadding", this, [] {});
}

void CPKCS1SignPadding::EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) {
  static constexpr const char* kName = "CPKCS1SignPadding::EncodeData";
  Traced(kName, this, [&] {
    Replace(encoded, [&] {
      const std::size_t length = messageToEncode.size();
      RequireRoom(kModule, kName, length, m_unKeyLength, {52, kOverhead, kOverhead});
      ByteArray block(m_unKeyLength, 0xff);
      block[0] = 0x00;
      block[1] = 0x01;
      block[m_unKeyLength - length - 1] = 0x00;
      std::copy_backward(messageToEncode.begin(), messageToEncode.end(), block.end());
      return block;
    });
  });
}

bool CPKCS1SignPadding::DecodeData(const ByteArray&, ByteArray& decoded) {
  return Traced("CPKCS1SignPadding::DecodeData", this, [&] {
    return Replace(decoded, []() -> ByteArray {
      LogError("CPKCS1SignPadding::DecodeData : This function is not supported");
      throw kModule.Error(93, "This function is not supported", CRYPTO_NOT_SUPPORTED);
    });
  });
}

}  // namespace Tavo::Framework
