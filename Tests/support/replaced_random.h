#ifndef RZ_TESTS_REPLACED_RANDOM_H
#define RZ_TESTS_REPLACED_RANDOM_H

#include <openssl/rand.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "tavo/framework/bytes.h"

/// ReplacedRandom is libcrypto's random source while it lives: one that fails and leaves its output alone, and whose
/// pool is content after `seedsNeeded` seeds, or one that gives the same octets in each call. One at a time.
class ReplacedRandom {
 public:
  static constexpr int kNeverContent = INT_MAX;

  explicit ReplacedRandom(int seedsNeeded = 0) : m_before(RAND_get_rand_method()) {
    s_seedsNeeded = seedsNeeded;
    s_seeds.clear();
    s_octets.clear();
    RAND_set_rand_method(&kMethod);
  }
  /// Each call gives the beginning of `octets`; it fails when it wants more of them.
  explicit ReplacedRandom(const Tavo::Framework::ByteArray& octets) : ReplacedRandom() { s_octets = octets; }
  ReplacedRandom(const ReplacedRandom&) = delete;
  ReplacedRandom& operator=(const ReplacedRandom&) = delete;
  ~ReplacedRandom() { RAND_set_rand_method(m_before); }
  /// The sizes of the seeds received, in bytes.
  static const std::vector<int>& seeds() { return s_seeds; }

 private:
  static int Seed(const void*, int size) {
    s_seeds.push_back(size);
    return 1;
  }
  static int Bytes(unsigned char* out, int count) {
    if (s_octets.size() < static_cast<size_t>(count) || s_octets.empty()) return 0;
    std::copy_n(s_octets.begin(), count, out);
    return 1;
  }
  static int Status() { return static_cast<int>(s_seeds.size()) >= s_seedsNeeded ? 1 : 0; }

  static constexpr RAND_METHOD kMethod = {Seed, Bytes, nullptr, nullptr, Bytes, Status};
  static inline int s_seedsNeeded = 0;
  static inline std::vector<int> s_seeds;
  static inline Tavo::Framework::ByteArray s_octets;
  const RAND_METHOD* m_before;
};

#endif
