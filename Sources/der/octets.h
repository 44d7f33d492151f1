// The objects of the primitive types, and what the four of them that hold octets have in common.
#pragma once

#include "memory.h"
#include "type.h"

namespace Tavo::Der {

// Octets of an object: right behind it in the same block when it was made with them, or in a block of their own.
struct Octets {
  uint8_t* data;
  uint64_t length;
};

}  // namespace Tavo::Der

struct CSASNInteger {
  Tavo::Der::Octets octets;
};
struct CSASNOctetString {
  Tavo::Der::Octets octets;
};
struct CSASNBitString {
  Tavo::Der::Octets octets;
  uint64_t bitCount;
  uint64_t capacity;  // octets that the block holds
};
struct CSASNAny {
  Tavo::Der::Octets octets;
  uint8_t identifier;
};

namespace Tavo::Der {

// A new object with room for `length` octets, in one block; null when out of memory.
template <class T>
T* NewWithRoom(uint64_t length) {
  if (length > PTRDIFF_MAX - sizeof(T)) return nullptr;
  T* object = static_cast<T*>(Allocate(sizeof(T) + length));
  if (object == nullptr) return nullptr;
  *object = {};
  object->octets = {reinterpret_cast<uint8_t*>(object + 1), length};
  return object;
}

// A new object with a copy of `length` octets.
template <class T>
T* NewWithOctets(const uint8_t* bytes, uint64_t length) {
  T* object = NewWithRoom<T>(length);
  if (object != nullptr) CopyOctets(object->octets.data, bytes, length);
  return object;
}

// Wipes the octets; `keep` is what the object holds of them from now on.
template <class T>
void ReplaceOctets(T* object, Octets keep) {
  Octets& octets = object->octets;
  Wipe(octets.data, octets.length);
  if (octets.data != reinterpret_cast<uint8_t*>(object + 1)) Release(octets.data);
  octets = keep;
}

// Replaces the octets by a copy; `bytes` may point into the object.
template <class T>
Code SetOctets(T* object, const uint8_t* bytes, uint64_t length) {
  if (object == nullptr || (bytes == nullptr && length != 0)) return CSResult_BAD_PARAMETER;
  auto* data = static_cast<uint8_t*>(Allocate(length));
  if (data == nullptr) return CSResult_OUT_OF_MEMORY;
  CopyOctets(data, bytes, length);
  ReplaceOctets(object, {data, length});
  return CSResult_OK;
}

template <class T>
Code GetOctets(const T* object, const uint8_t** bytes, uint64_t* length) {
  if (bytes != nullptr) *bytes = nullptr;
  if (length != nullptr) *length = 0;
  if (object == nullptr || bytes == nullptr || length == nullptr) return CSResult_BAD_PARAMETER;
  *bytes = object->octets.data;
  *length = object->octets.length;
  return CSResult_OK;
}

template <class T>
Code FromOctets(const uint8_t* bytes, uint64_t length, T** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (bytes == nullptr && length != 0) return CSResult_BAD_PARAMETER;
  *out = NewWithOctets<T>(bytes, length);
  return *out == nullptr ? CSResult_OUT_OF_MEMORY : CSResult_OK;
}

// The leaf operations of a type that is nothing but octets; others replace what differs.
template <class T>
struct OctetLeaf {
  static const T& Object(const void* object) { return *static_cast<const T*>(object); }

  static Code Read(uint8_t, Input contents, void*& object) {
    object = NewWithOctets<T>(contents.position, contents.remaining);
    return object == nullptr ? CSResult_OUT_OF_MEMORY : CSResult_OK;
  }
  static Code Size(const void* object, uint64_t& octets) {
    octets = Object(object).octets.length;
    return CSResult_OK;
  }
  static uint8_t* Write(const void* object, uint8_t* end) {
    const Octets& octets = Object(object).octets;
    CopyOctets(end - octets.length, octets.data, octets.length);
    return end - octets.length;
  }
  static Code Copy(const void* from, void*& to) {
    const Octets& octets = Object(from).octets;
    to = NewWithOctets<T>(octets.data, octets.length);
    return to == nullptr ? CSResult_OUT_OF_MEMORY : CSResult_OK;
  }
  static bool Equal(const void* a, const void* b) {
    const Octets& x = Object(a).octets;
    const Octets& y = Object(b).octets;
    return x.length == y.length && SameOctets(x.data, y.data, x.length);
  }
  static void Destroy(void* object) {
    ReplaceOctets(static_cast<T*>(object), {});
    Release(object);
  }
};

}  // namespace Tavo::Der
