#include "tavo/framework/random.h"

#include <gtest/gtest.h>

#include <set>

#include "support/caught.h"
#include "support/replaced_random.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

// What libcrypto calls an error when its queue is empty.
const std::string kNoEntry = "RAND_bytes failed with error 0x0 (error:00000000:lib(0)::reason(0))";

struct Generators {
  explicit Generators(const char* name = "AES") : algorithm(NewAlgorithm(name)) {
    const auto map = NewParameters();  // read by the factories only
    random = Own(RandomGenerator::Create(algorithm.get(), map.get()));
    key = Own(KeyGenerator::Create(algorithm.get(), map.get()));
    guid = Own(GUIDGenerator::Create());
  }
  Owned<IAlgorithm> algorithm;
  Owned<RandomGenerator> random;
  Owned<KeyGenerator> key;
  Owned<GUIDGenerator> guid;
  ByteArray out;
};

TEST(Random, FillsExactlyWhatIsAskedFor) {
  Generators g("RSA");  // any algorithm will do
  EXPECT_EQ(g.random->GetAlgorithm(), g.algorithm.get());
  std::set<ByteArray> seen;
  for (const int count : {0, 1, 16, 40, 17, 70000}) {
    g.random->GenerateRandom(count, g.out);
    EXPECT_EQ(g.out.size(), static_cast<size_t>(count));
    EXPECT_FALSE(RandomFailed(*g.random));
    if (count >= 16) {
      EXPECT_TRUE(seen.insert(ByteArray(g.out.begin(), g.out.begin() + 16)).second);
    }
  }
  // Every byte is written, and a GUID has no fixed bits: 64 tries leave a half octet unchanged with a tiny chance.
  std::set<int> first, last, version, variant;
  for (int i = 0; i < 64; ++i) {
    g.random->GenerateRandom(33, g.out);
    first.insert(g.out.front());
    last.insert(g.out.back());
    g.guid->GenerateGUID(g.out);
    ASSERT_EQ(g.out.size(), 16U);
    version.insert(g.out[6] >> 4);
    variant.insert(g.out[8] >> 6);
  }
  EXPECT_FALSE(RandomFailed(*g.guid));
  for (const auto& values : {first, last, version, variant}) EXPECT_GT(values.size(), 1U);
  const ByteArray before = g.out;
  EXPECT_THROWS(4000, 0, "Bad Parameters", g.random->GenerateRandom(-1, g.out));
  EXPECT_EQ(g.out, before);
}

TEST(Random, SeedsAreMixedInAndNotEmpty) {
  Generators g;
  const Trace trace;
  EXPECT_THROWS(4000, 74, "seed should not be empty", g.random->SetSeed(ByteArray()));
  EXPECT_TRUE(trace.Has("2 COpensslRandomGenerator::SetSeed : seed should not be empty"));
  const ReplacedRandom source;
  g.random->SetSeed(ByteArray(5, 1));
  EXPECT_EQ(source.seeds(), std::vector<int>{5});
}

TEST(Random, AFailingSourceIsReportedAndMakesNoKey) {
  Generators g;
  {
    const ReplacedRandom failing;
    const Trace trace;
    LeavesTheHostsErrors([&] { g.random->GenerateRandom(8, g.out); });
    EXPECT_EQ(g.out, ByteArray(8, 0)) << "resized, and returned as usual";
    EXPECT_TRUE(RandomFailed(*g.random));
    EXPECT_TRUE(trace.Has("1 COpensslRandomGenerator::GenerateRandom : " + kNoEntry));
    g.guid->GenerateGUID(g.out);
    EXPECT_EQ(g.out.size(), 16U);
    EXPECT_TRUE(RandomFailed(*g.guid));
    EXPECT_TRUE(trace.Has("1 COpensslGUIDGenerator::GenerateGUID : " + kNoEntry));
    EXPECT_EQ(g.key->GenerateKey(16), nullptr);
    EXPECT_TRUE(trace.Has("1 COpensslKeyGenerator::GenerateKey : " + kNoEntry));
    EXPECT_TRUE(trace.Has("16 COpensslKeyGenerator::GenerateKey"));
  }
  g.random->GenerateRandom(8, g.out);
  EXPECT_FALSE(RandomFailed(*g.random)) << "the next call succeeded";
  class Foreign : public RandomGenerator {
    IAlgorithm* GetAlgorithm() override { return nullptr; }
    void SetSeed(const ByteArray&) override {}
    void GenerateRandom(int, ByteArray&) override {}
  };
  EXPECT_TRUE(RandomFailed(Foreign())) << "nothing is known of it";
}

TEST(Random, AnUnseededPoolIsFedUntilItIsContent) {
  const auto map = NewParameters();
  const auto algorithm = NewAlgorithm("AES");
  const auto seedsOf = [&](int needed, auto create) {
    const ReplacedRandom source(needed);
    Own(create(algorithm.get(), map.get()));
    return source.seeds();
  };
  for (const auto& [needed, rounds] : {std::pair(0, 0), {3, 3}, {ReplacedRandom::kNeverContent, 1000}}) {
    const std::vector<int> expected(static_cast<size_t>(rounds), 64);
    EXPECT_EQ(seedsOf(needed, RandomGenerator::Create), expected);
    EXPECT_EQ(seedsOf(needed, KeyGenerator::Create), expected);
  }
}

TEST(KeyGenerator, MakesKeysOfUpToOnePage) {
  Generators g("DES");
  EXPECT_EQ(g.key->GetAlgorithm(), g.algorithm.get());
  std::set<ByteArray> seen;
  for (const int size : {8, 8, 16, 4096}) {
    const auto key = Own(g.key->GenerateKey(size));
    ASSERT_NE(key, nullptr);
    key->GetEncoded(g.out);
    EXPECT_EQ(g.out.size(), static_cast<size_t>(size));
    EXPECT_TRUE(seen.insert(g.out).second);
    EXPECT_EQ(key->GetAlgorithm()->GetFriendlyName(), "DES");
  }
  EXPECT_THROWS(4003, 44, "page size too small", g.key->GenerateKey(4097));
  EXPECT_THROWS(4003, 92, "malloc failure", g.key->GenerateKey(-1));
  EXPECT_THROWS(4001, 135, "Not Implemented", g.key->GenerateKey(16, ByteArray(16)));

  const Trace trace;
  EXPECT_EQ(g.key->GenerateKey(0), nullptr);
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "a key of no bytes"));
}

}  // namespace
