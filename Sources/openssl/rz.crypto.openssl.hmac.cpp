#include "rz.crypto.openssl.hmac.h"

#include <openssl/hmac.h>

#include <climits>
#include <string_view>

#include "rz.openssl.errors.h"
#include "rz.openssl.fetched.h"
#include "rz.openssl.owners.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.hmac"};
constexpr KeyedMessage::Texts kTexts{kModule, "MAC is not initialized", "MAC is already initialized"};

struct Variant {
  std::string_view name;
  FetchedDigest digest;
  unsigned long length;  // bytes
};

constinit const Variant kVariants[] = {
    {"HMAC_SHA1", FetchedDigest("SHA1"), 20},     {"HMAC_SHA224", FetchedDigest("SHA224"), 28},
    {"HMAC_SHA256", FetchedDigest("SHA256"), 32}, {"HMAC_SHA384", FetchedDigest("SHA384"), 48},
    {"HMAC_SHA512", FetchedDigest("SHA512"), 64},
};

const Variant* Find(const SecureString& name) {
  for (const auto& variant : kVariants) {
    if (std::string_view(name) == variant.name) return &variant;
  }
  return nullptr;
}

/// Computes the code of `head` followed by `tail` into `code`. libcrypto takes an empty key only with a pointer to it.
bool Compute(const EVP_MD* digest, const ByteArray& key, std::span<const unsigned char> head,
             std::span<const unsigned char> tail, unsigned char* code) {
  if (digest == nullptr || key.size() > INT_MAX) return false;
  const OpensslErrors errors;
  const OpensslHmacContext context(HMAC_CTX_new());
  const void* bytes = key.empty() ? static_cast<const void*>("") : key.data();
  return context != nullptr && HMAC_Init_ex(context.get(), bytes, static_cast<int>(key.size()), digest, nullptr) == 1 &&
         HMAC_Update(context.get(), head.data(), head.size()) == 1 &&
         HMAC_Update(context.get(), tail.data(), tail.size()) == 1 && HMAC_Final(context.get(), code, nullptr) == 1;
}

}  // namespace

COpensslHMAC::COpensslHMAC(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm), m_pParams(parameters), m_message(kTexts) {
  Traced("COpensslHMAC::COpensslHMAC", this, [] {});
}

COpensslHMAC::~COpensslHMAC() {
  Traced("COpensslHMAC::~COpensslHMAC", this, [] {});
}

unsigned long COpensslHMAC::GetMacLength() {
  return Traced("COpensslHMAC::GetMacLength", this, [&] {
    const SecureString name = m_pAlgorithm->GetFriendlyName();
    const Variant* variant = Find(name);
    if (variant == nullptr) {
      LogError("COpensslHMAC::GetMacLength : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(84, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    return variant->length;
  });
}

void COpensslHMAC::Init(IKey* key) {
  Traced("COpensslHMAC::Init", this, [&] {
    m_message.RequireNew(key, 113, "pKey should not be NULL", 119);
    m_message.Begin(key);
  });
}

void COpensslHMAC::Mac(const ByteArray& in, ByteArray& out) {
  Traced("COpensslHMAC::Mac", this, [&] {
    m_message.RequireInitialized(151);
    Rewrapping(kModule, 163, "Mac failed", [&] { Finish(in, out); });
  });
}

void COpensslHMAC::Mac(ByteArray& out) { Finish(ByteArray(), out); }

void COpensslHMAC::Finish(const ByteArray& tail, ByteArray& out) {
  Traced("COpensslHMAC::Mac", this, [&] {
    m_message.RequireInitialized(197);
    m_message.WithTail(tail, [&] {
      const SecureString name = m_pAlgorithm->GetFriendlyName();
      const Variant* variant = Find(name);
      if (variant == nullptr) {
        LogError("COpensslHMAC::Mac : Unsupported algorithm: %s", name.c_str());
        throw kModule.Error(229, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
      }
      if (m_message.key()->GetFormat() != "RAW") {
        LogError("COpensslHMAC::Mac : Only raw key format is supported");
        throw kModule.Error(236, "Only raw key format is supported", CRYPTO_NOT_SUPPORTED);
      }
      ByteArray key;
      m_message.key()->GetEncoded(key);
      unsigned char code[EVP_MAX_MD_SIZE];
      if (!Compute(variant->digest.Get(), key, m_message.data(), tail, code)) {
        LogError("COpensslHMAC::Mac : HMAC failure");
        throw kModule.Error(__LINE__, "HMAC failure", CRYPTO_UNKNOWN_ERROR);
      }
      AssignBytes(out, code, variant->length);
      m_message.End();
    });
  });
}

void COpensslHMAC::Update(const ByteArray& in) {
  Traced("COpensslHMAC::Update", this, [&] {
    m_message.RequireInitialized(285);
    m_message.Append(in);
  });
}

}  // namespace Tavo::Framework
