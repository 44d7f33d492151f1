// rzcrypto random: random bytes as they are, in hex or in base64.

#include <algorithm>
#include <cstdint>
#include <memory>

#include "commands.h"
#include "encoding.h"
#include "io.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr size_t kPiece = size_t{48} * 1024;  // bytes at a time; a multiple of 3, so that pieces of base64 join

struct Options {
  size_t count = 0;
  bool hex = false;
  bool base64 = false;
  bool force = false;
  std::string output = "-";
};

/// The generator, for any algorithm will do.
class Source {
 public:
  ByteArray Next(size_t count) {
    ByteArray bytes;
    m_generator->GenerateRandom(static_cast<int>(count), bytes);
    if (RandomFailed(*m_generator)) throw Failure{Exit::kInside, "the system's random source failed"};
    return bytes;
  }

 private:
  Owned<IAlgorithm> m_algorithm = NewAlgorithm("FIPS186DSARNG");
  Owned<RandomGenerator> m_generator = Own(RandomGenerator::Create(m_algorithm.get(), NewParameters().get()));
};

void WriteRandom(const Options& options) {
  Source source;
  WriteFile(options.output, options.force, [&](const Write& write) {
    for (size_t left = options.count; left > 0;) {
      const ByteArray bytes = source.Next(std::min(left, kPiece));
      left -= bytes.size();
      if (options.hex) {
        write(Hex(bytes));
      } else if (options.base64) {
        write(Base64(bytes));
      } else {
        write(AsText(bytes));
      }
    }
    if (options.hex || options.base64) write("\n");
  });
}

}  // namespace

void AddRandom(CLI::App& app, Outcome& outcome) {
  auto* command = app.add_subcommand("random", "Print random bytes");
  auto options = std::make_shared<Options>();
  command->add_option("N", options->count, "How many bytes")->required()->transform(Decimal(0, SIZE_MAX));
  auto* hex = command->add_flag("--hex", options->hex, "In hex, with a line end");
  command->add_flag("--base64", options->base64, "In base64, with a line end")->excludes(hex);
  command->add_option("-o,--output", options->output, "Write a new file with mode 0600 instead of standard output")
      ->check(OutputPath());
  command->add_flag("--force", options->force, "Replace the file");
  command->footer(
      "Examples:\n"
      "  rzcrypto random 16 --hex\n"
      "  rzcrypto random 32 -o seed.bin");
  command->callback([options, &outcome] {
    outcome.Attempt(options->output == "-" ? "random" : options->output, [&] { WriteRandom(*options); });
  });
}

}  // namespace rzcrypto
