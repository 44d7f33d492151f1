#include "rz.crypto.random.h"

#include "tavo/framework/random.h"

namespace Tavo::Framework {

namespace {

/// Nothing is known of a generator from elsewhere, so it counts as failed.
template <class Generator>
bool Failed(const Generator& generator) {
  const auto* outcome = dynamic_cast<const RandomOutcome*>(&generator);
  return outcome == nullptr || outcome->failed();
}

}  // namespace

bool RandomFailed(const RandomGenerator& generator) { return Failed(generator); }

bool RandomFailed(const GUIDGenerator& generator) { return Failed(generator); }

}  // namespace Tavo::Framework
