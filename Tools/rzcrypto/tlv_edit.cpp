#include "tlv_edit.h"

#include <algorithm>
#include <utility>

#include "tavo/bertlv.h"
#include "tavo/der/core.h"

namespace rzcrypto::tlv {

using namespace Tavo::Framework;

namespace {

ByteArray EncodeLength(uint64_t length) {
  ByteArray octets(9);
  uint64_t count = 0;
  CSASNUtil_DEREncodeLength(octets.data(), &count, length);
  octets.resize(count);
  return octets;
}

/// The edits of the length octets of every object that grows or shrinks by the given edits.
std::vector<Edit> LengthEdits(const Tree& tree, const std::vector<Edit>& edits) {
  // By how much the value of each object grows; modulo 2^64, so that shrinking needs no sign.
  std::vector<size_t> growth(tree.nodes.size() + 1);
  const auto of = [&](size_t index) -> size_t& { return growth[index == kNone ? tree.nodes.size() : index]; };
  for (const Edit& edit : edits) of(edit.owner) += edit.bytes.size() - (edit.to - edit.from);
  std::vector<Edit> lengths;
  for (size_t i = tree.nodes.size(); i-- > 0;) {  // what is inside an object comes before the object
    if (growth[i] == 0) continue;
    const Node& node = tree.nodes[i];
    of(node.parent) += growth[i];
    if (node.indefinite) continue;
    ByteArray octets = EncodeLength(node.valueEnd - node.valueAt + growth[i]);
    of(node.parent) += octets.size() - (node.valueAt - node.lengthAt);
    lengths.push_back({node.parent, node.lengthAt, node.valueAt, std::move(octets)});
  }
  return lengths;
}

}  // namespace

Edit SetValue(const Tree& tree, size_t index, const ByteArray& value) {
  return {index, tree.nodes[index].valueAt, tree.nodes[index].valueEnd, value};
}

Edit RemoveObject(const Tree& tree, size_t index) {
  return {tree.nodes[index].parent, tree.nodes[index].offset, tree.nodes[index].end, {}};
}

Edit AppendObject(const Tree& tree, size_t parent, const ByteArray& tag, const ByteArray& value) {
  BERTLVBuffer object;
  object.AppendValue(tag, value);
  const size_t at = parent == kNone ? tree.end : tree.nodes[parent].valueEnd;
  return {parent, at, at, object};
}

ByteArray Apply(const Tree& tree, std::vector<Edit> edits) {
  std::vector<Edit> lengths = LengthEdits(tree, edits);
  std::move(lengths.begin(), lengths.end(), std::back_inserter(edits));
  std::ranges::sort(edits,
                    [](const Edit& a, const Edit& b) { return std::pair(a.from, a.to) < std::pair(b.from, b.to); });
  ByteArray out;
  size_t at = 0;
  for (const Edit& edit : edits) {
    AppendBytes(out, tree.bytes.data() + at, edit.from - at);
    AppendBytes(out, edit.bytes);
    at = edit.to;
  }
  AppendBytes(out, tree.bytes.data() + at, tree.bytes.size() - at);
  return out;
}

}  // namespace rzcrypto::tlv
