#include "rz.crypto.cmac.h"

#include <algorithm>
#include <span>

#include "tavo/framework/cipher.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.cmac"};
constexpr KeyedMessage::Texts kTexts{kModule, "MAC is not initialized", "MAC is already initialized"};

constexpr size_t kBlock = 16;        // bytes; that of AES, and the length of the code
constexpr unsigned char kRb = 0x87;  // the constant that a carry out of a 128-bit block leaves
constexpr unsigned char kPaddingMarker = 0x80;
constexpr size_t kPiece = size_t{32} << 10;  // bytes that are encrypted in one run

/// The options of every run: CBC from a block of zeros, whole blocks. They are the same for all and never change, so
/// they are made once, and never released, since a thread may still use them while the process ends.
ICryptoParserParameterMap* Options() {
  static ICryptoParserParameterMap* const options = [] {
    ICryptoParserParameterMap* map = ICryptoParserParameterMap::Create();
    map->SetPadding("None");
    map->SetCipherMode("CBC");
    return map;
  }();
  return options;
}

/// Doubles a block in GF(2^128), RFC 4493, section 2.3. The reduction does not depend on a branch: the block is secret.
void Double(ByteArray& block) {
  const auto reduction = static_cast<unsigned char>(kRb & -(block[0] >> 7));
  for (size_t i = 0; i + 1 < kBlock; ++i) block[i] = static_cast<unsigned char>(block[i] << 1 | block[i + 1] >> 7);
  block.back() = static_cast<unsigned char>(block.back() << 1 ^ reduction);
}

unsigned char* LastBlock(ByteArray& blocks) { return blocks.data() + blocks.size() - kBlock; }

void Xor(unsigned char* block, const ByteArray& mask) {
  for (size_t i = 0; i < kBlock; ++i) block[i] ^= mask[i];
}

/// A message in two parts, read in pieces: whole blocks, all but the last piece.
class Pieces {
 public:
  Pieces(std::span<const unsigned char> head, std::span<const unsigned char> tail) : m_parts{head, tail} {}

  /// Next makes `piece` the next one, with room for the padding, and returns whether another one follows.
  bool Next(ByteArray& piece) {
    const size_t size = std::min(m_parts[0].size() + m_parts[1].size(), kPiece);
    piece.reserve(size + kBlock);
    piece.resize(size);
    unsigned char* to = piece.data();
    for (auto& part : m_parts) {
      const size_t count = std::min(part.size(), static_cast<size_t>(piece.data() + size - to));
      Detail::CopyBytes(to, part.data(), count);
      to += count;
      part = part.subspan(count);
    }
    return !m_parts[0].empty() || !m_parts[1].empty();
  }

 private:
  std::span<const unsigned char> m_parts[2];
};

/// AES in CBC mode under one key: each run replaces whole blocks by their encryption and begins with a block of zeros.
class Aes {
 public:
  explicit Aes(IKey* key) : m_pKey(key) {
    IAlgorithm* algorithm = key->GetAlgorithm();
    if (algorithm != nullptr && algorithm->GetFriendlyName() != "AES") {
      throw kModule.Error(__LINE__, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    m_pCipher.reset(Cipher::Create(algorithm, Options()));
  }

  void Encrypt(ByteArray& blocks) {
    m_pCipher->Init(ENCRYPT_MODE, m_pKey);
    m_pCipher->DoFinal(blocks, blocks);
  }

 private:
  IKey* m_pKey;
  std::unique_ptr<Cipher> m_pCipher;
};

/// Fills the last piece up to whole blocks and masks its last block, RFC 4493, section 2.4. `subkey` comes as the
/// encryption of zeros: doubled once it masks a block that was whole, doubled twice one that had to be filled, as an
/// empty message has to be.
void MaskLastBlock(ByteArray& piece, ByteArray& subkey) {
  Double(subkey);
  if (piece.empty() || piece.size() % kBlock != 0) {
    static constexpr unsigned char kPadding[kBlock] = {kPaddingMarker};
    Double(subkey);
    AppendBytes(piece, kPadding, kBlock - piece.size() % kBlock);
  }
  Xor(LastBlock(piece), subkey);
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

/// The code of the message: the last block of one CBC encryption. It runs in pieces that stay in the cache; the last
/// block of one goes into the first of the next.
ByteArray Compute(IKey* key, Pieces message) {
  Aes aes(key);
  ByteArray subkey(kBlock);
  aes.Encrypt(subkey);
  ByteArray chained(kBlock);
  ByteArray piece;
  for (bool more = true; more;) {
    more = message.Next(piece);
    if (!more) MaskLastBlock(piece, subkey);
    Xor(piece.data(), chained);
    aes.Encrypt(piece);
    AssignBytes(chained, LastBlock(piece), kBlock);
  }
  return chained;
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
