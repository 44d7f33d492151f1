#include "rz.crypto.openssl.rsapublickey.h"

#include "../common/rz.crypto.algorithm.h"
#include "../common/rz.crypto.der.h"
#include "rz.openssl.errors.h"
#include "rz.openssl.rsader.h"
#include "rz.openssl.x509.h"
#include "tavo/owned.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.rsapublickey"};
constexpr const char* kConstructor = "COpensslRSAPublicKey::COpensslRSAPublicKey";

using Record = DerOwned<CSRSAPublicKey_Delete>;

/// Entry, body and exit of a constructor, with the check that all but one begin with.
template <class Body>
void Constructed(const void* key, const std::unique_ptr<IAlgorithm>& algorithm, Body&& body) {
  Traced(kConstructor, key, [&] {
    if (!algorithm) throw kModule.Error(__LINE__, "pAlgorithm should not be NULL", CRYPTO_BAD_PARAM);
    body();
  });
}

ByteArray EncodeNumbers(const ByteArray& modulus, const ByteArray& exponent) {
  const DerSteps check(kModule, kConstructor, DerSteps::kConstructing);
  Record record;
  DerInteger integer;
  check("CSRSAPublicKey_Create", CSRSAPublicKey_Create(Out(record)), 241);
  check("CSASNInteger_DEREncode", IntegerFromLittleEndian(modulus, integer), 255);
  check("CSRSAPublicKey_SetModulus", SetOwned(CSRSAPublicKey_SetModulus, record, integer), 262);
  check("CSASNInteger_DEREncode", IntegerFromLittleEndian(exponent, integer), 275);
  check("CSRSAPublicKey_SetPublicExponent", SetOwned(CSRSAPublicKey_SetPublicExponent, record, integer), 282);
  ByteArray encoded;
  check("CSRSAPublicKey_DEREncode",
        EncodeDer(record.get(), CSRSAPublicKey_DEREncodedLength, CSRSAPublicKey_DEREncodeTLV, encoded), 291);
  return encoded;
}

OpensslRSA Parse(const ByteArray& encoded, const char* call, unsigned long line) {
  const OpensslErrors errors;
  const unsigned char* at = encoded.data();
  OpensslRSA rsa(d2i_RSAPublicKey(nullptr, &at, static_cast<long>(encoded.size())));
  if (rsa) return rsa;
  const OpensslError error = errors.First();
  LogError("%s : %sUnable to parse public key with error 0x%x (%s)", kConstructor, call, error.code, error.text);
  throw kModule.Error(line, "Unable to parse public key", CRYPTO_UNKNOWN_ERROR);
}

OpensslCertificate ParseCertificate(const ByteArray& encoded) {
  OpensslCertificate certificate = ParseX509(encoded, kConstructor);
  if (!certificate) throw kModule.Error(__LINE__, "Unable to parse certificate", CRYPTO_UNKNOWN_ERROR);
  return certificate;
}

ByteArray Encode(const RSA* rsa) {
  const OpensslErrors errors;
  const int size = rsa != nullptr ? i2d_RSAPublicKey(rsa, nullptr) : 0;
  ByteArray encoded(size > 0 ? static_cast<size_t>(size) : 0);
  unsigned char* to = encoded.data();
  if (size > 0 && i2d_RSAPublicKey(rsa, &to) == size) return encoded;
  const OpensslError error = errors.First();
  LogError("%s : i2d_RSAPublicKey - Unable to encode public key with error 0x%x (%s)", kConstructor, error.code,
           error.text);
  throw kModule.Error(__LINE__, "Unable to encode public key", CRYPTO_UNKNOWN_ERROR);
}

/// The steps that read the record of an operation, with the line of the first one.
Record Decode(const DerSteps& check, const ByteArray& encoded, unsigned long line) {
  Record record;
  std::uint64_t size = encoded.size();
  check("CSRSAPublicKey_DERDecode", CSRSAPublicKey_DERDecodeTLV(encoded.data(), &size, 0, Out(record)), line);
  return record;
}

}  // namespace

COpensslRSAPublicKey::COpensslRSAPublicKey(IAlgorithm* algorithm, const ByteArray& modulus, const ByteArray& exponent)
    : m_pAlgorithm(CloneOrNull(algorithm)) {
  Constructed(this, m_pAlgorithm, [&] {
    if (modulus.empty() || exponent.empty()) {
      LogDetail("COpensslRSAPublicKey::COpensslRSAPublicKey : Component RSA=empty!");
      throw kModule.Error(233, "Component RSA=empty!", CRYPTO_BAD_PARAM);
    }
    m_baEncoded = EncodeNumbers(modulus, exponent);
    m_rsa = Parse(m_baEncoded, "d2i_RSAPublicKey - ", 304);
  });
}

COpensslRSAPublicKey::COpensslRSAPublicKey(IAlgorithm* algorithm, const ByteArray& certificate)
    : m_pAlgorithm(CloneOrNull(algorithm)) {
  Constructed(this, m_pAlgorithm, [&] { TakeKeyOf(ParseCertificate(certificate).get()); });
}

COpensslRSAPublicKey::COpensslRSAPublicKey(x509_st* certificate, const ByteArray&) : m_pAlgorithm(NewAlgorithm("RSA")) {
  Constructed(this, m_pAlgorithm, [&] { TakeKeyOf(certificate); });
}

COpensslRSAPublicKey::COpensslRSAPublicKey(IAlgorithm* algorithm, rsa_st* rsa)
    : m_pAlgorithm(CloneOrNull(algorithm)), m_rsa(ShareRSA(rsa)) {
  Constructed(this, m_pAlgorithm, [&] { m_baEncoded = Encode(m_rsa.get()); });
}

COpensslRSAPublicKey::COpensslRSAPublicKey(const COpensslRSAPublicKey& other)
    : IRSAPublicKey(), m_pAlgorithm(other.m_pAlgorithm->Clone()), m_rsa(ShareRSA(other.m_rsa.get())) {
  Constructed(this, m_pAlgorithm, [&] { AssignBytes(m_baEncoded, other.m_baEncoded); });
}

COpensslRSAPublicKey::~COpensslRSAPublicKey() {
  Traced("COpensslRSAPublicKey::~COpensslRSAPublicKey", this, [&] {
    m_rsa.reset();
    m_pAlgorithm.reset();
  });
}

void COpensslRSAPublicKey::TakeKeyOf(const x509_st* certificate) {
  const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(certificate);
  if (bits != nullptr) {
    AssignBytes(m_baEncoded, ASN1_STRING_get0_data(bits), static_cast<size_t>(ASN1_STRING_length(bits)));
  }
  m_rsa = Parse(m_baEncoded, "", __LINE__);
}

IKey* COpensslRSAPublicKey::Clone() const {
  return Traced("COpensslRSAPublicKey::Clone", this, [&] { return new COpensslRSAPublicKey(*this); });
}

SecureString COpensslRSAPublicKey::GetFormat() {
  return Traced("COpensslRSAPublicKey::GetFormat", this, [] { return SecureString("X509"); });
}

void COpensslRSAPublicKey::GetEncoded(ByteArray& encoded) {
  Traced("COpensslRSAPublicKey::GetEncoded", this, [&] { AssignBytes(encoded, m_baEncoded); });
}

unsigned int COpensslRSAPublicKey::GetExponent() {
  return Traced("COpensslRSAPublicKey::GetExponent", this, [&] {
    const DerSteps check(kModule, "COpensslRSAPublicKey::GetExponent");
    const Record record = Decode(check, m_baEncoded, 420);
    CSASNInteger* exponent = nullptr;
    check("CSRSAPublicKey_GetPublicExponent", CSRSAPublicKey_GetPublicExponent(record.get(), &exponent), 427);
    std::uint32_t value = 0;
    check("CSASNInteger_ToUnsigned32", CSASNInteger_ToUnsigned32(exponent, &value), 434);
    LogDetail("COpensslRSAPublicKey::GetExponent : (%d)", static_cast<int>(value));
    return value;
  });
}

void COpensslRSAPublicKey::GetModulus(ByteArray& modulus) {
  Traced("COpensslRSAPublicKey::GetModulus", this, [&] {
    const DerSteps check(kModule, "COpensslRSAPublicKey::GetModulus");
    const Record record = Decode(check, m_baEncoded, 479);
    CSASNInteger* number = nullptr;
    check("CSRSAPublicKey_GetModulus", CSRSAPublicKey_GetModulus(record.get(), &number), 486);
    const std::uint8_t* bytes = nullptr;
    std::uint64_t size = 0;
    check("CSASNInteger_GetBytes", CSASNInteger_GetBytes(number, &bytes, &size), 493);
    if (size > 0 && *bytes == 0) {
      LogDetail("COpensslRSAPublicKey::GetModulus : remove first byte (null)");
      ++bytes;
      --size;
    }
    modulus = Reversed(bytes, size);
  });
}

}  // namespace Tavo::Framework
