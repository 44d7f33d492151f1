#ifndef RZ_CRYPTO_WIPEDBUFFER_H
#define RZ_CRYPTO_WIPEDBUFFER_H

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

#include "tavo/framework/bytes.h"

namespace Tavo::Framework {

/// WipedBuffer collects bytes in memory that is wiped before it is released. Unlike a ByteArray it does not write zeros
/// where the bytes are about to go: for a message that is read once, that is one pass over memory in three.
class WipedBuffer {
 public:
  WipedBuffer() = default;
  WipedBuffer(WipedBuffer&& other) noexcept
      : m_pData(std::exchange(other.m_pData, nullptr)),
        m_size(std::exchange(other.m_size, 0)),
        m_capacity(std::exchange(other.m_capacity, 0)) {}
  WipedBuffer& operator=(WipedBuffer&& other) noexcept {
    WipedBuffer old(std::move(*this));
    std::swap(m_pData, other.m_pData);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    return *this;
  }
  ~WipedBuffer() { secallocator<unsigned char>().deallocate(m_pData, m_capacity); }

  /// Append copies the bytes of `in`, which are none of its own. The capacity at least doubles when it grows. Throws
  /// std::length_error or std::bad_alloc; the buffer is then unchanged.
  void Append(std::span<const unsigned char> in) {
    if (in.size() > m_capacity - m_size) Grow(in.size());
    Detail::CopyBytes(m_pData + m_size, in.data(), in.size());
    m_size += in.size();
  }

  /// Reserve makes room for `size` bytes in all. Throws as Append does.
  void Reserve(std::size_t size) {
    if (size > m_capacity) Grow(size - m_size);
  }
  /// Clear forgets the bytes and keeps the room. They are wiped with it, unless others take their place before.
  void Clear() { m_size = 0; }

  std::span<const unsigned char> bytes() const { return {m_pData, m_size}; }
  std::span<unsigned char> bytes() { return {m_pData, m_size}; }

 private:
  void Grow(std::size_t size) {
    const std::size_t limit = secallocator<unsigned char>().max_size();
    if (size > limit - m_size) throw std::length_error("WipedBuffer");
    const std::size_t capacity = std::max(m_size + size, m_capacity > limit / 2 ? limit : 2 * m_capacity);
    WipedBuffer grown;
    grown.m_pData = secallocator<unsigned char>().allocate(capacity);
    grown.m_capacity = capacity;
    grown.Append(bytes());
    *this = std::move(grown);
  }

  unsigned char* m_pData = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

}  // namespace Tavo::Framework

#endif
