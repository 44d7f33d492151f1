// The BER-TLV buffer at three sizes, the largest 200,000 objects of 20 bytes, 4 MB. Everything is linear: the time for
// an object (per_object) is the same at each size. BM_Copy of the same bytes tells what memory alone costs.

#include <benchmark/benchmark.h>

#include <cstring>

#include "tavo/bertlv.h"

using namespace Tavo::Framework;

namespace {

const ByteArray kTags[] = {{0x5f, 0x20}, {0x5f, 0x21}};
const ByteArray kAbsent = {0x5f, 0x22};
const ByteArray kValue(17, 0x41);

void Fill(BERTLVBuffer& buffer, int64_t count) {
  for (int64_t i = 0; i < count; ++i) buffer.AppendValue(kTags[i % 2], kValue);
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (const int64_t count : {50'000, 100'000, 200'000}) b->Arg(count);
  b->Unit(benchmark::kMicrosecond);
}

/// Runs `body` on a full buffer, made anew outside the measured time when `body` changes it.
template <class Body>
void Measure(benchmark::State& state, bool changes, Body&& body) {
  BERTLVBuffer full;
  Fill(full, state.range(0));
  BERTLVBuffer buffer(full);
  for (auto _ : state) {
    body(buffer);
    if (!changes) continue;
    state.PauseTiming();
    buffer = full;
    state.ResumeTiming();
  }
  state.counters["per_object"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_Copy(benchmark::State& state) {
  ByteArray to(static_cast<size_t>(state.range(0)) * 20);
  Measure(state, false, [&](BERTLVBuffer& buffer) {
    memcpy(to.data(), static_cast<const ByteArray&>(buffer).data(), to.size());
    benchmark::ClobberMemory();
  });
}
BENCHMARK(BM_Copy)->Apply(Sizes);

void BM_AppendAll(benchmark::State& state) {
  Measure(state, false, [&](BERTLVBuffer&) {
    BERTLVBuffer fresh;
    Fill(fresh, state.range(0));
    benchmark::DoNotOptimize(fresh);
  });
}
BENCHMARK(BM_AppendAll)->Apply(Sizes);

void BM_SetBuffer(benchmark::State& state) {
  Measure(state, false, [](BERTLVBuffer& buffer) { buffer.SetBuffer(buffer); });
}
BENCHMARK(BM_SetBuffer)->Apply(Sizes);

void BM_LookUpAbsent(benchmark::State& state) {
  Measure(state, false, [](BERTLVBuffer& buffer) { benchmark::DoNotOptimize(buffer.IsTagPresent(kAbsent)); });
}
BENCHMARK(BM_LookUpAbsent)->Apply(Sizes);

void BM_ListTags(benchmark::State& state) {
  Measure(state, false, [](BERTLVBuffer& buffer) {
    ByteArrayList tags;
    buffer.ListTags(tags);
    benchmark::DoNotOptimize(tags);
  });
}
BENCHMARK(BM_ListTags)->Apply(Sizes);

void BM_RemoveFirst(benchmark::State& state) {
  Measure(state, true, [](BERTLVBuffer& buffer) { benchmark::DoNotOptimize(buffer.RemoveValue(kTags[0])); });
}
BENCHMARK(BM_RemoveFirst)->Apply(Sizes);

void BM_RemoveEveryOther(benchmark::State& state) {
  Measure(state, true, [](BERTLVBuffer& buffer) { buffer.RemoveValueList(kTags[0]); });
}
BENCHMARK(BM_RemoveEveryOther)->Apply(Sizes);

void BM_ReplaceEveryOther(benchmark::State& state) {
  Measure(state, true, [](BERTLVBuffer& buffer) { buffer.AddValue(kTags[0], kValue); });
}
BENCHMARK(BM_ReplaceEveryOther)->Apply(Sizes);

}  // namespace
