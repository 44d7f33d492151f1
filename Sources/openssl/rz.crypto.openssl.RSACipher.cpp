#include "rz.crypto.openssl.RSACipher.h"

#include <openssl/rsa.h>

#include <climits>

#include "rz.crypto.openssl.rsaprivatecrtkey.h"
#include "rz.crypto.openssl.rsapublickey.h"
#include "rz.openssl.errors.h"
#include "rz.openssl.rsasize.h"
#include "tavo/framework/certificate.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.RSACipher"};
constexpr KeyedMessage::Texts kTexts{kModule, "Cipher is not initialized", "Cipher is already initialized"};

/// The two directions: libcrypto's key in the framework's, the call, and how each failure reads.
struct Direction {
  RSA* (*keyOf)(IKey* key);  // null when the framework's key is of another class
  int (*run)(int length, const unsigned char* from, unsigned char* to, RSA* rsa, int padding);
  const char* wrongKey;
  unsigned long wrongKeyLine;
  unsigned long sizeLine;
  const char* call;
  const char* failure;
  unsigned long failureLine;
};

template <class Key>
RSA* KeyOf(IKey* key) {
  const auto* own = dynamic_cast<const Key*>(key);
  return own != nullptr ? own->GetRSAKey() : nullptr;
}

constexpr Direction kEncrypt = {KeyOf<COpensslRSAPublicKey>,
                                RSA_public_encrypt,
                                "Only Openssl RSA Public keys are supported",
                                447,
                                458,
                                "RSA_public_encrypt",
                                "Unable to encrypt data",
                                466};
constexpr Direction kDecrypt = {KeyOf<COpensslRSAPrivateCRTKey>,
                                RSA_private_decrypt,
                                "Only Openssl RSA Private keys are supported",
                                482,
                                493,
                                "RSA_private_decrypt",
                                "Unable to decrypt data",
                                501};

struct Padding {
  SecureString name;
  int number;
};

Padding ReadPadding(const ICryptoParserParameterMap& map) {
  SecureString name = "None";
  map.GetPadding(name);
  if (name == "None") return {name, RSA_NO_PADDING};
  if (name == "PKCS1") return {name, RSA_PKCS1_PADDING};
  if (name == "OAEP") {
    ByteArray label;
    if (!map.GetOaepEncodingParam(label) || label.empty()) return {name, RSA_PKCS1_OAEP_PADDING};
    LogError("COpensslRSACipher::Cipher : OpenSsl support only RSA OAEP with empty encoding parameter: %s",
             name.c_str());
    throw kModule.Error(414, "OpenSsl support only RSA OAEP with empty encoding parameter", CRYPTO_BAD_PARAM);
  }
  LogError("COpensslRSACipher::Cipher : Unsupported padding: %s", name.c_str());
  throw kModule.Error(422, "Unsupported padding", CRYPTO_NO_SUCH_PADDING);
}

ByteArray Run(const Direction& direction, IKey* key, const Padding& padding, std::span<const unsigned char> data) {
  RSA* rsa = direction.keyOf(key);
  const size_t modulusLength = ModulusLength(rsa);
  if (modulusLength == 0) {
    LogError("COpensslRSACipher::Cipher : %s", direction.wrongKey);
    throw kModule.Error(direction.wrongKeyLine, direction.wrongKey, CRYPTO_NOT_SUPPORTED);
  }
  if (padding.number == RSA_NO_PADDING && data.size() != modulusLength) {
    LogError("COpensslRSACipher::Cipher : Unsupported padding with this datalen: %s", padding.name.c_str());
    throw kModule.Error(direction.sizeLine, "Unsupported padding with this datalen", CRYPTO_INVALID_DATA_SIZE);
  }
  ByteArray result(modulusLength);
  const OpensslErrors errors;
  const int length = data.size() > INT_MAX ? -1
                                           : direction.run(static_cast<int>(data.size()), data.data(), result.data(),
                                                           rsa, padding.number);
  if (length < 0) {
    const OpensslError error = errors.First();
    LogError("COpensslRSACipher::Cipher : %s - %s with error 0x%x (%s)", direction.call, direction.failure, error.code,
             error.text);
    throw kModule.Error(direction.failureLine, direction.failure, CRYPTO_UNKNOWN_ERROR);
  }
  result.resize(static_cast<size_t>(length));
  return result;
}

}  // namespace

COpensslRSACipher::COpensslRSACipher(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters)
    : m_pAlgorithm(algorithm), m_pParams(parameters), m_message(kTexts) {
  Traced("COpensslRSACipher::COpensslRSACipher", this, [] {});
}

COpensslRSACipher::~COpensslRSACipher() {
  Traced("COpensslRSACipher::~COpensslRSACipher", this, [] {});
}

void COpensslRSACipher::Init(int operation, IKey* key) {
  Traced("COpensslRSACipher::Init", this, [&] {
    m_message.RequireNew(key, 62, "pKey should not be NULL", 68);
    m_message.RequireKnown(operation, 80);
    m_message.Begin(operation, key);
  });
}

void COpensslRSACipher::Init(int operation, ICertificate* certificate) {
  Traced("COpensslRSACipher::Init", this, [&] {
    m_message.RequireNew(certificate, 113, "pCertificate should not be NULL", 119);
    m_message.RequireKnown(operation, 131);
    m_message.Begin(operation, certificate->GetPublicKey());
  });
}

void COpensslRSACipher::DoFinal(const ByteArray& in, ByteArray& out) {
  Traced("COpensslRSACipher::DoFinal", this, [&] {
    m_message.RequireData(172, 178);
    m_message.Append(in);
    Cipher(out);
  });
}

void COpensslRSACipher::DoFinal(ByteArray& out) {
  Traced("COpensslRSACipher::DoFinal", this, [&] {
    m_message.RequireData(220, 226);
    Cipher(out);
  });
}

void COpensslRSACipher::Update(const ByteArray& in) {
  Traced("COpensslRSACipher::Update", this, [&] {
    m_message.RequireInitialized(266);
    m_message.Append(in);
  });
}

IKey* COpensslRSACipher::Unwrap(const ByteArray&, IAlgorithm*) {
  return Traced("COpensslRSACipher::Unwrap", this, [&]() -> IKey* {
    m_message.RefuseKey(UNWRAP_MODE, {296, 302, 306});
  });
}

void COpensslRSACipher::Wrap(IKey*, ByteArray&) {
  Traced("COpensslRSACipher::Wrap", this, [&] { m_message.RefuseKey(WRAP_MODE, {335, 341, 345}); });
}

void COpensslRSACipher::Cipher(ByteArray& out) {
  Traced("COpensslRSACipher::Cipher", this, [&] {
    const Padding padding = ReadPadding(*m_pParams);
    LogDetail("COpensslRSACipher::Cipher : m_nOpMode=%#x", static_cast<unsigned int>(m_message.operation()));
    ByteArray result =
        Run(m_message.operation() == ENCRYPT_MODE ? kEncrypt : kDecrypt, m_message.key(), padding, m_message.data());
    out.swap(result);
    m_message.End();
  });
}

}  // namespace Tavo::Framework
