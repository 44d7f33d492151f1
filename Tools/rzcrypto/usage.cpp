#include "usage.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace rzcrypto {

namespace {

bool IsStandardInput(const std::string& path) {
  static constexpr const char* kNames[] = {"-", "/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"};
  return std::ranges::find(kNames, path) != std::end(kNames);
}

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

void RequireOneStandardInput(const std::vector<NamedInput>& inputs) {
  const char* first = nullptr;
  for (const auto& input : inputs) {
    if (!IsStandardInput(input.path)) continue;
    if (first != nullptr) {
      throw CLI::ValidationError(std::string(first) + " and " + input.name + " cannot both be standard input");
    }
    first = input.name;
  }
}

void RequireTwoFiles(const std::string& option, const std::string& one, const std::string& other) {
  if (one != "-" && other != "-" && IsSameFile(one, other))
    throw CLI::ValidationError(option, "is the same file as -o");
}

}  // namespace rzcrypto
