#include "rz.crypto.padding.pkcs1.encrypt.h"

#include <algorithm>

#include "padding_support.h"
#include "secret.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.padding.pkcs1.encrypt"};

constexpr unsigned int kOverhead = 11;          // 00 02, at least eight octets of padding, 00
constexpr std::size_t kFirstPadding = 2;        // index
constexpr std::size_t kEarliestSeparator = 10;  // index

/// Maps a random octet to one that is not zero, with the same arithmetic for each: 00..FD to 01..FE, FE and FF to 01
/// and 02.
unsigned char NotZero(unsigned char octet) {
  const unsigned int wraps = (octet + 2U) >> 8;
  return static_cast<unsigned char>(octet + 1U + 2U * wraps);
}

/// The message in a block of k bytes, or nothing. Reads the whole block in one way, whatever is in it. What becomes
/// known of it is whether there is a message and how long, and, if not, which of two lines the trace gets.
std::optional<ByteArray> MessageOf(const ByteArray& block) {
  const unsigned char* octets = block.data();
  const std::size_t size = block.size();
  const Mask header = size < 2 ? Mask::None() : Mask::IfZero(octets[0]) & Mask::IfEqual(octets[1], 2);
  const std::size_t end = size > kOverhead ? size - 1 : 0;  // the last octet is never a separator
  const First early = FindFirst(octets, kFirstPadding, std::min(end, kEarliestSeparator), Mask::IfZero);
  const First separator = FindFirst(octets, kEarliestSeparator, end, Mask::IfZero);
  if (!(header & separator.found & ~early.found).Reveal()) {
    LogError("CPKCS1EncryptPadding::DecodeData: invalid decryption : %s",
             header.Reveal() ? "separator not found" : "2 first bytes are wrong");
    return std::nullopt;
  }
  const std::size_t messageAt = Reveal(separator.index) + 1;
  ByteArray message;
  AssignBytes(message, octets + messageAt, size - messageAt);
  return message;
}

}  // namespace

CPKCS1EncryptPadding::CPKCS1EncryptPadding(unsigned int keyLength, ICryptoParserParameterMap* parameters)
    : m_unKeyLength(keyLength), m_pParameters(parameters) {
  Traced("CPKCS1EncryptPadding::CPKCS1EncryptPadding", this, [] {});
}

CPKCS1EncryptPadding::~CPKCS1EncryptPadding() {
  Traced("CPKCS1EncryptPadding::~CPKCS1EncryptPadding", this, [] {});
}

void CPKCS1EncryptPadding::EncodeData(const ByteArray& messageToEncode, ByteArray& encoded) {
  static constexpr const char* kName = "CPKCS1EncryptPadding::EncodeData";
  Traced(kName, this, [&] {
    Replace(encoded, [&] {
      const std::size_t length = messageToEncode.size();
      RequireRoom(kModule, kName, length, m_unKeyLength, {56, kOverhead, kOverhead});
      const ByteArray padding = RandomOctets(kModule, 88, m_unKeyLength - length - 3);
      ByteArray block(m_unKeyLength);
      block[1] = 0x02;
      std::transform(padding.begin(), padding.end(), block.begin() + kFirstPadding, NotZero);
      std::copy_backward(messageToEncode.begin(), messageToEncode.end(), block.end());
      return block;
    });
  });
}

bool CPKCS1EncryptPadding::DecodeData(const ByteArray& messageToDecode, ByteArray& decoded) {
  return Traced("CPKCS1EncryptPadding::DecodeData", this, [&] {
    return Replace(decoded, [&]() -> std::optional<ByteArray> {
      if (messageToDecode.size() != m_unKeyLength) {
        LogError(
            "CPKCS1EncryptPadding::DecodeData: invalid decryption : Key Length and MessageToDecode size do not match");
        return std::nullopt;
      }
      return MessageOf(messageToDecode);
    });
  });
}

}  // namespace Tavo::Framework
