// Where a decoder gave up. The library says why; this walks down the type beside the input, finds each component and
// decodes it alone, until the one is reached that has no part to blame.

#include <algorithm>
#include <iterator>
#include <optional>

#include "der_types.h"
#include "tavo/der/core.h"

namespace rzcrypto::der {

namespace {

constexpr std::uint32_t kWrongIdentifier[] = {CSResult_EXPECTED_UTCTIME,    CSResult_EXPECTED_GENERALIZEDTIME,
                                              CSResult_EXPECTED_SET,        CSResult_EXPECTED_BOOLEAN,
                                              CSResult_EXPECTED_SEQUENCE,   CSResult_EXPECTED_OCTET_STRING,
                                              CSResult_EXPECTED_BIT_STRING, CSResult_EXPECTED_OID,
                                              CSResult_UNKNOWN_CHOICE,      CSResult_EXPECTED_INTEGER};

/// Whether a decoder of the type takes the identifier; asked with an element that has no contents.
bool Accepts(const Type& type, std::uint8_t identifier) {
  const std::uint8_t empty[] = {identifier, 0};
  const std::uint32_t code = type.decode({empty, 0, 0}).code;
  return std::find(std::begin(kWrongIdentifier), std::end(kWrongIdentifier), code) == std::end(kWrongIdentifier);
}

bool IsContextSpecific(std::uint8_t identifier) { return identifier >> 6 == 2; }
bool IsConstructed(std::uint8_t identifier) { return (identifier & 0x20) != 0; }

/// What the decoder of a component is given: the element, or for a tag of its own the contents; those of an EXPLICIT
/// tag begin with the identifier of the component's type. `at` is where it begins.
struct Part {
  const Type* type;
  Input in;
  std::uint64_t at;
};

Part PartOf(const std::string& typeName, Bytes bytes, const Element& element) {
  const Type* type = FindType(typeName);
  const std::uint8_t identifier = bytes[element.tagAt];
  const Bytes contents = bytes.subspan(element.contentsAt, element.contentsSize);
  if (!IsContextSpecific(identifier) || Accepts(*type, identifier)) {
    return {type, {bytes.subspan(element.tagAt, element.end - element.tagAt), 0, identifier}, element.tagAt};
  }
  // A constructed tag of its own around a primitive type or a choice is EXPLICIT. Of the records and lists, the
  // extensions of a certificate stand under one; the others replace their tag.
  const bool hasForm = !type->components.empty() || !type->item.empty();
  const bool isExplicit = IsConstructed(identifier) && (!hasForm || type->name == "CSExtensions");
  return {type, {contents, isExplicit ? 0U : 2U, identifier}, element.contentsAt};
}

class Finder {
 public:
  Blame Find(const Type& type, const Input& in, std::uint64_t at) {
    const std::uint32_t code = type.decode(in).code;
    Element whole;
    const bool inside = in.mode != 0 || (!in.bytes.empty() && Accepts(type, in.bytes[0]) && Whole(in, whole));
    if (inside) {
      if (!type.components.empty()) return InRecord(type, in, at, code);
      if (!type.item.empty()) return InList(type, in, at, code);
      if (!type.alternatives.empty()) return InChoice(type, in, at, code);
    }
    return {code, at, m_path};
  }

 private:
  Blame InRecord(const Type& type, const Input& in, std::uint64_t at, std::uint32_t code) {
    Element whole;
    if (in.mode == 0) Whole(in, whole);
    std::uint64_t next = whole.contentsAt;
    for (const Component& component : type.components) {
      Element element;
      const std::uint32_t found = component.find(in, element);
      if (found == CSResult_NOT_PRESENT) continue;
      if (found != CSResult_OK) return At(component.name, found, at + next);
      if (auto blame = InPart(component.name, PartOf(component.type, in.bytes, element), at)) return *blame;
      next = element.end;
    }
    return {code, at + next, m_path};
  }

  /// Each item is found as the first of what is left, so that a long list takes no longer than its length.
  Blame InList(const Type& type, const Input& in, std::uint64_t at, std::uint32_t code) {
    Element whole{0, 0, in.bytes.size(), 0};
    if (in.mode == 0) Whole(in, whole);
    at += whole.contentsAt;
    Bytes rest = in.bytes.subspan(whole.contentsAt, whole.contentsSize);
    for (std::uint64_t index = 0;; ++index) {
      Element element;
      const std::string name = "[" + std::to_string(index) + "]";
      const std::uint32_t found = type.findItem({rest, 2, 0}, 0, element);
      if (found == CSResult_INDEX_OUT_OF_RANGE) return {code, at, m_path};
      if (found != CSResult_OK) return At(name, found, at);
      if (auto blame = InPart(name, PartOf(type.item, rest, element), at)) return *blame;
      at += element.end;
      rest = rest.subspan(element.end);
    }
  }

  /// The alternative with the identifier itself, or the one whose place is the tag's number.
  Blame InChoice(const Type& type, const Input& in, std::uint64_t at, std::uint32_t code) {
    const std::uint8_t identifier = in.mode == 0 ? in.bytes[0] : in.identifier;
    for (size_t i = 0; i < type.alternatives.size(); ++i) {
      const Component& alternative = type.alternatives[i];
      const bool byNumber = IsContextSpecific(identifier) && (identifier & 0x1F) == i;
      if (!byNumber && !Accepts(*FindType(alternative.type), identifier)) continue;
      Element element;
      if (in.mode != 0) break;
      Whole(in, element);
      if (auto blame = InPart(alternative.name, PartOf(alternative.type, in.bytes, element), at)) return *blame;
    }
    return {code, at, m_path};
  }

  static bool Whole(const Input& in, Element& element) {
    const std::uint8_t* cursor = in.bytes.data() + 1;
    std::uint64_t remaining = in.bytes.size() - 1;
    if (CSASNUtil_DERDecodeLengthInternal(&cursor, &remaining, nullptr, &element.contentsSize) != 0) return false;
    element.contentsAt = static_cast<std::uint64_t>(cursor - in.bytes.data());
    element.end = in.bytes.size();
    return true;
  }

  std::optional<Blame> InPart(const std::string& name, const Part& part, std::uint64_t at) {
    if (part.type->decode(part.in).code == CSResult_OK) return std::nullopt;
    const std::string outer = m_path;
    Extend(name);
    Blame blame = Find(*part.type, part.in, at + part.at);
    m_path = outer;
    return blame;
  }

  Blame At(const std::string& name, std::uint32_t code, std::uint64_t offset) {
    Extend(name);
    return {code, offset, m_path};
  }

  void Extend(const std::string& name) { m_path += (m_path.empty() || name[0] == '[' ? "" : ".") + name; }

  std::string m_path;
};

}  // namespace

Blame FindBlame(const Type& type, Bytes input) { return Finder().Find(type, {input, 0, 0}, 0); }

}  // namespace rzcrypto::der
