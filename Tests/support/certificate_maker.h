#ifndef RZ_TESTS_CERTIFICATE_MAKER_H
#define RZ_TESTS_CERTIFICATE_MAKER_H

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

/// Keys and certificates from libcrypto. Whatever fails ends the program: it is the test that is wrong.
namespace made {

template <auto function>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    function(object);
  }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Bytes = std::vector<uint8_t>;

inline void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "certificate maker: %s\n", what);
  ERR_print_errors_fp(stderr);
  std::abort();
}

/// The octets that one of libcrypto's i2d functions writes.
template <class T, class Encode>
Bytes Der(T* object, Encode encode) {
  unsigned char* buffer = nullptr;
  const int length = encode(object, &buffer);
  Require(length > 0, "i2d");
  const Bytes bytes(buffer, buffer + length);
  OPENSSL_free(buffer);
  return bytes;
}

/// NewKey generates a key: "RSA", "RSA-PSS" (2048 bits), "EC" with a curve name, "ED25519", "X25519", ...
inline Key NewKey(const char* type, const char* curve = nullptr) {
  EVP_PKEY_CTX* context = EVP_PKEY_CTX_new_from_name(nullptr, type, nullptr);
  EVP_PKEY* key = nullptr;
  Require(context != nullptr && EVP_PKEY_keygen_init(context) == 1, type);
  Require(curve == nullptr || EVP_PKEY_CTX_ctrl_str(context, "ec_paramgen_curve", curve) == 1, curve);
  Require(EVP_PKEY_keygen(context, &key) == 1, "key generation");
  EVP_PKEY_CTX_free(context);
  return Key(key);
}

/// Every shape of extension that libcrypto makes: section "all"; "logon" is what a smart-card certificate carries.
constexpr const char* kExtensions = R"(
[all]
basicConstraints=critical,CA:TRUE,pathlen:3
keyUsage=critical,digitalSignature,keyCertSign,decipherOnly
extendedKeyUsage=clientAuth,1.3.6.1.4.1.311.20.2.2,2.5.29.37.0
subjectKeyIdentifier=hash
subjectAltName=email:a@b.example,DNS:host.example,URI:http://host.example/,IP:192.0.2.1,IP:2001:db8::1,RID:1.2.840.113549.1,dirName:directory,otherName:1.3.6.1.4.1.311.20.2.3;UTF8:user@domain.example
crlDistributionPoints=URI:http://host.example/crl
authorityInfoAccess=OCSP;URI:http://host.example/ocsp
certificatePolicies=1.2.3.4,2.5.29.32.0
nameConstraints=permitted;DNS:.example
1.2.3.4.5=critical,ASN1:UTF8String:text
1.2.3.4.6=DER:05:00
1.2.3.4.4294967295=DER:05:00
[logon]
keyUsage=critical,digitalSignature,keyEncipherment
extendedKeyUsage=clientAuth,1.3.6.1.4.1.311.20.2.2
subjectAltName=otherName:1.3.6.1.4.1.311.20.2.3;UTF8:user@domain.example
subjectKeyIdentifier=hash
crlDistributionPoints=URI:http://host.example/crl
authorityInfoAccess=OCSP;URI:http://host.example/ocsp
[directory]
C=CH
O=Example
)";

/// NewCertificate signs a certificate for `key` by itself; an empty section gives version 1 without extensions. Times
/// are as in ASN1_TIME_set_string.
inline Certificate NewCertificate(EVP_PKEY* key, const char* section = "all",
                                  const char* notAfter = "20491231235959Z") {
  Certificate certificate(X509_new());
  X509* x = certificate.get();
  ASN1_INTEGER_set(X509_get_serialNumber(x), 0x80C0FFEE);
  Require(ASN1_TIME_set_string_X509(X509_getm_notBefore(x), "20200229120000Z") == 1, "notBefore");
  Require(ASN1_TIME_set_string_X509(X509_getm_notAfter(x), notAfter) == 1, notAfter);
  X509_NAME* name = X509_NAME_new();
  const auto add = [&](const char* field, int type, const char* text, int set) {
    Require(
        X509_NAME_add_entry_by_txt(name, field, type, reinterpret_cast<const unsigned char*>(text), -1, -1, set) == 1,
        field);
  };
  add("C", MBSTRING_ASC, "CH", 0);
  add("DC", MBSTRING_ASC, "example", 0);
  add("O", V_ASN1_T61STRING, "Exempl\xE9", 0);
  add("CN", MBSTRING_UTF8, "J\xC3\xBCrg", 0);
  add("serialNumber", MBSTRING_ASC, "17", -1);  // of the same RelativeDistinguishedName
  add("description", V_ASN1_BMPSTRING, "\x01\x41", 0);
  X509_set_subject_name(x, name);
  X509_set_issuer_name(x, name);
  X509_NAME_free(name);
  X509_set_pubkey(x, key);
  if (*section != 0) {
    X509_set_version(x, 2);
    BIO* text = BIO_new_mem_buf(kExtensions, -1);
    CONF* configuration = NCONF_new(nullptr);
    Require(NCONF_load_bio(configuration, text, nullptr) == 1, "configuration");
    X509V3_CTX context;
    X509V3_set_ctx(&context, x, x, nullptr, nullptr, 0);
    X509V3_set_nconf(&context, configuration);
    Require(X509V3_EXT_add_nconf(configuration, &context, section, x) == 1, section);
    NCONF_free(configuration);
    BIO_free(text);
  }
  const int id = EVP_PKEY_base_id(key);
  Require(X509_sign(x, key, id == EVP_PKEY_ED25519 || id == EVP_PKEY_ED448 ? nullptr : EVP_sha256()) > 0, "signature");
  return certificate;
}

}  // namespace made

#endif
