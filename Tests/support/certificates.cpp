#include "certificates.h"

#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "hex.h"
#include "rsa.h"

using namespace Tavo::Framework;

namespace {

using reference::Holder;

void Require(bool done, const std::string& what) {
  if (done) return;
  std::fprintf(stderr, "test certificate: %s\n", what.c_str());
  std::abort();
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

void AddText(X509* certificate, const char* name, const std::string& value) {
  if (value.empty()) return;
  X509V3_CTX context;
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  Holder<X509_EXTENSION, X509_EXTENSION_free> extension(X509V3_EXT_conf(nullptr, &context, name, value.c_str()));
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

EVP_PKEY* CertificateKey(const std::string& kind) {
  // Reachable until the end of the program, after libcrypto has cleaned up: never freed.
  static auto& keys = *new std::map<std::string, EVP_PKEY*>;
  EVP_PKEY*& key = keys[kind];
  if (key != nullptr) return key;
  const size_t colon = std::min(kind.find(':'), kind.size());
  const std::string type = kind.substr(0, colon), size = kind.substr(std::min(colon + 1, kind.size()));
  Holder<EVP_PKEY_CTX, EVP_PKEY_CTX_free> context(EVP_PKEY_CTX_new_from_name(nullptr, type.c_str(), nullptr));
  const char* const option = type == "EC" ? "ec_paramgen_curve" : "rsa_keygen_bits";
  Require(EVP_PKEY_keygen_init(context.get()) == 1 &&
              (size.empty() || EVP_PKEY_CTX_ctrl_str(context.get(), option, size.c_str()) == 1) &&
              EVP_PKEY_generate(context.get(), &key) == 1,
          kind);
  return key;
}

ByteArray MakeCertificate(const CertificateRecipe& recipe) {
  Holder<X509, X509_free> certificate(X509_new());
  Holder<X509_NAME, X509_NAME_free> name(Name(recipe.subject));
  EVP_PKEY* key = CertificateKey(recipe.key);
  Require(X509_set_version(certificate.get(), recipe.version) == 1 &&
              X509_set_subject_name(certificate.get(), name.get()) == 1 &&
              X509_set_issuer_name(certificate.get(), name.get()) == 1 &&
              X509_set_pubkey(certificate.get(), key) == 1 &&
              ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate.get()), recipe.notBefore.c_str()) == 1 &&
              ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate.get()), recipe.notAfter.c_str()) == 1,
          recipe.subject);
  SetSerial(certificate.get(), recipe.serial);
  AddText(certificate.get(), "keyUsage", recipe.keyUsage);
  AddText(certificate.get(), "extendedKeyUsage", recipe.extendedKeyUsage);
  AddText(certificate.get(), "subjectAltName", recipe.altName);
  for (const auto& [name, value] : recipe.texts) AddText(certificate.get(), name, value);
  for (const auto& [oid, hex] : recipe.extensions) AddOctets(certificate.get(), oid, hex);
  const EVP_MD* digest = recipe.key.rfind("ED", 0) == 0 ? nullptr : EVP_sha256();
  Require(X509_sign(certificate.get(), key, digest) > 0, "signature by " + recipe.key);
  return reference::Encoded(i2d_X509, certificate.get());
}

std::string DerHex(unsigned char tag, const std::string& contentsHex) {
  const ByteArray contents = FromHex(contentsHex);
  ByteArray element{tag};
  if (contents.size() >= 128) element.push_back(contents.size() < 256 ? 0x81 : 0x82);
  if (contents.size() >= 256) element.push_back(static_cast<unsigned char>(contents.size() >> 8));
  element.push_back(static_cast<unsigned char>(contents.size()));
  return ToHex(element) + ToHex(contents);
}

CertificateRecipe LogonRecipe() {
  CertificateRecipe recipe;
  recipe.keyUsage = "critical,digitalSignature";
  recipe.extendedKeyUsage = "1.3.6.1.4.1.311.20.2.2,clientAuth";
  recipe.altName = "otherName:1.3.6.1.4.1.311.20.2.3;UTF8:ada@example.org,email:ada@example.org";
  return recipe;
}
