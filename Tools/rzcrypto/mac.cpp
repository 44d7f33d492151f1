// rzcrypto mac: message authentication codes of files, and the check of one.

#include <memory>
#include <vector>

#include "checksum_line.h"
#include "commands.h"
#include "encoding.h"
#include "io.h"
#include "key_source.h"
#include "printable.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::string algorithm;
  std::string key;
  std::vector<std::string> files;
  std::string expected;
  bool verify = false;  // even with an empty code, which no file has
  bool binary = false;
  bool json = false;
};

/// How long it takes says nothing about where the two differ.
bool SameInConstantTime(const ByteArray& a, const ByteArray& b) {
  if (a.size() != b.size()) return false;
  volatile unsigned char difference = 0;
  for (size_t i = 0; i < a.size(); ++i) difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
  return difference == 0;
}

ByteArray Code(const Options& options, IKey& key, const ByteArray& data) {
  const auto algorithm = NewAlgorithm(options.algorithm.c_str());
  const auto parameters = NewParameters();
  const auto mac = Own(MAC::Create(algorithm.get(), parameters.get()));
  ByteArray code;
  WithCause([&] {
    mac->Init(&key);
    mac->Mac(data, code);
  });
  return code;
}

/// What a key can be told to be wrong for before any input is read.
void RequireKey(const Options& options, IKey& key) {
  Code(options, key, ByteArray());
  ByteArray bytes;
  key.GetEncoded(bytes);
  if (options.algorithm == "CMAC") WarnOfSurplus("key", bytes.size(), 16);
}

void PrintCode(const Options& options, const std::string& file, const ByteArray& code, Json& list) {
  if (options.json) {
    list.push_back({{"file", file}, {"algorithm", options.algorithm}, {"mac", Hex(code)}});
  } else if (options.binary) {
    Print(code);
  } else {
    Print(PlainLine({options.algorithm, Hex(code), file}));
  }
}

void Check(const Options& options, const std::string& file, const ByteArray& code, Json& list, Outcome& outcome) {
  const bool same = SameInConstantTime(code, FromHex(options.expected).value());
  if (!same) outcome.Add(Exit::kNo);
  if (options.json) {
    list.push_back({{"file", file}, {"algorithm", options.algorithm}, {"valid", same}});
  } else {
    Print(Printable(InputName(file)) + (same ? ": OK\n" : ": FAILED\n"));
  }
}

void Run(const Options& options, Outcome& outcome) {
  KeyFile key;
  const bool usable = outcome.Attempt(KeySourceName(options.key), [&] {
    key = ReadKeySource(options.key, KeyUse::kSecret);
    RequireKey(options, *key.key);
  });
  if (!usable) return;
  Json list = Json::array();
  for (const auto& file : options.files) {
    const bool done = outcome.Attempt(InputName(file), [&] {
      const ByteArray code = Code(options, *key.key, ReadInput(file));
      options.verify ? Check(options, file, code, list, outcome) : PrintCode(options, file, code, list);
    });
    if (!done) list.push_back({{"file", file}, {"error", outcome.reason()}});
  }
  if (options.json) PrintJson({{"macs", list}});
}

void CheckUsage(const Options& options) {
  if (!FromHex(options.expected)) {
    throw CLI::ValidationError("--verify", "takes an even number of hex digits");
  }
  if (options.binary && (options.files.size() > 1 || options.json || options.verify)) {
    throw CLI::ValidationError("--binary", "is for the code of one file");
  }
  for (const auto& file : options.files) {
    RequireSeparate({{"the key", KeySourcePath(options.key)}, {"the data", file}});
  }
}

}  // namespace

void AddMac(CLI::App& app, Outcome& outcome) {
  auto* command = app.add_subcommand("mac", "Compute the authentication codes of files, or check one");
  auto options = std::make_shared<Options>();
  command
      ->add_option("-a,--algorithm", options->algorithm,
                   "HMAC_SHA1, HMAC_SHA224, HMAC_SHA256, HMAC_SHA384, HMAC_SHA512 or CMAC (AES-128)")
      ->required()
      ->check(CLI::IsMember({"HMAC_SHA1", "HMAC_SHA224", "HMAC_SHA256", "HMAC_SHA384", "HMAC_SHA512", "CMAC"}));
  command->add_option("-k,--key", options->key, kKeySourceHelp)->required();
  command->add_option("FILE", options->files, "Files; - or none is standard input");
  command->add_option("--verify", options->expected, "Compare with this code (hex), in constant time: exit 0 or 1");
  command->add_flag("--binary", options->binary, "Write the bytes of the code instead of a line of hex");
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "Examples:\n"
      "  rzcrypto mac -a HMAC_SHA256 --key file:mac.key message.bin\n"
      "  rzcrypto mac -a CMAC --key env:CARD_KEY --verify 070a16b46b4d4144f79bdd9dd04a287c apdu.bin");
  command->callback([command, options, &outcome] {
    options->verify = command->count("--verify") > 0;
    if (options->files.empty()) options->files = {"-"};
    CheckUsage(*options);
    Run(*options, outcome);
  });
}

}  // namespace rzcrypto
