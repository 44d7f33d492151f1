#include "tlv_path.h"

#include <algorithm>
#include <charconv>

#include "encoding.h"
#include "outcome.h"

namespace rzcrypto::tlv {

namespace {

[[noreturn]] void Refuse(const std::string& part, const std::string& reason) {
  throw Failure{Exit::kUsage, "\"" + part + "\" in the path: " + reason};
}

size_t ParseIndex(const std::string& part, std::string_view text) {
  if (text == "*") return Step::kAll;
  size_t index = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
  if (error != std::errc() || end != text.data() + text.size() || index == Step::kAll) {
    Refuse(part, "in [ ] a number from 0 on, or *, is expected");
  }
  return index;
}

Step ParseStep(const std::string& part) {
  Step step;
  const size_t open = part.find('[');
  if (open != std::string::npos) {
    if (part.back() != ']') Refuse(part, "the ] is missing or not at the end");
    step.index = ParseIndex(part, std::string_view(part).substr(open + 1, part.size() - open - 2));
  }
  const auto tag = FromHex(part.substr(0, open));
  if (!tag || tag->empty()) Refuse(part, "a tag in hex is expected");
  step.tag = *tag;
  if (TagSize(step.tag) != step.tag.size()) Refuse(part, "this is not one whole tag");
  return step;
}

/// The objects directly inside `parent` that `step` chooses.
void AddChosen(const Tree& tree, size_t parent, const Step& step, std::vector<size_t>& chosen) {
  size_t seen = 0;
  for (size_t i = Tree::FirstChild(parent); i < tree.ChildrenEnd(parent); i = tree.nodes[i].after) {
    if (!std::ranges::equal(tree.Tag(tree.nodes[i]), step.tag)) continue;
    if (step.index == Step::kAll || seen++ == step.index) chosen.push_back(i);
  }
}

std::string TagsInside(const Tree& tree, size_t parent) {
  constexpr size_t kEnough = 12;
  std::string text;
  size_t count = 0;
  for (size_t i = Tree::FirstChild(parent); i < tree.ChildrenEnd(parent); i = tree.nodes[i].after) {
    if (++count > kEnough) return text + " ...";
    text += (text.empty() ? "" : " ") + TagText(tree.Tag(tree.nodes[i]));
  }
  return text.empty() ? "nothing" : text;
}

}  // namespace

Path ParsePath(const std::string& text) {
  Path path;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find('/', at), text.size());
    path.push_back(ParseStep(text.substr(at, end - at)));
    at = end + 1;
  }
  return path;
}

std::string PathText(const Path& path) {
  std::string text;
  for (const Step& step : path) {
    if (!text.empty()) text += '/';
    text += TagText(step.tag);
    if (step.index == Step::kAll) {
      text += "[*]";
    } else if (step.index != 0) {
      text += '[' + std::to_string(step.index) + ']';
    }
  }
  return text;
}

OpensToo OpensAlong(const Path& path) {
  return
      [path](size_t depth, Bytes tag) { return depth + 1 < path.size() && std::ranges::equal(path[depth].tag, tag); };
}

std::vector<size_t> Find(const Tree& tree, const Path& path) {
  std::vector<size_t> found = {kNone};
  for (size_t depth = 0; depth < path.size(); ++depth) {
    std::vector<size_t> chosen;
    for (const size_t parent : found) AddChosen(tree, parent, path[depth], chosen);
    if (chosen.empty()) {
      const Path here(path.begin() + static_cast<std::ptrdiff_t>(depth),
                      path.begin() + static_cast<std::ptrdiff_t>(depth) + 1);
      const Path above(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(depth));
      throw Failure{Exit::kNo, "no " + PathText(here) + (depth == 0 ? " at the top" : " in " + PathText(above)) +
                                   "; there is " + TagsInside(tree, found.front())};
    }
    found = std::move(chosen);
  }
  return found;
}

}  // namespace rzcrypto::tlv
