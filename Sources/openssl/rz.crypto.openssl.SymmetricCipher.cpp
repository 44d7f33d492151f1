#include "rz.crypto.openssl.SymmetricCipher.h"

#include <openssl/evp.h>

#include <climits>
#include <cstring>
#include <span>
#include <string_view>

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
  std::string_view name;
  FetchedCipher ecb;
  FetchedCipher cbc;
  size_t keyLength;  // bytes that a key must have
  size_t blockLength;
  unsigned long modeLine;
};

/// Single DES is not in libcrypto's default provider; triple DES with three equal keys is the same function.
constinit const BlockCipher kCiphers[] = {
    {"DES", FetchedCipher("DES-EDE3-ECB"), FetchedCipher("DES-EDE3-CBC"), 8, 8, 439},
    {"3DES", FetchedCipher("DES-EDE3-ECB"), FetchedCipher("DES-EDE3-CBC"), 24, 8, 456},
    {"AES", FetchedCipher("AES-128-ECB"), FetchedCipher("AES-128-CBC"), 16, 16, 473},
};
constexpr size_t kDesKeyLength = 8;
constexpr size_t kMaxBlockLength = 16;

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
    map.GetIv(options.iv);
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
  for (const auto& cipher : kCiphers) {
    if (std::string_view(name) == cipher.name) return cipher;
  }
  LogError("COpensslSymmetricCipher::Cipher : Unsupported algorithm: %s", name.c_str());
  throw kModule.Error(480, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
}

const FetchedCipher& FindMode(const BlockCipher& cipher, const SecureString& mode) {
  if (mode == "CBC") return cipher.cbc;
  if (mode == "ECB") return cipher.ecb;
  LogError("COpensslSymmetricCipher::Cipher : Unsupported cipher mode: %s", mode.c_str());
  throw kModule.Error(cipher.modeLine, "Unsupported cipher mode", CRYPTO_NOT_SUPPORTED);
}

bool IsPadded(const SecureString& padding) {
  if (padding == "PKCS7") return true;
  if (padding == "None") return false;
  LogError("COpensslSymmetricCipher::Cipher : Unsupported padding: %s", padding.c_str());
  throw kModule.Error(495, "Unsupported padding", CRYPTO_NO_SUCH_PADDING);
}

/// `key` is null when it came from a certificate that has none.
ByteArray RawKey(IKey* key) {
  if (key == nullptr || key->GetFormat() != "RAW") {
    LogError("COpensslSymmetricCipher::Cipher : Only raw key format is supported");
    throw kModule.Error(502, "Only raw key format is supported", CRYPTO_NOT_SUPPORTED);
  }
  ByteArray bytes;
  key->GetEncoded(bytes);
  return bytes;
}

/// Makes of `key` what libcrypto reads: it takes no length and trusts that there is enough.
void FitKey(const BlockCipher& cipher, ByteArray& key) {
  if (cipher.name == "3DES" && key.size() == 2 * kDesKeyLength) AppendBytes(key, key.data(), kDesKeyLength);
  if (key.size() < cipher.keyLength) throw kModule.Error(__LINE__, "Invalid key size", CRYPTO_INVALID_KEY_SIZE);
  if (cipher.name == "DES") {
    key.resize(kDesKeyLength);
    AppendBytes(key, key.data(), kDesKeyLength);
    AppendBytes(key, key.data(), kDesKeyLength);
  }
}

/// An IV is one block: the first of what the option has, zeros when it is empty or the mode takes none.
struct Iv {
  unsigned char bytes[kMaxBlockLength] = {};

  Iv(const BlockCipher& cipher, const Options& options) {
    if (options.iv.empty() || options.mode == "ECB") return;
    if (options.iv.size() < cipher.blockLength) throw kModule.Error(__LINE__, "Invalid IV length", CRYPTO_BAD_PARAM);
    std::memcpy(bytes, options.iv.data(), cipher.blockLength);
  }
};

template <class Call>
void Do(const Step& step, Call&& call) {
  LogDetail("COpensslSymmetricCipher::Cipher: calling %s", step.name);
  if (call()) return;
  LogError("COpensslSymmetricCipher::Cipher: %s", step.failure);
  throw kModule.Error(step.line, step.failure, CRYPTO_UNKNOWN_ERROR);
}

using Bytes = std::span<const unsigned char>;

/// One run of libcrypto over a whole message. Whatever it leaves in the host's error queue goes with it.
class Run {
 public:
  /// `whole` says that whole blocks are encrypted without padding. libcrypto gives them out as they come, so it need
  /// not be told to leave the padding away and has nothing left for its final call.
  Run(const EVP_CIPHER* cipher, const Direction& direction, const ByteArray& key, const Iv& iv, bool padded, bool whole)
      : m_direction(direction), m_pContext(EVP_CIPHER_CTX_new()), m_bWhole(whole) {
    Do(direction.init, [&] {
      return cipher != nullptr && m_pContext != nullptr &&
             EVP_CipherInit_ex(m_pContext.get(), cipher, nullptr, key.data(), iv.bytes, direction.encrypt) == 1 &&
             (padded || whole || EVP_CIPHER_CTX_set_padding(m_pContext.get(), 0) == 1);
    });
  }

  /// Execute writes the result over `head` followed by `tail` to `out`, which has room for a block more than they have,
  /// and returns its length. Whole blocks need no such room, and `out` may be where the only one of the two is.
  size_t Execute(Bytes head, Bytes tail, unsigned char* out) {
    unsigned char* end = out;
    Do(m_direction.update, [&] { return Update(head, end) && Update(tail, end); });
    int finalLength = 0;
    Do(m_direction.final, [&] { return m_bWhole || EVP_CipherFinal_ex(m_pContext.get(), end, &finalLength) == 1; });
    return static_cast<size_t>(end - out) + static_cast<size_t>(finalLength);
  }

 private:
  bool Update(Bytes in, unsigned char*& out) {
    if (in.empty()) return true;
    int length = 0;
    if (in.size() > INT_MAX) return false;
    if (EVP_CipherUpdate(m_pContext.get(), out, &length, in.data(), static_cast<int>(in.size())) != 1) return false;
    out += length;
    return true;
  }

  const OpensslErrors m_errors;
  const Direction& m_direction;
  const OpensslCipherContext m_pContext;
  const bool m_bWhole;
};

}  // namespace

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
      const Options options = ReadOptions(*m_pParams);
      const BlockCipher& cipher = FindCipher(m_pAlgorithm->GetFriendlyName());
      const FetchedCipher& mode = FindMode(cipher, options.mode);
      const bool padded = IsPadded(options.padding);
      ByteArray key = RawKey(m_message.key());
      if (!padded) LogStep("COpensslSymmetricCipher::Cipher: No Padding");
      LogStep("COpensslSymmetricCipher::Cipher: EVP_Cipher block size is %i", static_cast<int>(cipher.blockLength));
      FitKey(cipher, key);
      const Iv iv(cipher, options);
      const Bytes head = m_message.data();
      const size_t size = head.size() + tail.size();
      const bool encrypt = m_message.operation() == ENCRYPT_MODE;
      const bool whole = encrypt && !padded && size % cipher.blockLength == 0;
      Run run(mode.Get(), encrypt ? kEncrypt : kDecrypt, key, iv, padded, whole);
      if (whole && head.empty() && &tail == &out && size <= INT_MAX) {
        run.Execute({}, tail, out.data());  // in place: nothing can fail any more
      } else {
        ByteArray result((size / cipher.blockLength + 1) * cipher.blockLength);
        result.resize(run.Execute(head, tail, result.data()));
        out.swap(result);
      }
      m_message.End();
    });
  });
}

}  // namespace Tavo::Framework
