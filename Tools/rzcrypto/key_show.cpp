// rzcrypto key show: what kind of key a file holds, how large it is and which one it is.

#include <memory>
#include <utility>
#include <vector>

#include "encoding.h"
#include "io.h"
#include "key_commands.h"
#include "key_file.h"
#include "printable.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::vector<std::string> files;
  bool withPrivate = false;
  bool raw = false;
  bool json = false;
};

std::string Sha256(const ByteArray& bytes) {
  const auto digest = Own(MessageDigest::Create(NewAlgorithm("SHA256").get(), NewParameters().get()));
  ByteArray hash;
  digest->Digest(bytes, hash);
  return Hex(hash);
}

size_t BitsOf(const ByteArray& number) {
  size_t bits = 8 * number.size();
  for (unsigned char top = number.empty() ? 0x80 : number[0]; top < 0x80; top = static_cast<unsigned char>(top << 1)) {
    --bits;
  }
  return bits;
}

/// In decimal when 64 bits hold it, else in hex.
Json Exponent(const ByteArray& number) {
  if (number.size() > sizeof(uint64_t)) return "0x" + Hex(number);
  uint64_t value = 0;
  for (const unsigned char byte : number) value = value << 8 | byte;
  return value;
}

using Getter = void (IRSAPrivateCRTKey::*)(ByteArray&);
constexpr std::pair<const char*, Getter> kPrivateNumbers[] = {
    {"privateExponent", &IRSAPrivateCRTKey::GetPrivExponent},
    {"prime1", &IRSAPrivateCRTKey::GetPFactor},
    {"prime2", &IRSAPrivateCRTKey::GetQFactor},
    {"exponent1", &IRSAPrivateCRTKey::GetPExponent},
    {"exponent2", &IRSAPrivateCRTKey::GetQExponent},
    {"coefficient", &IRSAPrivateCRTKey::GetCRTCoefficient},
};

Json RsaFacts(const KeyFile& file, bool withPrivate) {
  const RsaNumbers numbers = PublicNumbers(file);
  Json facts = {
      {"kind", file.kind == KeyFile::Kind::kPrivate ? "RSA private key" : "RSA public key"},
      {"encoding", file.encoding},
      {"bits", BitsOf(numbers.modulus)},
      {"exponent", Exponent(numbers.exponent)},
      {"fingerprint", "SHA256:" + Sha256(SubjectPublicKeyInfo(numbers))},
      {"modulus", Hex(numbers.modulus)},
  };
  auto* key = dynamic_cast<IRSAPrivateCRTKey*>(file.key.get());
  if (key == nullptr || !withPrivate) return facts;
  for (const auto& [name, get] : kPrivateNumbers) {
    ByteArray number;
    (key->*get)(number);
    facts[name] = Hex(number);
  }
  return facts;
}

Json SecretFacts(const KeyFile& file, bool withPrivate) {
  ByteArray bytes;
  file.key->GetEncoded(bytes);
  Json facts = {{"kind", "secret key"}, {"encoding", file.encoding}, {"size", bytes.size()}};
  // The hash of a short key would give it away to whoever tries them all.
  if (withPrivate) facts["fingerprint"] = "SHA256:" + Sha256(bytes);
  if (withPrivate) facts["key"] = Hex(bytes);
  return facts;
}

void PrintText(const std::string& name, const Json& facts) {
  const bool secret = facts.contains("size");
  const Json& size = facts[secret ? "size" : "bits"];
  Print(Printable(name) + ": " + facts["kind"].get<std::string>() + ", " + size.dump() +
        (secret ? " bytes\n" : " bits\n"));
  for (const auto& [key, value] : facts.items()) {
    if (key == "kind" || key == "size" || key == "bits") continue;
    char line[32];
    std::snprintf(line, sizeof line, "  %-16s ", key.c_str());
    Print(line + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n");
  }
}

/// The facts of a block; what is odd about it is told as a note under its name.
Json Facts(const std::string& name, const Block& block, const Options& options) {
  const KeyFile file = options.raw ? RawKey(block.bytes) : ReadKey(block);
  if (file.kind == KeyFile::Kind::kSecret) return SecretFacts(file, options.withPrivate);
  Json facts = RsaFacts(file, options.withPrivate);
  if (const size_t trailing = TrailingSize(block.bytes)) {
    Outcome::Note(name, "note: " + std::to_string(trailing) + " bytes follow the key");
    if (options.json) facts["trailing"] = trailing;
  }
  return facts;
}

void ShowBlock(const std::string& name, const Block& block, const Options& options, Json entry, Json& list,
               Outcome& outcome) {
  Json facts;
  if (!outcome.Attempt(name, [&] { facts = Facts(name, block, options); })) {
    entry["error"] = outcome.reason();
  } else if (options.json) {
    entry.update(facts);
  } else {
    PrintText(name, facts);
  }
  list.push_back(entry);
}

void ShowFile(const std::string& path, const Options& options, Json& list, Outcome& outcome) {
  std::vector<Block> blocks;
  const auto read = [&] {
    ByteArray input = ReadInput(path);
    if (options.raw) {
      blocks.push_back({std::move(input), ""});
      return;
    }
    Decoded decoded = Decode(input);
    RequireNoSlip(decoded, "--raw takes a secret key byte for byte");
    blocks = std::move(decoded.blocks);
  };
  if (!outcome.Attempt(InputName(path), read)) list.push_back({{"file", path}, {"error", outcome.reason()}});
  const bool several = blocks.size() > 1;
  for (size_t i = 0; i < blocks.size(); ++i) {
    Json entry = {{"file", path}};
    if (several) entry["block"] = i + 1;
    const std::string name = InputName(path) + (several ? " (block " + std::to_string(i + 1) + ")" : "");
    ShowBlock(name, blocks[i], options, entry, list, outcome);
  }
}

}  // namespace

void AddKeyShow(CLI::App& key, Outcome& outcome) {
  auto* command = key.add_subcommand("show", "Show what kind of key a file holds, its size and fingerprint");
  auto options = std::make_shared<Options>();
  command->add_option("FILE", options->files,
                      "PKCS #8, PKCS #1, SubjectPublicKeyInfo, a certificate or a raw secret key; - or none is "
                      "standard input");
  command->add_flag("--private", options->withPrivate, "Show secret keys and private components, too");
  command->add_flag("--raw", options->raw, "The files are raw secret keys, even if they look like something else");
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "The fingerprint of an RSA key is the SHA-256 of its SubjectPublicKeyInfo: the same for the private key, the\n"
      "public key and every certificate of it. That of a secret key is shown with --private only.\n"
      "Example: rzcrypto key show key.pem certificate.der");
  command->callback([options, &outcome] {
    if (options->files.empty()) options->files = {"-"};
    Json list = Json::array();
    for (const auto& file : options->files) ShowFile(file, *options, list, outcome);
    if (options->json) PrintJson({{"keys", list}});
  });
}

}  // namespace rzcrypto
