#ifndef TAVO_DER_OWNED_H
#define TAVO_DER_OWNED_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "tavo/der.h"

/// Optional, header-only: owners for C++ callers of the DER library.
///
///   DerOwned<CSName_Delete> name;
///   uint64_t length = size;
///   if (CSName_DERDecodeTLV(bytes, &length, 0, 0, 0, 0, Out(name)) != CSResult_OK) return;
namespace Tavo::Framework {

/// DerOwned owns an object of the DER library: `DerOwned<CSName_Delete>` holds a CSName.
template <auto Delete>
struct DerDeleter;
template <class T, std::uint32_t (*Delete)(T**)>
struct DerDeleter<Delete> {
  using pointer = T*;
  void operator()(T* object) const noexcept { Delete(&object); }
};
template <auto Delete>
using DerOwned = std::unique_ptr<std::remove_pointer_t<typename DerDeleter<Delete>::pointer>, DerDeleter<Delete>>;

/// DerBuffer owns what an encoder allocated.
struct DerBufferDeleter {
  void operator()(std::uint8_t* buffer) const noexcept { std::free(buffer); }
};
using DerBuffer = std::unique_ptr<std::uint8_t, DerBufferDeleter>;

/// Out lends an owner's place to a function that returns an object through a pointer. The owner has it when the full
/// expression ends, so it is read in the next statement at the earliest.
template <class Owner>
class Out {
 public:
  explicit Out(Owner& owner) : m_owner(owner) {}
  Out(const Out&) = delete;
  Out& operator=(const Out&) = delete;
  ~Out() { m_owner.reset(m_pointer); }
  operator typename Owner::pointer *() { return &m_pointer; }  // NOLINT: it stands for the out pointer

 private:
  Owner& m_owner;
  typename Owner::pointer m_pointer = nullptr;
};

}  // namespace Tavo::Framework

#endif
