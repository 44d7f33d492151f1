// rzcrypto der: what is inside DER and BER, whether it is what it should be, and pieces of it.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>

#include "commands.h"
#include "der_commands.h"
#include "der_types.h"
#include "usage.h"

namespace rzcrypto {

namespace der {

std::string Count(size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

namespace {

bool IsBlank(unsigned char octet) { return std::isspace(octet) != 0; }

/// What a block is whose header says that it is encrypted (RFC 1421) is no DER; an EncryptedPrivateKeyInfo is.
bool IsEncrypted(const Block& block) {
  return block.label.starts_with("ENCRYPTED ") && block.label != "ENCRYPTED PRIVATE KEY";
}

std::vector<Block> ReadBlocks(const std::string& file, const Options& options) {
  ByteArray input = ReadInput(file);
  std::vector<Block> blocks;
  if (options.binary) {
    blocks.push_back({std::move(input), ""});
    return blocks;
  }
  if (std::ranges::all_of(input, IsBlank)) throw Failure{Exit::kBadInput, "empty"};
  auto decoded = Decode(input);
  RequireNoSlip(decoded, "if it is binary, use --binary");
  return std::move(decoded.blocks);
}

}  // namespace

void ForEachBlock(const Options& options, Outcome& outcome,
                  const std::function<void(const std::string&, const Block&)>& use,
                  const std::function<void(const std::string&)>& fail) {
  const auto attempt = [&](const std::string& name, auto&& body) {
    if (!outcome.Attempt(name, body)) fail(name);
  };
  for (const std::string& file : options.files) {
    const std::string name = InputName(file);
    std::vector<Block> blocks;
    attempt(name, [&] { blocks = ReadBlocks(file, options); });
    for (size_t i = 0; i < blocks.size(); ++i) {
      const std::string numbered = blocks.size() == 1 ? name : name + "#" + std::to_string(i + 1);
      attempt(numbered, [&] {
        if (blocks[i].bytes.empty()) throw Failure{Exit::kBadInput, "empty"};
        if (IsEncrypted(blocks[i])) throw Failure{Exit::kNotSupported, "the block is encrypted: decrypt it first"};
        use(numbered, blocks[i]);
      });
    }
  }
}

namespace {

/// "0/6/1", or an error.
std::string ParsePath(const std::string& text, std::vector<size_t>& path) {
  path.clear();
  for (size_t at = 0;;) {
    const size_t end = std::min(text.find('/', at), text.size());
    const std::string place = text.substr(at, end - at);
    const bool number =
        !place.empty() && place.size() <= 9 && place.find_first_not_of("0123456789") == std::string::npos;
    if (!number) return "numbers from 0 with / between, from the top: 0/6/1";
    path.push_back(std::stoul(place));
    if (end == text.size()) return "";
    at = end + 1;
  }
}

struct Verb {
  Verb(CLI::App& parent, const char* name, const char* description, void (*run)(const Options&, Outcome&),
       Outcome& outcome)
      : command(parent.add_subcommand(name, description)), options(std::make_shared<Options>()) {
    command->add_option("FILE", options->files, "Binary, PEM (each block in it) or hex; - or none is standard input");
    command->add_flag("--binary", options->binary, "The input is binary, even if it looks like PEM or hex");
    command->callback([run, options = options, &outcome] { run(*options, outcome); });
  }
  void AddJson() { command->add_flag("--json", options->json, "Print JSON"); }
  void AddReading() {
    command->add_option("--max-depth", options->maxDepth, "Give up where elements are nested deeper (100)")
        ->transform(Decimal(1, 10000));
    command->add_option("--max-elements", options->maxElements, "Give up after so many elements (1000000)")
        ->transform(Decimal(1, SIZE_MAX));
    command->add_flag("--flat", options->flat, "Do not look inside OCTET and BIT STRINGs");
  }

  CLI::App* command;
  std::shared_ptr<Options> options;
};

void AddShow(CLI::App& parent, Outcome& outcome) {
  Verb verb(parent, "show", "Print the elements as a tree: offset, header and contents in bytes, tag, value", Show,
            outcome);
  verb.AddReading();
  verb.command->add_option("--max-value", verb.options->maxValue, "Bytes of a value shown in hex (32); 0 is all")
      ->transform(Decimal(0, SIZE_MAX));
  verb.command->add_flag("--paths", verb.options->paths, "Print the path of each element, as 'der extract' takes it");
  verb.AddJson();
  verb.command->footer(
      "Lengths are header+contents; '~' marks an indefinite length, '!' one that is longer than it need be.\n"
      "Examples:\n"
      "  rzcrypto der show certificate.pem\n"
      "  echo '30 03 02 01 05' | rzcrypto der show --json");
}

void AddCheck(CLI::App& parent, Outcome& outcome) {
  Verb verb(parent, "check", "Decode as a type: exit 0 if it does, 1 with code, place and reason if not", Check,
            outcome);
  verb.command
      ->add_option("--as", verb.options->type, "The type, CSCertificate for instance; PEM of known label needs none")
      ->check([](const std::string& name) {
        return FindType(name) != nullptr ? std::string() : "no type " + name + "; there are " + TypeNames();
      });
  verb.command->add_flag("--strict", verb.options->strict,
                         "Exit 1 also if more bytes follow or the encoding is not DER");
  verb.AddJson();
  verb.command->footer(
      "Examples:\n"
      "  rzcrypto der check --as CSCertificate certificate.der\n"
      "  rzcrypto der check --strict bundle.pem");
}

void AddExtract(CLI::App& parent, Outcome& outcome) {
  Verb verb(parent, "extract", "Write the bytes of one element", Extract, outcome);
  auto* which = verb.command->add_option_group("Which", "One of");
  which
      ->add_option_function<std::string>(
          "--path", [options = verb.options](const std::string& text) { ParsePath(text, options->path); },
          "Places from the top, each from 0: 0/6/1; 'der show --paths' prints them")
      ->check([](const std::string& text) {
        std::vector<size_t> ignored;
        return ParsePath(text, ignored);
      });
  which->add_option("--offset", verb.options->offset, "Where the element begins, as 'der show' and 'der check' say")
      ->transform(Decimal(0, SIZE_MAX));
  which->require_option(1);
  verb.command->add_flag("--contents", verb.options->contents, "The contents alone, without identifier and length");
  verb.command->add_flag("--hex", verb.options->hex, "Write hex, not binary; always so on a terminal");
  verb.AddReading();
  verb.command->footer(
      "Examples:\n"
      "  rzcrypto der extract --path 0/0 certificate.pem > tbs.der\n"
      "  rzcrypto der extract --offset 4 certificate.pem | sha256sum");
}

}  // namespace

}  // namespace der

void AddDer(CLI::App& app, Outcome& outcome) {
  auto* command = app.add_subcommand("der", "Show, check and take apart DER and BER");
  command->require_subcommand(1);
  command->footer("Example: rzcrypto der show certificate.pem");
  der::AddShow(*command, outcome);
  der::AddCheck(*command, outcome);
  der::AddExtract(*command, outcome);
}

}  // namespace rzcrypto
