// The tool's BER-TLV tree: what is accepted tiles the input, and each edit changes its own place and lengths only.

#include "tlv_tree.h"

#include <algorithm>
#include <cstdlib>

#include "tlv_edit.h"

using namespace rzcrypto::tlv;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

Tree ReadTree(Bytes bytes, bool padded) {
  return Read(bytes, padded, [](size_t, Bytes tag) { return tag.size() == 1 && tag[0] == 0x53; });
}

/// The objects inside `parent` lie side by side from the start of its value to its end, and know their parent.
void CheckPlace(const Tree& tree, size_t parent) {
  size_t at = parent == kNone ? 0 : tree.nodes[parent].valueAt;
  for (size_t i = Tree::FirstChild(parent); i < tree.ChildrenEnd(parent); i = tree.nodes[i].after) {
    const Node& node = tree.nodes[i];
    Require(node.offset == at && node.parent == parent && node.after > i && node.after <= tree.nodes.size());
    Require(node.offset < node.lengthAt && node.lengthAt < node.valueAt && node.valueAt <= node.valueEnd);
    Require(node.end == node.valueEnd + (node.indefinite ? 2 : 0));
    Require(node.depth == (parent == kNone ? 0 : tree.nodes[parent].depth + 1) && node.depth < kMaxDepth);
    at = node.end;
  }
  Require(at == (parent == kNone ? tree.end : tree.nodes[parent].valueEnd));
}

/// The bytes of every object that holds no other and is not `but` or inside it.
ByteArray Leaves(const Tree& tree, size_t but) {
  ByteArray leaves;
  for (size_t i = 0; i < tree.nodes.size(); ++i) {
    if (i == but) i = tree.nodes[i].after;
    if (i >= tree.nodes.size()) break;
    const Node& node = tree.nodes[i];
    if (!node.opened) AppendBytes(leaves, tree.bytes.data() + node.offset, node.end - node.offset);
  }
  return leaves;
}

void CheckEdits(const Tree& tree, size_t index) {
  const Node& node = tree.nodes[index];
  const ByteArray value(tree.Value(node).begin(), tree.Value(node).end());
  Require(std::ranges::equal(Apply(tree, {SetValue(tree, index, value)}), tree.bytes));

  const ByteArray without = Apply(tree, {RemoveObject(tree, index)});
  const Tree fewer = ReadTree(without, false);
  Require(!fewer.fault && fewer.nodes.size() == tree.nodes.size() - (node.after - index));
  Require(Leaves(fewer, kNone) == Leaves(tree, index));

  const ByteArray emptied = Apply(tree, {SetValue(tree, index, {})});
  const Tree hollow = ReadTree(emptied, false);
  // In an indefinite length, 00 00 is the end of it and no object.
  if (tree.Tag(node)[0] != 0) Require(!hollow.fault && hollow.nodes[index].valueAt == hollow.nodes[index].valueEnd);

  if (!node.opened || node.depth + 1 == kMaxDepth) return;
  const ByteArray longer = Apply(tree, {AppendObject(tree, index, {0x5f, 0x20}, ByteArray(200, 0x41))});
  const Tree more = ReadTree(longer, false);
  Require(!more.fault && more.nodes.size() == tree.nodes.size() + 1);
  Require(Leaves(more, node.after) == Leaves(tree, kNone));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const bool padded : {false, true}) {
    const Tree tree = ReadTree({data, size}, padded);
    if (tree.fault) {
      Require(tree.fault->offset <= size);
      continue;
    }
    Require(padded || tree.end == size);
    CheckPlace(tree, kNone);
    for (size_t i = 0; i < tree.nodes.size(); ++i) {
      if (tree.nodes[i].opened) CheckPlace(tree, i);
    }
    Require(std::ranges::equal(Apply(tree, {}), tree.bytes));
    if (padded) continue;  // an edit can bring objects 00 00 beside the padding: they are padding then
    for (size_t i = 0; i < std::min<size_t>(tree.nodes.size(), 6); ++i) CheckEdits(tree, i);
  }
  return 0;
}
