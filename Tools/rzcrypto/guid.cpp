// rzcrypto guid: random identifiers of 16 bytes.

#include <memory>

#include "commands.h"
#include "encoding.h"
#include "io.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

/// The usual grouping: 8-4-4-4-12 hex digits.
std::string Grouped(const ByteArray& guid) {
  std::string text = Hex(guid);
  for (const size_t at : {20, 16, 12, 8}) text.insert(at, 1, '-');
  return text;
}

void PrintGuids(unsigned int count, bool json) {
  const auto generator = Own(GUIDGenerator::Create());
  ByteArray guid;
  Json list = Json::array();
  for (unsigned int i = 0; i < count; ++i) {
    generator->GenerateGUID(guid);
    if (RandomFailed(*generator)) throw Failure{Exit::kInside, "the system's random source failed"};
    if (json) {
      list.push_back(Grouped(guid));
    } else {
      Print(Grouped(guid) + "\n");
    }
  }
  if (json) PrintJson({{"guids", list}});
}

}  // namespace

void AddGuid(CLI::App& app, Outcome& outcome) {
  struct Options {
    unsigned int count = 1;
    bool json = false;
  };
  auto* command = app.add_subcommand("guid", "Print random 16-byte identifiers");
  auto options = std::make_shared<Options>();
  command->add_option("-n,--count", options->count, "How many (default 1)")->transform(Decimal(0, UINT32_MAX));
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "All 128 bits are random: no version or variant is marked as in RFC 4122.\n"
      "Example: rzcrypto guid -n 3");
  command->callback(
      [options, &outcome] { outcome.Attempt("guid", [&] { PrintGuids(options->count, options->json); }); });
}

}  // namespace rzcrypto
