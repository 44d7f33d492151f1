#include "rz.crypto.openssl.digest.h"

#include <openssl/md5.h>
#include <openssl/sha.h>
#include <string.h>

#include <string_view>

#include "../common/rz.crypto.trace.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.digest"};

/// One of libcrypto's one-algorithm families: Init, one Update over the whole message, Final. The context is wiped.
template <class Context, int (*Init)(Context*), int (*Update)(Context*, const void*, size_t),
          int (*Final)(unsigned char*, Context*)>
bool Hash(const ByteArray& data, unsigned char* out) {
  Context context;
  const bool done = Init(&context) == 1 && Update(&context, data.data(), data.size()) == 1 && Final(out, &context) == 1;
  explicit_bzero(&context, sizeof context);
  return done;
}

struct Variant {
  std::string_view name;
  unsigned long length;  // bytes
  bool (*hash)(const ByteArray& data, unsigned char* out);
};

constexpr Variant kVariants[] = {
    {"SHA1", SHA_DIGEST_LENGTH, Hash<SHA_CTX, SHA1_Init, SHA1_Update, SHA1_Final>},
    {"SHA224", SHA224_DIGEST_LENGTH, Hash<SHA256_CTX, SHA224_Init, SHA224_Update, SHA224_Final>},
    {"SHA256", SHA256_DIGEST_LENGTH, Hash<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>},
    {"SHA384", SHA384_DIGEST_LENGTH, Hash<SHA512_CTX, SHA384_Init, SHA384_Update, SHA384_Final>},
    {"SHA512", SHA512_DIGEST_LENGTH, Hash<SHA512_CTX, SHA512_Init, SHA512_Update, SHA512_Final>},
    {"MD5", MD5_DIGEST_LENGTH, Hash<MD5_CTX, MD5_Init, MD5_Update, MD5_Final>},
};

const Variant* Find(const SecureString& name) {
  for (const auto& variant : kVariants) {
    if (std::string_view(name) == variant.name) return &variant;
  }
  return nullptr;
}

}  // namespace

COpensslMessageDigest::COpensslMessageDigest(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm->Clone()), m_pParameters(parameters) {
  Traced("COpensslMessageDigest::COpensslMessageDigest", this, [] {});
}

COpensslMessageDigest::~COpensslMessageDigest() {
  Traced("COpensslMessageDigest::~COpensslMessageDigest", this, [&] { m_pAlgorithm.reset(); });
}

unsigned long COpensslMessageDigest::GetDigestLength() {
  return Traced("COpensslMessageDigest::GetDigestLength", this, [&] {
    const SecureString name = m_pAlgorithm->GetFriendlyName();
    const Variant* variant = Find(name);
    if (variant == nullptr) {
      LogError("COpensslMessageDigest::GetDigestLength : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(98, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    return variant->length;
  });
}

void COpensslMessageDigest::Digest(const ByteArray& data, ByteArray& digest) {
  Traced("COpensslMessageDigest::Digest", this, [&] {
    const bool whole = m_data.empty();
    if (!whole) AppendBytes(m_data, data);
    Rewrapping(kModule, 133, "Digest failed", [&] { Finish(whole ? data : m_data, digest); });
  });
}

void COpensslMessageDigest::Digest(ByteArray& digest) { Finish(m_data, digest); }

/// Hashes `message`, which is the collected data or, when nothing was collected, the caller's array: a message that
/// comes whole is hashed where it is, and collected only if there is no hash of it.
void COpensslMessageDigest::Finish(const ByteArray& message, ByteArray& digest) {
  Traced("COpensslMessageDigest::Digest", this, [&] {
    const SecureString name = m_pAlgorithm->GetFriendlyName();
    const Variant* variant = Find(name);
    if (variant == nullptr) {
      if (&message != &m_data) AssignBytes(m_data, message);
      LogError("COpensslMessageDigest::Digest : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(227, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    ByteArray apart;  // instead of `digest` when that is the message
    ByteArray& out = &digest == &message ? apart : digest;
    out.resize(variant->length);
    if (!variant->hash(message, out.data())) LogError("COpensslMessageDigest::Digest : SHA function failure");
    if (&out == &apart) digest.swap(apart);
    m_data.clear();
  });
}

void COpensslMessageDigest::Update(const ByteArray& data) {
  Traced("COpensslMessageDigest::Update", this, [&] { AppendBytes(m_data, data); });
}

}  // namespace Tavo::Framework
