#include "rz.crypto.openssl.rsaprivatecrtkey.h"

#include "../common/rz.crypto.algorithm.h"
#include "../common/rz.crypto.der.h"
#include "rz.openssl.errors.h"
#include "rz.openssl.rsader.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.rsaprivatecrtkey"};
constexpr const char* kConstructor = "COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey";
constexpr const char* kFromNumbers = "COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(chinese parameters)";
constexpr const char* kRsaOid = "1.2.840.113549.1.1.1";

using Key = COpensslRSAPrivateCRTKey;
using Record = DerOwned<CSRSAPrivateKey_Delete>;
using Container = DerOwned<CSPrivateKeyInfo_Delete>;

/// A component in the RSAPrivateKey record, in the order of Key::Component.
struct Field {
  const char* getStep;
  std::uint32_t (*get)(const CSRSAPrivateKey*, CSASNInteger**);
  const char* setStep;
  std::uint32_t (*set)(CSRSAPrivateKey*, CSASNInteger*, CSASNInteger**);
};

#define FIELD(name) \
  { "CSRSAPrivateKey_Get" #name, CSRSAPrivateKey_Get##name, "CSRSAPrivateKey_Set" #name, CSRSAPrivateKey_Set##name }
constexpr Field kFields[Key::kComponentCount] = {
    FIELD(Modulus), FIELD(Exponent1),   FIELD(Exponent2),       FIELD(Prime1),
    FIELD(Prime2),  FIELD(Coefficient), FIELD(PrivateExponent), FIELD(PublicExponent),
};
#undef FIELD

using Numbers = std::array<const ByteArray*, Key::kComponentCount>;

/// The RSAPrivateKey of the numbers, which are least significant byte first.
ByteArray EncodeNumbers(const DerSteps& check, const Numbers& numbers) {
  Record record;
  DerInteger integer;
  check("CSRSAPrivateKey_Create", CSRSAPrivateKey_Create(Out(record)));
  check("CSASNInteger_FromUnsigned32", CSASNInteger_FromUnsigned32(0, Out(integer)));
  check("CSRSAPrivateKey_SetVersion", SetOwned(CSRSAPrivateKey_SetVersion, record, integer));
  for (size_t i = 0; i < numbers.size(); ++i) {
    check("CSASNInteger_DERDecode", IntegerFromLittleEndian(*numbers[i], integer));
    check(kFields[i].setStep, SetOwned(kFields[i].set, record, integer));
  }
  ByteArray encoded;
  check("CSRSAPrivateKey_DEREncode",
        EncodeDer(record.get(), CSRSAPrivateKey_DEREncodedLength, CSRSAPrivateKey_DEREncodeTLV, encoded));
  return encoded;
}

DerOwned<CSAlgorithmIdentifier_Delete> RsaIdentifier(const DerSteps& check) {
  DerOwned<CSAlgorithmIdentifier_Delete> identifier;
  DerOwned<CSASNOID_Delete> oid;
  check("CSASNOID_FromString", CSASNOID_FromString(kRsaOid, Out(oid)));
  check("CSAlgorithmIdentifier_Create", CSAlgorithmIdentifier_Create(Out(identifier)));
  check("CSAlgorithmIdentifier_SetAlgorithm", SetOwned(CSAlgorithmIdentifier_SetAlgorithm, identifier, oid));
  return identifier;
}

/// The PrivateKeyInfo that holds an RSAPrivateKey; its algorithm has no parameters and there are no attributes.
ByteArray Wrap(const DerSteps& check, const ByteArray& pkcs1) {
  DerOwned<CSASNOctetString_Delete> octets;
  Container container;
  DerInteger version;
  check("CSPrivateKey_FromBytes", CSASNOctetString_FromBytes(pkcs1.data(), pkcs1.size(), Out(octets)));
  check("CSPrivateKeyInfo_Create", CSPrivateKeyInfo_Create(Out(container)));
  check("CSASNInteger_FromUnsigned32", CSASNInteger_FromUnsigned32(0, Out(version)));
  check("CSPrivateKeyInfo_SetVersion", SetOwned(CSPrivateKeyInfo_SetVersion, container, version));
  auto identifier = RsaIdentifier(check);
  check("CSPrivateKeyInfo_SetPrivateKeyAlgorithm",
        SetOwned(CSPrivateKeyInfo_SetPrivateKeyAlgorithm, container, identifier));
  check("CSPrivateKeyInfo_SetPrivateKey", SetOwned(CSPrivateKeyInfo_SetPrivateKey, container, octets));
  ByteArray encoded;
  check("CSPrivateKey_DEREncode",
        EncodeDer(container.get(), CSPrivateKeyInfo_DEREncodedLength, CSPrivateKeyInfo_DEREncodeTLV, encoded));
  return encoded;
}

/// The RSAPrivateKey in a PrivateKeyInfo.
ByteArray Unwrap(const DerSteps& check, const ByteArray& pkcs8) {
  Container container;
  std::uint64_t size = pkcs8.size();
  check("CSPrivateKeyInfo_DERDecode", CSPrivateKeyInfo_DERDecodeTLV(pkcs8.data(), &size, 0, Out(container)));
  CSASNOctetString* octets = nullptr;
  check("CSPrivateKeyInfo_GetPrivateKey", CSPrivateKeyInfo_GetPrivateKey(container.get(), &octets));
  const std::uint8_t* bytes = nullptr;
  check("CSPrivateKey_GetBytes", CSASNOctetString_GetBytes(octets, &bytes, &size));
  ByteArray pkcs1;
  AssignBytes(pkcs1, bytes, size);
  return pkcs1;
}

OpensslRSA Parse(const ByteArray& pkcs1) {
  const OpensslErrors errors;
  const unsigned char* at = pkcs1.data();
  OpensslRSA rsa(d2i_RSAPrivateKey(nullptr, &at, static_cast<long>(pkcs1.size())));
  if (rsa) return rsa;
  const OpensslError error = errors.First();
  LogError("%s : d2i_RSAPrivateKey - Unable to parse private key with error 0x%x (%s)", kConstructor, error.code,
           error.text);
  throw kModule.Error(__LINE__, "Unable to parse private key", CRYPTO_UNKNOWN_ERROR);
}

ByteArray Encode(const RSA* rsa) {
  const OpensslErrors errors;
  const int size = rsa != nullptr ? i2d_RSAPrivateKey(rsa, nullptr) : 0;
  ByteArray encoded(size > 0 ? static_cast<size_t>(size) : 0);
  unsigned char* to = encoded.data();
  if (size > 0 && i2d_RSAPrivateKey(rsa, &to) == size) return encoded;
  const OpensslError error = errors.First();
  LogError("%s : i2d_RSAPrivateKey - Unable to encode private key with error 0x%x (%s)", kConstructor, error.code,
           error.text);
  throw kModule.Error(__LINE__, "Unable to encode private key", CRYPTO_UNKNOWN_ERROR);
}

void RequireAlgorithm(const std::unique_ptr<IAlgorithm>& algorithm) {
  if (!algorithm) throw kModule.Error(__LINE__, "pAlgorithm should not be NULL", CRYPTO_BAD_PARAM);
}

}  // namespace

COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, rsa_st* rsa)
    : m_pAlgorithm(CloneOrNull(algorithm)), m_rsa(ShareRSA(rsa)) {
  Traced(kConstructor, this, [&] {
    RequireAlgorithm(m_pAlgorithm);
    const ByteArray pkcs1 = Encode(m_rsa.get());
    m_baEncoded = Wrap(DerSteps(kModule, kConstructor, DerSteps::kConstructing), pkcs1);
    TakeComponents(pkcs1);
  });
}

COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, const ByteArray& encoded, bool isPKCS8)
    : m_pAlgorithm(CloneOrNull(algorithm)) {
  Traced(kConstructor, this, [&] {
    RequireAlgorithm(m_pAlgorithm);
    const DerSteps check(kModule, kConstructor, DerSteps::kConstructing);
    ByteArray pkcs1;
    if (isPKCS8) {
      AssignBytes(m_baEncoded, encoded);
      pkcs1 = Unwrap(check, encoded);
    } else {
      m_baEncoded = Wrap(check, encoded);
      AssignBytes(pkcs1, encoded);
    }
    TakeComponents(pkcs1);
    m_rsa = Parse(pkcs1);
  });
}

COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(IAlgorithm* algorithm, const ByteArray& p, const ByteArray& q,
                                                   const ByteArray& dP, const ByteArray& dQ, const ByteArray& qInv,
                                                   const ByteArray& modulus, const ByteArray& publicExponent,
                                                   const ByteArray& privateExponent)
    : m_pAlgorithm(CloneOrNull(algorithm)) {
  Traced(kFromNumbers, this, [&] {
    RequireAlgorithm(m_pAlgorithm);
    for (const auto* number : {&p, &q, &dP, &dQ, &qInv, &modulus, &publicExponent, &privateExponent}) {
      if (!number->empty()) continue;
      LogError("%s : Component RSA=empty!", kFromNumbers);
      throw kModule.Error(__LINE__, "Component RSA=empty!", CRYPTO_BAD_PARAM);
    }
    const DerSteps check(kModule, kFromNumbers, DerSteps::kConstructing);
    const ByteArray pkcs1 =
        EncodeNumbers(check, {&modulus, &dP, &dQ, &p, &q, &qInv, &privateExponent, &publicExponent});
    m_baEncoded = Wrap(check, pkcs1);
    m_rsa = Parse(pkcs1);
    // GetQExponent has always answered with dP for such a key, and callers compare keys by what it answers.
    const Numbers kept = {&modulus, &dP, &dP, &p, &q, &qInv, &privateExponent, &publicExponent};
    for (size_t i = 0; i < kept.size(); ++i) AssignBytes(m_components[i], *kept[i]);
  });
}

COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(const COpensslRSAPrivateCRTKey& other)
    : IRSAPrivateCRTKey(), m_pAlgorithm(other.m_pAlgorithm->Clone()), m_rsa(ShareRSA(other.m_rsa.get())) {
  Traced(kConstructor, this, [&] {
    AssignBytes(m_baEncoded, other.m_baEncoded);
    for (size_t i = 0; i < m_components.size(); ++i) AssignBytes(m_components[i], other.m_components[i]);
  });
}

COpensslRSAPrivateCRTKey::~COpensslRSAPrivateCRTKey() {
  Traced("COpensslRSAPrivateCRTKey::~COpensslRSAPrivateCRTKey", this, [&] {
    m_rsa.reset();
    m_pAlgorithm.reset();
  });
}

void COpensslRSAPrivateCRTKey::TakeComponents(const ByteArray& pkcs1) {
  const DerSteps check(kModule, kConstructor, DerSteps::kConstructing);
  Record record;
  std::uint64_t size = pkcs1.size();
  check("CSRSAPrivateKey_DERDecode", CSRSAPrivateKey_DERDecodeTLV(pkcs1.data(), &size, 0, Out(record)));
  for (size_t i = 0; i < m_components.size(); ++i) {
    CSASNInteger* integer = nullptr;
    check(kFields[i].getStep, kFields[i].get(record.get(), &integer));
    const std::uint8_t* bytes = nullptr;
    check("CSASNInteger_GetBytes", CSASNInteger_GetBytes(integer, &bytes, &size));
    if (i == kModulus && size > 0 && *bytes == 0) {
      LogDetail("COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey : remove first byte (null)");
      ++bytes;
      --size;
    }
    AssignBytes(m_components[i], bytes, size);
  }
}

IKey* COpensslRSAPrivateCRTKey::Clone() const {
  return Traced("COpensslRSAPrivateCRTKey::Clone", this, [&] { return new COpensslRSAPrivateCRTKey(*this); });
}

SecureString COpensslRSAPrivateCRTKey::GetFormat() {
  return Traced("COpensslRSAPrivateCRTKey::GetFormat", this, [] { return SecureString("PKCS8"); });
}

void COpensslRSAPrivateCRTKey::GetEncoded(ByteArray& encoded) {
  Traced("COpensslRSAPrivateCRTKey::GetEncoded", this, [&] { AssignBytes(encoded, m_baEncoded); });
}

void COpensslRSAPrivateCRTKey::Get(const char* operation, Component component, ByteArray& out) {
  Traced(operation, this, [&] { AssignBytes(out, m_components[component]); });
}

void COpensslRSAPrivateCRTKey::GetPubExponent(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetPubExponent", kPubExponent, out);
}

void COpensslRSAPrivateCRTKey::GetPrivExponent(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetPrivExponent", kPrivExponent, out);
}

void COpensslRSAPrivateCRTKey::GetModulus(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetModulus", kModulus, out);
}

void COpensslRSAPrivateCRTKey::GetPFactor(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetPFactor", kPFactor, out);
}

void COpensslRSAPrivateCRTKey::GetQFactor(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetQFactor", kQFactor, out);
}

void COpensslRSAPrivateCRTKey::GetPExponent(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetPExponent", kPExponent, out);
}

void COpensslRSAPrivateCRTKey::GetQExponent(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetQExponent", kQExponent, out);
}

void COpensslRSAPrivateCRTKey::GetCRTCoefficient(ByteArray& out) {
  Get("COpensslRSAPrivateCRTKey::GetCRTCoefficient", kCoefficient, out);
}

}  // namespace Tavo::Framework
