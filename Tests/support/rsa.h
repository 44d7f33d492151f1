#ifndef RZ_TESTS_RSA_H
#define RZ_TESTS_RSA_H

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <memory>

#include "tavo/framework/rsa.h"
#include "tavo/owned.h"

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
template <class T, auto Free>
using Holder = std::unique_ptr<T, Deleter<Free>>;
using Rsa = Holder<RSA, RSA_free>;
using Key = Holder<EVP_PKEY, EVP_PKEY_free>;
using Certificate = Holder<X509, X509_free>;
using Bignum = Holder<BIGNUM, BN_free>;
using PrivateKeyInfo = Holder<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free>;

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

/// The certificate as libcrypto reads it; null when it does not.
inline Certificate Parsed(const ByteArray& encoded) {
  const unsigned char* cursor = encoded.data();
  return Certificate(d2i_X509(nullptr, &cursor, static_cast<long>(encoded.size())));
}

/// The private key that libcrypto reads; null when it does not.
inline Key ParsedKey(const ByteArray& encoded) {
  const unsigned char* cursor = encoded.data();
  return Key(d2i_AutoPrivateKey(nullptr, &cursor, static_cast<long>(encoded.size())));
}

inline Key PkeyOf(RSA* rsa) {
  Key key(EVP_PKEY_new());
  EVP_PKEY_set1_RSA(key.get(), rsa);
  return key;
}

inline ByteArray Pkcs8Of(RSA* rsa) {
  return Encoded(i2d_PKCS8_PRIV_KEY_INFO, PrivateKeyInfo(EVP_PKEY2PKCS8(PkeyOf(rsa).get())).get());
}

/// The number's bytes without leading zeros; least significant first in LittleEndian.
inline ByteArray BigEndian(const BIGNUM* number) {
  ByteArray bytes(static_cast<size_t>(BN_num_bytes(number)));
  BN_bn2bin(number, bytes.data());
  return bytes;
}
inline ByteArray LittleEndian(const BIGNUM* number) {
  const ByteArray bytes = BigEndian(number);
  return {bytes.rbegin(), bytes.rend()};
}
inline Bignum Number(const ByteArray& bigEndian) {
  return Bignum(BN_bin2bn(bigEndian.data(), static_cast<int>(bigEndian.size()), nullptr));
}

/// A key pair that libcrypto made, as libcrypto's and as the framework's.
struct Pair {
  explicit Pair(int bits) : rsa(NewRsa(bits)), pkey(PkeyOf(rsa.get())), size(static_cast<size_t>(RSA_size(rsa.get()))) {
    const auto algorithm = Tavo::Framework::NewAlgorithm("RSA");
    publicKey = Tavo::Framework::Own(Tavo::Framework::IRSAPublicKey::Create(
        algorithm.get(), LittleEndian(RSA_get0_n(rsa.get())), LittleEndian(RSA_get0_e(rsa.get()))));
    privateKey = Tavo::Framework::Own(Tavo::Framework::IKey::Create(algorithm.get(), "PKCS8", Pkcs8Of(rsa.get())));
  }
  Rsa rsa;
  Key pkey;
  size_t size;  // of the modulus
  Tavo::Framework::Owned<Tavo::Framework::IRSAPublicKey> publicKey;
  Tavo::Framework::Owned<Tavo::Framework::IKey> privateKey;
};
inline const Pair& SmallPair() {
  static const Pair pair(1024);
  return pair;
}

}  // namespace reference

#endif
