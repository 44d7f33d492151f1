// Certificates and keys that libcrypto made: the same octets after decoding and encoding, and the same content.
#include <gtest/gtest.h>
#include <openssl/err.h>

#include <functional>

#include "support/certificate_maker.h"
#include "tavo/der.h"

namespace {

using made::Bytes;

template <class T>
using Decoder = uint32_t (*)(const uint8_t*, uint64_t*, uint32_t, T**);

template <class T>
using Object = std::unique_ptr<T, std::function<void(T*)>>;

template <class T>
Object<T> Decode(const Bytes& in, Decoder<T> decode, uint32_t (*drop)(T**)) {
  uint64_t length = in.size();
  T* object = nullptr;
  EXPECT_EQ(decode(in.data(), &length, 0, &object), 0u);
  EXPECT_EQ(length, in.size());
  return {object, [drop](T* gone) { drop(&gone); }};
}

// Encodes with one of the T_DEREncodeTLV functions.
template <class T, class Encode>
Bytes Encoded(const T* object, Encode encode) {
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(encode(object, &buffer, &length, 1, 1, 1), 0u);
  const Bytes bytes(buffer, buffer + length);
  free(buffer);
  return bytes;
}

// A component, lent by a getter.
template <class C, class T>
C* Part(const T* record, uint32_t (*get)(const T*, C**)) {
  C* component = nullptr;
  EXPECT_EQ(get(record, &component), 0u);
  return component;
}

std::string Text(const CSASNOID* oid) {
  char* text = nullptr;
  EXPECT_EQ(CSASNOID_ToString(oid, &text), 0u);
  const std::string copy = text;
  CSASNUtil_FreeString(&text);
  return copy;
}

std::string Text(const ASN1_OBJECT* object) {
  char text[128];
  OBJ_obj2txt(text, sizeof text, object, 1);
  return text;
}

// Every extension: identifier, criticality, value; and values of known types encode as they were.
void CompareExtensions(const CSTBSCertificate* tbs, const X509* x) {
  uint8_t present = 9;
  EXPECT_EQ(CSTBSCertificate_ExtensionsIsPresent(tbs, &present), 0u);
  EXPECT_EQ(present, X509_get_ext_count(x) > 0 ? 1 : 0);
  if (present == 0) return;
  const auto* extensions = Part(tbs, CSTBSCertificate_GetExtensions);
  uint64_t count = 0;
  EXPECT_EQ(CSExtensions_GetItemCount(extensions, &count), 0u);
  ASSERT_EQ(count, static_cast<uint64_t>(X509_get_ext_count(x)));
  for (uint64_t i = 0; i < count; ++i) {
    CSExtension* extension = nullptr;
    ASSERT_EQ(CSExtensions_GetItemAt(extensions, i, &extension), 0u);
    X509_EXTENSION* expected = X509_get_ext(x, static_cast<int>(i));
    const std::string oid = Text(Part(extension, CSExtension_GetExtID));
    EXPECT_EQ(oid, Text(X509_EXTENSION_get_object(expected)));
    uint8_t critical = 9;
    EXPECT_EQ(CSExtension_GetCritical(extension, &critical), X509_EXTENSION_get_critical(expected) ? 0u : 406u);
    EXPECT_EQ(critical != 0, X509_EXTENSION_get_critical(expected) != 0);
    const uint8_t* bytes = nullptr;
    uint64_t length = 0;
    EXPECT_EQ(CSASNOctetString_GetBytes(Part(extension, CSExtension_GetExtnValue), &bytes, &length), 0u);
    const Bytes value(bytes, bytes + length);
    const ASN1_OCTET_STRING* octets = X509_EXTENSION_get_data(expected);
    EXPECT_EQ(value, Bytes(octets->data, octets->data + octets->length));
    if (oid == "2.5.29.17") {
      const auto names = Decode(value, CSGeneralNames_DERDecodeTLV, CSGeneralNames_Delete);
      EXPECT_EQ(Encoded(names.get(), CSGeneralNames_DEREncodeTLV), value);
    } else if (oid == "2.5.29.37") {
      const auto purposes = Decode(value, CSExtKeyUsageSyntax_DERDecodeTLV, CSExtKeyUsageSyntax_Delete);
      EXPECT_EQ(Encoded(purposes.get(), CSExtKeyUsageSyntax_DEREncodeTLV), value);
    } else if (oid == "2.5.29.15") {
      const auto usage = Decode(value, CSASNBitString_DERDecodeTLV, CSASNBitString_Delete);
      EXPECT_EQ(Encoded(usage.get(), CSASNBitString_DEREncodeTLV), value);
    }
  }
}

void CompareTimes(const CSTBSCertificate* tbs, const X509* x) {
  const auto* validity = Part(tbs, CSTBSCertificate_GetValidity);
  const std::pair<const CSTime*, const ASN1_TIME*> times[] = {
      {Part(validity, CSValidity_GetNotBefore), X509_get0_notBefore(x)},
      {Part(validity, CSValidity_GetNotAfter), X509_get0_notAfter(x)}};
  for (const auto& [time, expected] : times) {
    struct tm calendar, wanted;
    time_t seconds = 0;
    EXPECT_EQ(CSTime_ToTm(time, &calendar), 0u);
    EXPECT_EQ(CSTime_ToTime_t(time, &seconds), 0u);
    EXPECT_EQ(ASN1_TIME_to_tm(expected, &wanted), 1);
    EXPECT_EQ(timegm(&calendar), timegm(&wanted));
    EXPECT_EQ(seconds, timegm(&wanted));
  }
}

void CompareCertificate(X509* x) {
  const Bytes der = made::Der(x, i2d_X509);
  const auto certificate = Decode(der, CSCertificate_DERDecodeTLV, CSCertificate_Delete);
  ASSERT_NE(certificate, nullptr);
  EXPECT_EQ(Encoded(certificate.get(), CSCertificate_DEREncodeTLV), der);

  // The octets that are signed, taken from the input.
  uint64_t start = 0, end = 0;
  EXPECT_EQ(CSCertificate_DEROffsetOfTbsCertificateTLV(der.data(), der.size(), &start, nullptr, nullptr, nullptr,
                                                       nullptr, nullptr, &end, 0),
            0u);
  EXPECT_EQ(Bytes(der.begin() + long(start), der.begin() + long(end)), made::Der(x, i2d_re_X509_tbs));

  const auto* tbs = Part(certificate.get(), CSCertificate_GetTbsCertificate);
  EXPECT_EQ(Encoded(Part(tbs, CSTBSCertificate_GetSerialNumber), CSASNInteger_DEREncodeTLV),
            made::Der(X509_get_serialNumber(x), i2d_ASN1_INTEGER));
  EXPECT_EQ(Encoded(Part(tbs, CSTBSCertificate_GetIssuer), CSName_DEREncodeTLV),
            made::Der(X509_get_issuer_name(x), i2d_X509_NAME));
  EXPECT_EQ(Encoded(Part(tbs, CSTBSCertificate_GetSubjectPublicKeyInfo), CSSubjectPublicKeyInfo_DEREncodeTLV),
            made::Der(X509_get_X509_PUBKEY(x), i2d_X509_PUBKEY));
  EXPECT_EQ(
      Text(Part(Part(certificate.get(), CSCertificate_GetSignatureAlgorithm), CSAlgorithmIdentifier_GetAlgorithm)),
      Text(OBJ_nid2obj(X509_get_signature_nid(x))));
  CompareTimes(tbs, x);
  CompareExtensions(tbs, x);
}

struct KeyType {
  const char* type;
  const char* curve;
  bool signs;
};
void PrintTo(const KeyType& key, std::ostream* out) { *out << key.type << (key.curve == nullptr ? "" : key.curve); }

class DerOfKeyType : public testing::TestWithParam<KeyType> {};

TEST_P(DerOfKeyType, CertificatesAndKeysStayTheSame) {
  const made::Key key = made::NewKey(GetParam().type, GetParam().curve);
  for (const char* section : {"all", "logon", ""}) {
    if (!GetParam().signs) continue;
    SCOPED_TRACE(section);
    CompareCertificate(made::NewCertificate(key.get(), section).get());
    CompareCertificate(made::NewCertificate(key.get(), section, "99991231235959Z").get());
  }
  const Bytes publicKey = made::Der(key.get(), i2d_PUBKEY);
  const auto info = Decode(publicKey, CSSubjectPublicKeyInfo_DERDecodeTLV, CSSubjectPublicKeyInfo_Delete);
  EXPECT_EQ(Encoded(info.get(), CSSubjectPublicKeyInfo_DEREncodeTLV), publicKey);

  PKCS8_PRIV_KEY_INFO* container = EVP_PKEY2PKCS8(key.get());
  for (const bool attribute : {false, true}) {
    if (attribute)
      PKCS8_pkey_add1_attr_by_NID(container, NID_friendlyName, MBSTRING_ASC, (const unsigned char*)"me", 2);
    const Bytes der = made::Der(container, i2d_PKCS8_PRIV_KEY_INFO);
    const auto decoded = Decode(der, CSPrivateKeyInfo_DERDecodeTLV, CSPrivateKeyInfo_Delete);
    EXPECT_EQ(Encoded(decoded.get(), CSPrivateKeyInfo_DEREncodeTLV), der);
    uint8_t present = 9;
    EXPECT_EQ(CSPrivateKeyInfo_AttributesIsPresent(decoded.get(), &present), 0u);
    EXPECT_EQ(present, attribute ? 1 : 0);
  }
  PKCS8_PRIV_KEY_INFO_free(container);
}

INSTANTIATE_TEST_SUITE_P(Made, DerOfKeyType,
                         testing::Values(KeyType{"RSA", nullptr, true}, KeyType{"RSA-PSS", nullptr, true},
                                         KeyType{"EC", "P-256", true}, KeyType{"EC", "brainpoolP384r1", true},
                                         KeyType{"ED25519", nullptr, true}, KeyType{"ED448", nullptr, true},
                                         KeyType{"X25519", nullptr, false}));

// PKCS #1 keys with two and three primes, every number of them.
TEST(DerOfLibcrypto, RsaKeys) {
  for (const int primes : {2, 3}) {
    RSA* rsa = RSA_new();
    BIGNUM* exponent = BN_new();
    BN_set_word(exponent, RSA_F4);
    ASSERT_EQ(RSA_generate_multi_prime_key(rsa, 1536, primes, exponent, nullptr), 1);
    BN_free(exponent);
    const Bytes der = made::Der(rsa, i2d_RSAPrivateKey);
    const auto key = Decode(der, CSRSAPrivateKey_DERDecodeTLV, CSRSAPrivateKey_Delete);
    EXPECT_EQ(Encoded(key.get(), CSRSAPrivateKey_DEREncodeTLV), der);
    uint8_t present = 9;
    EXPECT_EQ(CSRSAPrivateKey_OtherPrimeInfosIsPresent(key.get(), &present), 0u);
    EXPECT_EQ(present, primes - 2);
    const std::pair<CSASNInteger*, const BIGNUM*> numbers[] = {
        {Part(key.get(), CSRSAPrivateKey_GetModulus), RSA_get0_n(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetPublicExponent), RSA_get0_e(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetPrivateExponent), RSA_get0_d(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetPrime1), RSA_get0_p(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetPrime2), RSA_get0_q(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetExponent1), RSA_get0_dmp1(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetExponent2), RSA_get0_dmq1(rsa)},
        {Part(key.get(), CSRSAPrivateKey_GetCoefficient), RSA_get0_iqmp(rsa)}};
    for (const auto& [number, expected] : numbers) {
      char* text = nullptr;
      char* wanted = BN_bn2hex(expected);
      uint64_t capacity = 0;
      EXPECT_EQ(CSASNInteger_ToHex(number, &text, &capacity, 1), 0u);
      EXPECT_STREQ(text, wanted);
      CSASNUtil_FreeString(&text);
      OPENSSL_free(wanted);
    }
    const Bytes publicKey = made::Der(rsa, i2d_RSAPublicKey);
    const auto decoded = Decode(publicKey, CSRSAPublicKey_DERDecodeTLV, CSRSAPublicKey_Delete);
    EXPECT_EQ(Encoded(decoded.get(), CSRSAPublicKey_DEREncodeTLV), publicKey);
    RSA_free(rsa);
  }
}

}  // namespace
