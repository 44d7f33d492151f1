#ifndef RZCRYPTO_TLV_TREE_H
#define RZCRYPTO_TLV_TREE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace rzcrypto::tlv {

using Bytes = std::span<const unsigned char>;

inline constexpr size_t kNone = SIZE_MAX;
/// Objects nested deeper than this are refused: no card data does it, and every walk stays shallow.
inline constexpr size_t kMaxDepth = 100;

/// Node is one object. All positions are offsets in bytes from the start of the input.
struct Node {
  size_t offset;    // of the tag
  size_t lengthAt;  // of the length octets
  size_t valueAt;
  size_t valueEnd;
  size_t end;     // of the object: valueEnd, or behind the 00 00 that ends an object of indefinite length
  size_t parent;  // index, kNone at the top
  size_t after;   // index of the first node that is not inside this one
  size_t depth;   // 0 at the top
  bool opened;    // its value was read as objects
  bool indefinite;
};

/// Fault tells why reading stopped; the offset is where the object at fault begins.
struct Fault {
  size_t offset;
  std::string message;
};

/// Tree holds the objects of an input in the order of their offsets, each before what is inside it. It borrows the
/// input.
struct Tree {
  Bytes bytes;
  std::vector<Node> nodes;
  size_t end = 0;              // of the objects at the top; padding follows
  std::optional<Fault> fault;  // then `nodes` holds the objects up to there

  Bytes Tag(const Node& node) const { return bytes.subspan(node.offset, node.lengthAt - node.offset); }
  Bytes LengthOctets(const Node& node) const { return bytes.subspan(node.lengthAt, node.valueAt - node.lengthAt); }
  Bytes Value(const Node& node) const { return bytes.subspan(node.valueAt, node.valueEnd - node.valueAt); }
  /// The index of the first object inside `parent`, or of the first one at the top for kNone; the next one beside it is
  /// its `after`, and the last one's `after` is ChildrenEnd.
  static size_t FirstChild(size_t parent) { return parent == kNone ? 0 : parent + 1; }
  size_t ChildrenEnd(size_t parent) const { return parent == kNone ? nodes.size() : nodes[parent].after; }
};

/// Tells of an object whose value would not be read as objects whether it is to be read so too.
using OpensToo = std::function<bool(size_t depth, Bytes tag)>;

/// TagSize returns the size of the tag that `bytes` begins with, or 0 when it is cut.
size_t TagSize(Bytes bytes);

/// TagText returns a tag in upper-case hex.
std::string TagText(Bytes tag);

/// Read reads `bytes` as BER-TLV objects (ISO/IEC 8825-1; definite and indefinite lengths), and the values of
/// constructed ones as objects again. Inside a primitive object that was opened too, the constructed bit means nothing:
/// PIV has there values of any kind under tags that look constructed. With `padded`, only 00 or only FF up to the end
/// is no object. Never throws for any input: see Tree::fault.
Tree Read(Bytes bytes, bool padded, const OpensToo& opensToo);

}  // namespace rzcrypto::tlv

#endif
