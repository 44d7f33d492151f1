#include "der_tree.h"

#include <algorithm>

#include "der_commands.h"

namespace rzcrypto::der {

namespace {

constexpr unsigned int kBitString = 3, kOctetString = 4, kSequence = 16, kSet = 17;

/// What may stand by itself inside a string: a type that is known, in the form that it has.
bool IsPlausible(const Node& node) {
  static constexpr unsigned int kPrimitive[] = {1, 2, 3, 4, 5, 6, 10, 12, 19, 20, 22, 23, 24, 26, 28, 30};
  if (node.Class() != 0 || !node.minimal || node.indefinite) return false;
  if (node.IsConstructed()) return node.number == kSequence || node.number == kSet;
  return std::find(std::begin(kPrimitive), std::end(kPrimitive), node.number) != std::end(kPrimitive);
}

class Reader {
 public:
  Reader(Bytes input, const Limits& limits) : m_input(input), m_limits(limits) {}

  Tree Run() {
    for (Close(); !m_stopped && (!m_open.empty() || m_at < m_input.size()); Close()) Take();
    for (const Open& open : m_open) m_tree.nodes[open.index].cut |= m_tree.nodes[open.index].indefinite;
    return std::move(m_tree);
  }

 private:
  struct Open {
    size_t index;
    size_t limit;  // what is inside must end here
    size_t children = 0;
  };

  size_t Limit() const { return m_open.empty() ? m_input.size() : m_open.back().limit; }

  void Note(size_t offset, std::string message) {
    if (!m_tree.fault) m_tree.fault = Fault{offset, std::move(message)};
  }
  void Fail(size_t offset, std::string message) {
    Note(offset, std::move(message));
    m_stopped = true;
  }

  /// Leaves the elements that end here.
  void Close() {
    while (!m_open.empty() && !m_stopped) {
      Node& node = m_tree.nodes[m_open.back().index];
      if (node.indefinite) {
        const Bytes rest = m_input.subspan(m_at, Limit() - m_at);
        if (rest.size() < 2 || rest[0] != 0 || rest[1] != 0) return;
        node.contentsSize = m_at - node.contentsAt;
        m_at += 2;
        node.end = m_at;
      } else if (m_at != node.end) {
        return;
      }
      m_open.pop_back();
    }
  }

  void Take() {
    Node node{};
    node.offset = m_at;
    node.parent = m_open.empty() ? kNone : m_open.back().index;
    node.depth = m_open.size();
    node.minimal = true;
    if (node.depth >= m_limits.depth) {
      return Fail(m_at, "nested deeper than " + std::to_string(m_limits.depth) + " (--max-depth)");
    }
    if (m_tree.nodes.size() == m_limits.elements) {
      m_hasTooMany = true;
      return Fail(m_at, "more than " + Count(m_limits.elements, "element") + " (--max-elements)");
    }
    if (m_at == Limit())
      return Fail(m_at, "the 00 00 that ends the element at offset " + Start(node.parent) + " is missing");
    if (!TakeIdentifier(node) || !TakeLength(node)) return;
    node.place = m_open.empty() ? m_top++ : m_open.back().children++;
    Enter(node);
  }

  std::string Start(size_t index) const { return std::to_string(m_tree.nodes[index].offset); }

  bool TakeIdentifier(Node& node) {
    node.identifier = m_input[m_at++];
    node.number = node.identifier & 0x1F;
    if (node.number != 0x1F) return true;
    node.number = 0;
    for (bool first = true;; first = false) {
      if (m_at == Limit()) return Cut(node.offset, "identifier");
      const std::uint8_t octet = m_input[m_at++];
      if (first && octet == 0x80) node.minimal = false;
      if (node.number >> 57 != 0) {
        Fail(node.offset, "the tag number does not fit 64 bits");
        return false;
      }
      node.number = node.number << 7 | (octet & 0x7F);
      if (octet < 0x80) break;
    }
    node.minimal = node.minimal && node.number > 30;
    return true;
  }

  bool TakeLength(Node& node) {
    node.lengthAt = m_at;
    if (m_at == Limit()) return Cut(node.offset, "length");
    const std::uint8_t first = m_input[m_at++];
    std::uint64_t length = first & 0x7F;
    node.indefinite = first == 0x80;
    if (first > 0x80) {
      const size_t octets = length;
      if (octets > Limit() - m_at) return Cut(node.offset, "length");
      length = 0;
      for (size_t i = 0; i < octets; ++i) {
        length = length >> 56 != 0 ? UINT64_MAX : length << 8 | m_input[m_at + i];
      }
      node.minimal = node.minimal && m_input[m_at] != 0 && length > 0x7F;
      m_at += octets;
    }
    node.contentsAt = m_at;
    const size_t left = Limit() - m_at;
    if (node.indefinite && !node.IsConstructed()) {
      Fail(node.offset, "a primitive element has an indefinite length");
      return false;
    }
    node.cut = !node.indefinite && length > left;
    if (node.cut) {
      const std::string least = length == UINT64_MAX ? "at least " : "";
      Note(node.offset, "its contents should have " + least + Count(length, "byte") + ", " + std::to_string(left) +
                            (left == 1 ? " is left" : " are left"));
    }
    node.contentsSize = node.indefinite || node.cut ? left : length;
    node.end = node.contentsAt + node.contentsSize;
    return true;
  }

  bool Cut(size_t offset, const char* part) {
    Fail(offset, std::string("its ") + part + " is cut off");
    return false;
  }

  /// Adds the element and goes inside if there is something inside.
  void Enter(Node& node) {
    const size_t skipped = m_limits.looksInside && !node.IsConstructed() && !node.cut ? InsideAt(node) : kNone;
    node.contains = skipped != kNone;
    if (node.IsConstructed() || node.contains) m_open.push_back({m_tree.nodes.size(), node.end});
    m_at = node.contains ? node.contentsAt + skipped : node.IsConstructed() ? node.contentsAt : node.end;
    m_tree.nodes.push_back(node);
  }

  /// After how many octets of the contents an element begins that ends with them; kNone when there is none. It counts
  /// too when the limits keep it from being read: reading on then says so.
  size_t InsideAt(const Node& node) const {
    const Bytes contents = Contents(m_input, node);
    const size_t skipped = node.Is(kBitString) ? 1 : 0;
    if (!node.Is(kOctetString) && !(node.Is(kBitString) && !contents.empty() && contents[0] == 0)) return kNone;
    const Bytes inside = contents.subspan(skipped);
    if (inside.size() < 2 || inside[0] == 0) return kNone;
    Reader reader(inside, {SIZE_MAX, m_limits.elements, false});
    const Tree tree = reader.Run();
    const bool readable = !tree.fault || reader.m_hasTooMany;
    const bool whole = readable && tree.nodes.front().end == inside.size();
    return whole && IsPlausible(tree.nodes.front()) ? skipped : kNone;
  }

  Bytes m_input;
  Limits m_limits;
  Tree m_tree;
  std::vector<Open> m_open;  // outermost first
  size_t m_at = 0;
  size_t m_top = 0;
  bool m_stopped = false;
  bool m_hasTooMany = false;  // elements, for the limit
};

}  // namespace

Tree Read(Bytes input, const Limits& limits) { return Reader(input, limits).Run(); }

std::string Path(const Tree& tree, size_t index) {
  std::string path;
  for (; index != kNone; index = tree.nodes[index].parent) {
    path.insert(0, std::to_string(tree.nodes[index].place) + (path.empty() ? "" : "/"));
  }
  return path;
}

size_t FindPath(const Tree& tree, const std::vector<size_t>& places) {
  size_t parent = kNone;
  size_t index = 0;
  for (const size_t place : places) {
    // Elements follow their parent; those of another parent lie between them.
    while (index < tree.nodes.size() && !(tree.nodes[index].parent == parent && tree.nodes[index].place == place))
      ++index;
    if (index == tree.nodes.size()) return kNone;
    parent = index++;
  }
  return parent;
}

size_t FindOffset(const Tree& tree, size_t offset) {
  const auto found = std::lower_bound(tree.nodes.begin(), tree.nodes.end(), offset,
                                      [](const Node& node, size_t wanted) { return node.offset < wanted; });
  return found == tree.nodes.end() || found->offset != offset ? kNone : static_cast<size_t>(found - tree.nodes.begin());
}

}  // namespace rzcrypto::der
