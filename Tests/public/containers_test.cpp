// The promise of the wiping allocator, seen from the heap: this program's operator delete looks at every block.

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <map>
#include <new>
#include <stdexcept>

#include "tavo/crypto.h"

using namespace Tavo::Framework;

namespace {

/// While set, counts the freed blocks and those that still hold the pattern.
struct Watch {
  bool on = false;
  size_t freed = 0;
  size_t dirty = 0;
} g_watch;

constexpr unsigned char kPattern = 0xa7;

void Inspect(void* block) {
  if (!g_watch.on || block == nullptr) return;
  ++g_watch.freed;
  const auto* bytes = static_cast<const unsigned char*>(block);
  const size_t size = malloc_usable_size(block);
  size_t run = 0;
  for (size_t i = 0; i < size; ++i) {
    run = bytes[i] == kPattern ? run + 1 : 0;
    if (run == 8) {
      ++g_watch.dirty;
      return;
    }
  }
}

}  // namespace

void* operator new(std::size_t size) {
  void* block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  Inspect(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

template <class Body>
size_t DirtyBlocksOf(Body&& body) {
  g_watch = {true, 0, 0};
  body();
  g_watch.on = false;
  EXPECT_GT(g_watch.freed, 0U) << "nothing was freed, so nothing was proved";
  return g_watch.dirty;
}

TEST(WipingAllocator, TheInspectionSeesWhatAnOrdinaryVectorLeaves) {
  EXPECT_EQ(DirtyBlocksOf([] { std::vector<unsigned char> plain(100, kPattern); }), 1U);
}

TEST(WipingAllocator, EveryContainerWipesEveryBlockItGivesBack) {
  const ByteArray secret(100, kPattern);
  const SecureString text(100, static_cast<char>(kPattern));
  EXPECT_EQ(DirtyBlocksOf([&] { ByteArray copy = secret; }), 0U);
  EXPECT_EQ(DirtyBlocksOf([&] {
              ByteArray grown;
              for (int i = 0; i < 40; ++i) AppendBytes(grown, secret);
              grown.resize(3);  // the rest of the block still holds the pattern until it is released
            }),
            0U);
  EXPECT_EQ(DirtyBlocksOf([&] {
              ByteArray assigned(3);
              AssignBytes(assigned, secret);
              AssignBytes(assigned, secret.data(), 1);
            }),
            0U);
  EXPECT_EQ(DirtyBlocksOf([&] { SecureString copy = text; }), 0U);
  EXPECT_EQ(DirtyBlocksOf([&] { SecureStringList list(3, text); }), 0U);
  EXPECT_EQ(DirtyBlocksOf([&] { ByteArrayList list(3, secret); }), 0U);
  EXPECT_EQ(DirtyBlocksOf([&] {
              DataMap map;
              map.Add("bytes", secret);
              map.Add("text", text);
              map.Add("bytes", ByteArray(1, 1));
            }),
            0U);
}

TEST(WipingAllocator, MovesBlocksAndRefusesSizesThatCannotBe) {
  static_assert(std::is_nothrow_move_assignable_v<ByteArray> && std::is_nothrow_move_assignable_v<SecureString>);
  secallocator<unsigned long> numbers;
  EXPECT_THROW(numbers.allocate(SIZE_MAX / 4), std::bad_array_new_length);
  numbers.deallocate(nullptr, 0);
  secallocator<unsigned char> bytes;
  bytes.deallocate(bytes.allocate(0), 0);
}

TEST(Bytes, AppendAndAssignTakePiecesOfTheirOwnTarget) {
  for (const size_t size : {1UL, 15UL, 2048UL, 2049UL, 5000UL}) {
    for (const bool room : {false, true}) {
      ByteArray array(size);
      for (size_t i = 0; i < size; ++i) array[i] = static_cast<unsigned char>(i * 7 + i / 256);
      const ByteArray before = array;
      if (room) array.reserve(4 * size);
      AppendBytes(array, array);
      ByteArray twice = before;
      twice.insert(twice.end(), before.begin(), before.end());
      EXPECT_EQ(array, twice);
      AssignBytes(array, array.data() + size / 2, size);  // overlaps where it goes
      EXPECT_EQ(array, ByteArray(twice.begin() + static_cast<long>(size / 2),
                                 twice.begin() + static_cast<long>(size / 2 + size)));
    }
  }
  ByteArray array(3, 9);
  AppendBytes(array, nullptr, 0);
  EXPECT_EQ(array.size(), 3U);
  AssignBytes(array, nullptr, 0);
  EXPECT_TRUE(array.empty());
  EXPECT_THROW(AppendBytes(array, array.data(), SIZE_MAX / 2 + 1), std::length_error);
}

}  // namespace
