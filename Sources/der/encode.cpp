// Encoding: one pass that takes the size and finds what cannot be encoded, then one that writes from the end to the
// front, so that every length is known when it is written.
#include "engine.h"
#include "leaf.h"

namespace Tavo::Der {
namespace {

uint64_t Full(uint64_t contents) { return 1 + LengthOctets(contents) + contents; }

Code SizeOfContents(const Type& type, const void* object, bool strict, uint64_t& octets);

// The octets of a component: from its outermost identifier on, or that one's contents alone.
Code SizeOfField(const Field& field, const void* object, bool strict, bool contentsOnly, uint64_t& octets) {
  octets = 0;
  if (object == nullptr) return strict && !field.optional ? CSResult_MISSING_ELEMENT : CSResult_OK;
  CS_TRY(SizeOfContents(*field.type, object, strict, octets));
  if (field.tagging == Tagging::Explicit) octets = Full(octets);
  if (!contentsOnly) octets = Full(octets);
  return CSResult_OK;
}

Code SizeOfFields(const Type& type, void* const* objects, uint64_t count, bool strict, uint64_t& octets) {
  for (uint64_t i = 0; i < count; ++i) {
    uint64_t size = 0;
    CS_TRY(SizeOfField(type.fields[type.kind == Kind::List ? 0 : i], objects[i], strict, false, size));
    octets += size;
  }
  return CSResult_OK;
}

Code SizeOfContents(const Type& type, const void* object, bool strict, uint64_t& octets) {
  octets = 0;
  switch (type.kind) {
    case Kind::Leaf:
      return type.leaf->size(object, octets);
    case Kind::Record:
      return SizeOfFields(type, static_cast<void* const*>(object), type.count, strict, octets);
    case Kind::List: {
      const List& list = *static_cast<const List*>(object);
      return SizeOfFields(type, list.items, list.count, strict, octets);
    }
    case Kind::Choice: {
      const Choice& choice = *static_cast<const Choice*>(object);
      if (choice.chosen == 0) return strict ? CSResult_MISSING_ELEMENT : CSResult_OK;
      return SizeOfField(type.fields[choice.chosen - 1], choice.object, strict, true, octets);
    }
  }
  return CSResult_OK;
}

uint8_t* WriteHeader(uint8_t identifier, uint8_t* contents, const uint8_t* end) {
  uint8_t* start = WriteLength(static_cast<uint64_t>(end - contents), contents);
  *--start = identifier;
  return start;
}

uint8_t ObjectIdentifier(const Type& type, const void* object);

uint8_t FieldIdentifier(const Field& field, const void* object) {
  return field.tagging == Tagging::Plain ? ObjectIdentifier(*field.type, object) : field.identifier;
}

// The identifier of an object that stands by itself.
uint8_t ObjectIdentifier(const Type& type, const void* object) {
  if (type.mask != 0) return type.identifier;
  if (type.kind == Kind::Leaf) return static_cast<const CSASNAny*>(object)->identifier;
  const Choice& choice = *static_cast<const Choice*>(object);
  return FieldIdentifier(type.fields[choice.chosen - 1], choice.object);
}

// The contents of the component's outermost identifier.
uint8_t* WriteFieldContents(const Field& field, const void* object, uint8_t* end) {
  uint8_t* start = WriteContents(*field.type, object, end);
  if (field.tagging == Tagging::Explicit) start = WriteHeader(ObjectIdentifier(*field.type, object), start, end);
  return start;
}

uint8_t* WriteFields(const Type& type, void* const* objects, uint64_t count, uint8_t* end) {
  for (uint64_t i = count; i-- > 0;) {
    if (objects[i] == nullptr) continue;
    const Field& field = type.fields[type.kind == Kind::List ? 0 : i];
    end = WriteHeader(FieldIdentifier(field, objects[i]), WriteFieldContents(field, objects[i], end), end);
  }
  return end;
}

}  // namespace

uint8_t* WriteLength(uint64_t length, uint8_t* end) {
  const uint64_t octets = LengthOctets(length);
  if (octets == 1) {
    *--end = static_cast<uint8_t>(length);
    return end;
  }
  for (uint64_t i = 1; i < octets; ++i, length >>= 8) *--end = static_cast<uint8_t>(length);
  *--end = static_cast<uint8_t>(0x80 | (octets - 1));
  return end;
}

uint8_t* WriteContents(const Type& type, const void* object, uint8_t* end) {
  switch (type.kind) {
    case Kind::Leaf:
      return type.leaf->write(object, end);
    case Kind::Record:
      return WriteFields(type, static_cast<void* const*>(object), type.count, end);
    case Kind::List: {
      const List& list = *static_cast<const List*>(object);
      return WriteFields(type, list.items, list.count, end);
    }
    case Kind::Choice: {
      const Choice& choice = *static_cast<const Choice*>(object);
      return WriteFieldContents(type.fields[choice.chosen - 1], choice.object, end);
    }
  }
  return end;
}

Code SizeOf(const Type& type, const void* object, bool strict, Sizes& sizes) {
  sizes = {1, 1, 0};
  if (object == nullptr) {
    if (type.leaf == &kInteger) sizes.tag = 0;
    return CSResult_OK;
  }
  CS_TRY(SizeOfContents(type, object, strict, sizes.contents));
  sizes.length = LengthOctets(sizes.contents);
  return CSResult_OK;
}

Code Encode(const Type& type, const void* object, uint8_t** buffer, uint64_t* ioLength, Parts parts) {
  if (buffer == nullptr || ioLength == nullptr) return CSResult_BAD_PARAMETER;
  if (object == nullptr && type.leaf != &kInteger) return CSResult_BAD_PARAMETER;
  Sizes sizes{};
  CS_TRY(SizeOf(type, object, true, sizes));
  if (parts.tag == 0) sizes.tag = 0;
  const uint64_t total =
      sizes.tag + (parts.length != 0 ? sizes.length : 0) + (parts.contents != 0 ? sizes.contents : 0);
  uint64_t capacity = *ioLength;
  CS_TRY(CSASNUtil_PrepareBuffer(buffer, &capacity, total, nullptr));
  *ioLength = total;
  uint8_t* position = *buffer + total;
  if (parts.contents != 0 && object != nullptr) position = WriteContents(type, object, position);
  if (parts.length != 0) position = WriteLength(sizes.contents, position);
  if (sizes.tag != 0 && object != nullptr) *--position = ObjectIdentifier(type, object);
  return CSResult_OK;
}

}  // namespace Tavo::Der
