#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "common/rz.crypto.soft.mlocksecretkey.h"
#include "support/caught.h"
#include "support/counted_algorithm.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

/// What the system's two calls are to answer, and what the page held when it was unlocked.
int g_lockError = 0;
int g_unlockError = 0;
ByteArray g_pageAtUnlock;
const void* g_pageNotLocked = nullptr;  // abandoned by design

}  // namespace

// These take the place of libc's in this program.
extern "C" int mlock(const void* page, size_t size) noexcept {
  if (g_lockError == 0) return static_cast<int>(syscall(SYS_mlock, page, size));
  g_pageNotLocked = page;
  errno = g_lockError;
  return -1;
}

extern "C" int munlock(const void* page, size_t size) noexcept {
  const auto* bytes = static_cast<const unsigned char*>(page);
  g_pageAtUnlock.assign(bytes, bytes + size);
  if (g_unlockError == 0) return static_cast<int>(syscall(SYS_munlock, page, size));
  syscall(SYS_munlock, page, size);
  errno = g_unlockError;
  return -1;
}

namespace {

ByteArray Key() { return FromHex("000102030405060708090a0b0c0d0e0f 101112131415161718191a1b1c1d1e1f"); }

TEST(LockedPage, HoldsTheKeyMaskedAndIsZeroedBeforeItIsUnlocked) {
  const auto algorithm = NewAlgorithm("AES");
  const ByteArray plain = Key();
  auto key = std::make_unique<CMLockSoftSecretKey>(algorithm.get(), plain);
  const ByteArray page(key->LockedMemory(), key->LockedMemory() + LockedPage::Size());
  EXPECT_EQ(reinterpret_cast<uintptr_t>(key->LockedMemory()) % LockedPage::Size(), 0U);
  ByteArray mask;
  for (size_t i = 0; i < plain.size(); ++i) {
    EXPECT_NE(page[i], plain[i]) << "at " << i;
    mask.push_back(page[i] ^ plain[i]);
  }
  EXPECT_EQ(ByteArray(mask.begin(), mask.begin() + 16), ByteArray(mask.begin() + 16, mask.end())) << "repeats";
  mask.resize(16);

  // Neither in the page nor anywhere in the program does the mask stand as a whole.
  EXPECT_EQ(std::search(page.begin(), page.end(), mask.begin(), mask.end()), page.end());
  std::ifstream file("/proc/self/exe", std::ios::binary);
  const std::string program{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::string needle(mask.begin(), mask.end());
  ASSERT_GT(program.size(), 100000U);
  EXPECT_EQ(program.find(needle), std::string::npos);

  key.reset();
  EXPECT_EQ(g_pageAtUnlock, ByteArray(LockedPage::Size(), 0));
}

TEST(LockedPage, MaskingTwiceGivesTheBytesBack) {
  ByteArray bytes = Key(), masked(3);
  CMLockSoftSecretKey::Obfuscate(bytes, masked);
  EXPECT_NE(masked, bytes);
  CMLockSoftSecretKey::Obfuscate(masked, masked);
  EXPECT_EQ(masked, bytes);
  CMLockSoftSecretKey::Obfuscate(ByteArray(), masked);
  EXPECT_TRUE(masked.empty());
}

TEST(LockedPage, FailingSystemCallsAreLoggedAndTheLockThrown) {
  CountedAlgorithm algorithm("AES");
  const Trace trace;
  g_lockError = ENOMEM;
  EXPECT_THROWS(4003, 52, "mlock failed", new CMLockSoftSecretKey(&algorithm, Key()));
  free(const_cast<void*>(g_pageNotLocked));
  EXPECT_EQ(Catch([&] { new CMLockSoftSecretKey(&algorithm, Key()); }).file,
            "Sources/common/rz.crypto.soft.mlocksecretkey");
  g_lockError = 0;
  free(const_cast<void*>(g_pageNotLocked));
  EXPECT_EQ(algorithm.clones(), 0);
  EXPECT_TRUE(trace.Has("1 CMLockSoftSecretKey::CMLockSoftSecretKey : mlock failed due to error 0xc"));
  EXPECT_TRUE(trace.Has("16 CMLockSoftSecretKey::CMLockSoftSecretKey Returns mlock failed"));
  g_unlockError = EINVAL;
  Own(new CMLockSoftSecretKey(&algorithm, Key())).reset();
  g_unlockError = 0;
  EXPECT_EQ(algorithm.clones(), 0);
  EXPECT_EQ(g_pageAtUnlock, ByteArray(LockedPage::Size(), 0));
  EXPECT_TRUE(trace.Has("1 CMLockSoftSecretKey::~CMLockSoftSecretKey : munlock failed due to error 0x16"));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", new CMLockSoftSecretKey(nullptr, Key()));
}

}  // namespace
