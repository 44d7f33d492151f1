#include "rz.crypto.cmac.h"

#include "tavo/framework/cipher.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.cmac"};
constexpr KeyedMessage::Texts kTexts{kModule, "MAC is not initialized", "MAC is already initialized"};

constexpr size_t kBlock = 16;        // bytes; that of AES, and the length of the code
constexpr unsigned char kRb = 0x87;  // the constant that a carry out of a 128-bit block leaves
constexpr unsigned char kPaddingMarker = 0x80;

/// AES in CBC mode from a zero block, without padding: one run, forwards.
class Chain {
 public:
  explicit Chain(IKey* key) : m_pKey(key), m_pParams(ICryptoParserParameterMap::Create()) {
    m_pParams->SetPadding("None");
    m_pParams->SetCipherMode("CBC");
    IAlgorithm* algorithm = key->GetAlgorithm();
    if (algorithm != nullptr && algorithm->GetFriendlyName() != "AES") {
      throw kModule.Error(__LINE__, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    m_pCipher.reset(Cipher::Create(algorithm, m_pParams.get()));
  }

  /// Encrypt replaces whole blocks by their encryption.
  void Encrypt(ByteArray& blocks) {
    m_pCipher->Init(ENCRYPT_MODE, m_pKey);
    m_pCipher->DoFinal(blocks, blocks);
  }

 private:
  IKey* m_pKey;
  std::unique_ptr<ICryptoParserParameterMap> m_pParams;
  std::unique_ptr<Cipher> m_pCipher;
};

/// Doubles a block in GF(2^128), RFC 4493, section 2.3. The reduction does not depend on a branch: the block is secret.
void Double(ByteArray& block) {
  const auto reduction = static_cast<unsigned char>(kRb & -(block[0] >> 7));
  for (size_t i = 0; i + 1 < block.size(); ++i)
    block[i] = static_cast<unsigned char>(block[i] << 1 | block[i + 1] >> 7);
  block.back() = static_cast<unsigned char>(block.back() << 1 ^ reduction);
}

/// Fills the message up to whole blocks and masks the last one, RFC 4493, section 2.4. `subkey` comes as the encryption
/// of zeros: once doubled it masks a whole last block, twice doubled a filled one. An empty message is filled.
void MaskLastBlock(ByteArray& message, ByteArray& subkey) {
  Double(subkey);
  if (message.empty() || message.size() % kBlock != 0) {
    Double(subkey);
    const size_t filled = (message.size() / kBlock + 1) * kBlock;
    static constexpr unsigned char kPadding[kBlock] = {kPaddingMarker};
    AppendBytes(message, kPadding, filled - message.size());
  }
  unsigned char* last = message.data() + message.size() - kBlock;
  for (size_t i = 0; i < kBlock; ++i) last[i] ^= subkey[i];
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
    m_message.Append(in);
    Rewrapping(kModule, 153, "Mac failed", [&] { Mac(out); });
  });
}

void CMACCMAC::Mac(ByteArray& out) {
  Traced("CMACCMAC::Mac", this, [&] {
    m_message.RequireInitialized(184);
    const SecureString name = m_pAlgorithm->GetFriendlyName();
    if (name != "CMAC") {
      LogError("CMACCMAC::Mac : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(194, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    // An IV has no meaning here, but a map that cannot be read is refused.
    Replacing(kModule, 208, "Error while parsing parameters", CRYPTO_INTERNAL_ERROR, [&] {
      ByteArray iv;
      m_pParams->GetIv(iv);
    });
    IKey* key = m_message.key();
    ByteArray blocks = m_message.Take();  // from here on the message is gone, whatever happens
    Rewrapping(kModule, 316, "Cipher failed", [&] {
      Chain chain(key);
      ByteArray subkey(kBlock);
      chain.Encrypt(subkey);
      MaskLastBlock(blocks, subkey);
      chain.Encrypt(blocks);
    });
    if (blocks.size() < kBlock) {
      LogError("CMACCMAC::Mac : The MAC is too small (%d)", static_cast<int>(blocks.size()));
      throw kModule.Error(306, "The MAC is too small", CRYPTO_INTERNAL_ERROR);
    }
    AssignBytes(out, blocks.data() + blocks.size() - kBlock, kBlock);
  });
}

void CMACCMAC::Update(const ByteArray& in) {
  Traced("CMACCMAC::Update", this, [&] {
    m_message.RequireInitialized(359);
    m_message.Append(in);
  });
}

}  // namespace Tavo::Framework
