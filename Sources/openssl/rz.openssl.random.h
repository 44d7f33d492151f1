#ifndef RZ_OPENSSL_RANDOM_H
#define RZ_OPENSSL_RANDOM_H

namespace Tavo::Framework {

/// SeedUnseededPool does nothing when libcrypto's pool has entropy. Otherwise, as a last resort for systems without an
/// entropy source, it feeds the pool with rand() values, seeded from the clock, until the pool is content or a thousand
/// rounds are over.
void SeedUnseededPool();

/// FillRandomly fills `count` bytes at `out` and returns true. When the source fails it writes the error line of
/// `operation` and returns false; the bytes are then as the source left them.
bool FillRandomly(unsigned char* out, int count, const char* operation);

}  // namespace Tavo::Framework

#endif
