#ifndef RZCRYPTO_USAGE_H
#define RZCRYPTO_USAGE_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

/// What several commands ask of their options. Whatever is refused here is a matter of usage.
namespace rzcrypto {

/// Decimal takes a whole number from `least` to `most` in decimal digits alone: zeros in front do not make it octal.
/// It must be given to transform().
CLI::Validator Decimal(uint64_t least, uint64_t most);

/// OutputPath takes anything but an empty name.
CLI::Validator OutputPath();

/// One of the inputs of a command: what it is, and the path it is read from; "/dev/fd/N" for an open descriptor.
struct NamedInput {
  const char* name;
  std::string path;
};

/// RequireSeparate throws a CLI::ValidationError when two of the inputs are standard input, one open file or one pipe,
/// under whatever names: the second one would find nothing there.
void RequireSeparate(const std::vector<NamedInput>& inputs);

/// RequireTwoFiles throws a CLI::ValidationError of `option` when `one` and `other` name the same file, which is there
/// or would be made.
void RequireTwoFiles(const std::string& option, const std::string& one, const std::string& other);

}  // namespace rzcrypto

#endif
