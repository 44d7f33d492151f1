#ifndef TAVO_FRAMEWORK_KEY_H
#define TAVO_FRAMEWORK_KEY_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;

/// IKey is a key of any kind. It never changes after its creation.
class RZ_CRYPTO_API IKey {
 public:
  /// Create returns a new key of `algorithm`, of which it keeps a clone, from its encoding:
  ///
  ///   algorithm             format    encoded                                                    result
  ///   "DES", "3DES", "AES"  "RAW"     the key's bytes, any number from 0 to one page             ISecretKey
  ///   "RSA"                 "PKCS8"   DER PrivateKeyInfo (RFC 5208) with an RSAPrivateKey        IRSAPrivateCRTKey
  ///   "RSA"                 "X509"    DER certificate, of which the RSA key is taken             IRSAPublicKey
  ///
  /// Neither the length of a secret key nor the consistency of an RSA key is checked. A key for HMAC is made under one
  /// of the three cipher names. The caller deletes the key.
  /// Throws 4000 "pAlgorithm should not be NULL"; 4002 "Only raw key format is supported" or "Unsupported format"; 4006
  /// "Unsupported algorithm"; and what the key itself refuses: see ISecretKey, IRSAPublicKey, IRSAPrivateCRTKey.
  static IKey* Create(IAlgorithm* algorithm, SecureString format, const ByteArray& encoded);

  virtual ~IKey() = default;
  /// Clone returns an independent copy. The caller deletes it. Throws what creating such a key throws.
  virtual IKey* Clone() const = 0;
  /// GetAlgorithm lends the key's own algorithm object.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// GetFormat returns "RAW" for secret keys, "X509" for RSA public keys and "PKCS8" for RSA private keys. What
  /// GetEncoded writes for a public key is a PKCS #1 RSAPublicKey all the same, not a certificate.
  virtual SecureString GetFormat() = 0;
  /// GetEncoded assigns the key's encoding, in the clear.
  virtual void GetEncoded(ByteArray& encoded) = 0;
};

/// ISecretKey is a symmetric key. Its bytes lie masked in one page of memory of their own, which is locked against
/// swapping and zeroed before it is released; in the clear they exist only in what GetEncoded assigns. Each key costs a
/// whole page of what RLIMIT_MEMLOCK allows the process.
/// Creating one throws 4003 "page size too small" for more bytes than a page holds, 4003 "mlock failed" when the system
/// locks no more memory. The page that could not be locked stays allocated then: one page for each such failure.
class RZ_CRYPTO_API ISecretKey : public IKey {};

/// IPublicKey is the public half of a key pair, which encrypts and verifies. It adds nothing to IKey; every one that
/// this library makes is an IRSAPublicKey.
class RZ_CRYPTO_API IPublicKey : public IKey {};

/// IPrivateKey is the private half of a key pair, which decrypts. It adds nothing to IKey; every one that this library
/// makes is an IRSAPrivateCRTKey.
class RZ_CRYPTO_API IPrivateKey : public IKey {};

/// ISharedSecret is the result of a key agreement. Every object of it is a CSoftSharedSecret.
class RZ_CRYPTO_API ISharedSecret {
 public:
  /// Create returns a new holder of a copy of `secret`. The caller deletes it.
  static ISharedSecret* Create(const ByteArray& secret);
  virtual ~ISharedSecret() = default;
};

/// CSoftSharedSecret holds a shared secret in wiping memory, which is not locked against swapping.
class RZ_CRYPTO_API CSoftSharedSecret : public ISharedSecret {
 public:
  /// CSoftSharedSecret copies `secret`, of any length, empty too.
  explicit CSoftSharedSecret(const ByteArray& secret);
  CSoftSharedSecret(const CSoftSharedSecret&) = delete;
  CSoftSharedSecret& operator=(const CSoftSharedSecret&) = delete;
  ~CSoftSharedSecret() override;

  /// GetSharedSecret lends the bytes, which live as long as the object.
  const ByteArray& GetSharedSecret() const { return m_baSecret; }

 private:
  ByteArray m_baSecret;
};

}  // namespace Tavo::Framework

#endif
