// Every factory of the public interface: the only place that knows all implementations.

#include "asner/rz.crypto.asner.x500name.h"
#include "common/named.h"
#include "common/rz.crypto.algorithm.h"
#include "common/rz.crypto.certcontext.h"
#include "common/rz.crypto.cmac.h"
#include "common/rz.crypto.generalname.h"
#include "common/rz.crypto.padding.oaep.h"
#include "common/rz.crypto.padding.pkcs1.encrypt.h"
#include "common/rz.crypto.padding.pkcs1.sign.h"
#include "common/rz.crypto.padding.x931.h"
#include "common/rz.crypto.parameters.h"
#include "common/rz.crypto.soft.mlocksecretkey.h"
#include "common/rz.crypto.trace.h"
#include "openssl/rz.crypto.openssl.RSACipher.h"
#include "openssl/rz.crypto.openssl.Random.h"
#include "openssl/rz.crypto.openssl.Signature.h"
#include "openssl/rz.crypto.openssl.SymmetricCipher.h"
#include "openssl/rz.crypto.openssl.digest.h"
#include "openssl/rz.crypto.openssl.hmac.h"
#include "openssl/rz.crypto.openssl.keygenerator.h"
#include "openssl/rz.crypto.openssl.keypairgenerator.rsa.h"
#include "openssl/rz.crypto.openssl.rsacertificate.h"
#include "openssl/rz.crypto.openssl.rsaprivatecrtkey.h"
#include "openssl/rz.crypto.openssl.rsapublickey.h"
#include "tavo/crypto.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/rz.crypto.linux.API"};

/// The numbers of the throw sites of a factory that takes an algorithm and a parameter map.
struct FactoryLines {
  unsigned long noAlgorithm;
  unsigned long fipsMode;
};

/// What every such factory checks first, in this order.
void CheckArguments(const IAlgorithm* algorithm, const ICryptoParserParameterMap* parameters, FactoryLines lines) {
  if (algorithm == nullptr) throw kModule.Error(lines.noAlgorithm, "pAlgorithm should not be NULL", CRYPTO_BAD_PARAM);
  if (parameters == nullptr) throw kModule.Error(__LINE__, "Bad Parameters", CRYPTO_BAD_PARAM);
  if (parameters->GetFIPSMode()) {
    throw kModule.Error(lines.fipsMode, "FIPS Mode is not supported on linux", CRYPTO_UNSUPPORTED_FIPS_MODE);
  }
}

}  // namespace

IAlgorithm* IAlgorithm::CreateFromOID(const SecureString& oid, IAlgorithmParameters* parameters) {
  return Traced("IAlgorithm::CreateFromOID", [&] {
    const AlgorithmEntry* entry = FindAlgorithmByOID(oid);
    if (entry == nullptr) {
      LogError("IAlgorithm::CreateFromOID : Unsupported algorithm: %s", oid.c_str());
      throw kModule.Error(__LINE__, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    return new CAlgorithm(oid, entry->friendlyName, parameters);
  });
}

IAlgorithm* IAlgorithm::CreateFromFriendlyName(const SecureString& name, IAlgorithmParameters* parameters) {
  return Traced("IAlgorithm::CreateFromFriendlyName", [&] {
    const AlgorithmEntry* entry = FindAlgorithmByName(name);
    if (entry == nullptr) {
      LogError("IAlgorithm::CreateFromFriendlyName : Unsupported algorithm: %s", name.c_str());
      throw kModule.Error(__LINE__, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
    }
    return new CAlgorithm(entry->oid, name, parameters);
  });
}

IAlgorithmParameters* IAlgorithmParameters::Create() {
  return Traced("IAlgorithmParameters::Create", [] { return new CAlgorithmParameters; });
}

ICryptoParserParameterMap* ICryptoParserParameterMap::Create() {
  return Traced("ICryptoParserParameterMap::Create", [] { return new CCryptoParameterMap; });
}

ICryptoParserFilter* ICryptoParserFilter::Create() {
  return Traced("ICryptoParserFilter::Create", [] { return new CCryptoFilter; });
}

KeyDerivation* KeyDerivation::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("KeyDerivation::Create", [&]() -> KeyDerivation* {
    CheckArguments(algorithm, parameters, {__LINE__, __LINE__});
    throw kModule.Error(__LINE__, "Not Implemented", CRYPTO_NOT_IMPLEMENTED);
  });
}

KeyAgreement* KeyAgreement::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("KeyAgreement::Create", [&]() -> KeyAgreement* {
    CheckArguments(algorithm, parameters, {__LINE__, __LINE__});
    throw kModule.Error(__LINE__, "Not Implemented", CRYPTO_NOT_IMPLEMENTED);
  });
}

IECDomainParameters* IECDomainParameters::Create() {
  return Traced("IECDomainParameters::Create", []() -> IECDomainParameters* {
    throw kModule.Error(__LINE__, "Not Implemented", CRYPTO_NOT_IMPLEMENTED);
  });
}

ICertSystemStore* ICertSystemStore::Load(const SecureString&) {
  return Traced("ICertSystemStore::Load", []() -> ICertSystemStore* {
    throw kModule.Error(__LINE__, "Not supported on linux", CRYPTO_BAD_PARAM);
  });
}

MessageDigest* MessageDigest::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("MessageDigest::Create", [&] {
    CheckArguments(algorithm, parameters, {__LINE__, __LINE__});
    return new COpensslMessageDigest(algorithm, parameters);
  });
}

IPadding* IPadding::Create(const SecureString& paddingType, unsigned int keyLength,
                           ICryptoParserParameterMap* parameters) {
  return Traced("IPadding::Create", [&]() -> IPadding* {
    if (parameters == nullptr) throw kModule.Error(613, "Bad Parameters", CRYPTO_BAD_PARAM);
    unsigned char option = 0;
    if (Is(paddingType, "OAEP")) return new COAEPPadding(keyLength, parameters);
    if (Is(paddingType, "X_931")) {
      if (parameters->GetHashAlgoX931(option)) return new CX931Padding(keyLength, parameters);
      throw kModule.Error(623, "Hash alogo Padding type is not set", CRYPTO_BAD_PARAM);
    }
    if (Is(paddingType, "PKCS1")) {
      if (!parameters->GetPkcs1Operation(option)) {
        throw kModule.Error(632, "Pkcs1 operation parameter is not set", CRYPTO_BAD_PARAM);
      }
      if (option == 0) return new CPKCS1SignPadding(keyLength, parameters);
      if (option == 1) return new CPKCS1EncryptPadding(keyLength, parameters);
      throw kModule.Error(641, "Pkcs1 operation parameter is invalid", CRYPTO_BAD_PARAM);
    }
    throw kModule.Error(647, "Padding type is not supported", CRYPTO_NO_SUCH_PADDING);
  });
}

IGeneralName* IGeneralName::Create(const SecureString& text, const SecureString& kind) {
  return Traced("IGeneralName::Create", [&] { return new CGeneralName(text, kind); });
}

IGeneralName* IGeneralName::Create(const ByteArray& encoded, const SecureString& kind, const SecureString& oid) {
  return Traced("IGeneralName::Create", [&] { return new CGeneralName(encoded, kind, oid); });
}

IX500Name* IX500Name::Create(const ByteArray& encoded) {
  return Traced("IX500Name::Create", [&] { return new CAsnerX500Name(encoded); });
}

ICertificate* ICertificate::Create(SecureString format, const ByteArray& encoded) {
  return Traced("ICertificate::Create", [&] {
    if (format != "X509") {
      LogError("ICertificate::Create : Unsupported format: %s", format.c_str());
      throw kModule.Error(__LINE__, "Unsupported format", CRYPTO_NOT_SUPPORTED);
    }
    return new COpensslRSACertificate(encoded);
  });
}

ICertContext* ICertContext::Create(ICertificate* certificate, IPrivateKey* privateKey) {
  return Traced("ICertContext::Create", [&] {
    auto* context = Rewrapping(kModule, 1322, "new CCertContext() failed",
                               [&] { return new CCertContext(certificate, privateKey); });
    LogDetail("ICertContext::Create : pCertContext=%#x", Address(context));
    return context;
  });
}

ICertContext* ICertContext::Create(ICertificate* certificate) {
  return Traced("ICertContext::Create", [&] {
    auto* context =
        Rewrapping(kModule, 1288, "new CCertContext() failed", [&] { return new CCertContext(certificate); });
    LogDetail("ICertContext::Create : pCertContext=%#x", Address(context));
    return context;
  });
}

IKey* IKey::Create(IAlgorithm* algorithm, SecureString format, const ByteArray& encoded) {
  return Traced("IKey::Create", [&]() -> IKey* {
    if (algorithm == nullptr) throw kModule.Error(438, "pAlgorithm should not be NULL", CRYPTO_BAD_PARAM);
    const SecureString name = algorithm->GetFriendlyName();
    if (Is(name, "DES", "3DES", "AES")) {
      if (Is(format, "RAW")) return new CMLockSoftSecretKey(algorithm, encoded);
      LogError("IKey::Create : Only raw key format is supported");
      throw kModule.Error(452, "Only raw key format is supported", CRYPTO_NOT_SUPPORTED);
    }
    if (Is(name, "RSA")) {
      if (Is(format, "PKCS8")) return new COpensslRSAPrivateCRTKey(algorithm, encoded, true);
      if (Is(format, "X509")) return new COpensslRSAPublicKey(algorithm, encoded);
      LogError("IKey::Create : Unsupported format: %s", format.c_str());
      throw kModule.Error(470, "Unsupported format", CRYPTO_NOT_SUPPORTED);
    }
    LogError("IKey::Create : Unsupported algorithm: %s", name.c_str());
    throw kModule.Error(501, "Unsupported algorithm", CRYPTO_NO_SUCH_ALGORITHM);
  });
}

ISharedSecret* ISharedSecret::Create(const ByteArray& secret) {
  return Traced("ISharedSecret::Create", [&] { return new CSoftSharedSecret(secret); });
}

IRSAPublicKey* IRSAPublicKey::Create(IAlgorithm* algorithm, const ByteArray& modulus, const ByteArray& exponent) {
  return Traced("IRSAPublicKey::Create", [&] { return new COpensslRSAPublicKey(algorithm, modulus, exponent); });
}

IRSAPrivateCRTKey* IRSAPrivateCRTKey::Create(IAlgorithm* algorithm, const ByteArray& p, const ByteArray& q,
                                             const ByteArray& dP, const ByteArray& dQ, const ByteArray& qInv,
                                             const ByteArray& modulus, const ByteArray& publicExponent,
                                             const ByteArray& privateExponent) {
  return Traced("IRSAPrivateCRTKey::Create", [&] {
    return new COpensslRSAPrivateCRTKey(algorithm, p, q, dP, dQ, qInv, modulus, publicExponent, privateExponent);
  });
}

KeyPairGenerator* KeyPairGenerator::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("KeyPairGenerator::Create", [&] {
    CheckArguments(algorithm, parameters, {1150, 1156});
    if (algorithm->GetFriendlyName() != "RSA") {
      throw kModule.Error(1176, "algorithm not supported on linux", CRYPTO_BAD_PARAM);
    }
    return new COpensslRSAKeyPairGenerator(algorithm, parameters);
  });
}

RandomGenerator* RandomGenerator::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("RandomGenerator::Create", [&] {
    CheckArguments(algorithm, parameters, {__LINE__, __LINE__});
    return new COpensslRandomGenerator(algorithm);
  });
}

GUIDGenerator* GUIDGenerator::Create() {
  return Traced("GUIDGenerator::Create", [] { return new COpensslGUIDGenerator; });
}

KeyGenerator* KeyGenerator::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("KeyGenerator::Create", [&] {
    CheckArguments(algorithm, parameters, {__LINE__, __LINE__});
    return new COpensslKeyGenerator(algorithm, parameters);
  });
}

MAC* MAC::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("MAC::Create", [&]() -> MAC* {
    CheckArguments(algorithm, parameters, {945, 951});
    const SecureString name = algorithm->GetFriendlyName();
    if (Is(name, "HMAC_SHA1", "HMAC_SHA224", "HMAC_SHA256", "HMAC_SHA384", "HMAC_SHA512")) {
      return new COpensslHMAC(algorithm, parameters);
    }
    if (Is(name, "CMAC")) return new CMACCMAC(algorithm, parameters);
    throw kModule.Error(970, "Unknown algorithm", CRYPTO_NO_SUCH_ALGORITHM);
  });
}

Cipher* Cipher::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("Cipher::Create", [&]() -> Cipher* {
    CheckArguments(algorithm, parameters, {816, 822});
    const SecureString name = algorithm->GetFriendlyName();
    if (Is(name, "RSA")) return new COpensslRSACipher(algorithm, parameters);
    if (Is(name, "DES", "3DES", "AES")) return new COpensslSymmetricCipher(algorithm, parameters);
    throw kModule.Error(841, "Unknown algorithm", CRYPTO_NO_SUCH_ALGORITHM);
  });
}

Signature* Signature::Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters) {
  return Traced("Signature::Create", [&] {
    CheckArguments(algorithm, parameters, {870, 876});
    return new COpensslSignature(algorithm, parameters);
  });
}

}  // namespace Tavo::Framework
