#ifndef TAVO_FRAMEWORK_SIGNATURE_H
#define TAVO_FRAMEWORK_SIGNATURE_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;
class ICryptoParserParameterMap;
class IPrivateKey;
class IPublicKey;

/// Signature verifies RSA signatures (RFC 8017): it opens the signature with the public key and compares what was under
/// the padding with the collected data, byte for byte. It hashes nothing: for a PKCS #1 v1.5 signature the data is the
/// DER encoding of the DigestInfo, for "None" the whole block of the modulus's length.
///
/// One Init for the life of an object, any number of Update and Verify. Data is never dropped: each Verify compares
/// with everything collected so far. The padding, "PKCS1" or "None" (default), is read from the parameter map at each
/// Verify. Signing is not available; the card does that. One thread at a time.
class RZ_CRYPTO_API Signature {
 public:
  /// Create returns a new signature object. It borrows both arguments; the algorithm's name is not looked at. The
  /// caller deletes it. Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in
  /// FIPS mode.
  static Signature* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~Signature() = default;
  /// GetAlgorithm lends the algorithm that Create was given.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// Init for signing always throws: 4000 "pPrivateKey should not be NULL", 4009 "Signature is already initialized",
  /// else 4001 "Not Implemented".
  virtual void Init(IPrivateKey* key) = 0;
  /// Init starts verifying under `key`, which is borrowed as long as the object lives and not looked at before Verify.
  /// Throws 4000 "pPublicKey should not be NULL", 4009 "Signature is already initialized".
  virtual void Init(IPublicKey* key) = 0;
  /// Sign always throws: 4009 "Signature is not initialized", else 4000 "Invalid operation".
  virtual void Sign(const ByteArray& data, ByteArray& signature) = 0;
  virtual void Sign(ByteArray& signature) = 0;
  /// Update appends `data`. Throws 4009 "Signature is not initialized".
  virtual void Update(const ByteArray& data) = 0;
  /// Verify appends `data`, which stays, and does what the other Verify does.
  virtual bool Verify(const ByteArray& data, const ByteArray& signature) = 0;
  /// Verify returns whether `signature` has the modulus's length, opens under the key and the padding, and holds
  /// exactly the collected data. Throws 4009 "Signature is not initialized", 4007 "Unsupported padding", 4002 "Only
  /// Openssl RSA Public keys are supported" or "pRSAPublicKey is NULL" for a key that is none of this library's or
  /// holds no number.
  virtual bool Verify(const ByteArray& signature) = 0;
};

}  // namespace Tavo::Framework

#endif
