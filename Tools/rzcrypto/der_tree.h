#ifndef RZCRYPTO_DER_TREE_H
#define RZCRYPTO_DER_TREE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace rzcrypto::der {

using Bytes = std::span<const std::uint8_t>;

inline constexpr size_t kNone = SIZE_MAX;

/// Node is one element. Positions are offsets in bytes from the start of the input.
struct Node {
  size_t offset;        // of the identifier
  size_t lengthAt;      // of the length octets
  size_t contentsAt;    // of the contents
  size_t contentsSize;  // without the closing 00 00 of an indefinite length
  size_t end;           // behind the element, a closing 00 00 included
  size_t parent;        // index, kNone at the top
  size_t place;         // among the elements beside it, from 0
  size_t depth;         // 0 at the top
  std::uint64_t number;
  std::uint8_t identifier;  // its first octet: class and constructed bit
  bool indefinite;
  bool minimal;   // identifier and length are as short as they can be
  bool cut;       // the input ends before it does; what is there of it was read
  bool contains;  // an OCTET STRING or BIT STRING whose contents are an element too, which follows as its only child

  bool IsConstructed() const { return (identifier & 0x20) != 0; }
  unsigned int Class() const { return identifier >> 6; }  // 0 universal, 1 application, 2 context-specific, 3 private
  bool Is(unsigned int universal) const { return Class() == 0 && number == universal; }
};

/// Fault tells where reading stopped and why.
struct Fault {
  size_t offset;
  std::string message;
};

/// Tree is the elements in the order of the input, each before what is inside it, as far as they can be read. The fault
/// is the first one, if there is one.
struct Tree {
  std::vector<Node> nodes;
  std::optional<Fault> fault;
};

struct Limits {
  size_t depth = 100;  // of nesting
  size_t elements = SIZE_MAX;
  bool looksInside = true;  // into OCTET and BIT STRINGs
};

/// Read reads BER elements (ITU-T X.690) with tags of any number, without recursion.
Tree Read(Bytes input, const Limits& limits);

/// Contents returns the octets that a node's value is made of.
inline Bytes Contents(Bytes input, const Node& node) { return input.subspan(node.contentsAt, node.contentsSize); }

/// Path returns the places from the top down to the node: "0/6/1". FindPath and FindOffset return the index of the node
/// with a path, and of the one that begins at an offset; kNone when there is none.
std::string Path(const Tree& tree, size_t index);
size_t FindPath(const Tree& tree, const std::vector<size_t>& places);
size_t FindOffset(const Tree& tree, size_t offset);

}  // namespace rzcrypto::der

#endif
