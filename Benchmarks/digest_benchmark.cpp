// SHA-256 through the library beside direct libcrypto. The floor that the contract allows is libcrypto after the same
// collecting into a wiping vector: the whole message is held until the digest is taken.

#include <benchmark/benchmark.h>
#include <openssl/sha.h>

#include <algorithm>
#include <cstring>

#include "rz/log.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

constexpr size_t kUpdate = 4096;

ByteArray Message(const benchmark::State& state) { return ByteArray(static_cast<size_t>(state.range(0)), 0x5a); }

void Direct(benchmark::State& state) {
  const ByteArray message = Message(state);
  unsigned char hash[SHA256_DIGEST_LENGTH];
  for (auto _ : state) {
    SHA256_CTX context;
    SHA256_Init(&context);
    SHA256_Update(&context, message.data(), message.size());
    SHA256_Final(hash, &context);
    benchmark::DoNotOptimize(hash);
  }
}

/// What anybody would write: grow by doubling as a vector does, then copy.
void Collect(ByteArray& collected, const unsigned char* data, size_t size) {
  const size_t held = collected.size();
  if (size > collected.capacity() - held) collected.reserve(std::max(held + size, 2 * collected.capacity()));
  collected.resize(held + size);
  std::memcpy(collected.data() + held, data, size);
}

void HashInto(const ByteArray& collected, ByteArray& out) {
  SHA256_CTX context;
  out.resize(SHA256_DIGEST_LENGTH);
  SHA256_Init(&context);
  SHA256_Update(&context, collected.data(), collected.size());
  SHA256_Final(out.data(), &context);
}

/// Collects into a vector that is kept, as an existing object does.
void Floor(benchmark::State& state) {
  const ByteArray message = Message(state);
  ByteArray collected;
  ByteArray out;
  for (auto _ : state) {
    Collect(collected, message.data(), message.size());
    HashInto(collected, out);
    collected.clear();
    benchmark::DoNotOptimize(out.data());
  }
}

/// Collects into a new vector each time, as a whole life does.
void FloorWholeLife(benchmark::State& state) {
  const ByteArray message = Message(state);
  ByteArray out;
  for (auto _ : state) {
    ByteArray collected;
    Collect(collected, message.data(), message.size());
    HashInto(collected, out);
    benchmark::DoNotOptimize(out.data());
  }
}

void FloorInUpdates(benchmark::State& state) {
  const ByteArray message = Message(state);
  ByteArray out;
  for (auto _ : state) {
    ByteArray collected;
    for (size_t at = 0; at < message.size(); at += kUpdate) {
      Collect(collected, message.data() + at, std::min(kUpdate, message.size() - at));
    }
    HashInto(collected, out);
    benchmark::DoNotOptimize(out.data());
  }
}

struct Service {
  Owned<IAlgorithm> algorithm = NewAlgorithm("SHA256");
  Owned<ICryptoParserParameterMap> parameters = NewParameters();
  Owned<MessageDigest> Create() const { return Own(MessageDigest::Create(algorithm.get(), parameters.get())); }
};

void OursExisting(benchmark::State& state) {
  const ByteArray message = Message(state);
  const Service service;
  const auto digest = service.Create();
  ByteArray out;
  for (auto _ : state) {
    digest->Update(message);
    digest->Digest(out);
    benchmark::DoNotOptimize(out.data());
  }
}

void OursWholeLife(benchmark::State& state) {
  const ByteArray message = Message(state);
  const Service service;
  ByteArray out;
  for (auto _ : state) {
    const auto digest = service.Create();
    digest->Update(message);
    digest->Digest(out);
    benchmark::DoNotOptimize(out.data());
  }
}

/// A message given to Digest at once is hashed where it is.
void OursOneCall(benchmark::State& state) {
  const ByteArray message = Message(state);
  const Service service;
  const auto digest = service.Create();
  ByteArray out;
  for (auto _ : state) {
    digest->Digest(message, out);
    benchmark::DoNotOptimize(out.data());
  }
}

void OursInUpdates(benchmark::State& state) {
  const ByteArray message = Message(state);
  const Service service;
  ByteArray chunk(std::min(kUpdate, message.size()), 0x5a);
  ByteArray out;
  for (auto _ : state) {
    const auto digest = service.Create();
    for (size_t at = 0; at < message.size(); at += chunk.size()) digest->Update(chunk);
    digest->Digest(out);
    benchmark::DoNotOptimize(out.data());
  }
}

/// What every operation of the library pays for a line that nobody reads, and what a caller who does not ask pays.
void LogDisabledAsked(benchmark::State& state) {
  for (auto _ : state) {
    if (rzlogIsEnabled(8) != 0) rzlogLog("CRYPTO", 8, "%s : this=%#x", "COpensslMessageDigest::Update", 0x1234U);
    benchmark::ClobberMemory();
  }
}

void LogDisabled(benchmark::State& state) {
  for (auto _ : state) rzlogLog("CRYPTO", 8, "%s : this=%#x", "COpensslMessageDigest::Update", 0x1234U);
}

void DiscardSink(void*, const char*, unsigned long, const char* line) { benchmark::DoNotOptimize(line); }

void LogEnabled(benchmark::State& state) {
  rzlogSetSink(DiscardSink, nullptr);
  rzlogSetLevels(1UL << 8);
  for (auto _ : state) rzlogLog("CRYPTO", 8, "%s : this=%#x", "COpensslMessageDigest::Update", 0x1234U);
  rzlogSetSink(nullptr, nullptr);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  for (const int64_t size : {64, 1 << 10, 64 << 10, 16 << 20}) benchmark->Arg(size);
}

BENCHMARK(Direct)->Apply(Sizes);
BENCHMARK(Floor)->Apply(Sizes);
BENCHMARK(OursExisting)->Apply(Sizes);
BENCHMARK(OursOneCall)->Apply(Sizes);
BENCHMARK(FloorWholeLife)->Apply(Sizes);
BENCHMARK(OursWholeLife)->Apply(Sizes);
BENCHMARK(FloorInUpdates)->Apply(Sizes);
BENCHMARK(OursInUpdates)->Apply(Sizes);
BENCHMARK(LogDisabledAsked);
BENCHMARK(LogDisabled);
BENCHMARK(LogEnabled);

}  // namespace
