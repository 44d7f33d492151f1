#include "tlv_print.h"

#include <algorithm>
#include <map>
#include <vector>

#include "encoding.h"
#include "printable.h"

namespace rzcrypto::tlv {

namespace {

constexpr size_t kBytesPerLine = 16;

bool IsPrintable(unsigned char octet) { return octet >= 0x20 && octet < 0x7f; }

std::string NameOf(const Tree& tree, const Names& names, const Node& node) {
  return names.Find(node.parent == kNone ? Bytes() : tree.Tag(tree.nodes[node.parent]), tree.Tag(node));
}

/// "41 42  |AB|", the hex padded to `width` bytes, which are not fewer.
std::string HexAndText(Bytes bytes, size_t width) {
  std::string hex;
  std::string text;
  for (const unsigned char octet : bytes) {
    hex += (hex.empty() ? "" : " ") + Hex(Bytes(&octet, 1));
    text += IsPrintable(octet) ? static_cast<char>(octet) : '.';
  }
  hex.resize(3 * width - 1, ' ');
  return hex + "  |" + text + "|";
}

void PrintValue(Bytes value, const std::string& indent, bool brief) {
  if (value.size() <= kBytesPerLine) {
    Print(value.empty() ? "\n" : "  " + HexAndText(value, value.size()) + "\n");
    return;
  }
  Print("\n");
  for (size_t at = 0; at < value.size(); at += kBytesPerLine) {
    Print(indent + HexAndText(value.subspan(at, std::min(kBytesPerLine, value.size() - at)), kBytesPerLine) + "\n");
    if (brief) break;
  }
  if (brief) Print(indent + "... " + std::to_string(value.size() - kBytesPerLine) + " more bytes\n");
}

/// For each object, how many objects with the same tag stand before it in the same place.
std::vector<size_t> CountTwins(const Tree& tree) {
  std::map<std::pair<size_t, std::string>, size_t> seen;
  std::vector<size_t> twins;
  twins.reserve(tree.nodes.size());
  for (const Node& node : tree.nodes) twins.push_back(seen[{node.parent, TagText(tree.Tag(node))}]++);
  return twins;
}

class JsonWriter {
 public:
  JsonWriter(const Tree& tree, const Names& names) : m_tree(tree), m_names(names), m_twins(CountTwins(tree)) {}

  Json Children(size_t parent) const {
    Json list = Json::array();
    for (size_t i = Tree::FirstChild(parent); i < m_tree.ChildrenEnd(parent); i = m_tree.nodes[i].after) {
      list.push_back(Object(i));
    }
    return list;
  }

  /// Goes as deep as the objects are nested: Read keeps that below kMaxDepth.
  Json Object(size_t index) const {
    static constexpr const char* kClasses[] = {"universal", "application", "context-specific", "private"};
    const Node& node = m_tree.nodes[index];
    const Bytes tag = m_tree.Tag(node);
    const Bytes value = m_tree.Value(node);
    const std::string name = NameOf(m_tree, m_names, node);
    Json object = {{"path", PathTo(index)},
                   {"offset", node.offset},
                   {"tag", TagText(tag)},
                   {"class", kClasses[tag[0] >> 6]},
                   {"constructed", (tag[0] & 0x20) != 0},
                   {"length", value.size()},
                   {"lengthOctets", Hex(m_tree.LengthOctets(node))},
                   {"indefinite", node.indefinite},
                   {"name", name.empty() ? Json(nullptr) : Json(name)}};
    if (node.opened) {
      object["objects"] = Children(index);
      return object;
    }
    object["value"] = Hex(value);
    const bool text = !value.empty() && std::ranges::all_of(value, IsPrintable);
    object["text"] = text ? Json(std::string(value.begin(), value.end())) : Json(nullptr);
    return object;
  }

 private:
  std::string PathTo(size_t index) const {
    const Node& node = m_tree.nodes[index];
    std::string path = node.parent == kNone ? "" : PathTo(node.parent) + "/";
    path += TagText(m_tree.Tag(node));
    if (m_twins[index] != 0) path += "[" + std::to_string(m_twins[index]) + "]";
    return path;
  }

  const Tree& m_tree;
  const Names& m_names;
  std::vector<size_t> m_twins;
};

}  // namespace

void PrintTree(const Tree& tree, const Names& names, bool brief) {
  const size_t width = std::max<size_t>(4, std::to_string(tree.bytes.size()).size());
  for (const Node& node : tree.nodes) {
    const std::string offset = std::to_string(node.offset);
    const std::string indent(2 + 2 * node.depth, ' ');
    const std::string name = NameOf(tree, names, node);
    std::string line(width - offset.size(), ' ');
    line.append(offset).append(indent).append(TagText(tree.Tag(node))).append(" ");
    line += std::to_string(node.valueEnd - node.valueAt) + (node.indefinite ? " indefinite" : "");
    Print(line + (name.empty() ? "" : "  " + Printable(name)));
    if (node.opened) {
      Print("\n");
    } else {
      PrintValue(tree.Value(node), std::string(width + 2, ' ') + indent, brief);
    }
  }
  if (!tree.fault && tree.end < tree.bytes.size()) {
    Print(std::to_string(tree.bytes.size() - tree.end) + " bytes of padding " + TagText(tree.bytes.last(1)) + "\n");
  }
}

Json TreeJson(const Tree& tree, const Names& names) {
  Json json = {{"size", tree.bytes.size()}, {"objects", JsonWriter(tree, names).Children(kNone)}};
  if (tree.fault) {
    json["error"] = {{"offset", tree.fault->offset}, {"message", tree.fault->message}};
  } else {
    const size_t padding = tree.bytes.size() - tree.end;
    json["padding"] = padding;
    if (padding > 0) json["paddingOctet"] = TagText(tree.bytes.last(1));
  }
  return json;
}

Json ObjectsJson(const Tree& tree, const Names& names, const std::vector<size_t>& indices) {
  const JsonWriter writer(tree, names);
  Json list = Json::array();
  for (const size_t index : indices) {
    list.push_back(writer.Object(index));
    list.back()["value"] = Hex(tree.Value(tree.nodes[index]));
  }
  return list;
}

}  // namespace rzcrypto::tlv
