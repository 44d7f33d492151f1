#include "tlv_verbs.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "encoding.h"
#include "io.h"
#include "tlv_edit.h"
#include "tlv_names.h"
#include "tlv_path.h"
#include "tlv_print.h"

namespace rzcrypto::tlv {

namespace {

/// The bytes of a file written in binary, hex or PEM.
ByteArray ReadBytes(const std::string& file, bool binary) {
  ByteArray input = ReadInput(file);
  if (binary) return input;
  if (std::ranges::all_of(input, [](unsigned char octet) { return std::isspace(octet) != 0; })) return {};
  Decoded decoded = Decode(input);
  RequireNoSlip(decoded, "if it is binary, use --binary");
  if (decoded.blocks.size() != 1) {
    throw Failure{Exit::kBadInput, std::to_string(decoded.blocks.size()) + " PEM blocks; give one at a time"};
  }
  return std::move(decoded.blocks.front().bytes);
}

/// Runs `read` for a file beside the one that is being done; its failures name that one.
template <class Read>
auto Naming(const std::string& file, Read&& read) -> decltype(read()) {
  try {
    return read();
  } catch (Failure& failure) {
    failure.subject = InputName(file);
    throw;
  }
}

bool IsStandardInput(const std::string& file) { return file.empty() || file == "-"; }

ByteArray ReadValue(const Options& options) {
  if (!options.value.starts_with('@')) return FromHex(options.value).value();
  const std::string file = options.value.substr(1);
  if (IsStandardInput(file) && IsStandardInput(options.file)) {
    throw Failure{Exit::kUsage, "cannot be both VALUE and FILE"};
  }
  return Naming(file, [&] { return ReadBytes(file, options.binary); });
}

std::string FaultText(const Fault& fault) { return "offset " + std::to_string(fault.offset) + ": " + fault.message; }

Tree ReadSound(Bytes bytes, const Options& options, const OpensToo& opens) {
  Tree tree = Read(bytes, options.padded, opens);
  if (tree.fault) throw Failure{Exit::kBadInput, FaultText(*tree.fault)};
  return tree;
}

/// Prints bytes in binary, or in hex for a person to read.
void PrintBytes(Bytes bytes, bool hex) {
  if (hex || isatty(STDOUT_FILENO) != 0) {
    Print(Hex(bytes) + "\n");
  } else {
    Print(AsText(bytes));
  }
}

Names ReadNames(const std::string& file) {
  Names names;
  if (file.empty()) return names;
  Naming(file, [&] {
    const ByteArray text = ReadInput(file);
    names.Add(AsText(text));
  });
  return names;
}

OpensToo OpensEvery(const std::vector<std::string>& tags) {
  std::vector<ByteArray> into;
  into.reserve(tags.size());
  for (const auto& tag : tags) into.push_back(ParsePath(tag).front().tag);
  return [into](size_t, Bytes tag) {
    return std::ranges::any_of(into, [&](const ByteArray& each) { return std::ranges::equal(each, tag); });
  };
}

/// What `holds` says; no when the path is gone.
template <class Holds>
bool IsIn(const Tree& tree, const Path& path, const Holds& holds) {
  try {
    return holds(tree, path);
  } catch (const Failure&) {
    return false;
  }
}

/// Prints the input with the edits that `makeEdits` returns for it, once that is known to read back and `holds` says of
/// what is read that the edits are in it: two octets 00 may end an indefinite length, or read as padding.
template <class MakeEdits, class Holds>
void Change(const Options& options, const MakeEdits& makeEdits, const Holds& holds) {
  const Path path = ParsePath(options.path);
  const OpensToo opens = OpensAlong(path);
  const ByteArray input = ReadBytes(options.file, options.binary);
  const Tree tree = ReadSound(input, options, opens);
  std::vector<Edit> edits = makeEdits(tree, path);
  const size_t count = edits.size();
  const ByteArray output = Apply(tree, std::move(edits));
  const Tree check = Read(output, options.padded, opens);
  if (check.fault) throw Failure{Exit::kBadInput, "the result would be no BER-TLV: " + FaultText(*check.fault)};
  if (!IsIn(check, path, holds)) throw Failure{Exit::kBadInput, "the result would read as something else"};
  if (options.json) {
    PrintJson({{"path", PathText(path)}, {"changed", count}, {"size", output.size()}, {"data", Hex(output)}});
  } else {
    PrintBytes(output, options.hex);
  }
}

}  // namespace

void Show(const Options& options) {
  const Names names = ReadNames(options.names);
  const ByteArray input = ReadBytes(options.file, options.binary);
  const Tree tree = Read(input, options.padded, OpensEvery(options.into));
  if (options.json) {
    PrintJson(TreeJson(tree, names));
  } else {
    PrintTree(tree, names, options.brief);
  }
  if (tree.fault) throw Failure{Exit::kBadInput, FaultText(*tree.fault)};
}

void Get(const Options& options) {
  const Path path = ParsePath(options.path);
  const ByteArray input = ReadBytes(options.file, options.binary);
  const Tree tree = ReadSound(input, options, OpensAlong(path));
  const auto found = Find(tree, path);
  if (options.json) {
    PrintJson({{"path", PathText(path)}, {"objects", ObjectsJson(tree, Names(), found)}});
    return;
  }
  const bool several = std::ranges::any_of(path, [](const Step& step) { return step.index == Step::kAll; });
  for (const size_t index : found) PrintBytes(tree.Value(tree.nodes[index]), options.hex || several);
}

void Set(const Options& options) {
  const ByteArray value = ReadValue(options);
  const auto edit = [&](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    for (const size_t index : Find(tree, path)) edits.push_back(SetValue(tree, index, value));
    return edits;
  };
  Change(options, edit, [&](const Tree& tree, const Path& path) {
    return std::ranges::all_of(Find(tree, path),
                               [&](size_t index) { return std::ranges::equal(tree.Value(tree.nodes[index]), value); });
  });
}

void Append(const Options& options) {
  const ByteArray value = ReadValue(options);
  const auto parents = [](const Tree& tree, const Path& path) {
    return Find(tree, Path(path.begin(), path.end() - 1));
  };
  const auto edit = [&](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    for (const size_t parent : parents(tree, path)) {
      edits.push_back(AppendObject(tree, parent, path.back().tag, value));
    }
    return edits;
  };
  Change(options, edit, [&](const Tree& tree, const Path& path) {
    return std::ranges::all_of(parents(tree, path), [&](size_t parent) {
      size_t last = kNone;
      for (size_t i = Tree::FirstChild(parent); i < tree.ChildrenEnd(parent); i = tree.nodes[i].after) last = i;
      return last != kNone && std::ranges::equal(tree.Tag(tree.nodes[last]), path.back().tag) &&
             std::ranges::equal(tree.Value(tree.nodes[last]), value);
    });
  });
}

void Remove(const Options& options) {
  const auto edit = [](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    for (const size_t index : Find(tree, path)) edits.push_back(RemoveObject(tree, index));
    return edits;
  };
  Change(options, edit, [](const Tree&, const Path&) { return true; });
}

std::string CheckPath(const std::string& text) {
  try {
    ParsePath(text);
    return "";
  } catch (const Failure& failure) {
    return failure.message;
  }
}

std::string CheckNewPath(const std::string& text) {
  const std::string wrong = CheckPath(text);
  return wrong.empty() && text.back() == ']' ? "the last tag of the path is new and takes no [ ]" : wrong;
}

std::string CheckTag(const std::string& text) {
  const std::string wrong = CheckPath(text);
  return wrong.empty() && text.find_first_of("/[") != std::string::npos ? "one tag is expected" : wrong;
}

std::string CheckValue(const std::string& text) {
  return text.starts_with('@') || FromHex(text) ? "" : "hex is expected, or @ and the name of a file";
}

}  // namespace rzcrypto::tlv
