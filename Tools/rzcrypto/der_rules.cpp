// The restrictions that DER puts on BER, element by element.

#include "der_rules.h"

#include <algorithm>
#include <string_view>

#include "der_value.h"

namespace rzcrypto::der {

namespace {

/// What is wrong, as the end of a sentence that begins with the element; empty when nothing is.
using Wrong = std::string_view;

constexpr unsigned int kBoolean = 1, kInteger = 2, kBitString = 3, kOctetString = 4, kNull = 5, kOid = 6,
                       kEnumerated = 10, kRelativeOid = 13, kSet = 17, kUtcTime = 23, kGeneralizedTime = 24;

Wrong WrongForm(const Node& node) {
  // EXTERNAL, EMBEDDED PDV, SEQUENCE, SET and CHARACTER STRING.
  static constexpr unsigned int kConstructed[] = {8, 11, 16, 17, 29};
  if (node.indefinite) return "its length is indefinite";
  if (!node.minimal) return "its identifier or length is longer than it need be";
  if (node.Class() != 0) return "";
  if (node.number == 0) return "the tag 0 belongs to end markers alone";
  const bool shouldBe =
      std::find(std::begin(kConstructed), std::end(kConstructed), node.number) != std::end(kConstructed);
  if (shouldBe == node.IsConstructed()) return "";
  return shouldBe ? "it is not constructed" : "it is constructed, in pieces";
}

Wrong WrongBoolean(Bytes contents) {
  if (contents.size() != 1) return "its contents are not one octet";
  return contents[0] == 0 || contents[0] == 0xFF ? "" : "its octet is neither 00 nor FF";
}

Wrong WrongInteger(Bytes contents) {
  if (contents.empty()) return "it has no contents";
  if (contents.size() == 1) return "";
  const bool sign = (contents[1] & 0x80) != 0;
  return contents[0] == (sign ? 0xFF : 0) ? "its first octet is needless" : "";
}

Wrong WrongBitString(Bytes contents) {
  if (contents.empty()) return "it has no octet for the number of unused bits";
  if (contents[0] > 7 || (contents[0] != 0 && contents.size() == 1)) return "it cannot have so many unused bits";
  return (contents.back() & ((1U << contents[0]) - 1)) == 0 || contents.size() == 1 ? "" : "its unused bits are not 0";
}

Wrong WrongOid(Bytes contents) {
  if (contents.empty()) return "it has no contents";
  for (size_t i = 0; i < contents.size(); ++i) {
    const bool begins = i == 0 || contents[i - 1] < 0x80;
    if (begins && contents[i] == 0x80) return "an arc of it begins with a needless octet";
  }
  return contents.back() >= 0x80 ? "its last arc is cut off" : "";
}

bool AreDigits(Bytes text) {
  return std::all_of(text.begin(), text.end(), [](std::uint8_t c) { return c >= '0' && c <= '9'; });
}

Wrong WrongUtcTime(Bytes contents) {
  constexpr size_t kDigits = 12;
  const bool right = contents.size() == kDigits + 1 && contents.back() == 'Z' && AreDigits(contents.first(kDigits));
  return right ? "" : "it is not written YYMMDDhhmmssZ";
}

Wrong WrongGeneralizedTime(Bytes contents) {
  constexpr size_t kDigits = 14;
  bool right = contents.size() > kDigits && contents.back() == 'Z' && AreDigits(contents.first(kDigits));
  if (right && contents.size() > kDigits + 1) {
    const Bytes fraction = contents.subspan(kDigits, contents.size() - kDigits - 1);
    right = fraction.size() > 1 && fraction[0] == '.' && AreDigits(fraction.subspan(1)) && fraction.back() != '0';
  }
  return right ? "" : "it is not written YYYYMMDDhhmmss, a fraction without zeros behind it, Z";
}

Wrong WrongContents(const Node& node, Bytes contents) {
  if (node.Class() != 0) return "";
  switch (node.number) {
    case kBoolean:
      return WrongBoolean(contents);
    case kInteger:
    case kEnumerated:
      return WrongInteger(contents);
    case kBitString:
      return WrongBitString(contents);
    case kNull:
      return contents.empty() ? "" : "it has contents";
    case kOid:
    case kRelativeOid:
      return WrongOid(contents);
    case kUtcTime:
      return WrongUtcTime(contents);
    case kGeneralizedTime:
      return WrongGeneralizedTime(contents);
    default:
      return "";
  }
}

/// Whether a component of the type, at any depth, is an Extension.
bool HasExtensions(const Type& type) {
  const auto has = [](const std::string& name) { return HasExtensions(*FindType(name)); };
  return type.name == "CSExtension" || (!type.item.empty() && has(type.item)) ||
         std::any_of(type.components.begin(), type.components.end(),
                     [&](const Component& component) { return has(component.type); });
}

class Judge {
 public:
  Judge(const Type& type, Bytes input)
      : m_input(input),
        m_tree(Read(input, {SIZE_MAX, SIZE_MAX, false})),
        m_hasExtensions(HasExtensions(type)),
        m_version(type.name == "CSCertificate"      ? "0/0/0"
                  : type.name == "CSTBSCertificate" ? "0/0"
                                                    : "") {}

  std::optional<Fault> Run() const {
    for (size_t i = 0; i < m_tree.nodes.size(); ++i) {
      const Node& node = m_tree.nodes[i];
      if (node.cut) break;
      if (const Wrong wrong = WrongAt(i); !wrong.empty()) {
        return Fault{node.offset, TagName(node) + ": " + std::string(wrong)};
      }
    }
    return m_tree.fault;
  }

 private:
  Wrong WrongAt(size_t index) const {
    const Node& node = m_tree.nodes[index];
    if (const Wrong wrong = WrongForm(node); !wrong.empty()) return wrong;
    if (IsDefault(index)) return "it has the value that it has when it is absent";
    if (node.Is(kSet)) return IsSorted(index) ? "" : "its elements are not sorted";
    return node.IsConstructed() ? "" : WrongContents(node, Contents(m_input, node));
  }

  Bytes Encoding(size_t index) const {
    const Node& node = m_tree.nodes[index];
    return m_input.subspan(node.offset, node.end - node.offset);
  }

  /// The index of the element behind one, in the same element; kNone when that is the last.
  size_t Next(size_t index) const {
    const size_t next = FindOffset(m_tree, m_tree.nodes[index].end);
    return next != kNone && m_tree.nodes[next].parent == m_tree.nodes[index].parent ? next : kNone;
  }

  /// Either as a SET OF, by the encodings, or as a SET, by the tags: which of the two it is the encoding does not tell.
  bool IsSorted(size_t set) const {
    const size_t first = set + 1;
    if (first == m_tree.nodes.size() || m_tree.nodes[first].parent != set) return true;
    bool byEncoding = true;
    bool byTag = true;
    for (size_t a = first, b = Next(a); b != kNone; a = b, b = Next(b)) {
      const Bytes x = Encoding(a);
      const Bytes y = Encoding(b);
      const Node& m = m_tree.nodes[a];
      const Node& n = m_tree.nodes[b];
      byEncoding = byEncoding && !std::lexicographical_compare(y.begin(), y.end(), x.begin(), x.end());
      byTag = byTag && std::pair(m.Class(), m.number) < std::pair(n.Class(), n.number);
    }
    return byEncoding || byTag;
  }

  /// "critical BOOLEAN DEFAULT FALSE" between an OBJECT IDENTIFIER and an OCTET STRING, and "version [0] DEFAULT v1".
  bool IsDefault(size_t index) const {
    const Node& node = m_tree.nodes[index];
    const Bytes contents = Contents(m_input, node);
    if (m_hasExtensions && node.Is(kBoolean) && node.place == 1 && contents.size() == 1 && contents[0] == 0) {
      const size_t next = Next(index);
      return next != kNone && m_tree.nodes[next].Is(kOctetString) && m_tree.nodes[index - 1].Is(kOid);
    }
    static constexpr std::uint8_t kVersion1[] = {2, 1, 0};
    return !m_version.empty() && node.identifier == 0xA0 && node.place == 0 && Path(m_tree, index) == m_version &&
           std::equal(contents.begin(), contents.end(), std::begin(kVersion1), std::end(kVersion1));
  }

  Bytes m_input;
  Tree m_tree;
  bool m_hasExtensions;
  std::string m_version;  // path of the version of a certificate
};

}  // namespace

std::optional<Fault> FindNotDer(const Type& type, Bytes input) { return Judge(type, input).Run(); }

}  // namespace rzcrypto::der
