#include <gtest/gtest.h>

#include <fstream>

#include "support/caught.h"
#include "support/counted_algorithm.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

constexpr size_t kPage = 4096;

ByteArray Pattern(size_t size) {
  ByteArray bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7 + 1);
  return bytes;
}

ByteArray Encoded(IKey& key) {
  ByteArray encoded(99, 0xee);
  key.GetEncoded(encoded);
  return encoded;
}

TEST(SecretKey, GivesBackItsBytesWhateverTheirNumber) {
  for (const char* name : {"DES", "3DES", "AES"}) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{15}, size_t{16}, size_t{17}, size_t{24}, kPage}) {
      CountedAlgorithm algorithm(name);
      {
        const auto key = Own(IKey::Create(&algorithm, "RAW", Pattern(size)));
        auto clone = Own(key->Clone());
        EXPECT_EQ(algorithm.clones(), 2) << "each key has its own";
        EXPECT_NE(key->GetAlgorithm(), clone->GetAlgorithm());
        EXPECT_EQ(Encoded(*clone), Pattern(size)) << name << size;
        clone.reset();
        EXPECT_EQ(Encoded(*key), Pattern(size)) << name << size;
        EXPECT_EQ(key->GetFormat(), "RAW");
        EXPECT_EQ(key->GetAlgorithm()->GetFriendlyName(), name);
        EXPECT_NE(dynamic_cast<ISecretKey*>(key.get()), nullptr);
      }
      EXPECT_EQ(algorithm.clones(), 0);
    }
  }
}

TEST(SecretKey, TheFactoryRefusesWhatItHasNoKeyFor) {
  const auto refuses = [](const char* name, const char* format, unsigned long id, unsigned long line,
                          const std::string& message, const std::string& detail) {
    const Trace trace;
    EXPECT_THROWS(id, line, message, IKey::Create(NewAlgorithm(name).get(), format, Pattern(16)));
    EXPECT_TRUE(trace.Has("1 IKey::Create : " + message + detail)) << name;
  };
  refuses("AES", "PKCS8", 4002, 452, "Only raw key format is supported", "");
  refuses("3DES", "raw", 4002, 452, "Only raw key format is supported", "");
  refuses("HMAC_SHA1", "RAW", 4006, 501, "Unsupported algorithm", ": HMAC_SHA1");
  refuses("CMAC", "RAW", 4006, 501, "Unsupported algorithm", ": CMAC");
  EXPECT_THROWS(4000, 438, "pAlgorithm should not be NULL", IKey::Create(nullptr, "RAW", Pattern(16)));
}

TEST(SecretKey, MoreThanOnePageIsRefusedAndLeaksNothing) {
  CountedAlgorithm algorithm("AES");
  const Trace trace;
  EXPECT_THROWS(4003, 44, "page size too small", IKey::Create(&algorithm, "RAW", Pattern(kPage + 1)));
  EXPECT_TRUE(trace.Has("1 CMLockSoftSecretKey::CMLockSoftSecretKey : page size too small (4096 < 4097)"));
  EXPECT_TRUE(trace.Has("16 CMLockSoftSecretKey::CMLockSoftSecretKey Returns page size too small"));
  EXPECT_EQ(algorithm.clones(), 0);
}

TEST(SecretKey, TheTraceOfALifeShowsNoKeyByte) {
  const Trace trace;
  {
    const auto algorithm = NewAlgorithm("AES");
    const auto key = Own(IKey::Create(algorithm.get(), "RAW", FromText("swordfish")));
    Encoded(*key);
  }
  EXPECT_TRUE(trace.WithoutAddresses("swordfish").empty() && trace.WithoutAddresses("73776f7264").empty());
  EXPECT_EQ(trace.WithoutAddresses("CMLockSoftSecretKey"), LoadParagraph("traces.txt", "the life of a secret key"));
}

#ifndef RZ_SANITIZED  // the sanitizers turn mlock into nothing

/// What the system says is locked of this process, in KiB.
unsigned long Locked() {
  std::ifstream maps("/proc/self/smaps");
  unsigned long total = 0;
  for (std::string line; std::getline(maps, line);) {
    if (line.rfind("Locked:", 0) == 0) total += std::stoul(line.substr(7));
  }
  return total;
}

TEST(SecretKey, EachKeyLocksOnePageUntilItsEnd) {
  const auto algorithm = NewAlgorithm("AES");
  const unsigned long before = Locked();
  {
    const auto one = Own(IKey::Create(algorithm.get(), "RAW", Pattern(16)));
    EXPECT_EQ(Locked(), before + 4);
    const auto two = Own(one->Clone());
    EXPECT_EQ(Locked(), before + 8);
  }
  EXPECT_EQ(Locked(), before);
}

#endif

TEST(SharedSecret, HoldsACopy) {
  ByteArray bytes = Pattern(32);
  const Trace trace;
  {
    const auto secret = Own(ISharedSecret::Create(bytes));
    bytes.assign(32, 0);
    const auto* soft = dynamic_cast<CSoftSharedSecret*>(secret.get());
    ASSERT_NE(soft, nullptr);
    EXPECT_EQ(soft->GetSharedSecret(), Pattern(32));
  }
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "the life of a shared secret"));
}

}  // namespace
