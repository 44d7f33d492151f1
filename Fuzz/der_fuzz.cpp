// Every type of the DER library over the same input: decoding, encoding, finding components, feeding in pieces; and the
// walk over indefinite lengths against its plain recursive definition.

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "der/catalogue.h"
#include "der/engine.h"

using namespace Tavo::Der;

namespace {

std::vector<const Type*>& Types() {
  static std::vector<const Type*> types;
  return types;
}

struct Entry {
  explicit Entry(const Type& type) { Types().push_back(&type); }
};

}  // namespace

// The lines of the public headers make the list of types.
#define FUZZ_TYPE(T) static const Entry entry##T(kTypeOf<T>);
#define CS_TYPE(T) CS_DECLARE_TYPE(T) FUZZ_TYPE(T)
#define CS_OPEN_TYPE(T) CS_DECLARE_OPEN_TYPE(T) FUZZ_TYPE(T)
#define CS_RECORD(T) CS_DECLARE_RECORD(T) FUZZ_TYPE(T)
#define CS_LIST(L, I) CS_DECLARE_LIST(L, I) FUZZ_TYPE(L)
#define CS_CHOICE(C) CS_DECLARE_CHOICE(C) FUZZ_TYPE(C)
#include "tavo/der.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

using Bytes = std::vector<uint8_t>;

// Whether an encoding reads back as the same object. Two things that decoders accept do not: unused bits beyond the
// last octet of a BIT STRING, and an ANY of identifier 0 without contents, which looks like an end marker.
bool Faithful(const Type& type, const void* object) {
  if (object == nullptr) return true;
  if (type.leaf == &kBitString) {
    const auto& bits = *static_cast<const CSASNBitString*>(object);
    return bits.octets.length == bits.bitCount / 8 + (bits.bitCount % 8 != 0 ? 1 : 0);
  }
  if (type.leaf == &kAny) {
    const auto& any = *static_cast<const CSASNAny*>(object);
    return any.identifier != 0 || any.octets.length != 0;
  }
  if (type.kind == Kind::Choice) {
    const auto& choice = *static_cast<const Choice*>(object);
    return Faithful(*type.fields[choice.chosen - 1].type, choice.object);
  }
  const auto* list = static_cast<const List*>(object);
  auto* const* parts = type.kind == Kind::List ? list->items : static_cast<void* const*>(object);
  const uint64_t count = type.kind == Kind::List ? list->count : type.count;
  for (uint64_t i = 0; i < count; ++i) {
    if (!Faithful(*type.fields[type.kind == Kind::List ? 0 : i].type, parts[i])) return false;
  }
  return true;
}

struct Object {
  Object(const Type& t, const uint8_t* in, uint64_t size) : type(t), consumed(size) {
    code = Decode(type, in, &consumed, 0, 0, object);
    Require((code == 0) == (object != nullptr) && consumed <= size);
  }
  ~Object() { Destroy(type, object); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  Bytes Encoded() const {
    uint8_t* buffer = nullptr;
    uint64_t length = 0;
    Require(Encode(type, object, &buffer, &length, {1, 1, 1}) == 0);
    const Bytes bytes(buffer, buffer + length);
    free(buffer);
    return bytes;
  }

  const Type& type;
  uint64_t consumed;
  Code code;
  void* object = nullptr;
};

// A component is found exactly if it has been decoded, and lies inside the record.
void FindComponents(const Object& record, const uint8_t* in, uint64_t size) {
  auto* const* components = static_cast<void* const*>(record.object);
  for (uint32_t i = 0; i < record.type.count; ++i) {
    Place place{};
    const Code code = Locate(record.type, in, size, 0, i, place);
    if (record.code == 0) Require((code == 0) == (components[i] != nullptr));
    if (code != 0) continue;
    Require(place.tagOffset < place.lengthOffset && place.lengthOffset < place.contentsOffset);
    Require(place.contentsOffset <= place.endOffset && place.endOffset <= size);
    Require(place.contentOctets <= place.endOffset - place.contentsOffset);
  }
}

void FindItems(const Object& list, const uint8_t* in, uint64_t size) {
  if (list.code != 0) return;
  const uint64_t count = static_cast<const List*>(list.object)->count;
  Place place{};
  if (count != 0) Require(Locate(list.type, in, size, 0, count - 1, place) == 0 && place.endOffset <= size);
  Require(Locate(list.type, in, size, 0, count, place) == CSResult_INDEX_OUT_OF_RANGE);
}

void TryType(const Type& type, const uint8_t* in, uint64_t size) {
  const Object first(type, in, size);
  if (type.kind == Kind::Record) FindComponents(first, in, size);
  if (type.kind == Kind::List) FindItems(first, in, size);
  if (first.code != 0) return;
  const Bytes encoded = first.Encoded();
  if (!Faithful(type, first.object)) return;
  const Object second(type, encoded.data(), encoded.size());
  Require(second.code == 0 && second.consumed == encoded.size());
  Require(Equal(type, first.object, second.object));
  Require(second.Encoded() == encoded);
  void* copy = nullptr;
  Require(Copy(type, first.object, copy) == 0 && Equal(type, copy, second.object));
  Destroy(type, copy);
}

// Length octets by their definition: nested indefinite elements by recursion.
Code ReferenceLength(const uint8_t* in, uint64_t n, uint64_t& octets, uint64_t& value) {
  if (n == 0) return 6;
  octets = 1;
  value = in[0];
  if (in[0] < 0x80) return 0;
  if (in[0] > 0x80) {
    octets += in[0] & 0x7F;
    if (octets > n) return 6;
    value = 0;
    for (uint64_t i = 1; i < octets; ++i) {
      if (value >> 56 != 0) return 6;
      value = value << 8 | in[i];
    }
    return 0;
  }
  uint64_t p = 1;
  for (;;) {
    if (n - p < 2) return 6;
    if (in[p] == 0 && in[p + 1] == 0) break;
    if ((in[p] & 31) == 31) return 9;
    ++p;
    const bool indefinite = in[p] == 0x80;
    uint64_t inner = 0, contents = 0;
    if (const Code code = ReferenceLength(in + p, n - p, inner, contents); code != 0) return code;
    p += inner;
    if (contents > n - p) return 6;
    p += contents + (indefinite ? 2 : 0);
  }
  octets = 1;
  value = p - 1;
  return 0;
}

void TryLength(const uint8_t* in, uint64_t size) {
  uint64_t octets = 0, expected = 0, consumed = size, value = 0;
  const Code code = ReferenceLength(in, size, octets, expected);
  Require(CSASNUtil_DERDecodeLength(in, &consumed, &value) == code);
  if (code == 0) Require(consumed == octets && value == expected);
}

// Any cut into pieces ends with the same octets held, and knows no more than all of them at once.
void TryPieces(const uint8_t* in, uint64_t size, uint64_t piece) {
  CSASNDecodeContext* context = nullptr;
  Require(CSASNUtil_DERDecodeStart(&context) == 0);
  int32_t surplus = 0;
  Code code = CSResult_INCOMPLETE_DATA;
  uint64_t fed = 0;
  while (fed < size && (code == CSResult_INCOMPLETE_DATA || (code == 0 && surplus < 0))) {
    const uint64_t count = std::min(piece, size - fed);
    code = CSASNUtil_DERDecodeAddData(context, in + fed, count, &surplus);
    fed += count;
  }
  uint64_t total = 0;
  const Code determined = CSASNUtil_DERDetermineEncodingLength(in, size, &total);
  if (code == CSResult_INCOMPLETE_DATA) Require(determined == CSResult_BUFFER_TOO_SMALL);
  if (code == 0) {
    const uint64_t held = CSASNUtil_GetDecodeContextLength(context);
    Require(determined == 0 && std::equal(in, in + held, CSASNUtil_GetDecodeContextData(context)));
    if (surplus >= 0) Require(held == total || held == total + 2);
  }
  CSASNUtil_DeleteDecodeContext(&context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  for (const Type* type : Types()) TryType(*type, data, size);
  TryLength(data, size);
  TryLength(data + 1, size - 1);
  TryPieces(data, size, 1);
  TryPieces(data, size, 1 + data[size - 1] % 7);
  return 0;
}
