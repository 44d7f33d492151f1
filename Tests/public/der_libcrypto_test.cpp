// Certificates and keys that libcrypto made: the same octets after decoding and encoding, and the same parts in them.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include "support/certificate_maker.h"

namespace {

using made::Bytes;

void StaysTheSame(const char* name, const Bytes& der) {
  SCOPED_TRACE(name);
  const DerType& type = DerTypeNamed(name);
  void* object = nullptr;
  uint64_t length = der.size();
  ASSERT_EQ(type.decode(der.data(), &length, 0, 0, object), 0u);
  EXPECT_EQ(length, der.size());
  uint8_t* buffer = nullptr;
  EXPECT_EQ(type.encode(object, &buffer, &length, true, true, true), 0u);
  EXPECT_EQ(Bytes(buffer, buffer + length), der);
  free(buffer);
  type.destroy(object);
}

// The octets of a component, found without decoding; nothing when it is absent.
Bytes Part(const std::string& component, const Bytes& der) {
  uint64_t start = 0, end = 0;
  const uint32_t code =
      DerFinders().at(component)(der.data(), der.size(), &start, nullptr, nullptr, nullptr, nullptr, nullptr, &end, 0);
  EXPECT_TRUE(code == 0 || code == CSResult_NOT_PRESENT) << component << ": " << code;
  return code == 0 ? Bytes(der.begin() + long(start), der.begin() + long(end)) : Bytes();
}

void CompareTime(const ASN1_TIME* expected) {
  const Bytes der = made::Der(const_cast<ASN1_TIME*>(expected), i2d_ASN1_TIME);
  uint64_t length = der.size();
  CSTime* time = nullptr;
  struct tm wanted;
  time_t seconds = 0;
  ASSERT_EQ(CSTime_DERDecodeTLV(der.data(), &length, 0, 0, 0, 0, &time), 0u);
  EXPECT_EQ(CSTime_ToTime_t(time, &seconds), 0u);
  EXPECT_EQ(ASN1_TIME_to_tm(expected, &wanted), 1);
  EXPECT_EQ(seconds, timegm(&wanted));
  CSTime_Delete(&time);
}

void CompareCertificate(X509* x) {
  const Bytes der = made::Der(x, i2d_X509);
  StaysTheSame("CSCertificate", der);
  const Bytes tbs = Part("CSCertificate.TbsCertificate", der);
  EXPECT_EQ(tbs, made::Der(x, i2d_re_X509_tbs));
  EXPECT_EQ(Part("CSTBSCertificate.SerialNumber", tbs), made::Der(X509_get_serialNumber(x), i2d_ASN1_INTEGER));
  EXPECT_EQ(Part("CSTBSCertificate.Issuer", tbs), made::Der(X509_get_issuer_name(x), i2d_X509_NAME));
  EXPECT_EQ(Part("CSTBSCertificate.SubjectPublicKeyInfo", tbs), made::Der(X509_get_X509_PUBKEY(x), i2d_X509_PUBKEY));
  EXPECT_EQ(Part("CSTBSCertificate.Extensions", tbs).empty(), X509_get_ext_count(x) == 0);
  CompareTime(X509_get0_notBefore(x));
  CompareTime(X509_get0_notAfter(x));
  const std::pair<int, const char*> types[] = {{NID_subject_alt_name, "CSGeneralNames"},
                                               {NID_issuer_alt_name, "CSGeneralNames"},
                                               {NID_ext_key_usage, "CSExtKeyUsageSyntax"},
                                               {NID_key_usage, "CSASNBitString"}};
  for (int i = 0; i < X509_get_ext_count(x); ++i) {
    X509_EXTENSION* extension = X509_get_ext(x, i);
    const Bytes whole = made::Der(extension, i2d_X509_EXTENSION);
    StaysTheSame("CSExtension", whole);
    EXPECT_EQ(Part("CSExtension.Critical", whole).empty(), X509_EXTENSION_get_critical(extension) == 0);
    const ASN1_OCTET_STRING* value = X509_EXTENSION_get_data(extension);
    for (const auto& [nid, type] : types) {
      if (OBJ_obj2nid(X509_EXTENSION_get_object(extension)) == nid) {
        StaysTheSame(type, Bytes(value->data, value->data + value->length));
      }
    }
  }
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
  StaysTheSame("CSSubjectPublicKeyInfo", made::Der(key.get(), i2d_PUBKEY));
  PKCS8_PRIV_KEY_INFO* container = EVP_PKEY2PKCS8(key.get());
  StaysTheSame("CSPrivateKeyInfo", made::Der(container, i2d_PKCS8_PRIV_KEY_INFO));
  PKCS8_pkey_add1_attr_by_NID(container, NID_friendlyName, MBSTRING_ASC, (const unsigned char*)"me", 2);
  const Bytes der = made::Der(container, i2d_PKCS8_PRIV_KEY_INFO);
  StaysTheSame("CSPrivateKeyInfo", der);
  EXPECT_FALSE(Part("CSPrivateKeyInfo.Attributes", der).empty());
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
    StaysTheSame("CSRSAPrivateKey", der);
    StaysTheSame("CSRSAPublicKey", made::Der(rsa, i2d_RSAPublicKey));
    EXPECT_EQ(Part("CSRSAPrivateKey.OtherPrimeInfos", der).empty(), primes == 2);
    const std::pair<const char*, const BIGNUM*> numbers[] = {
        {"Modulus", RSA_get0_n(rsa)},      {"PublicExponent", RSA_get0_e(rsa)}, {"PrivateExponent", RSA_get0_d(rsa)},
        {"Prime1", RSA_get0_p(rsa)},       {"Prime2", RSA_get0_q(rsa)},         {"Exponent1", RSA_get0_dmp1(rsa)},
        {"Exponent2", RSA_get0_dmq1(rsa)}, {"Coefficient", RSA_get0_iqmp(rsa)}};
    for (const auto& [name, expected] : numbers) {
      ASN1_INTEGER* integer = BN_to_ASN1_INTEGER(expected, nullptr);
      EXPECT_EQ(Part(std::string("CSRSAPrivateKey.") + name, der), made::Der(integer, i2d_ASN1_INTEGER));
      ASN1_INTEGER_free(integer);
    }
    RSA_free(rsa);
  }
}

}  // namespace
