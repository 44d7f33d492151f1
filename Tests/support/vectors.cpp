#include "support/vectors.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

using Tavo::Framework::ByteArray;

namespace {

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  std::abort();
}

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

std::string Vector::Text(const std::string& key) const {
  const auto found = m_values.find(key);
  if (found == m_values.end()) Fail(where() + ": no key " + key);
  m_read.insert(key);
  return found->second;
}

ByteArray RepeatedHex(const std::string& text) {
  ByteArray bytes;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const size_t star = word.find('*');
    const ByteArray octets = FromHex(word.substr(0, star));
    if (star != std::string::npos && octets.size() != 1) Fail(text + " is not <octet>*<count>");
    const ByteArray part = star == std::string::npos ? octets : ByteArray(std::stoul(word.substr(star + 1)), octets[0]);
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  return bytes;
}

ByteArray Vector::Bytes(const std::string& key) const { return RepeatedHex(Text(key)); }

unsigned long Vector::Number(const std::string& key) const { return std::stoul(Text(key), nullptr, 0); }

std::vector<Vector> LoadVectors(const std::string& name) {
  std::ifstream file("data/" + name);
  if (!file) Fail("no vector file " + name);
  std::vector<Vector> vectors;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    line = Trimmed(line);
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[' && line.back() == ']') {
      vectors.emplace_back(name, number, line.substr(1, line.size() - 2));
      continue;
    }
    const size_t equals = line.find('=');
    if (equals == std::string::npos || vectors.empty()) Fail(name + ":" + std::to_string(number) + ": not key = value");
    const std::string key = Trimmed(line.substr(0, equals));
    if (!vectors.back().m_values.emplace(key, Trimmed(line.substr(equals + 1))).second) {
      Fail(name + ":" + std::to_string(number) + ": " + key + " twice");
    }
  }
  if (vectors.empty()) Fail("no vector in " + name);
  return vectors;
}

std::vector<std::vector<std::string>> LoadParagraphs(const std::string& name) {
  std::ifstream file("data/" + name);
  std::vector<std::vector<std::string>> paragraphs(1);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() && !paragraphs.back().empty()) paragraphs.emplace_back();
    if (!line.empty() && line[0] != '#') paragraphs.back().push_back(line);
  }
  if (paragraphs.back().empty()) Fail("no lines at the end of " + name);
  return paragraphs;
}

std::vector<std::string> LoadParagraph(const std::string& name, const std::string& heading) {
  for (const auto& paragraph : LoadParagraphs(name)) {
    if (paragraph[0] == "[" + heading + "]") return {paragraph.begin() + 1, paragraph.end()};
  }
  Fail("no " + heading + " in " + name);
}

std::string Vector::Unread() const {
  std::string unread;
  for (const auto& [key, value] : m_values) {
    if (m_read.count(key) == 0) unread += key + " ";
  }
  return unread;
}
