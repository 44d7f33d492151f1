#include "tlv_verbs.h"

#include <unistd.h>

#include <algorithm>
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
  Decoded decoded = Decode(input);
  if (decoded.blocks.size() != 1) {
    throw Failure{Exit::kBadInput, std::to_string(decoded.blocks.size()) + " PEM blocks; give one at a time"};
  }
  return std::move(decoded.blocks.front().bytes);
}

bool IsStandardInput(const std::string& file) { return file.empty() || file == "-"; }

ByteArray ReadValue(const Options& options) {
  if (!options.value.starts_with('@')) return FromHex(options.value).value();
  const std::string file = options.value.substr(1);
  if (IsStandardInput(file) && IsStandardInput(options.file)) {
    throw Failure{Exit::kUsage, "cannot be both VALUE and FILE"};
  }
  return ReadBytes(file, options.binary);
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
    Print({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
}

Names ReadNames(const std::string& file) {
  Names names;
  if (file.empty()) return names;
  const ByteArray text = ReadInput(file);
  try {
    names.Add({reinterpret_cast<const char*>(text.data()), text.size()});
  } catch (const Failure& failure) {
    throw Failure{failure.code, InputName(file) + ", " + failure.message};
  }
  return names;
}

OpensToo OpensEvery(const std::vector<std::string>& tags) {
  std::vector<ByteArray> into;
  for (const auto& tag : tags) into.push_back(ParsePath(tag).front().tag);
  return [into](size_t, Bytes tag) {
    return std::ranges::any_of(into, [&](const ByteArray& each) { return std::ranges::equal(each, tag); });
  };
}

/// Prints the input with the edits that `makeEdits` returns for it, once that is known to read back.
template <class MakeEdits>
void Change(const Options& options, const MakeEdits& makeEdits) {
  const Path path = ParsePath(options.path);
  const OpensToo opens = OpensAlong(path);
  const ByteArray input = ReadBytes(options.file, options.binary);
  const Tree tree = ReadSound(input, options, opens);
  std::vector<Edit> edits = makeEdits(tree, path);
  const size_t count = edits.size();
  const ByteArray output = Apply(tree, std::move(edits));
  const Tree check = Read(output, options.padded, opens);
  if (check.fault) throw Failure{Exit::kBadInput, "the result would be no BER-TLV: " + FaultText(*check.fault)};
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
  Change(options, [&](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    for (const size_t index : Find(tree, path)) edits.push_back(SetValue(tree, index, value));
    return edits;
  });
}

void Append(const Options& options) {
  const ByteArray value = ReadValue(options);
  Change(options, [&](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    const Path parents(path.begin(), path.end() - 1);
    for (const size_t parent : Find(tree, parents)) edits.push_back(AppendObject(tree, parent, path.back().tag, value));
    return edits;
  });
}

void Remove(const Options& options) {
  Change(options, [&](const Tree& tree, const Path& path) {
    std::vector<Edit> edits;
    for (const size_t index : Find(tree, path)) edits.push_back(RemoveObject(tree, index));
    return edits;
  });
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
