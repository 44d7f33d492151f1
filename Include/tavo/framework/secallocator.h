#ifndef TAVO_FRAMEWORK_SECALLOCATOR_H
#define TAVO_FRAMEWORK_SECALLOCATOR_H

#include <string.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "rz/export.h"

namespace Tavo::Framework {

/// secallocator is a standard allocator that overwrites every block with zero bytes before it gives the block back to
/// the heap, so that no secret survives in freed memory through a container of this library.
///
/// It has no state: any instance frees what any other allocated, of whatever element type. It does not lock pages.
///
/// What it cannot wipe is what a container keeps inside itself: a SecureString of up to 15 characters has no block at
/// all, and its characters stay where the string object was. Keep secrets in a ByteArray.
template <class T>
class RZ_CRYPTO_API secallocator {
 public:
  using value_type = T;
  using pointer = T*;
  using const_pointer = const T*;
  using reference = T&;
  using const_reference = const T&;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  // The virtual destructor makes the class non-empty; without these three a move would copy element by element.
  using is_always_equal = std::true_type;
  using propagate_on_container_move_assignment = std::true_type;
  using propagate_on_container_swap = std::true_type;
  template <class U>
  struct rebind {
    using other = secallocator<U>;
  };

  secallocator() noexcept = default;
  secallocator(const secallocator&) noexcept = default;
  template <class U>
  secallocator(const secallocator<U>&) noexcept {}
  secallocator& operator=(const secallocator&) noexcept = default;
  virtual ~secallocator() = default;

  /// allocate returns storage for `n` objects from the global operator new. Throws std::bad_array_new_length when the
  /// size in bytes cannot be expressed, std::bad_alloc when there is no memory. The hint is ignored.
  T* allocate(size_type n, const T* hint = nullptr) {
    static_cast<void>(hint);
    if (n > max_size()) throw std::bad_array_new_length();
    if constexpr (kOverAligned) {
      return static_cast<T*>(::operator new(n * sizeof(T), std::align_val_t(alignof(T))));
    } else {
      return static_cast<T*>(::operator new(n * sizeof(T)));
    }
  }

  /// deallocate zeroes the `n * sizeof(T)` bytes at `p` and gives them back. Does nothing for null.
  void deallocate(T* p, size_type n) noexcept {
    if (p == nullptr) return;
    explicit_bzero(static_cast<void*>(p), n * sizeof(T));
    if constexpr (kOverAligned) {
      ::operator delete(p, std::align_val_t(alignof(T)));
    } else {
      ::operator delete(p);
    }
  }

  template <class U, class... Args>
  void construct(U* p, Args&&... args) noexcept(std::is_nothrow_constructible_v<U, Args...>) {
    ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
  }
  template <class U>
  void destroy(U* p) noexcept(std::is_nothrow_destructible_v<U>) {
    p->~U();
  }
  size_type max_size() const noexcept { return static_cast<size_type>(PTRDIFF_MAX) / sizeof(T); }
  T* address(T& object) const noexcept { return std::addressof(object); }
  const T* address(const T& object) const noexcept { return std::addressof(object); }

 private:
  static constexpr bool kOverAligned = alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__;
};

template <class A, class B>
bool operator==(const secallocator<A>&, const secallocator<B>&) noexcept {
  return true;
}
template <class A, class B>
bool operator!=(const secallocator<A>&, const secallocator<B>&) noexcept {
  return false;
}

}  // namespace Tavo::Framework

#endif
