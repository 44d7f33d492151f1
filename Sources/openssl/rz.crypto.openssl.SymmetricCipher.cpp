#include "rz.crypto.openssl.SymmetricCipher.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "../common/named.h"
#include "rz.openssl.errors.h"
#include "rz.openssl.fetched.h"
#include "rz.openssl.owners.h"
#include "tavo/framework/certificate.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.SymmetricCipher"};
constexpr KeyedMessage::Texts kTexts{kModule, "Cipher is not initialized", "Cipher is already initialized"};

struct BlockCipher {
  FetchedCipher ecb;
  FetchedCipher cbc;
  size_t keyLength;  // bytes that a key must have
  size_t blockLength;
  unsigned long modeLine;
};

/// Single DES is not in libcrypto's default provider; triple DES with three equal keys is the same function.
constinit const BlockCipher kDes{FetchedCipher("DES-EDE3-ECB"), FetchedCipher("DES-EDE3-CBC"), 8, 8, 439};
constinit const BlockCipher kTripleDes{FetchedCipher("DES-EDE3-ECB"), FetchedCipher("DES-EDE3-CBC"), 24, 8, 456};
constinit const BlockCipher kAes{FetchedCipher("AES-128-ECB"), FetchedCipher("AES-128-CBC"), 16, 16, 473};
constexpr size_t kDesKeyLength = 8;
constexpr size_t kMaxBlockLength = 16;
constexpr size_t kMostAtOnce = size_t{1} << 30;  // bytes; libcrypto counts in int

/// One call of libcrypto: how it is called in the trace, and how its failure.
struct Step {
  const char* name;
  const char* failure;
  unsigned long line;
};

struct Direction {
  int encrypt;
  Step init;
  Step update;
  Step final;
};

constexpr Direction kEncrypt = {1,
                                {"EVP_EncryptInit", "EVP_EncryptInit failure", 558},
                                {"EVP_EncryptUpdate", "EVP_EncryptUpdate failure", 572},
                                {"EVP_EncryptFinal", "EVP_EncryptFinal failure", 587}};
constexpr Direction kDecrypt = {0,
                                {"EVP_DecryptInit", "EVP_DecryptInit failure", 604},
                                {"EVP_DecryptUpdate", "EVP_DecryptUpdate failure", 618},
                                {"EVP_DecryptFinal", "EVP_DecryptFinal failure", 633}};

/// The options of a run, as the parameter map has them.
struct Options {
  ByteArray iv;
  SecureString padding;
  SecureString mode;
};

Options ReadOptions(const ICryptoParserParameterMap& map) {
  Options options;
  bool hasMode = false;
  Replacing(kModule, 422, "Error while parsing parameters", CRYPTO_INTERNAL_ERROR, [&] {
    if (!map.GetIv(options.iv)) options.iv.clear();
    if (!map.GetPadding(options.padding)) options.padding = "None";
    hasMode = map.GetCipherMode(options.mode);
  });
  if (!hasMode) {
    LogError("COpensslSymmetricCipher::Cipher : No cipher mode in params");
    throw kModule.Error(415, "No cipher mode in params", CRYPTO_BAD_PARAM);
  }
  return options;
}

const BlockCipher& FindCipher(const SecureString& name) {
  if (Is(name, "AES")) return kAes;
  if (Is(name, "3DES")) return kTripleDes;
  if (Is(name, "DES")) return kDes;
  LogError("COpensslSymmetricCipher::Cipher : Unsupported algorithm: %s", name.c_str());
  throw kModule.Error(480, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
}

bool IsChained(const BlockCipher& cipher, const SecureString& mode) {
  if (Is(mode, "CBC")) return true;
  if (Is(mode, "ECB")) return false;
  LogError("COpensslSymmetricCipher::Cipher : Unsupported cipher mode: %s", mode.c_str());
  throw kModule.Error(cipher.modeLine, "Unsupported cipher mode", CRYPTO_NOT_SUPPORTED);
}

bool IsPadded(const SecureString& padding) {
  if (Is(padding, "PKCS7")) return true;
  if (Is(padding, "None")) return false;
  LogError("COpensslSymmetricCipher::Cipher : Unsupported padding: %s", padding.c_str());
  throw kModule.Error(495, "Unsupported padding", CRYPTO_NO_SUCH_PADDING);
}

/// `key` is null when it came from a certificate that has none.
ByteArray RawKey(IKey* key) {
  if (key == nullptr || !Is(key->GetFormat(), "RAW")) {
    LogError("COpensslSymmetricCipher::Cipher : Only raw key format is supported");
    throw kModule.Error(502, "Only raw key format is supported", CRYPTO_NOT_SUPPORTED);
  }
  ByteArray bytes;
  key->GetEncoded(bytes);
  return bytes;
}

/// Makes of `key` what libcrypto reads: it takes no length and trusts that there is enough.
void FitKey(const BlockCipher& cipher, ByteArray& key) {
  if (&cipher == &kTripleDes && key.size() == 2 * kDesKeyLength) AppendBytes(key, key.data(), kDesKeyLength);
  if (key.size() < cipher.keyLength) throw kModule.Error(__LINE__, "Invalid key size", CRYPTO_INVALID_KEY_SIZE);
  if (&cipher == &kDes) {
    key.resize(kDesKeyLength);
    AppendBytes(key, key.data(), kDesKeyLength);
    AppendBytes(key, key.data(), kDesKeyLength);
  }
}

/// An IV is one block: the first of what the option has, zeros when it is empty or the mode takes none.
struct Iv {
  unsigned char bytes[kMaxBlockLength] = {};

  Iv(const BlockCipher& cipher, bool chained, const ByteArray& option) {
    if (option.empty() || !chained) return;
    if (option.size() < cipher.blockLength) throw kModule.Error(__LINE__, "Invalid IV length", CRYPTO_BAD_PARAM);
    std::memcpy(bytes, option.data(), cipher.blockLength);
  }
};

/// What a run needs but the message.
struct Setup {
  const BlockCipher& cipher;
  const FetchedCipher& mode;
  bool padded;
  ByteArray key;
  Iv iv;
};

/// Reads the key and refuses what does not fit, in the order that callers see.
Setup Prepare(const BlockCipher& cipher, bool chained, bool padded, const ByteArray& iv, IKey* key) {
  ByteArray bytes = RawKey(key);
  if (!padded) LogStep("COpensslSymmetricCipher::Cipher: No Padding");
  LogStep("COpensslSymmetricCipher::Cipher: EVP_Cipher block size is %i", static_cast<int>(cipher.blockLength));
  FitKey(cipher, bytes);
  return {cipher, chained ? cipher.cbc : cipher.ecb, padded, std::move(bytes), Iv(cipher, chained, iv)};
}

/// The same after the options, which come first.
Setup Prepare(const ICryptoParserParameterMap& map, IAlgorithm& algorithm, IKey* key) {
  const Options options = ReadOptions(map);
  const BlockCipher& cipher = FindCipher(algorithm.GetFriendlyName());
  const bool chained = IsChained(cipher, options.mode);
  return Prepare(cipher, chained, IsPadded(options.padding), options.iv, key);
}

template <class Call>
void Do(const Step& step, Call&& call) {
  LogDetail("COpensslSymmetricCipher::Cipher: calling %s", step.name);
  if (call()) return;
  LogError("COpensslSymmetricCipher::Cipher: %s", step.failure);
  throw kModule.Error(step.line, step.failure, CRYPTO_UNKNOWN_ERROR);
}

using Bytes = std::span<const unsigned char>;

}  // namespace

/// One run of libcrypto over a message. Whatever it leaves in the host's error queue goes with it.
class COpensslSymmetricCipher::Run {
 public:
  /// `whole` says that the message is whole blocks without padding: libcrypto gives them out as they come and has
  /// nothing left for its final call. Only its decryption has to be told that there is no padding, since it would hold
  /// the last block back.
  Run(const Setup& setup, const Direction& direction, bool whole)
      : m_direction(direction), m_pContext(EVP_CIPHER_CTX_new()), m_bWhole(whole) {
    Do(direction.init, [&] {
      const EVP_CIPHER* cipher = setup.mode.Get();
      return cipher != nullptr && m_pContext != nullptr &&
             EVP_CipherInit_ex(m_pContext.get(), cipher, nullptr, setup.key.data(), setup.iv.bytes,
                               direction.encrypt) == 1 &&
             (setup.padded || (whole && direction.encrypt == 1) ||
              EVP_CIPHER_CTX_set_padding(m_pContext.get(), 0) == 1);
    });
  }

  /// Execute writes the result over `head` followed by `tail` to `out`, which has room for a block more than they have,
  /// and returns its length.
  size_t Execute(Bytes head, Bytes tail, unsigned char* out) {
    unsigned char* end = out;
    Do(m_direction.update, [&] { return Update(head, end) && Update(tail, end); });
    int finalLength = 0;
    Do(m_direction.final, [&] { return m_bWhole || EVP_CipherFinal_ex(m_pContext.get(), end, &finalLength) == 1; });
    return static_cast<size_t>(end - out) + static_cast<size_t>(finalLength);
  }

  /// Continue encrypts whole blocks in place.
  void Continue(std::span<unsigned char> blocks) {
    unsigned char* end = blocks.data();
    Do(m_direction.update, [&] { return Update(blocks, end); });
  }

 private:
  bool Update(Bytes in, unsigned char*& out) {
    while (!in.empty()) {
      const Bytes part = in.first(std::min(in.size(), kMostAtOnce));
      int length = 0;
      const int size = static_cast<int>(part.size());
      if (EVP_CipherUpdate(m_pContext.get(), out, &length, part.data(), size) != 1) return false;
      out += length;
      in = in.subspan(part.size());
    }
    return true;
  }

  const OpensslErrors m_errors;
  const Direction& m_direction;
  const OpensslCipherContext m_pContext;
  const bool m_bWhole;
};

COpensslSymmetricCipher::COpensslSymmetricCipher(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm), m_pParams(parameters), m_message(kTexts) {
  Traced("COpensslSymmetricCipher::COpensslSymmetricCipher", this, [] {});
}

COpensslSymmetricCipher::~COpensslSymmetricCipher() {
  Traced("COpensslSymmetricCipher::~COpensslSymmetricCipher", this, [] {});
}

void COpensslSymmetricCipher::Init(int operation, IKey* key) {
  Traced("COpensslSymmetricCipher::Init", this, [&] {
    m_message.RequireNew(key, 60, "pKey should not be NULL", 66);
    m_message.RequireKnown(operation, 78);
    m_message.Begin(operation, key);
  });
}

void COpensslSymmetricCipher::Init(int operation, ICertificate* certificate) {
  Traced("COpensslSymmetricCipher::Init", this, [&] {
    m_message.RequireNew(certificate, 111, "pCertificate should not be NULL", 117);
    m_message.RequireKnown(operation, 129);
    IKey* key = Rewrapping(kModule, 139, "Unable to retrieve the certificate public key",
                           [&] { return certificate->GetPublicKey(); });
    m_message.Begin(operation, key);
  });
}

void COpensslSymmetricCipher::DoFinal(const ByteArray& in, ByteArray& out) {
  Traced("COpensslSymmetricCipher::DoFinal", this, [&] {
    m_message.RequireData(170, 176);
    Rewrapping(kModule, 188, "Cipher failed", [&] { Cipher(in, out); });
  });
}

void COpensslSymmetricCipher::DoFinal(ByteArray& out) {
  Traced("COpensslSymmetricCipher::DoFinal", this, [&] {
    m_message.RequireData(218, 224);
    Rewrapping(kModule, 234, "Cipher failed", [&] { Cipher(ByteArray(), out); });
  });
}

void COpensslSymmetricCipher::Update(const ByteArray& in) {
  Traced("COpensslSymmetricCipher::Update", this, [&] {
    m_message.RequireInitialized(264);
    m_message.Append(in);
  });
}

IKey* COpensslSymmetricCipher::Unwrap(const ByteArray&, IAlgorithm*) {
  return Traced("COpensslSymmetricCipher::Unwrap", this, [&]() -> IKey* {
    m_message.RefuseKey(UNWRAP_MODE, {294, 300, 304});
  });
}

void COpensslSymmetricCipher::Wrap(IKey*, ByteArray&) {
  Traced("COpensslSymmetricCipher::Wrap", this, [&] { m_message.RefuseKey(WRAP_MODE, {333, 339, 343}); });
}

void COpensslSymmetricCipher::Cipher(const ByteArray& tail, ByteArray& out) {
  Traced("COpensslSymmetricCipher::Cipher", this, [&] {
    m_message.WithTail(tail, [&] {
      const Setup setup = Prepare(*m_pParams, *m_pAlgorithm, m_message.key());
      const Bytes head = m_message.data();
      const size_t size = head.size() + tail.size();
      const size_t block = setup.cipher.blockLength;
      const bool encrypt = m_message.operation() == ENCRYPT_MODE;
      Run run(setup, encrypt ? kEncrypt : kDecrypt, !setup.padded && size % block == 0);
      ByteArray result((size / block + 1) * block);
      result.resize(run.Execute(head, tail, result.data()));
      out.swap(result);
      m_message.End();
    });
  });
}

void COpensslSymmetricCipher::Chain(std::span<unsigned char> blocks) {
  Traced("COpensslSymmetricCipher::DoFinal", this, [&] {
    m_message.RequireData(170, 176);
    Rewrapping(kModule, 188, "Cipher failed", [&] {
      Traced("COpensslSymmetricCipher::Cipher", this, [&] {
        if (!m_pChain) {
          m_pChain = std::make_unique<Run>(Prepare(kAes, true, false, {}, m_message.key()), kEncrypt, true);
        }
        m_pChain->Continue(blocks);
      });
    });
  });
}

}  // namespace Tavo::Framework
