// Certificates and keys that libcrypto made: the same octets after decoding and encoding, and the same parts in them.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include "support/certificates.h"
#include "support/rsa.h"

namespace {

using reference::Encoded;
using Bytes = Tavo::Framework::ByteArray;

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

void CompareCertificate(X509* x) {
  const Bytes der = Encoded(i2d_X509, x);
  StaysTheSame("CSCertificate", der);
  const Bytes tbs = Part("CSCertificate.TbsCertificate", der);
  EXPECT_EQ(tbs, Encoded(i2d_re_X509_tbs, x));
  EXPECT_EQ(Part("CSTBSCertificate.SerialNumber", tbs), Encoded(i2d_ASN1_INTEGER, X509_get_serialNumber(x)));
  EXPECT_EQ(Part("CSTBSCertificate.Issuer", tbs), Encoded(i2d_X509_NAME, X509_get_issuer_name(x)));
  EXPECT_EQ(Part("CSTBSCertificate.SubjectPublicKeyInfo", tbs), Encoded(i2d_X509_PUBKEY, X509_get_X509_PUBKEY(x)));
  EXPECT_EQ(Part("CSTBSCertificate.Extensions", tbs).empty(), X509_get_ext_count(x) == 0);
  for (int i = 0; i < X509_get_ext_count(x); ++i) {
    X509_EXTENSION* extension = X509_get_ext(x, i);
    const Bytes whole = Encoded(i2d_X509_EXTENSION, extension);
    EXPECT_EQ(Part("CSExtension.Critical", whole).empty(), X509_EXTENSION_get_critical(extension) == 0);
    const ASN1_OCTET_STRING* value = X509_EXTENSION_get_data(extension);
    const int nid = OBJ_obj2nid(X509_EXTENSION_get_object(extension));
    const char* const type = nid == NID_ext_key_usage ? "CSExtKeyUsageSyntax" : "CSGeneralNames";
    if (nid == NID_ext_key_usage || nid == NID_subject_alt_name || nid == NID_issuer_alt_name) {
      StaysTheSame(type, Bytes(value->data, value->data + value->length));
    }
  }
}

/// Every shape of extension that libcrypto makes.
CertificateRecipe AllShapes() {
  CertificateRecipe recipe;
  recipe.keyUsage = "critical,digitalSignature,keyCertSign,decipherOnly";
  recipe.extendedKeyUsage = "clientAuth,1.3.6.1.4.1.311.20.2.2,2.5.29.37.0";
  recipe.altName =
      "email:a@b.example,DNS:host.example,URI:http://host.example/,IP:192.0.2.1,IP:2001:db8::1,"
      "RID:1.2.840.113549.1,otherName:1.3.6.1.4.1.311.20.2.3;UTF8:user@domain.example";
  recipe.texts = {{"basicConstraints", "critical,CA:TRUE,pathlen:3"},
                  {"subjectKeyIdentifier", "hash"},
                  {"crlDistributionPoints", "URI:http://host.example/crl"},
                  {"authorityInfoAccess", "OCSP;URI:http://host.example/ocsp"},
                  {"nameConstraints", "permitted;DNS:.example"},
                  {"1.2.3.4.5", "critical,ASN1:UTF8String:text"},
                  {"1.2.3.4.4294967295", "DER:05:00"}};
  // An issuer's alternative name, a directory name, and two policies.
  recipe.extensions = {{"2.5.29.18", DerHex(0x30, "a40e 300c 310a 3008 0603550403 0c0141")},
                       {"2.5.29.32", DerHex(0x30, "3005 06032a0304 3006 0604551d2000")}};
  recipe.subject = "/C=CH/DC=example/CN=J\u00fcrg";
  recipe.serial = "80C0FFEE";
  return recipe;
}

class DerOfKeyType : public testing::TestWithParam<const char*> {};

TEST_P(DerOfKeyType, CertificatesAndKeysStayTheSame) {
  EVP_PKEY* const key = CertificateKey(GetParam());
  CertificateRecipe plain;
  plain.version = 0;
  for (CertificateRecipe recipe : {AllShapes(), LogonRecipe(), plain}) {
    if (GetParam() == std::string("X25519")) continue;  // signs nothing
    recipe.key = GetParam();
    for (const char* end : {"20491231235959Z", "99991231235959Z"}) {
      recipe.notAfter = end;
      CompareCertificate(reference::Parsed(MakeCertificate(recipe)).get());
    }
  }
  StaysTheSame("CSSubjectPublicKeyInfo", Encoded(i2d_PUBKEY, key));
  const reference::PrivateKeyInfo container(EVP_PKEY2PKCS8(key));
  StaysTheSame("CSPrivateKeyInfo", Encoded(i2d_PKCS8_PRIV_KEY_INFO, container.get()));
  PKCS8_pkey_add1_attr_by_NID(container.get(), NID_friendlyName, MBSTRING_ASC, (const unsigned char*)"me", 2);
  const Bytes der = Encoded(i2d_PKCS8_PRIV_KEY_INFO, container.get());
  StaysTheSame("CSPrivateKeyInfo", der);
  EXPECT_FALSE(Part("CSPrivateKeyInfo.Attributes", der).empty());
}

INSTANTIATE_TEST_SUITE_P(Made, DerOfKeyType,
                         testing::Values("RSA:2048", "RSA-PSS:2048", "EC:P-256", "EC:brainpoolP384r1", "ED25519",
                                         "ED448", "X25519"));

TEST(DerOfLibcrypto, RsaKeysOfTwoAndThreePrimes) {
  for (const int primes : {2, 3}) {
    const reference::Rsa rsa(RSA_new());
    const reference::Bignum exponent(BN_new());
    BN_set_word(exponent.get(), RSA_F4);
    ASSERT_EQ(RSA_generate_multi_prime_key(rsa.get(), 1536, primes, exponent.get(), nullptr), 1);
    const Bytes der = Encoded(i2d_RSAPrivateKey, rsa.get());
    StaysTheSame("CSRSAPrivateKey", der);
    StaysTheSame("CSRSAPublicKey", Encoded(i2d_RSAPublicKey, rsa.get()));
    EXPECT_EQ(Part("CSRSAPrivateKey.OtherPrimeInfos", der).empty(), primes == 2);
    const reference::Holder<ASN1_INTEGER, ASN1_INTEGER_free> last(
        BN_to_ASN1_INTEGER(RSA_get0_iqmp(rsa.get()), nullptr));
    EXPECT_EQ(Part("CSRSAPrivateKey.Coefficient", der), Encoded(i2d_ASN1_INTEGER, last.get()));
  }
}

}  // namespace
