// rzcrypto der show and extract.

#include <unistd.h>

#include <algorithm>

#include "der_commands.h"
#include "der_tree.h"
#include "der_value.h"

namespace rzcrypto::der {

namespace {

Bytes View(const Block& block) { return {block.bytes.data(), block.bytes.size()}; }

[[noreturn]] void Stop(const Fault& fault) {
  throw Failure{Exit::kBadInput, "offset " + std::to_string(fault.offset) + ": " + fault.message};
}

bool HasChildren(const Node& node) { return node.IsConstructed() || node.contains; }

std::string Padded(std::string text, size_t width) {
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

std::string LengthText(const Node& node) {
  return std::to_string(node.contentsAt - node.offset) + "+" + std::to_string(node.contentsSize) +
         (node.indefinite ? "~"
          : node.minimal  ? " "
                          : "!");
}

std::string Line(const Node& node, Bytes input, const Options& options) {
  std::string line = std::string(2 * node.depth, ' ') + TagName(node) + (node.cut ? ", cut off" : "");
  if (node.contains) return line + ", contains:";
  if (!node.IsConstructed()) {
    const std::string value = ValueText(node, Contents(input, node), options.maxValue);
    if (!value.empty()) line += "  " + value;
  }
  return line;
}

void PrintTree(const Tree& tree, Bytes input, const Options& options) {
  const size_t offsets = std::to_string(input.size()).size();
  for (size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node& node = tree.nodes[i];
    const std::string path = options.paths ? Path(tree, i) : "";
    Print(Padded(std::to_string(node.offset), offsets) + Padded(LengthText(node), offsets + 5) + "  " +
          Line(node, input, options) + (path.empty() ? "" : "  @" + path) + "\n");
  }
}

Json Facts(const Node& node, Bytes input) {
  static constexpr const char* kClasses[] = {"universal", "application", "context-specific", "private"};
  Json facts = {{"offset", node.offset},
                {"headerLength", node.contentsAt - node.offset},
                {"contentLength", node.contentsSize},
                {"indefinite", node.indefinite},
                {"minimal", node.minimal},
                {"class", kClasses[node.Class()]},
                {"number", node.number},
                {"constructed", node.IsConstructed()},
                {"cut", node.cut},
                {"tag", TagName(node)}};
  if (!node.IsConstructed()) AddValue(facts, node, Contents(input, node));
  return facts;
}

/// The children are moved into their parents from the last node to the first, so that nothing recurs.
Json TreeJson(const Tree& tree, Bytes input) {
  std::vector<Json> children(tree.nodes.size() + 1, Json::array());
  const auto childrenOf = [&](size_t index) -> Json& { return children[index == kNone ? tree.nodes.size() : index]; };
  for (size_t i = tree.nodes.size(); i-- > 0;) {
    Json facts = Facts(tree.nodes[i], input);
    if (HasChildren(tree.nodes[i])) {
      std::reverse(childrenOf(i).begin(), childrenOf(i).end());
      facts["children"] = std::move(childrenOf(i));
    }
    childrenOf(tree.nodes[i].parent).push_back(std::move(facts));
  }
  std::reverse(childrenOf(kNone).begin(), childrenOf(kNone).end());
  return std::move(childrenOf(kNone));
}

Tree ReadBlock(const Options& options, const Block& block) {
  return Read(View(block), {options.maxDepth, !options.flat});
}

}  // namespace

void Show(const Options& options, Outcome& outcome) {
  Json list = Json::array();
  ForEachBlock(options, outcome, [&](const std::string& name, const Block& block) {
    const Tree tree = ReadBlock(options, block);
    if (options.json) {
      Json facts = {{"input", name}, {"size", block.bytes.size()}};
      if (!block.label.empty()) facts["label"] = block.label;
      facts["elements"] = TreeJson(tree, View(block));
      if (tree.fault) facts["fault"] = {{"offset", tree.fault->offset}, {"message", tree.fault->message}};
      list.push_back(std::move(facts));
    } else {
      const bool several = options.files.size() > 1 || name != InputName(options.files.front());
      if (several) Print(name + (block.label.empty() ? "" : " (" + block.label + ")") + ":\n");
      PrintTree(tree, View(block), options);
    }
    if (tree.fault) Stop(*tree.fault);
  });
  if (options.json) PrintJson({{"inputs", std::move(list)}});
}

void Extract(const Options& options, Outcome& outcome) {
  ForEachBlock(options, outcome, [&](const std::string&, const Block& block) {
    const Tree tree = ReadBlock(options, block);
    const size_t index = FindPath(tree, options.path);
    if (tree.fault && (index == kNone || tree.nodes[index].cut)) Stop(*tree.fault);
    if (index == kNone) throw Failure{Exit::kNo, "no element has this path"};
    const Node& node = tree.nodes[index];
    const Bytes bytes =
        options.contents ? Contents(View(block), node) : View(block).subspan(node.offset, node.end - node.offset);
    const ByteArray out(bytes.begin(), bytes.end());
    if (options.hex || isatty(STDOUT_FILENO) == 1) {
      Print(Hex(out) + "\n");
    } else {
      Print(out);
    }
    if (tree.fault) Stop(*tree.fault);
  });
}

}  // namespace rzcrypto::der
