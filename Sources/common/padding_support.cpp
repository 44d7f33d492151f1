#include "padding_support.h"

#include "tavo/owned.h"

namespace Tavo::Framework {

void RequireRoom(const Module& module, const char* operation, std::size_t messageLength, unsigned int keyLength,
                 EncodeLimit limit) {
  if (keyLength >= limit.overhead && messageLength <= keyLength - limit.overhead) return;
  LogError("%s : Data to Encode Length is invalid (%d > %d)", operation, static_cast<int>(messageLength),
           static_cast<int>(keyLength - limit.shown));
  throw module.Error(limit.line, "Data to Encode Length is invalid", CRYPTO_BAD_PARAM);
}

ByteArray RandomOctets(const Module& module, unsigned long line, std::size_t count) {
  ByteArray octets;
  const bool failed = Rewrapping(module, line, "GenerateRandom failed", [&] {
    const auto algorithm = NewAlgorithm("FIPS186DSARNG");  // borrowed by the generator, so it goes last
    const auto parameters = NewParameters();
    const auto generator = Own(RandomGenerator::Create(algorithm.get(), parameters.get()));
    generator->GenerateRandom(static_cast<int>(count), octets);
    return RandomFailed(*generator);
  });
  if (failed) throw module.Error(line, "GenerateRandom failed", CRYPTO_UNKNOWN_ERROR);
  return octets;
}

}  // namespace Tavo::Framework
