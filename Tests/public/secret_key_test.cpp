#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

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
      const CountedAlgorithm algorithm(name);
      {
        const auto key = Own(IKey::Create(const_cast<CountedAlgorithm*>(&algorithm), "RAW", Pattern(size)));
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
  struct {
    const char* name;
    const char* format;
    unsigned long id, line;
    const char* message;
    const char* log;
  } const cases[] = {
      {"AES", "PKCS8", 4002, 452, "Only raw key format is supported",
       "1 IKey::Create : Only raw key format is supported"},
      {"3DES", "raw", 4002, 452, "Only raw key format is supported",
       "1 IKey::Create : Only raw key format is supported"},
      {"HMAC_SHA1", "RAW", 4006, 501, "Unsupported algorithm", "1 IKey::Create : Unsupported algorithm: HMAC_SHA1"},
      {"CMAC", "RAW", 4006, 501, "Unsupported algorithm", "1 IKey::Create : Unsupported algorithm: CMAC"},
  };
  for (const auto& c : cases) {
    const auto algorithm = NewAlgorithm(c.name);
    const Trace trace;
    EXPECT_THROWS(c.id, c.line, c.message, IKey::Create(algorithm.get(), c.format, Pattern(16)));
    EXPECT_TRUE(trace.Has(c.log)) << c.name;
  }
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
  std::vector<std::string> lines;
  for (const auto& line : trace.WithoutAddresses()) {
    EXPECT_EQ(line.find("swordfish"), std::string::npos);
    EXPECT_EQ(line.find("73776f7264"), std::string::npos);
    if (line.find("CMLockSoftSecretKey") != std::string::npos) lines.push_back(line);
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"8 CMLockSoftSecretKey::CMLockSoftSecretKey : this=*",
                                             "8 CMLockSoftSecretKey::Obfuscate", "16 CMLockSoftSecretKey::Obfuscate",
                                             "16 CMLockSoftSecretKey::CMLockSoftSecretKey",
                                             "8 CMLockSoftSecretKey::Obfuscate", "16 CMLockSoftSecretKey::Obfuscate",
                                             "8 CMLockSoftSecretKey::~CMLockSoftSecretKey : this=*",
                                             "16 CMLockSoftSecretKey::~CMLockSoftSecretKey"}));
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

/// Run in a child process: exits with 0 when a process that may lock no memory gets the documented error.
void LockWithoutAllowance() {
  CountedAlgorithm algorithm("AES");
  const rlimit none{0, 0};
  if (setrlimit(RLIMIT_MEMLOCK, &none) != 0) _exit(2);
  if (geteuid() == 0 && seteuid(65534) != 0) _exit(3);
  const Trace trace;
  const Caught caught = Catch([&] { IKey::Create(&algorithm, "RAW", Pattern(16)); });
  const bool logged =
      trace.Has("1 CMLockSoftSecretKey::CMLockSoftSecretKey : mlock failed due to error 0x1") ||  // EPERM
      trace.Has("1 CMLockSoftSecretKey::CMLockSoftSecretKey : mlock failed due to error 0xc");    // ENOMEM
  const bool right = caught.id == 4003 && caught.line == 52 && caught.message == "mlock failed" &&
                     caught.file == "Sources/common/rz.crypto.soft.mlocksecretkey";
  _exit(!right ? 4 : !logged ? 5 : algorithm.clones() != 0 ? 6 : 0);
}

TEST(SecretKeyDeathTest, AProcessWithoutLockedMemoryGetsAnError) {
  EXPECT_EXIT(LockWithoutAllowance(), testing::ExitedWithCode(0), "");
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
  EXPECT_EQ(trace.WithoutAddresses(),
            (std::vector<std::string>{"8 ISharedSecret::Create", "8 CSoftSharedSecret::CSoftSharedSecret : this=*",
                                      "16 CSoftSharedSecret::CSoftSharedSecret", "16 ISharedSecret::Create",
                                      "8 CSoftSharedSecret::~CSoftSharedSecret : this=*",
                                      "16 CSoftSharedSecret::~CSoftSharedSecret"}));
}

}  // namespace
