// rzcrypto key show: what kind of key a file holds, how large it is and which one it is.

#include <memory>
#include <utility>
#include <vector>

#include "encoding.h"
#include "io.h"
#include "key_commands.h"
#include "key_file.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::vector<std::string> files;
  bool withPrivate = false;
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
  Print(name + ": " + facts["kind"].get<std::string>() + ", " + size.dump() + (secret ? " bytes\n" : " bits\n"));
  for (const auto& [key, value] : facts.items()) {
    if (key == "kind" || key == "size" || key == "bits") continue;
    char line[32];
    std::snprintf(line, sizeof line, "  %-16s ", key.c_str());
    Print(line + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n");
  }
}

void ShowFile(const std::string& path, const Options& options, Json& list, Outcome& outcome) {
  const auto blocks = Decode(ReadInput(path)).blocks;
  for (size_t i = 0; i < blocks.size(); ++i) {
    const std::string name = InputName(path) + (blocks.size() > 1 ? " (block " + std::to_string(i + 1) + ")" : "");
    outcome.Attempt(name, [&] {
      const KeyFile file = ReadKey(blocks[i]);
      const bool secret = file.kind == KeyFile::Kind::kSecret;
      const Json facts = secret ? SecretFacts(file, options.withPrivate) : RsaFacts(file, options.withPrivate);
      if (!options.json) return PrintText(name, facts);
      Json entry = {{"file", path}};
      if (blocks.size() > 1) entry["block"] = i + 1;
      entry.update(facts);
      list.push_back(entry);
    });
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
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "The fingerprint of an RSA key is the SHA-256 of its SubjectPublicKeyInfo: the same for the private key, the\n"
      "public key and every certificate of it.\n"
      "Example: rzcrypto key show key.pem certificate.der");
  command->callback([options, &outcome] {
    if (options->files.empty()) options->files = {"-"};
    Json list = Json::array();
    for (const auto& file : options->files) {
      outcome.Attempt(InputName(file), [&] { ShowFile(file, *options, list, outcome); });
    }
    if (options->json) PrintJson({{"keys", list}});
  });
}

}  // namespace rzcrypto
