// rzcrypto der show and extract.

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "der_commands.h"
#include "der_tree.h"
#include "der_value.h"
#include "json_list.h"
#include "printable.h"

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
  Json facts;  // member by member: for a million of them a list would take twice the time
  facts["offset"] = node.offset;
  facts["headerLength"] = node.contentsAt - node.offset;
  facts["contentLength"] = node.contentsSize;
  facts["indefinite"] = node.indefinite;
  facts["minimal"] = node.minimal;
  facts["class"] = kClasses[node.Class()];
  facts["number"] = node.number;
  facts["constructed"] = node.IsConstructed();
  facts["cut"] = node.cut;
  facts["tag"] = TagName(node);
  if (!node.IsConstructed()) AddValue(facts, node, Contents(input, node));
  return facts;
}

/// Each element is written on a line of its own with what is inside it behind "children"; nothing is kept or recurs.
void PrintElements(const Tree& tree, Bytes input, const Options& options) {
  std::vector<size_t> open;  // the elements whose children are being written
  const auto leaveTo = [&open](size_t parent) {
    for (; !open.empty() && open.back() != parent; open.pop_back()) Print("]}");
  };
  for (size_t i = 0; i < tree.nodes.size(); ++i) {
    const Node& node = tree.nodes[i];
    leaveTo(node.parent);
    Json facts = Facts(node, input);
    if (options.paths) facts["path"] = Path(tree, i);
    std::string text = (node.place == 0 ? "\n" : ",\n") + Compact(facts);
    if (HasChildren(node)) {
      text.back() = ',';
      text += "\"children\":[";
      open.push_back(i);
    }
    Print(text);
  }
  leaveTo(kNone);
}

void PrintTreeJson(const Tree& tree, const std::string& name, const Block& block, const Options& options) {
  Json facts = {{"input", name}, {"size", block.bytes.size()}};
  if (!block.label.empty()) facts["label"] = block.label;
  if (tree.fault) facts["fault"] = {{"offset", tree.fault->offset}, {"message", tree.fault->message}};
  std::string text = Compact(facts);
  text.back() = ',';
  Print(text + "\"elements\":[");
  PrintElements(tree, View(block), options);
  Print("]}");
}

Tree ReadBlock(const Options& options, const Block& block) {
  return Read(View(block), {options.maxDepth, options.maxElements, !options.flat});
}

}  // namespace

void Show(const Options& options, Outcome& outcome) {
  const char* separator = "";
  std::string shown;  // the last one: it may fail after all, and has said so then
  if (options.json) Print("{\"inputs\":[");
  const auto show = [&](const std::string& name, const Block& block) {
    shown.clear();
    const Tree tree = ReadBlock(options, block);
    if (options.json) {
      Print(std::exchange(separator, ",\n"));
      PrintTreeJson(tree, name, block, options);
      shown = name;
    } else {
      const bool several = options.files.size() > 1 || name != InputName(options.files.front());
      if (several) Print(Printable(name + (block.label.empty() ? "" : " (" + block.label + ")")) + ":\n");
      PrintTree(tree, View(block), options);
    }
    if (tree.fault) Stop(*tree.fault);
  };
  ForEachBlock(options, outcome, show, [&](const std::string& name) {
    if (!options.json || shown == name) return;
    Print(std::exchange(separator, ",\n") + Compact({{"input", name}, {"error", outcome.reason()}}));
  });
  if (options.json) Print("]}\n");
}

void Extract(const Options& options, Outcome& outcome) {
  ForEachBlock(options, outcome, [&](const std::string&, const Block& block) {
    const Tree tree = ReadBlock(options, block);
    const size_t index = options.path.empty() ? FindOffset(tree, options.offset) : FindPath(tree, options.path);
    if (tree.fault && (index == kNone || tree.nodes[index].cut)) Stop(*tree.fault);
    if (index == kNone) throw Failure{Exit::kNo, "no element is there"};
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
