#ifndef RZ_TESTS_NAIVE_PADDING_H
#define RZ_TESTS_NAIVE_PADDING_H

#include <openssl/sha.h>

#include <algorithm>
#include <optional>
#include <vector>

/// Decoders of RSA blocks as one would write them first: octet by octet, out at the first fault. A second opinion for
/// the fuzz target, and, since they leak all that they touch, what the check of secret-independence must refuse.
namespace Naive {

using Octets = std::vector<unsigned char>;
using Decoded = std::optional<Octets>;  // nothing for a block that is refused

inline Octets From(const Octets& octets, size_t at) {
  return Octets(octets.begin() + static_cast<long>(at), octets.end());
}

inline Decoded Pkcs1(const Octets& block, size_t k) {
  if (block.size() != k || k < 2 || block[0] != 0 || block[1] != 2) return std::nullopt;
  for (size_t i = 2; i + 1 < k; ++i) {
    if (block[i] != 0) continue;
    if (i < 10) return std::nullopt;
    return From(block, i + 1);
  }
  return std::nullopt;
}

inline Octets Sha1(const Octets& data) {
  Octets hash(20);
  SHA1(data.data(), data.size(), hash.data());
  return hash;
}

inline Octets Mgf1(const Octets& seed, size_t length) {
  Octets mask;
  for (unsigned int counter = 0; mask.size() < length; ++counter) {
    Octets input = seed;
    for (int shift = 24; shift >= 0; shift -= 8) input.push_back(static_cast<unsigned char>(counter >> shift));
    const Octets hash = Sha1(input);
    mask.insert(mask.end(), hash.begin(), hash.end());
  }
  mask.resize(length);
  return mask;
}

inline Octets Xor(Octets a, const Octets& b) {
  for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<unsigned char>(a[i] ^ b[i]);
  return a;
}

/// A block of the standard's layout around any DB.
inline Octets OaepBlock(unsigned char first, const Octets& seed, const Octets& db) {
  const Octets maskedDb = Xor(db, Mgf1(seed, db.size()));
  const Octets maskedSeed = Xor(seed, Mgf1(maskedDb, seed.size()));
  Octets block(1 + seed.size() + db.size(), first);
  std::copy(maskedSeed.begin(), maskedSeed.end(), block.begin() + 1);
  std::copy_backward(maskedDb.begin(), maskedDb.end(), block.end());
  return block;
}

inline Decoded Oaep(const Octets& block, size_t k, const Octets& label) {
  if (block.size() != k || k < 42 || block[0] != 0) return std::nullopt;
  const Octets maskedDb = From(block, 21);
  const Octets seed = Xor(Octets(block.begin() + 1, block.begin() + 21), Mgf1(maskedDb, 20));
  const Octets db = Xor(maskedDb, Mgf1(seed, maskedDb.size()));
  const Octets labelHash = Sha1(label);
  if (!std::equal(labelHash.begin(), labelHash.end(), db.begin())) return std::nullopt;
  size_t at = 21;
  while (at < db.size() && db[at] == 0) ++at;
  if (at == db.size() || db[at] != 1) return std::nullopt;
  return From(db, at + 1);
}

inline Decoded X931(const Octets& block, size_t k) {
  if (block.size() != k || k < 12 || block[0] != 0x6b || block[k - 1] != 0xcc || block[1] == 0xba) return std::nullopt;
  size_t end = 2;
  while (end <= k - 2 && block[end] != 0xba) ++end;
  if (end > k - 3 || end < 11) return std::nullopt;
  Octets hash = From(block, end + 1);
  hash.resize(hash.size() - 2);
  return hash;
}

}  // namespace Naive

#endif
