#ifndef TAVO_FRAMEWORK_BYTES_H
#define TAVO_FRAMEWORK_BYTES_H

#include <cstddef>
#include <cstring>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

#include "tavo/framework/secallocator.h"

namespace Tavo::Framework {

/// The containers that cross the interface. Strings are plain byte strings without any character set. An empty
/// ByteArray may have a null data().
using ByteArray = std::vector<unsigned char, secallocator<unsigned char>>;
using SecureString = std::basic_string<char, std::char_traits<char>, secallocator<char>>;
using SecureStringList = std::list<SecureString, secallocator<SecureString>>;
using ByteArrayList = std::list<ByteArray, secallocator<ByteArray>>;

// The standard library copies and grows a vector element by element when its allocator is not std::allocator; at
// 64 KiB that costs ten to forty times a memcpy. AppendBytes and AssignBytes are the fast way and do the same.

namespace Detail {
/// CopyBytes is memcpy in pieces below the size from which the C library copies with one string instruction: on some
/// processors that is fifteen times slower when the two ends are not aligned alike, and on none much faster.
inline void CopyBytes(unsigned char* to, const unsigned char* from, std::size_t size) {
  constexpr std::size_t kPiece = 2048;
  for (; size > kPiece; size -= kPiece, to += kPiece, from += kPiece) std::memcpy(to, from, kPiece);
  if (size != 0) std::memcpy(to, from, size);
}
}  // namespace Detail

/// AppendBytes appends `size` bytes at `data` to `to`. `data` may point into `to` and may be null when `size` is 0.
/// The capacity at least doubles when it grows. Throws std::length_error or std::bad_alloc; `to` is then unchanged.
inline void AppendBytes(ByteArray& to, const unsigned char* data, std::size_t size) {
  if (size == 0) return;
  const std::size_t held = to.size();
  if (size <= to.capacity() - held) {
    to.resize(held + size);
    Detail::CopyBytes(to.data() + held, data, size);
    return;
  }
  if (size > to.max_size() - held) throw std::length_error("AppendBytes");
  const std::size_t needed = held + size;
  const std::size_t doubled = to.capacity() > to.max_size() / 2 ? to.max_size() : 2 * to.capacity();
  ByteArray grown;
  grown.reserve(needed > doubled ? needed : doubled);
  grown.resize(needed);
  Detail::CopyBytes(grown.data(), to.data(), held);
  Detail::CopyBytes(grown.data() + held, data, size);
  to.swap(grown);
}

/// AppendBytes appends the bytes of `data`, which may be `to` itself.
inline void AppendBytes(ByteArray& to, const ByteArray& data) { AppendBytes(to, data.data(), data.size()); }

/// AssignBytes makes `to` a copy of the `size` bytes at `data`, which may point into `to` and may be null when `size`
/// is 0. Bytes of `to` beyond the new size keep their old values until the block is released.
inline void AssignBytes(ByteArray& to, const unsigned char* data, std::size_t size) {
  if (size > to.capacity()) {
    ByteArray fresh(size);
    Detail::CopyBytes(fresh.data(), data, size);
    to.swap(fresh);
    return;
  }
  if (size > to.size()) to.resize(size);
  if (size != 0) std::memmove(to.data(), data, size);
  to.resize(size);
}

/// AssignBytes makes `to` a copy of `data`, which may be `to` itself.
inline void AssignBytes(ByteArray& to, const ByteArray& data) { AssignBytes(to, data.data(), data.size()); }

}  // namespace Tavo::Framework

#endif
