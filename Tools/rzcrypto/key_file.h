#ifndef RZCRYPTO_KEY_FILE_H
#define RZCRYPTO_KEY_FILE_H

#include "encoding.h"
#include "tavo/owned.h"

namespace rzcrypto {

/// A key as it was found in an input.
struct KeyFile {
  enum class Kind { kPrivate, kPublic, kSecret };

  Kind kind;
  const char* encoding;  // "PKCS #8", "PKCS #1", "certificate", "SubjectPublicKeyInfo", "raw"
  Tavo::Framework::Owned<Tavo::Framework::IKey> key;
};

/// ReadKey tells by content what `block` holds: an RSA key as PKCS #8 PrivateKeyInfo, PKCS #1 RSAPrivateKey or
/// RSAPublicKey, SubjectPublicKeyInfo or in a certificate; or else the bytes of a secret key, whose algorithm is then
/// "AES". Throws Failure kNotSupported for an encrypted key and for one of another kind than RSA, kBadInput for what is
/// no key.
KeyFile ReadKey(const Block& block);

/// TrailingSize returns how many bytes follow the DER element that `bytes` begin with; 0 when they are none.
size_t TrailingSize(const ByteArray& bytes);

/// RawKey makes a secret key of the bytes, whatever they look like; its algorithm is "AES". Throws Failure kBadInput
/// for none and for more than 4096.
KeyFile RawKey(const ByteArray& bytes);

/// The public numbers of an RSA key, most significant byte first, without zeros in front.
struct RsaNumbers {
  ByteArray modulus;
  ByteArray exponent;
};
RsaNumbers PublicNumbers(const KeyFile& file);

/// SubjectPublicKeyInfo returns the DER SubjectPublicKeyInfo (RFC 5280, 4.1) of the numbers: what the same key has in
/// every certificate.
ByteArray SubjectPublicKeyInfo(const RsaNumbers& numbers);

/// RsaPublicKey returns the DER RSAPublicKey (RFC 8017, A.1.1) of the numbers.
ByteArray RsaPublicKey(const RsaNumbers& numbers);

}  // namespace rzcrypto

#endif
