#include "rz.openssl.random.h"

#include <openssl/rand.h>
#include <string.h>

#include <cstdlib>
#include <ctime>

#include "../common/rz.crypto.trace.h"
#include "rz.openssl.errors.h"

namespace Tavo::Framework {

namespace {

constexpr int kSeedValues = 16;
constexpr int kSeedRounds = 1000;  // a source that is never content must not hang its caller

}  // namespace

void SeedUnseededPool() {
  const OpensslErrors errors;
  if (RAND_status() == 1) return;
  std::srand(static_cast<unsigned int>(std::time(nullptr)));
  int seed[kSeedValues];
  for (int round = 0; round < kSeedRounds; ++round) {
    for (int& value : seed) value = std::rand();
    RAND_seed(seed, sizeof seed);
    if (RAND_status() == 1) break;
  }
  explicit_bzero(seed, sizeof seed);
}

bool FillRandomly(unsigned char* out, int count, const char* operation) {
  const OpensslErrors errors;
  if (RAND_bytes(out, count) == 1) return true;
  const OpensslError error = errors.First();
  LogError("%s : RAND_bytes failed with error 0x%x (%s)", operation, error.code, error.text);
  return false;
}

}  // namespace Tavo::Framework
