// Every allocation of the DER library. Tests replace memory.cpp to fail any one of them and to count the live blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tavo::Der {

// A block of `octets` octets, of one octet for 0; null when out of memory.
void* Allocate(uint64_t octets);
void* AllocateZeroed(uint64_t octets);
void Release(void* block);

inline void CopyOctets(void* to, const void* from, uint64_t octets) {
  if (octets != 0) memcpy(to, from, octets);
}

inline bool SameOctets(const void* a, const void* b, uint64_t octets) {
  return octets == 0 || memcmp(a, b, octets) == 0;
}

inline void Wipe(void* block, uint64_t octets) {
  if (octets != 0) explicit_bzero(block, octets);
}

// Null and 0 are fine.
inline void WipeAndRelease(void* block, uint64_t octets) {
  Wipe(block, octets);
  Release(block);
}

}  // namespace Tavo::Der
