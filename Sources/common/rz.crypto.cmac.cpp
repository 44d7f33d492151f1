#include "rz.crypto.cmac.h"

#include <string.h>

#include <algorithm>
#include <cstring>
#include <span>

#include "named.h"
#include "rz.crypto.chainingcipher.h"
#include "tavo/framework/key.h"
#include "tavo/owned.h"
#include "xor.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.cmac"};
constexpr KeyedMessage::Texts kTexts{kModule, "MAC is not initialized", "MAC is already initialized"};

constexpr size_t kBlock = 16;        // bytes; that of AES, and the length of the code
constexpr unsigned char kRb = 0x87;  // the constant that a carry out of a 128-bit block leaves
constexpr unsigned char kPaddingMarker = 0x80;
constexpr size_t kPiece = size_t{32} << 10;  // bytes that are encrypted at a time

/// A block that depends on the key. It is wiped at the end.
struct Block {
  unsigned char bytes[kBlock];

  explicit Block(const unsigned char* from) { std::memcpy(bytes, from, kBlock); }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { explicit_bzero(bytes, kBlock); }

  /// Double multiplies by x in GF(2^128), RFC 4493, section 2.3. The reduction does not depend on a branch.
  void Double() {
    const auto reduction = static_cast<unsigned char>(kRb & -(bytes[0] >> 7));
    for (size_t i = 0; i + 1 < kBlock; ++i) bytes[i] = static_cast<unsigned char>(bytes[i] << 1 | bytes[i + 1] >> 7);
    bytes[kBlock - 1] = static_cast<unsigned char>(bytes[kBlock - 1] << 1 ^ reduction);
  }
  void XorInto(unsigned char* block) const { Framework::XorInto(block, bytes, kBlock); }
};

unsigned char* LastBlock(WipedBuffer& blocks) { return blocks.bytes().last(kBlock).data(); }

/// A message in two parts, read in pieces: whole blocks, all but the last piece.
class Pieces {
 public:
  Pieces(std::span<const unsigned char> head, std::span<const unsigned char> tail) : m_parts{head, tail} {}

  /// Next makes `piece` the next one and returns whether another one follows.
  bool Next(WipedBuffer& piece) {
    piece.Clear();
    for (auto& part : m_parts) {
      const size_t count = std::min(part.size(), kPiece - piece.bytes().size());
      piece.Append(part.first(count));
      part = part.subspan(count);
    }
    return Left() != 0;
  }

  /// PieceRoom returns the bytes that the longest piece takes once it is padded.
  size_t PieceRoom() const { return std::min(Left(), kPiece) + kBlock; }

 private:
  size_t Left() const { return m_parts[0].size() + m_parts[1].size(); }

  std::span<const unsigned char> m_parts[2];
};

/// AES in CBC mode under one key.
class Aes {
 public:
  explicit Aes(IKey* key) {
    IAlgorithm* algorithm = key->GetAlgorithm();  // null is for the factory to refuse
    if (algorithm == nullptr || Is(algorithm->GetFriendlyName(), "AES")) {
      m_pCipher.reset(Cipher::Create(algorithm, m_pNoOptions.get()));
      m_pChain = dynamic_cast<ChainingCipher*>(m_pCipher.get());
    }
    if (m_pChain == nullptr) throw kModule.Error(__LINE__, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    m_pCipher->Init(ENCRYPT_MODE, key);
  }

  /// Encrypt encrypts whole blocks in place. Their first is chained to the last of the call before.
  void Encrypt(WipedBuffer& blocks) { m_pChain->Chain(blocks.bytes()); }

 private:
  const Owned<ICryptoParserParameterMap> m_pNoOptions = NewParameters();  // the factory wants a map
  Owned<Cipher> m_pCipher;
  ChainingCipher* m_pChain = nullptr;  // the same object
};

/// Fills the last piece up to whole blocks and masks its last block, RFC 4493, section 2.4. `subkey` comes as the
/// encryption of zeros: doubled once it masks a block that was whole, doubled twice one that had to be filled, as an
/// empty message has to be.
void MaskLastBlock(WipedBuffer& piece, Block& subkey) {
  subkey.Double();
  const size_t size = piece.bytes().size();
  if (size == 0 || size % kBlock != 0) {
    static constexpr unsigned char kPadding[kBlock] = {kPaddingMarker};
    subkey.Double();
    piece.Append(std::span(kPadding).first(kBlock - size % kBlock));
  }
  subkey.XorInto(LastBlock(piece));
}

/// What is refused before a message is touched.
void RequireUsable(IAlgorithm& algorithm, const ICryptoParserParameterMap& parameters) {
  const SecureString name = algorithm.GetFriendlyName();
  if (name != "CMAC") {
    LogError("CMACCMAC::Mac : Unsupported algorithm: %s", name.c_str());
    throw kModule.Error(194, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
  }
  // An IV has no meaning here, but a map that cannot be read is refused.
  Replacing(kModule, 208, "Error while parsing parameters", CRYPTO_INTERNAL_ERROR, [&] {
    ByteArray iv;
    parameters.GetIv(iv);
  });
}

/// The code of the message: the last block of one CBC encryption. It runs in pieces that stay in the cache. The subkey
/// comes from the same run, as the encryption of a block of zeros before the message; masking the first block of the
/// message with it takes it out of the chain again.
ByteArray Compute(IKey* key, Pieces message) {
  static constexpr unsigned char kZeros[kBlock] = {};
  Aes aes(key);
  WipedBuffer piece;
  piece.Reserve(message.PieceRoom());
  piece.Append(kZeros);
  aes.Encrypt(piece);
  const Block encryptedZeros(LastBlock(piece));
  Block subkey(encryptedZeros.bytes);
  bool more = message.Next(piece);
  if (!more) MaskLastBlock(piece, subkey);
  encryptedZeros.XorInto(piece.bytes().data());
  aes.Encrypt(piece);
  while (more) {
    more = message.Next(piece);
    if (!more) MaskLastBlock(piece, subkey);
    aes.Encrypt(piece);
  }
  const unsigned char* code = LastBlock(piece);
  return ByteArray(code, code + kBlock);
}

}  // namespace

CMACCMAC::CMACCMAC(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm->Clone()), m_pParams(parameters), m_message(kTexts) {
  Traced("CMACCMAC::CMACCMAC", this, [] {});
}

CMACCMAC::~CMACCMAC() {
  Traced("CMACCMAC::~CMACCMAC", this, [&] { m_pAlgorithm.reset(); });
}

unsigned long CMACCMAC::GetMacLength() {
  return Traced("CMACCMAC::GetMacLength", this, [&] {
    const SecureString name = m_pAlgorithm->GetFriendlyName();
    if (name != "CMAC") {
      LogError("CMACCMAC::GetMacLength : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(74, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    return static_cast<unsigned long>(kBlock);
  });
}

void CMACCMAC::Init(IKey* key) {
  Traced("CMACCMAC::Init", this, [&] {
    m_message.RequireNew(key, 103, "pKey should not be NULL", 109);
    m_message.Begin(key);
  });
}

void CMACCMAC::Mac(const ByteArray& in, ByteArray& out) {
  Traced("CMACCMAC::Mac", this, [&] {
    m_message.RequireInitialized(141);
    Rewrapping(kModule, 153, "Mac failed", [&] { Finish(in, out); });
  });
}

void CMACCMAC::Mac(ByteArray& out) { Finish(ByteArray(), out); }

void CMACCMAC::Finish(const ByteArray& tail, ByteArray& out) {
  Traced("CMACCMAC::Mac", this, [&] {
    m_message.RequireInitialized(184);
    m_message.WithTail(tail, [&] { RequireUsable(*m_pAlgorithm, *m_pParams); });
    IKey* key = m_message.key();
    const WipedBuffer head = m_message.Take();  // from here on the message is gone, whatever happens
    ByteArray code = Rewrapping(kModule, 316, "Cipher failed", [&] { return Compute(key, {head.bytes(), tail}); });
    out.swap(code);
  });
}

void CMACCMAC::Update(const ByteArray& in) {
  Traced("CMACCMAC::Update", this, [&] {
    m_message.RequireInitialized(359);
    m_message.Append(in);
  });
}

}  // namespace Tavo::Framework
