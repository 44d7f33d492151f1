#include "rz.crypto.openssl.Signature.h"

#include <openssl/rsa.h>

#include <algorithm>
#include <climits>

#include "rz.crypto.openssl.rsapublickey.h"
#include "rz.openssl.errors.h"
#include "rz.openssl.rsasize.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.Signature"};
constexpr KeyedMessage::Texts kTexts{kModule, "Signature is not initialized", "Signature is already initialized"};

int ReadPadding(const ICryptoParserParameterMap& map) {
  SecureString name = "None";
  map.GetPadding(name);
  if (name == "None") return RSA_NO_PADDING;
  if (name == "PKCS1") return RSA_PKCS1_PADDING;
  LogError("COpensslSignature::Verify : Unsupported padding: %s", name.c_str());
  throw kModule.Error(332, "Unsupported padding", CRYPTO_NO_SUCH_PADDING);
}

RSA* PublicKey(IKey* key) {
  const auto* own = dynamic_cast<const COpensslRSAPublicKey*>(key);
  if (own == nullptr) {
    LogError("COpensslSignature::Verify : Only Openssl RSA Public keys are supported");
    throw kModule.Error(340, "Only Openssl RSA Public keys are supported", CRYPTO_NOT_SUPPORTED);
  }
  if (ModulusLength(own->GetRSAKey()) == 0) {
    LogError("COpensslSignature::Verify : pRSAPublicKey is NULL");
    throw kModule.Error(349, "pRSAPublicKey is NULL", CRYPTO_NOT_SUPPORTED);
  }
  return own->GetRSAKey();
}

/// Whether `signature` opens, and holds `data` under its padding. libcrypto refuses a signature that is longer than the
/// modulus but reads a shorter one as a number, so that one signature would have several forms and, without padding,
/// an empty one would open to zeros: a shorter one is refused here.
bool Opens(RSA* rsa, int padding, const ByteArray& signature, std::span<const unsigned char> data) {
  ByteArray opened(ModulusLength(rsa));
  LogDetail("COpensslSignature::Verify : Calling RSA_public_decrypt");
  const OpensslErrors errors;
  int length = -1;
  const bool possible = signature.size() >= opened.size() && signature.size() <= INT_MAX;
  if (possible) {
    length = RSA_public_decrypt(static_cast<int>(signature.size()), signature.data(), opened.data(), rsa, padding);
  }
  if (length < 0) {
    const OpensslError error = possible ? errors.First() : OpensslError(0);
    LogError("COpensslSignature::Verify : RSA_public_decrypt - Verification failed with error 0x%x (%s)", error.code,
             error.text);
    return false;
  }
  opened.resize(static_cast<size_t>(length));
  const bool equal = std::equal(opened.begin(), opened.end(), data.begin(), data.end());
  LogDetail("COpensslSignature::Verify : Signature is %s", equal ? "valid" : "invalid");
  return equal;
}

}  // namespace

COpensslSignature::COpensslSignature(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm), m_pParams(parameters), m_message(kTexts) {
  Traced("COpensslSignature::COpensslSignature", this, [] {});
}

COpensslSignature::~COpensslSignature() {
  Traced("COpensslSignature::~COpensslSignature", this, [] {});
}

void COpensslSignature::Init(IPrivateKey* key) {
  Traced("COpensslSignature::Init", this, [&] {
    m_message.RequireNew(key, 62, "pPrivateKey should not be NULL", 68);
    throw kModule.Error(72, "Not Implemented", CRYPTO_NOT_IMPLEMENTED);
  });
}

void COpensslSignature::Init(IPublicKey* key) {
  Traced("COpensslSignature::Init", this, [&] {
    m_message.RequireNew(key, 104, "pPublicKey should not be NULL", 110);
    m_message.Begin(key);
  });
}

void COpensslSignature::RefuseSigning(unsigned long line, unsigned long operationLine) const {
  m_message.RequireInitialized(line);
  throw kModule.Error(operationLine, "Invalid operation", CRYPTO_BAD_PARAM);
}

void COpensslSignature::Sign(const ByteArray&, ByteArray&) {
  Traced("COpensslSignature::Sign", this, [&] { RefuseSigning(143, 149); });
}

void COpensslSignature::Sign(ByteArray&) {
  Traced("COpensslSignature::Sign", this, [&] { RefuseSigning(183, 189); });
}

void COpensslSignature::Update(const ByteArray& data) {
  Traced("COpensslSignature::Update", this, [&] {
    m_message.RequireInitialized(221);
    m_message.Append(data);
  });
}

bool COpensslSignature::Verify(const ByteArray& data, const ByteArray& signature) {
  return Traced("COpensslSignature::Verify", this, [&] {
    m_message.RequireInitialized(249);
    m_message.Append(data);
    return Verify(signature);
  });
}

bool COpensslSignature::Verify(const ByteArray& signature) {
  return Traced("COpensslSignature::Verify", this, [&] {
    struct Answer {
      bool valid = false;
      ~Answer() { LogDetail("COpensslSignature::Verify: returns %s", valid ? "true" : "false"); }
    } answer;
    m_message.RequireInitialized(299);
    const int padding = ReadPadding(*m_pParams);
    answer.valid = Opens(PublicKey(m_message.key()), padding, signature, m_message.data());
    return answer.valid;
  });
}

}  // namespace Tavo::Framework
