#include "tlv_tree.h"

#include <algorithm>

namespace rzcrypto::tlv {

namespace {

/// The offset from which on there are only octets 00, or only FF.
size_t PaddingStart(Bytes bytes) {
  if (bytes.empty() || (bytes.back() != 0x00 && bytes.back() != 0xff)) return bytes.size();
  size_t start = bytes.size();
  while (start > 0 && bytes[start - 1] == bytes.back()) --start;
  return start;
}

/// Length octets. A length beyond the range of size_t becomes its largest value.
struct Length {
  size_t octets;
  size_t value;
  bool indefinite;
};

/// Reads the length octets that `rest` begins with; nothing when they are cut.
std::optional<Length> ReadLength(Bytes rest) {
  if (rest.empty()) return std::nullopt;
  if (rest[0] <= 0x80) return Length{1, rest[0] & 0x7fU, rest[0] == 0x80};
  const size_t count = rest[0] & 0x7f;
  if (count > rest.size() - 1) return std::nullopt;
  size_t value = 0;
  for (const unsigned char octet : rest.subspan(1, count)) {
    value = value > SIZE_MAX >> 8 ? SIZE_MAX : value << 8 | octet;
  }
  return Length{1 + count, value, false};
}

bool IsConstructed(Bytes tag) { return (tag[0] & 0x20) != 0; }

/// A tag in a message.
std::string Named(Bytes tag) { return tag.size() <= 8 ? TagText(tag) : TagText(tag.first(8)) + "..."; }

class Reader {
 public:
  Reader(Bytes bytes, bool padded, const OpensToo& opensToo)
      : m_paddingStart(PaddingStart(bytes)), m_padded(padded), m_opensToo(opensToo) {
    m_tree.bytes = bytes;
  }

  Tree Run() {
    do {
      CloseEnded();
    } while (!AtEnd() && TakeObject());
    m_tree.end = m_at;
    for (const Open& open : m_open) m_tree.nodes[open.index].after = m_tree.nodes.size();
    return std::move(m_tree);
  }

 private:
  /// An object whose value is being read.
  struct Open {
    size_t index;
    size_t container;  // itself or the next one outside whose length is known: nothing may overrun that one
  };

  size_t Container() const { return m_open.empty() ? kNone : m_open.back().container; }
  size_t Limit() const { return Container() == kNone ? m_tree.bytes.size() : m_tree.nodes[Container()].end; }
  std::string ContainerName() const {
    if (Container() == kNone) return "the input";
    const Node& node = m_tree.nodes[Container()];
    return Named(m_tree.Tag(node)) + " (at offset " + std::to_string(node.offset) + ")";
  }

  bool InPrimitive() const { return !m_open.empty() && !IsConstructed(m_tree.Tag(m_tree.nodes[m_open.back().index])); }
  bool AtEnd() const {
    if (!m_open.empty()) return false;
    return m_at == m_tree.bytes.size() || (m_padded && m_at >= m_paddingStart);
  }
  bool AtEndMark() const { return Limit() - m_at >= 2 && m_tree.bytes[m_at] == 0 && m_tree.bytes[m_at + 1] == 0; }

  void CloseEnded() {
    while (!m_open.empty()) {
      Node& node = m_tree.nodes[m_open.back().index];
      if (node.indefinite) {
        if (!AtEndMark()) return;
        node.valueEnd = m_at;
        m_at += 2;
        node.end = m_at;
      } else if (m_at != node.end) {
        return;
      }
      node.after = m_tree.nodes.size();
      m_open.pop_back();
    }
  }

  bool Fail(std::string message) {
    if (m_open.empty() && !m_padded && m_at >= m_paddingStart) {
      message += "; from here on it is all " + TagText(m_tree.bytes.last(1)) + ": if that is padding, use --padded";
    }
    m_tree.fault = Fault{m_at, std::move(message)};
    return false;
  }

  /// Adds the object at the position and goes on to its value, or behind it when the value is not to be read.
  bool TakeObject() {
    if (m_open.size() == kMaxDepth) return Fail("nested deeper than " + std::to_string(kMaxDepth) + " levels");
    const Bytes rest = m_tree.bytes.subspan(m_at, Limit() - m_at);
    if (rest.empty()) {
      return Fail("the end 00 00 of the indefinite length at offset " +
                  std::to_string(m_tree.nodes[m_open.back().index].lengthAt) + " is missing in " + ContainerName());
    }
    const size_t tagSize = TagSize(rest);
    if (tagSize == 0) return Fail("a tag is cut by the end of " + ContainerName());
    const Bytes tag = rest.first(tagSize);
    const auto length = ReadLength(rest.subspan(tagSize));
    if (!length) return Fail("the length of " + Named(tag) + " is cut by the end of " + ContainerName());
    return Add(tag, *length, rest.size() - tagSize - length->octets);
  }

  bool Add(Bytes tag, const Length& length, size_t left) {
    const bool constructed = IsConstructed(tag);
    const bool opened = (constructed && !InPrimitive()) || m_opensToo(m_open.size(), tag);
    if (length.indefinite && !(constructed && opened)) {
      return Fail(Named(tag) + " is read as primitive, but its length 80 is indefinite");
    }
    if (length.value > left) {
      return Fail(Named(tag) + " announces " + (length.value == SIZE_MAX ? "at least " : "") +
                  std::to_string(length.value) + " bytes of value, but " + ContainerName() + " has " +
                  std::to_string(left) + " left");
    }
    const size_t lengthAt = m_at + tag.size();
    const size_t valueAt = lengthAt + length.octets;
    const size_t valueEnd = valueAt + (length.indefinite ? left : length.value);
    const size_t index = m_tree.nodes.size();
    m_tree.nodes.push_back({m_at, lengthAt, valueAt, valueEnd, valueEnd, m_open.empty() ? kNone : m_open.back().index,
                            index + 1, m_open.size(), opened, length.indefinite});
    m_at = opened ? valueAt : valueEnd;
    if (opened) m_open.push_back({index, length.indefinite ? Container() : index});
    return true;
  }

  Tree m_tree;
  std::vector<Open> m_open;  // outermost first
  size_t m_at = 0;
  size_t m_paddingStart;
  bool m_padded;
  const OpensToo& m_opensToo;
};

}  // namespace

size_t TagSize(Bytes bytes) {
  if (bytes.empty()) return 0;
  if ((bytes[0] & 0x1f) != 0x1f) return 1;
  for (size_t i = 1; i < bytes.size(); ++i) {
    if ((bytes[i] & 0x80) == 0) return i + 1;
  }
  return 0;
}

std::string TagText(Bytes tag) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char octet : tag) {
    text += kDigits[octet >> 4];
    text += kDigits[octet & 15];
  }
  return text;
}

Tree Read(Bytes bytes, bool padded, const OpensToo& opensToo) { return Reader(bytes, padded, opensToo).Run(); }

}  // namespace rzcrypto::tlv
