// rzcrypto padding: RSA blocks made and opened, for a raw RSA operation done elsewhere, on a card for example.

#include <memory>

#include "commands.h"
#include "encoding.h"
#include "io.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::string type;
  std::string operation;
  unsigned int keyLength = 0;  // bytes
  std::string label;
  std::string hashId;
  std::string input = "-";
  std::string output = "-";
  bool force = false;
  bool hex = false;
  bool json = false;
};

struct Type {
  std::string_view name;
  std::string_view operation;  // the only one, or empty
  unsigned int overhead;       // bytes of a block that the longest message leaves
};

constexpr Type kTypes[] = {{"PKCS1", "", 11}, {"OAEP", "encrypt", 42}, {"X_931", "sign", 12}};

const Type& TypeOf(const Options& options) {
  return *std::ranges::find(kTypes, std::string_view(options.type), &Type::name);
}

constexpr unsigned int kLongestKey = 2048;  // bytes: who gives bits is told so, and libcrypto takes no longer ones

/// The padding with its options.
struct Padder {
  explicit Padder(const Options& options) : map(NewParameters()) {
    map->SetPkcs1Operation(options.operation == "sign" ? 0 : 1);
    map->SetOaepEncodingParam(FromHex(options.label).value());
    // Decoding needs the identifier to be set and does not look at it.
    map->SetHashAlgoX931(options.hashId.empty() ? 0 : FromHex(options.hashId).value().front());
    padding = Own(IPadding::Create(options.type.c_str(), options.keyLength, map.get()));
  }
  Owned<ICryptoParserParameterMap> map;
  Owned<IPadding> padding;
};

Json Facts(const Options& options) {
  return {{"file", options.input},
          {"type", options.type},
          {"operation", options.operation},
          {"keyLength", options.keyLength}};
}

/// Prints the answer in JSON, or writes the bytes in hex or as they are.
void Deliver(const Options& options, const ByteArray& bytes, const Json& answer, Outcome& outcome) {
  if (options.json) return PrintJson(answer);
  outcome.Attempt(options.output, [&] {
    if (options.hex) return WriteFile(options.output, Hex(bytes) + "\n", options.force);
    WriteFile(options.output, bytes, options.force);
  });
}

bool IsPkcs1Signature(const Options& options) { return options.type == "PKCS1" && options.operation == "sign"; }

/// Some blocks that the standard allows are made and not opened again.
void WarnIfLost(const Options& options, const Padder& padder, const ByteArray& message, const ByteArray& block) {
  if (IsPkcs1Signature(options)) return;
  ByteArray back;
  if (padder.padding->DecodeData(block, back) && back == message) return;
  Outcome::Note("warning", "this library does not decode a message of " + std::to_string(message.size()) +
                               " bytes from this block; others may");
}

void Encode(const Options& options, Outcome& outcome) {
  const Padder padder(options);
  const ByteArray message = ReadInput(options.input);
  const unsigned int room = options.keyLength - TypeOf(options).overhead;
  if (message.size() > room) {
    throw Failure{Exit::kBadInput, "the message has " + std::to_string(message.size()) + " bytes; at most " +
                                       std::to_string(room) + " fit into a block of " +
                                       std::to_string(options.keyLength)};
  }
  ByteArray block;
  padder.padding->EncodeData(message, block);
  WarnIfLost(options, padder, message, block);
  Json answer = Facts(options);
  answer["messageLength"] = message.size();
  answer["block"] = Hex(block);
  Deliver(options, block, answer, outcome);
}

/// A block of the key's length as it is, any other input in hex if it is that.
ByteArray ReadBlock(const Options& options) {
  ByteArray input = ReadInput(options.input);
  if (input.size() == options.keyLength) return input;
  const auto octets = FromHex(AsText(input));
  return octets ? *octets : input;
}

/// What is wrong with a block that is refused, as far as it can be told without a guess.
std::string Reason(const Options& options, const ByteArray& block) {
  if (block.size() != options.keyLength) {
    return "length: the block has " + std::to_string(block.size()) + " bytes, not " + std::to_string(options.keyLength);
  }
  if (options.type == "OAEP") return "another label, another key, another padding, or a damaged block";
  if (options.type == "X_931") {
    if (block.front() != 0x6b) return "header: the block does not begin with 6B: another key, or another padding";
    if (block.back() != 0xcc) return "trailer: the block does not end with CC: another key, or another padding";
    return "padding: there is no BA after ten octets of padding or more, and before the last two octets";
  }
  if (block[0] != 0 || block[1] != 2) {
    return "header: the block does not begin with 00 02: another key, or another padding";
  }
  return "padding: there is no 00 after eight octets of padding or more, and before the last octet";
}

/// A wrong length is a refused block with every type; the decoder of OAEP would throw.
bool Open(const Options& options, const ByteArray& block, ByteArray& message) {
  const Padder padder(options);
  return block.size() == options.keyLength && padder.padding->DecodeData(block, message);
}

void Decode(const Options& options, Outcome& outcome) {
  if (IsPkcs1Signature(options)) {
    throw Failure{Exit::kNotSupported, "signature blocks of PKCS1 are only made: rzcrypto verify checks signatures"};
  }
  const ByteArray block = ReadBlock(options);
  ByteArray message;
  const bool accepted = Open(options, block, message);
  Json answer = Facts(options);
  answer["accepted"] = accepted;
  if (!accepted) {
    const std::string reason = Reason(options, block);
    answer["reason"] = reason;
    if (options.json) PrintJson(answer);
    throw Failure{Exit::kNo, "refused: " + reason};
  }
  if (options.type == "X_931") {
    const std::string found = Hex({&*(block.end() - 2), 1});
    answer["hashId"] = found;
    if (!options.hashId.empty() && FromHex(options.hashId) != FromHex(found)) {
      Outcome::Note("warning", "the block's hash identifier is " + found);
    }
  }
  answer["message"] = Hex(message);
  Deliver(options, message, answer, outcome);
}

void CheckUsage(const Options& options, bool encoding) {
  const Type& type = TypeOf(options);
  const auto only = [&](const std::string& value, const char* option, const char* owner) {
    if (!value.empty() && options.type != owner) throw CLI::ValidationError(option, std::string("is for ") + owner);
  };
  only(options.label, "--label", "OAEP");
  only(options.hashId, "--hash-id", "X_931");
  if (!type.operation.empty() && options.operation != type.operation) {
    throw CLI::ValidationError("--operation", options.type + " is for " + std::string(type.operation) + " only");
  }
  if (options.keyLength < type.overhead) {
    throw CLI::ValidationError("--key-length",
                               options.type + " needs " + std::to_string(type.overhead) + " bytes or more");
  }
  if (!FromHex(options.label)) throw CLI::ValidationError("--label", "takes an even number of hex digits");
  const bool wanted = encoding && options.type == "X_931";
  const auto identifier = FromHex(options.hashId);
  if ((wanted || !options.hashId.empty()) && (!identifier || identifier->size() != 1)) {
    throw CLI::ValidationError("--hash-id", "one octet in hex is needed, such as 33 for SHA-1 or 34 for SHA-256");
  }
}

void AddVerb(CLI::App& padding, Outcome& outcome, bool encoding, const char* name, const char* help, const char* input,
             const char* footer) {
  auto* command = padding.add_subcommand(name, help);
  auto options = std::make_shared<Options>();
  command->add_option("--type", options->type, "PKCS1 (v1.5), OAEP (SHA-1, MGF1) or X_931")
      ->required()
      ->check(CLI::IsMember({"PKCS1", "OAEP", "X_931"}));
  command
      ->add_option("--operation", options->operation,
                   "What the block is for: sign (PKCS1, X_931) or encrypt (PKCS1, OAEP)")
      ->required()
      ->check(CLI::IsMember({"sign", "encrypt"}));
  command->add_option("--key-length", options->keyLength, "Length of the RSA modulus in bytes, not bits")
      ->required()
      ->transform(Decimal(1, kLongestKey));
  command->add_option("--label", options->label, "OAEP: the label in hex; empty without it");
  command->add_option("--hash-id", options->hashId, "X_931: the identifier of the hash, an octet in hex");
  auto* output = command
                     ->add_option("-o,--output", options->output,
                                  "The new file, made with mode 0600; - or none is standard output")
                     ->check(OutputPath());
  command->add_flag("--force", options->force, "Replace a file that exists");
  auto* hex = command->add_flag("--hex", options->hex, "Write hex and a line end, not binary");
  command->add_flag("--json", options->json, "Print JSON")->excludes(output)->excludes(hex);
  command->add_option("FILE", options->input, input);
  command->footer(footer);
  command->callback([encoding, options, &outcome] {
    CheckUsage(*options, encoding);
    if (!outcome.Attempt(options->output, [&] { RequireFree(options->output, options->force); })) return;
    outcome.Attempt(InputName(options->input),
                    [&] { encoding ? Encode(*options, outcome) : Decode(*options, outcome); });
  });
}

}  // namespace

void AddPadding(CLI::App& app, Outcome& outcome) {
  auto* padding = app.add_subcommand("padding", "Make and open the blocks that raw RSA works on");
  padding->require_subcommand(1);
  padding->footer(
      "Example: rzcrypto padding encode --type PKCS1 --operation sign --key-length 256 --hex digestinfo.der");
  AddVerb(*padding, outcome, true, "encode", "Make a block of a message",
          "The message, binary; - or none is standard input",
          "The block for a PKCS1 signature is made around a whole DigestInfo, for X_931 around the hash.\n"
          "Examples:\n"
          "  rzcrypto padding encode --type OAEP --operation encrypt --key-length 256 -o block.bin session.key\n"
          "  rzcrypto padding encode --type X_931 --operation sign --key-length 128 --hash-id 33 --hex hash.bin");
  AddVerb(*padding, outcome, false, "decode", "Check a block and write the message in it",
          "The block, binary or hex; - or none is standard input",
          "Exit code 0 for a block that is accepted, 1 for one that is refused. Blocks of PKCS1 signatures are not\n"
          "decoded. Who decodes PKCS1 for others must not tell them whether a block was accepted.\n"
          "Example: rzcrypto padding decode --type OAEP --operation encrypt --key-length 256 --label 0102 block.bin");
}

}  // namespace rzcrypto
