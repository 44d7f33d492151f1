#ifndef RZ_BENCHMARKS_WHOLE_LIFE_H
#define RZ_BENCHMARKS_WHOLE_LIFE_H

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "tavo/owned.h"

/// What the benchmarks of keyed services share. Each contender is one whole life: everything from nothing to the
/// result, the key alone being there already, as bytes and as the library's own object.
namespace lives {

using namespace Tavo::Framework;

using Life = void (*)(const ByteArray& message, ByteArray& out);

inline void Run(benchmark::State& state, Life life) {
  const ByteArray message(static_cast<size_t>(state.range(0)), 0x5a);
  ByteArray out;
  for (auto _ : state) {
    life(message, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

/// The least of the repetitions is what the code costs; the rest is what else the machine did.
inline void Least(benchmark::internal::Benchmark* benchmark) {
  benchmark->ComputeStatistics(
      "least", [](const std::vector<double>& times) { return *std::min_element(times.begin(), times.end()); });
}

inline void Sizes(benchmark::internal::Benchmark* benchmark) {
  Least(benchmark);
  for (const int64_t size : {64, 1 << 10, 64 << 10, 16 << 20}) benchmark->Arg(size);
}

/// The floor that the contract allows: what anybody would write to hold the whole message in wiping memory.
inline ByteArray Collected(const ByteArray& message) {
  ByteArray collected(message.size());
  std::memcpy(collected.data(), message.data(), message.size());
  return collected;
}

inline const unsigned char kKey[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                       0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};

inline IKey* Key() {
  static const auto key = Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", ByteArray(kKey, kKey + sizeof kKey)));
  return key.get();
}

template <auto Free>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Deleter<EVP_CIPHER_CTX_free>>;

}  // namespace lives

#endif
