#include "tlv_names.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "encoding.h"
#include "outcome.h"

namespace rzcrypto::tlv {

extern const char kBuiltInNames[];  // made from tlv_names.txt by the build

namespace {

/// A tag as TagText writes it.
std::string ReadTag(const std::string& text, size_t line) {
  const auto tag = FromHex(text);
  if (!tag || tag->empty() || TagSize(*tag) != tag->size()) {
    throw Failure{Exit::kBadInput, "line " + std::to_string(line) + ": \"" + text + "\" is not a tag in hex"};
  }
  return TagText(*tag);
}

/// What follows "in": tags, or "any".
std::vector<std::string> ReadParents(std::istringstream& words, size_t line) {
  std::vector<std::string> parents;
  for (std::string word; words >> word;) parents.push_back(word == "any" ? "" : ReadTag(word, line));
  if (parents.empty()) throw Failure{Exit::kBadInput, "line " + std::to_string(line) + ": nothing follows \"in\""};
  return parents;
}

}  // namespace

Names::Names() { Add(kBuiltInNames); }

void Names::Add(std::string_view text) {
  std::istringstream lines{std::string(text)};
  std::vector<std::string> parents = {""};
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    std::istringstream words(line);
    std::string first;
    if (!(words >> first) || first.front() == '#') continue;
    if (first == "in") {
      parents = ReadParents(words, number);
      continue;
    }
    const std::string tag = ReadTag(first, number);
    std::string name;
    std::getline(words >> std::ws, name);
    while (!name.empty() && (name.back() == '\r' || name.back() == ' ')) name.pop_back();
    if (name.empty()) throw Failure{Exit::kBadInput, "line " + std::to_string(number) + ": " + tag + " has no name"};
    for (const auto& parent : parents) m_names[{parent, tag}] = name;
  }
}

std::string Names::Find(Bytes parent, Bytes tag) const {
  const std::string text = TagText(tag);
  auto found = m_names.find({TagText(parent), text});
  if (found == m_names.end() && !parent.empty()) found = m_names.find({"", text});
  return found == m_names.end() ? "" : found->second;
}

}  // namespace rzcrypto::tlv
