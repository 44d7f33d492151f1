#ifndef RZ_CRYPTO_XOR_H
#define RZ_CRYPTO_XOR_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tavo::Framework {

/// XorInto changes the `size` octets at `to` by those at `mask`, eight at a time where there are eight.
inline void XorInto(unsigned char* to, const unsigned char* mask, std::size_t size) {
  std::size_t at = 0;
  for (std::uint64_t a = 0, b = 0; size - at >= sizeof a; at += sizeof a) {
    std::memcpy(&a, to + at, sizeof a);
    std::memcpy(&b, mask + at, sizeof b);
    a ^= b;
    std::memcpy(to + at, &a, sizeof a);
  }
  for (; at < size; ++at) to[at] = static_cast<unsigned char>(to[at] ^ mask[at]);
}

}  // namespace Tavo::Framework

#endif
