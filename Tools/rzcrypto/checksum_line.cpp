#include "checksum_line.h"

#include <algorithm>

namespace rzcrypto {

namespace {

struct Length {
  const char* algorithm;
  size_t digits;
};
constexpr Length kLengths[] = {{"MD5", 32},    {"SHA1", 40},   {"SHA224", 56},
                               {"SHA256", 64}, {"SHA384", 96}, {"SHA512", 128}};

std::string Escaped(const std::string& name, bool& escaped) {
  std::string out;
  for (const char c : name) {
    const char code = c == '\\' ? '\\' : c == '\n' ? 'n' : c == '\r' ? 'r' : '\0';
    if (code != '\0') {
      escaped = true;
      out += '\\';
    }
    out += code != '\0' ? code : c;
  }
  return out;
}

std::optional<std::string> Unescaped(std::string_view name) {
  std::string out;
  for (size_t i = 0; i < name.size(); ++i) {
    if (name[i] != '\\') {
      out += name[i];
      continue;
    }
    if (++i == name.size()) return std::nullopt;
    if (name[i] == 'n') {
      out += '\n';
    } else if (name[i] == 'r') {
      out += '\r';
    } else if (name[i] == '\\') {
      out += '\\';
    } else {
      return std::nullopt;
    }
  }
  return out;
}

/// A digest in lower case, or nothing when it is not all hex digits.
std::optional<std::string> DigestText(std::string_view digits) {
  std::string lower(digits);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return std::nullopt;
  }
  return lower;
}

/// "SHA256 (name) = digest" as coreutils and the BSDs write it, "SHA2-256(name)= digest" as openssl dgst does.
std::optional<ChecksumLine> ParseTagged(std::string_view line) {
  const size_t open = line.find('(');
  const size_t close = line.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) return std::nullopt;
  const bool spaced = open > 0 && line[open - 1] == ' ';
  const std::string_view middle = spaced ? ") = " : ")= ";
  if (line.substr(close, middle.size()) != middle) return std::nullopt;
  const auto digest = DigestText(line.substr(close + middle.size()));
  std::string algorithm(line.substr(0, spaced ? open - 1 : open));
  if (!spaced && algorithm.rfind("SHA2-", 0) == 0) algorithm.erase(3, 2);
  const auto* known = std::find_if(std::begin(kLengths), std::end(kLengths), [&](const Length& length) {
    return algorithm == length.algorithm && digest && digest->size() == length.digits;
  });
  if (known == std::end(kLengths)) return std::nullopt;
  return ChecksumLine{algorithm, *digest, std::string(line.substr(open + 1, close - open - 1))};
}

std::optional<ChecksumLine> ParsePlain(std::string_view line, const std::string& algorithm) {
  const size_t blank = line.find(' ');
  if (blank == std::string_view::npos || blank + 2 >= line.size()) return std::nullopt;
  if (line[blank + 1] != ' ' && line[blank + 1] != '*') return std::nullopt;
  const auto digest = DigestText(line.substr(0, blank));
  const auto* known = std::find_if(std::begin(kLengths), std::end(kLengths), [&](const Length& length) {
    return digest && digest->size() == length.digits && (algorithm.empty() || algorithm == length.algorithm);
  });
  if (known == std::end(kLengths)) return std::nullopt;
  return ChecksumLine{known->algorithm, *digest, std::string(line.substr(blank + 2))};
}

std::optional<ChecksumLine> ParseLine(std::string_view line, const std::string& algorithm) {
  if (line.find('\0') != std::string_view::npos) return std::nullopt;  // no file has such a name
  const bool escaped = line.front() == '\\';
  if (escaped) line.remove_prefix(1);
  auto parsed = ParseTagged(line);
  if (!parsed) parsed = ParsePlain(line, algorithm);
  if (parsed && escaped) {
    const auto name = Unescaped(parsed->file);
    if (!name) return std::nullopt;
    parsed->file = *name;
  }
  return parsed;
}

}  // namespace

std::string PlainLine(const ChecksumLine& line) {
  bool escaped = false;
  const std::string name = Escaped(line.file, escaped);
  return (escaped ? "\\" : "") + line.digest + "  " + name + "\n";
}

std::string TaggedLine(const ChecksumLine& line) {
  bool escaped = false;
  const std::string name = Escaped(line.file, escaped);
  return (escaped ? "\\" : "") + line.algorithm + " (" + name + ") = " + line.digest + "\n";
}

std::string ShownName(const std::string& file) {
  bool escaped = false;
  const std::string name = Escaped(file, escaped);
  return (escaped ? "\\" : "") + name;
}

std::vector<std::optional<ChecksumLine>> ParseChecksums(std::string_view text, const std::string& algorithm) {
  std::vector<std::optional<ChecksumLine>> lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!line.empty() && line.front() != '#') lines.push_back(ParseLine(line, algorithm));
  }
  return lines;
}

}  // namespace rzcrypto
