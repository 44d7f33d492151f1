// Decoding, and finding a component without decoding. The depth of recursion is that of the type, not of the input.
#include "engine.h"

namespace Tavo::Der {
namespace {

Code ReadObject(const Type& type, uint8_t identifier, Input contents, void*& slot);

// `contents` are those of the outermost identifier.
Code ReadFieldContents(const Field& field, uint8_t identifier, Input contents, void*& slot) {
  const Type& type = *field.type;
  if (field.tagging == Tagging::Explicit) {
    CS_TRY(ReadIdentifier(contents, identifier));
    CS_TRY(CheckIdentifier(type, identifier));
    Input wrapper = contents;
    CS_TRY(ReadContents(wrapper, contents));
  }
  return ReadObject(type, identifier, contents, slot);
}

// The next element of a record or list, whose identifier has been read and matched.
Code ReadField(const Field& field, uint8_t identifier, Input& in, void*& slot) {
  if (field.mask == 0) CS_TRY(CheckIdentifier(*field.type, identifier));
  Input contents{};
  CS_TRY(ReadContents(in, contents));
  return ReadFieldContents(field, identifier, contents, slot);
}

enum class Found : uint8_t { Present, Ended, Unmatched };

// Whether the next component of a record is `field`; if so its identifier is read, otherwise `in` stays. A mandatory
// one that is not there is an error.
Code NextComponent(const Field& field, Input& in, uint8_t& identifier, Found& found) {
  found = Found::Ended;
  if (AtEnd(in)) return field.optional ? CSResult_OK : CSResult_MISSING_ELEMENT;
  Input next = in;
  CS_TRY(ReadIdentifier(next, identifier));
  found = Matches(field, identifier) ? Found::Present : Found::Unmatched;
  if (found == Found::Unmatched) return field.optional ? CSResult_OK : CSResult_UNEXPECTED_ELEMENT;
  in = next;
  return CSResult_OK;
}

// What follows the last component is ignored, unless that is optional and was looked for in vain.
Code ReadRecord(const Type& type, Input in, void** components) {
  Found found = Found::Ended;
  for (uint32_t i = 0; i < type.count; ++i) {
    uint8_t identifier = 0;
    CS_TRY(NextComponent(type.fields[i], in, identifier, found));
    if (found == Found::Present) CS_TRY(ReadField(type.fields[i], identifier, in, components[i]));
  }
  return found == Found::Unmatched ? CSResult_UNEXPECTED_ELEMENT : CSResult_OK;
}

Code ReadList(const Type& type, Input in, List& list) {
  const Field& item = type.fields[0];
  while (!AtEnd(in)) {
    uint8_t identifier = 0;
    CS_TRY(ReadIdentifier(in, identifier));
    if (!Matches(item, identifier)) return item.type->wrongIdentifier;
    void** place = AppendPlace(list);
    if (place == nullptr) return CSResult_OUT_OF_MEMORY;
    CS_TRY(ReadField(item, identifier, in, *place));
  }
  return CSResult_OK;
}

// A new object in `slot`, linked there before anything else can fail: destroying the root frees every partial tree.
Code ReadObject(const Type& type, uint8_t identifier, Input contents, void*& slot) {
  if (type.kind == Kind::Leaf) return type.leaf->read(identifier, contents, slot);
  slot = Create(type);
  if (slot == nullptr) return CSResult_OUT_OF_MEMORY;
  if (type.kind == Kind::List) return ReadList(type, contents, *static_cast<List*>(slot));
  if (type.kind == Kind::Choice) {
    const Field* alternative = AlternativeFor(type, identifier);
    if (alternative == nullptr) return type.wrongIdentifier;
    auto* choice = static_cast<Choice*>(slot);
    choice->chosen = static_cast<uint64_t>(alternative - type.fields) + 1;
    return ReadFieldContents(*alternative, identifier, contents, choice->object);
  }
  return ReadRecord(type, contents, static_cast<void**>(slot));
}

// Places count from the start of the buffer.
struct Finder {
  const uint8_t* start;

  uint64_t Offset(const Input& in) const { return static_cast<uint64_t>(in.position - start); }

  // The element whose identifier has just been read.
  Code Describe(Input in, Place& place) const {
    place.lengthOffset = Offset(in);
    place.tagOffset = place.lengthOffset - 1;
    place.tagOctets = 1;
    Input contents{};
    CS_TRY(ReadContents(in, contents));
    place.contentsOffset = Offset(contents);
    place.lengthOctets = place.contentsOffset - place.lengthOffset;
    place.contentOctets = contents.remaining;
    place.endOffset = Offset(in) + (in.afterIndefinite ? 2 : 0);
    return CSResult_OK;
  }
};

Code LocateComponent(const Type& type, Input in, uint64_t index, const Finder& finder, Place& place) {
  for (uint64_t i = 0;; ++i) {
    const Field& field = type.fields[i];
    uint8_t identifier = 0;
    Found found = Found::Ended;
    CS_TRY(NextComponent(field, in, identifier, found));
    if (i == index && found != Found::Present) return CSResult_NOT_PRESENT;
    if (found != Found::Present) continue;
    if (field.mask == 0) CS_TRY(CheckIdentifier(*field.type, identifier));
    if (i == index) return finder.Describe(in, place);
    Input skipped{};
    CS_TRY(ReadContents(in, skipped));
  }
}

Code LocateItem(const Type& type, Input in, uint64_t index, const Finder& finder, Place& place) {
  for (uint64_t i = 0; !AtEnd(in); ++i) {
    uint8_t identifier = 0;
    CS_TRY(ReadIdentifier(in, identifier));
    const Field& item = type.fields[0];
    if (!Matches(item, identifier)) return item.type->wrongIdentifier;
    if (item.mask == 0) CS_TRY(CheckIdentifier(*item.type, identifier));
    if (i == index) return finder.Describe(in, place);
    Input skipped{};
    CS_TRY(ReadContents(in, skipped));
  }
  return CSResult_INDEX_OUT_OF_RANGE;
}

}  // namespace

const Field* AlternativeFor(const Type& choice, uint8_t identifier) {
  for (uint32_t i = 0; i < choice.count; ++i) {
    if (Matches(choice.fields[i], identifier)) return &choice.fields[i];
  }
  return nullptr;
}

Code CheckIdentifier(const Type& type, uint8_t identifier) {
  const bool known = type.kind == Kind::Choice ? AlternativeFor(type, identifier) != nullptr
                                               : ((identifier ^ type.identifier) & type.mask) == 0;
  return known ? static_cast<Code>(CSResult_OK) : type.wrongIdentifier;
}

Code Open(const Type& type, const uint8_t* in, const uint64_t* length, uint32_t mode, uint8_t identifier,
          Element& element) {
  if (in == nullptr || length == nullptr) return CSResult_BAD_PARAMETER;
  element = {identifier, {in, *length}, {in, *length}};
  if (mode == 0) CS_TRY(ReadIdentifier(element.rest, element.identifier));
  if (mode == 0 || type.mask == 0) CS_TRY(CheckIdentifier(type, element.identifier));
  if (mode <= 1) return ReadContents(element.rest, element.contents);
  element.rest.Skip(*length);
  return CSResult_OK;
}

Code Decode(const Type& type, const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t identifier, void*& out) {
  out = nullptr;
  Element element{};
  CS_TRY(Open(type, in, ioLength, mode, identifier, element));
  void* root = nullptr;
  if (const Code code = ReadObject(type, element.identifier, element.contents, root); code != 0) {
    Destroy(type, root);
    return code;
  }
  *ioLength -= element.rest.remaining;
  out = root;
  return CSResult_OK;
}

Code Locate(const Type& type, const uint8_t* encoded, uint64_t length, uint32_t mode, uint64_t index, Place& place) {
  Element element{};
  CS_TRY(Open(type, encoded, &length, mode, type.identifier, element));
  const Finder finder{encoded};
  return type.kind == Kind::List ? LocateItem(type, element.contents, index, finder, place)
                                 : LocateComponent(type, element.contents, index, finder, place);
}

}  // namespace Tavo::Der
