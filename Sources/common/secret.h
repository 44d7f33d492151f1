#ifndef RZ_CRYPTO_SECRET_H
#define RZ_CRYPTO_SECRET_H

#include <cstddef>

#ifdef RZ_CHECK_SECRETS
#include <valgrind/memcheck.h>
#endif

/// Arithmetic on secret octets without a branch or an address that depends on them.
namespace Tavo::Framework {

/// Opaque hides from the compiler what is known of a value, so that it cannot turn arithmetic back into a branch.
inline std::size_t Opaque(std::size_t value) {
  __asm__("" : "+r"(value));
  return value;
}

/// Reveal marks the one place where a secret value becomes public. It does nothing, except in the check that marks
/// secrets as uninitialised memory and fails when something else depends on them.
template <class T>
T Reveal(T value) {
#ifdef RZ_CHECK_SECRETS
  VALGRIND_MAKE_MEM_DEFINED(&value, sizeof value);
#endif
  return value;
}

/// Mask is a secret truth value. It can be combined and can select, but only Reveal makes a bool of it.
class Mask {
 public:
  static Mask None() { return Mask(0); }
  static Mask IfZero(std::size_t value) { return Mask(TopBit(~value & (value - 1))); }
  static Mask IfNotZero(std::size_t value) { return ~IfZero(value); }
  static Mask IfEqual(std::size_t a, std::size_t b) { return IfZero(a ^ b); }

  Mask operator&(Mask other) const { return Mask(m_bits & other.m_bits); }
  Mask operator|(Mask other) const { return Mask(m_bits | other.m_bits); }
  Mask operator~() const { return Mask(~m_bits); }

  /// OrZero returns `value` if true, else 0.
  std::size_t OrZero(std::size_t value) const { return value & m_bits; }
  bool Reveal() const { return Framework::Reveal(m_bits) != 0; }

 private:
  explicit Mask(std::size_t bits) : m_bits(Opaque(bits)) {}
  static std::size_t TopBit(std::size_t value) { return std::size_t{0} - (value >> (8 * sizeof value - 1)); }

  std::size_t m_bits;  // all set or none
};

/// First is the first octet of a range that has a property.
struct First {
  Mask found = Mask::None();
  std::size_t index = 0;  // of the octet in the array; 0 while none is found
  std::size_t octet = 0;  // 0 while none is found
};

/// FindFirst looks for the first octet from `begin` to before `end` that `property` (octet -> Mask) holds for, and
/// reads all of them.
template <class Property>
First FindFirst(const unsigned char* octets, std::size_t begin, std::size_t end, Property property) {
  First first;
  for (std::size_t i = begin; i < end; ++i) {
    const Mask hit = property(octets[i]) & ~first.found;
    first.index |= hit.OrZero(i);
    first.octet |= hit.OrZero(octets[i]);
    first.found = first.found | hit;
  }
  return first;
}

/// IfSame compares `size` octets and reads all of them.
inline Mask IfSame(const unsigned char* a, const unsigned char* b, std::size_t size) {
  std::size_t difference = 0;
  for (std::size_t i = 0; i < size; ++i) difference |= static_cast<std::size_t>(a[i] ^ b[i]);
  return Mask::IfZero(difference);
}

}  // namespace Tavo::Framework

#endif
