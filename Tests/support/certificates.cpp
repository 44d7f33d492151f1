#include "certificates.h"

#include <openssl/asn1.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

#include "vectors.h"

using namespace Tavo::Framework;

namespace {

template <auto Free>
struct Freer {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
template <class T, auto Free>
using Holder = std::unique_ptr<T, Freer<Free>>;

void Require(bool done, const std::string& what) {
  if (done) return;
  std::fprintf(stderr, "test certificate: %s\n", what.c_str());
  std::abort();
}

EVP_PKEY* Key(const std::string& kind) {
  // Reachable until the end of the program, after libcrypto has cleaned up: never freed.
  static auto& keys = *new std::map<std::string, EVP_PKEY*>;
  EVP_PKEY*& key = keys[kind];
  if (key != nullptr) return key;
  const size_t colon = kind.find(':');
  const std::string type = kind.substr(0, colon);
  const std::string size = colon == std::string::npos ? "" : kind.substr(colon + 1);
  if (type == "EC") {
    key = EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", size.c_str());
  } else if (type == "RSA" || type == "RSA-PSS") {
    Holder<EVP_PKEY_CTX, EVP_PKEY_CTX_free> context(EVP_PKEY_CTX_new_from_name(nullptr, type.c_str(), nullptr));
    Require(EVP_PKEY_keygen_init(context.get()) == 1 &&
                EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), std::atoi(size.c_str())) == 1 &&
                EVP_PKEY_generate(context.get(), &key) == 1,
            kind);
  } else {
    key = EVP_PKEY_Q_keygen(nullptr, nullptr, type.c_str());
  }
  Require(key != nullptr, kind);
  return key;
}

X509_NAME* Name(const std::string& text) {
  X509_NAME* name = X509_NAME_new();
  for (size_t at = 1; at < text.size();) {
    const size_t end = std::min(text.find('/', at), text.size());
    const size_t equals = text.find('=', at);
    Require(X509_NAME_add_entry_by_txt(name, text.substr(at, equals - at).c_str(), MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(text.data()) + equals + 1,
                                       static_cast<int>(end - equals - 1), -1, 0) == 1,
            "subject " + text);
    at = end + 1;
  }
  return name;
}

void AddText(X509* certificate, int nid, const std::string& value) {
  if (value.empty()) return;
  X509V3_CTX context;
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  Holder<X509_EXTENSION, X509_EXTENSION_free> extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
  Require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

void AddOctets(X509* certificate, const std::string& oid, const std::string& hex) {
  const ByteArray octets = FromHex(hex);
  Holder<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> value(ASN1_OCTET_STRING_new());
  Holder<ASN1_OBJECT, ASN1_OBJECT_free> identifier(OBJ_txt2obj(oid.c_str(), 1));
  ASN1_OCTET_STRING_set(value.get(), octets.data(), static_cast<int>(octets.size()));
  Holder<X509_EXTENSION, X509_EXTENSION_free> extension(
      X509_EXTENSION_create_by_OBJ(nullptr, identifier.get(), 0, value.get()));
  Require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, oid);
}

void SetSerial(X509* certificate, const std::string& hex) {
  BIGNUM* number = nullptr;
  Require(BN_hex2bn(&number, hex.c_str()) != 0, hex);
  Holder<BIGNUM, BN_free> owner(number);
  Require(BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate)) != nullptr, hex);
}

}  // namespace

ByteArray MakeCertificate(const CertificateRecipe& recipe) {
  Holder<X509, X509_free> certificate(X509_new());
  Holder<X509_NAME, X509_NAME_free> name(Name(recipe.subject));
  EVP_PKEY* key = Key(recipe.key);
  Require(X509_set_version(certificate.get(), recipe.version) == 1 &&
              X509_set_subject_name(certificate.get(), name.get()) == 1 &&
              X509_set_issuer_name(certificate.get(), name.get()) == 1 &&
              X509_set_pubkey(certificate.get(), key) == 1 &&
              ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate.get()), recipe.notBefore.c_str()) == 1 &&
              ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate.get()), recipe.notAfter.c_str()) == 1,
          recipe.subject);
  SetSerial(certificate.get(), recipe.serial);
  AddText(certificate.get(), NID_key_usage, recipe.keyUsage);
  AddText(certificate.get(), NID_ext_key_usage, recipe.extendedKeyUsage);
  AddText(certificate.get(), NID_subject_alt_name, recipe.altName);
  for (const auto& [oid, hex] : recipe.extensions) AddOctets(certificate.get(), oid, hex);
  const EVP_MD* digest = recipe.key.rfind("ED", 0) == 0 ? nullptr : EVP_sha256();
  Require(X509_sign(certificate.get(), key, digest) > 0, "signature by " + recipe.key);
  unsigned char* encoded = nullptr;
  const int length = i2d_X509(certificate.get(), &encoded);
  Require(length > 0, "encoding");
  ByteArray bytes(encoded, encoded + length);
  OPENSSL_free(encoded);
  return bytes;
}

std::string DerHex(unsigned char tag, const std::string& contentsHex) {
  std::string digits;
  for (const char c : contentsHex) {
    if (c != ' ') digits += c;
  }
  const size_t length = digits.size() / 2;
  char head[16];
  std::snprintf(head, sizeof head,
                length < 128   ? "%02x%02zx"
                : length < 256 ? "%02x81%02zx"
                               : "%02x82%04zx",
                tag, length);
  return head + digits;
}

CertificateRecipe LogonRecipe() {
  CertificateRecipe recipe;
  recipe.keyUsage = "critical,digitalSignature";
  recipe.extendedKeyUsage = "1.3.6.1.4.1.311.20.2.2,clientAuth";
  recipe.altName = "otherName:1.3.6.1.4.1.311.20.2.3;UTF8:ada@example.org,email:ada@example.org";
  return recipe;
}
