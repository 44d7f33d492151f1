#ifndef RZ_TESTS_RSA_H
#define RZ_TESTS_RSA_H

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <memory>

#include "tavo/framework/bytes.h"

/// Keys and certificates made by libcrypto, to compare with.
namespace reference {

using Tavo::Framework::ByteArray;

template <auto Free>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
using Rsa = std::unique_ptr<RSA, Deleter<RSA_free>>;
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Bignum = std::unique_ptr<BIGNUM, Deleter<BN_free>>;
using PrivateKeyInfo = std::unique_ptr<PKCS8_PRIV_KEY_INFO, Deleter<PKCS8_PRIV_KEY_INFO_free>>;

inline Rsa NewRsa(int bits, unsigned long exponent = 65537) {
  Rsa rsa(RSA_new());
  const Bignum e(BN_new());
  BN_set_word(e.get(), exponent);
  return RSA_generate_key_ex(rsa.get(), bits, e.get(), nullptr) == 1 ? std::move(rsa) : nullptr;
}

/// Encoded returns what one of libcrypto's i2d functions writes.
template <class T, class Encode>
ByteArray Encoded(Encode encode, T* object) {
  ByteArray bytes(static_cast<size_t>(std::max(encode(object, nullptr), 0)));
  unsigned char* to = bytes.data();
  if (!bytes.empty()) encode(object, &to);
  return bytes;
}

inline Key PkeyOf(RSA* rsa) {
  Key key(EVP_PKEY_new());
  EVP_PKEY_set1_RSA(key.get(), rsa);
  return key;
}

inline ByteArray Pkcs8Of(RSA* rsa) {
  return Encoded(i2d_PKCS8_PRIV_KEY_INFO, PrivateKeyInfo(EVP_PKEY2PKCS8(PkeyOf(rsa).get())).get());
}

/// A self-signed certificate of the key.
inline Certificate CertificateOf(EVP_PKEY* key) {
  Certificate certificate(X509_new());
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 86400);
  X509_set_pubkey(certificate.get(), key);
  X509_sign(certificate.get(), key, EVP_sha256());
  return certificate;
}

/// The number's bytes without leading zeros; least significant first in LittleEndian.
inline ByteArray BigEndian(const BIGNUM* number) {
  ByteArray bytes(static_cast<size_t>(BN_num_bytes(number)));
  BN_bn2bin(number, bytes.data());
  return bytes;
}
inline ByteArray LittleEndian(const BIGNUM* number) {
  ByteArray bytes = BigEndian(number);
  std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

}  // namespace reference

#endif
