#ifndef TAVO_FRAMEWORK_DIGEST_H
#define TAVO_FRAMEWORK_DIGEST_H

#include "rz/cext.h"

namespace Tavo::Framework {

class IAlgorithm;
class ICryptoParserParameterMap;

/// MessageDigest computes hashes: SHA-1, SHA-224, SHA-256, SHA-384, SHA-512 (FIPS 180-4) and MD5 (RFC 1321).
///
/// One object hashes one message after the other: any number of Update, then Digest, which ends the message and starts
/// an empty one. The whole message is held in wiping memory until Digest. One thread at a time.
class RZ_CRYPTO_API MessageDigest {
 public:
  /// Create returns a new digest for `algorithm`, of which it keeps a clone; `parameters` is read here only. The
  /// caller deletes the digest. An algorithm that is no digest is refused by Digest and GetDigestLength, not here.
  /// Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS mode.
  static MessageDigest* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~MessageDigest() = default;
  /// GetAlgorithm lends the digest's own algorithm object.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// GetDigestLength returns the length of the hash in bytes. Throws 4006 "Unsupported algorithm".
  virtual unsigned long GetDigestLength() = 0;
  /// Digest appends `data` to the message and ends it as the other Digest does. `data` and `digest` may be the same
  /// array. Whatever that one throws is wrapped into "Digest failed" with the same identifier; `data` stays appended.
  virtual void Digest(const ByteArray& data, ByteArray& digest) = 0;
  /// Digest ends the message and writes its hash into `digest`, resized to GetDigestLength() bytes.
  /// Throws 4006 "Unsupported algorithm"; the message is then still there.
  virtual void Digest(ByteArray& digest) = 0;
  /// Update appends `data` to the message.
  virtual void Update(const ByteArray& data) = 0;
};

}  // namespace Tavo::Framework

#endif
