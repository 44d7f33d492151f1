#ifndef RZ_TESTS_DER_TYPES_H
#define RZ_TESTS_DER_TYPES_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// One ASN.1 type of the DER library with its family of functions, objects as `void*`. The table is made from the lines
/// of the public headers: a new type is in it without further ado. Include this before any header
/// of tavo/der.
struct DerType {
  using Code = uint32_t;

  std::string name;
  std::function<Code(void*&)> create;
  std::function<Code(void*&)> destroy;
  std::function<Code(const void*, void*&)> copy;
  std::function<Code(const void*, const void*, uint8_t*)> equals;
  std::function<Code(const uint8_t*, uint64_t*, uint32_t mode, uint8_t identifier, void*&)> decode;
  std::function<Code(const void* context, void*&)> finish;
  std::function<Code(const void*, uint8_t**, uint64_t*, bool tag, bool length, bool contents)> encode;
  std::function<Code(const void*, uint64_t*)> length;
  std::function<Code(const void*, uint64_t*, uint64_t*, uint64_t*)> lengths;
};

inline std::vector<DerType>& DerTypes() {
  static std::vector<DerType> types;
  return types;
}

inline const DerType& DerTypeNamed(const std::string& name) {
  for (const DerType& type : DerTypes()) {
    if (type.name == name) return type;
  }
  std::abort();
}

/// Finds a component in an encoded record, by "Type.Component", or one of the first items of a list, by "Type.2".
using DerFinder =
    std::function<uint32_t(const uint8_t*, uint64_t, uint64_t* tagAt, uint64_t* lengthAt, uint64_t* contentsAt,
                           uint64_t* tag, uint64_t* length, uint64_t* contents, uint64_t* end, uint32_t mode)>;

inline std::map<std::string, DerFinder>& DerFinders() {
  static std::map<std::string, DerFinder> finders;
  return finders;
}

template <class Nth>
bool AddDerItems(const std::string& list, Nth nth) {
  for (uint64_t i = 0; i < 5; ++i) {
    DerFinders()[list + "." + std::to_string(i)] = [=](const uint8_t* in, uint64_t size, auto... rest) {
      return nth(in, size, i, rest...);
    };
  }
  return true;
}

struct CSASNDecodeContext;

/// Adds a type to the table. `decode` has the signature of CS_DECLARE_TYPE or of CS_DECLARE_OPEN_TYPE.
struct DerTypeEntry {
  template <class T, class Decode>
  DerTypeEntry(const char* name, uint32_t (*create)(T**), uint32_t (*destroy)(T**), uint32_t (*copy)(const T*, T**),
               uint32_t (*equals)(const T*, const T*, uint8_t*), Decode decode,
               uint32_t (*finish)(const CSASNDecodeContext*, T**),
               uint32_t (*encode)(const T*, uint8_t**, uint64_t*, uint8_t, uint8_t, uint8_t),
               uint32_t (*length)(const T*, uint64_t*),
               uint32_t (*lengths)(const T*, uint64_t*, uint64_t*, uint64_t*)) {
    for (const DerType& known : DerTypes()) {
      if (known.name == name) return;  // by another source of the program
    }
    DerType type;
    type.name = name;
    type.create = [=](void*& out) { return Typed<T>(out, create); };
    type.destroy = [=](void*& object) { return Typed<T>(object, destroy); };
    type.copy = [=](const void* from, void*& out) {
      return Typed<T>(out, [&](T** to) { return copy(static_cast<const T*>(from), to); });
    };
    type.equals = [=](const void* a, const void* b, uint8_t* equal) {
      return equals(static_cast<const T*>(a), static_cast<const T*>(b), equal);
    };
    type.decode = [=](const uint8_t* in, uint64_t* io, uint32_t mode, uint8_t id, void*& out) {
      return Typed<T>(out, [&](T** to) {
        if constexpr (std::is_invocable_v<Decode, const uint8_t*, uint64_t*, uint32_t, T**>) {
          return decode(in, io, mode, to);
        } else {
          constexpr uint32_t kClassOfBits[] = {0, 2, 1, 3};
          return decode(in, io, mode, id & 31u, kClassOfBits[id >> 6], id & 0x20, to);
        }
      });
    };
    type.finish = [=](const void* context, void*& out) {
      return Typed<T>(out, [&](T** to) { return finish(static_cast<const CSASNDecodeContext*>(context), to); });
    };
    type.encode = [=](const void* object, uint8_t** buffer, uint64_t* io, bool t, bool l, bool c) {
      return encode(static_cast<const T*>(object), buffer, io, t, l, c);
    };
    type.length = [=](const void* object, uint64_t* total) { return length(static_cast<const T*>(object), total); };
    type.lengths = [=](const void* object, uint64_t* t, uint64_t* l, uint64_t* c) {
      return lengths(static_cast<const T*>(object), t, l, c);
    };
    DerTypes().push_back(type);
  }

 private:
  template <class T, class Body>
  static uint32_t Typed(void*& object, Body&& body) {
    T* typed = static_cast<T*>(object);
    const uint32_t code = body(&typed);
    object = typed;
    return code;
  }
};

#define RZ_TYPE(T)                                                                                       \
  static const DerTypeEntry entry##T(#T, T##_Create, T##_Delete, T##_Copy, T##_Equals, T##_DERDecodeTLV, \
                                     T##_DERDecodeFinish, T##_DEREncodeTLV, T##_DEREncodedLength,        \
                                     T##_DEREncodedLengthTLV);

#define CS_TYPE(T) CS_DECLARE_TYPE(T) RZ_TYPE(T)
#define CS_OPEN_TYPE(T) CS_DECLARE_OPEN_TYPE(T) RZ_TYPE(T)
#define CS_RECORD(T) CS_DECLARE_RECORD(T) RZ_TYPE(T)
#define CS_LIST(L, I) \
  CS_DECLARE_LIST(L, I) RZ_TYPE(L) static const bool items##L = AddDerItems(#L, L##_DEROffsetOfNthTLV);
#define CS_CHOICE(C) CS_DECLARE_CHOICE(C) RZ_TYPE(C)

#define RZ_FIND(T, F) static const auto* find##T##F = &(DerFinders()[#T "." #F] = T##_DEROffsetOf##F##TLV);
#define CS_FIELD(T, F, C) CS_DECLARE_FIELD(T, F, C) RZ_FIND(T, F)
#define CS_OPTIONAL_FIELD(T, F, C) CS_DECLARE_OPTIONAL_FIELD(T, F, C) RZ_FIND(T, F)
#define CS_BOOLEAN_FIELD(T, F) CS_DECLARE_BOOLEAN_FIELD(T, F) RZ_FIND(T, F)

#include "tavo/der.h"

#endif
