#include "rz.crypto.openssl.Random.h"

#include <openssl/rand.h>

#include <climits>

#include "../common/rz.crypto.trace.h"
#include "rz.openssl.random.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.Random"};

constexpr int kGuidLength = 16;  // bytes

}  // namespace

COpensslRandomGenerator::COpensslRandomGenerator(IAlgorithm* algorithm) : m_pAlgorithm(algorithm) {
  Traced("COpensslRandomGenerator::COpensslRandomGenerator", this, [] { SeedUnseededPool(); });
}

COpensslRandomGenerator::~COpensslRandomGenerator() {
  Traced("COpensslRandomGenerator::~COpensslRandomGenerator", this, [] {});
}

void COpensslRandomGenerator::SetSeed(const ByteArray& seed) {
  Traced("COpensslRandomGenerator::SetSeed", this, [&] {
    if (seed.empty()) {
      LogStep("COpensslRandomGenerator::SetSeed : seed should not be empty");
      throw kModule.Error(74, "seed should not be empty", CRYPTO_BAD_PARAM);
    }
    if (seed.size() > INT_MAX) throw kModule.Error(__LINE__, "Bad Parameters", CRYPTO_BAD_PARAM);
    RAND_seed(seed.data(), static_cast<int>(seed.size()));
  });
}

void COpensslRandomGenerator::GenerateRandom(int count, ByteArray& out) {
  Traced("COpensslRandomGenerator::GenerateRandom", this, [&] {
    if (count < 0) throw kModule.Error(__LINE__, "Bad Parameters", CRYPTO_BAD_PARAM);
    out.resize(static_cast<size_t>(count));
    NoteFilled(FillRandomly(out.data(), count, "COpensslRandomGenerator::GenerateRandom"));
  });
}

COpensslGUIDGenerator::COpensslGUIDGenerator() {
  Traced("COpensslGUIDGenerator::COpensslGUIDGenerator", this, [] {});
}

COpensslGUIDGenerator::~COpensslGUIDGenerator() {
  Traced("COpensslGUIDGenerator::~COpensslGUIDGenerator", this, [] {});
}

void COpensslGUIDGenerator::GenerateGUID(ByteArray& out) {
  Traced("COpensslGUIDGenerator::GenerateGUID", this, [&] {
    out.resize(kGuidLength);
    NoteFilled(FillRandomly(out.data(), kGuidLength, "COpensslGUIDGenerator::GenerateGUID"));
  });
}

}  // namespace Tavo::Framework
