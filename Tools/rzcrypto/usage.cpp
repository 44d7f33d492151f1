#include "usage.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>

namespace rzcrypto {

namespace {

/// What a path is read from.
struct Origin {
  int descriptor = -1;  // -1 for a path that is opened
  bool known = false;   // whether the system knows it
  struct stat facts {};

  explicit Origin(const std::string& path) {
    static constexpr std::string_view kFolders[] = {"/dev/fd/", "/proc/self/fd/"};
    if (path == "-" || path == "/dev/stdin") descriptor = STDIN_FILENO;
    for (const auto folder : kFolders) {
      if (path.starts_with(folder)) std::from_chars(path.data() + folder.size(), path.data() + path.size(), descriptor);
    }
    known = (descriptor >= 0 ? fstat(descriptor, &facts) : stat(path.c_str(), &facts)) == 0;
  }

  bool IsStream() const { return S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode); }

  bool Shares(const Origin& other) const {
    if (descriptor >= 0 && descriptor == other.descriptor) return true;
    const bool same = known && other.known && facts.st_dev == other.facts.st_dev && facts.st_ino == other.facts.st_ino;
    return same && (IsStream() || (descriptor >= 0 && other.descriptor >= 0));
  }
};

bool IsSameFile(const std::string& one, const std::string& other) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (fs::equivalent(one, other, error)) return true;  // links as well
  const fs::path first = fs::weakly_canonical(fs::absolute(one, error), error);
  return !error && first == fs::weakly_canonical(fs::absolute(other, error), error) && !error;
}

}  // namespace

CLI::Validator Decimal(uint64_t least, uint64_t most) {
  const auto read = [least, most](std::string& text) -> std::string {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size() && number >= least && number <= most) {
      text = std::to_string(number);
      return "";
    }
    return "takes a whole number from " + std::to_string(least) + " to " + std::to_string(most) + " in decimal";
  };
  return CLI::Validator(read, "", "decimal");
}

CLI::Validator OutputPath() {
  const auto check = [](const std::string& path) {
    return std::string(path.empty() ? "takes the name of a file" : "");
  };
  return CLI::Validator(check, "", "path");
}

void RequireSeparate(const std::vector<NamedInput>& inputs) {
  for (size_t i = 0; i < inputs.size(); ++i) {
    const Origin origin(inputs[i].path);
    for (size_t j = 0; j < i; ++j) {
      if (inputs[i].path.empty() || inputs[j].path.empty() || !origin.Shares(Origin(inputs[j].path))) continue;
      const char* what = origin.descriptor == STDIN_FILENO ? "standard input" : "read from one open file";
      throw CLI::ValidationError(std::string(inputs[j].name) + " and " + inputs[i].name + " cannot both be " + what);
    }
  }
}

void RequireTwoFiles(const std::string& option, const std::string& one, const std::string& other) {
  if (one != "-" && other != "-" && IsSameFile(one, other))
    throw CLI::ValidationError(option, "is the same file as -o");
}

}  // namespace rzcrypto
