#ifndef TAVO_FRAMEWORK_RANDOM_H
#define TAVO_FRAMEWORK_RANDOM_H

#include "tavo/framework/key.h"

namespace Tavo::Framework {

class ICryptoParserParameterMap;

/// RandomGenerator gives bytes of libcrypto's random generator, whatever the algorithm. The first generator of a
/// process whose pool has no entropy seeds it from the clock, which is a last resort for systems without an entropy
/// source and makes no secret worth the name.
///
/// When the source fails, GenerateRandom and GenerateGUID log the error and return as usual: ask RandomFailed before
/// the bytes become a secret.
class RZ_CRYPTO_API RandomGenerator {
 public:
  /// Create returns a new generator that borrows `algorithm`, which is not looked at and must outlive the generator;
  /// `parameters` is read here only. The caller deletes the generator.
  /// Throws 4000 "pAlgorithm should not be NULL" or "Bad Parameters" for a null argument, 4011 in FIPS mode.
  static RandomGenerator* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~RandomGenerator() = default;
  /// GetAlgorithm returns the pointer given to Create.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// SetSeed mixes `seed` into the pool of the whole process; it adds to what is there and counts as no entropy.
  /// Throws 4000 "seed should not be empty".
  virtual void SetSeed(const ByteArray& seed) = 0;
  /// GenerateRandom resizes `out` to `count` bytes and fills it. When the source fails, `out` has its new size and
  /// holds what it held before, zeros where it grew. Throws 4000 "Bad Parameters" for a negative count.
  virtual void GenerateRandom(int count, ByteArray& out) = 0;
};

/// GUIDGenerator gives identifiers of 16 random bytes. No version or variant bits are set: they are not UUIDs of
/// RFC 4122.
class RZ_CRYPTO_API GUIDGenerator {
 public:
  /// Create returns a new generator. The caller deletes it.
  static GUIDGenerator* Create();

  virtual ~GUIDGenerator() = default;
  /// GenerateGUID resizes `out` to 16 bytes and fills it; a failing source is treated as in GenerateRandom.
  virtual void GenerateGUID(ByteArray& out) = 0;
};

/// RandomFailed returns whether the source failed in the generator's last call, so that the bytes it left are not
/// random; false before the first call. It is true as well for a generator that is not of this library.
RZ_CRYPTO_API bool RandomFailed(const RandomGenerator& generator);
RZ_CRYPTO_API bool RandomFailed(const GUIDGenerator& generator);

/// KeyGenerator makes secret keys of random bytes.
class RZ_CRYPTO_API KeyGenerator {
 public:
  /// Create returns a new generator of keys for `algorithm`, which it borrows and each key clones; any name is
  /// accepted. `parameters` is read here only. The caller deletes the generator.
  /// Throws what RandomGenerator::Create throws.
  static KeyGenerator* Create(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);

  virtual ~KeyGenerator() = default;
  /// GetAlgorithm returns the pointer given to Create.
  virtual IAlgorithm* GetAlgorithm() = 0;
  /// GenerateKey returns a new key of `keySize` random bytes, no parity bits adjusted, that the caller deletes. Returns
  /// null, after logging an error, for a size of 0 and when the random source fails.
  /// Throws 4003 "malloc failure" for a negative size or without memory, 4003 "page size too small" and "mlock failed"
  /// as ISecretKey says.
  virtual ISecretKey* GenerateKey(int keySize) = 0;
  /// The second GenerateKey throws 4001 "Not Implemented".
  virtual ISecretKey* GenerateKey(int keySize, const ByteArray& data) = 0;
};

}  // namespace Tavo::Framework

#endif
