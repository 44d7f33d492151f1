// rzcrypto key generate: secret keys and RSA key pairs, into files that only their owner may read.

#include <memory>

#include "encoding.h"
#include "io.h"
#include "key_commands.h"
#include "key_file.h"
#include "usage.h"
#include "waiting.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::string algorithm;
  int size = 0;
  int bits = 2048;
  std::string output;
  std::string publicOutput;
  bool text = false;  // hex for a secret key
  bool der = false;   // for RSA
  bool force = false;
};

ByteArray Encoded(IKey& key) {
  ByteArray encoded;
  key.GetEncoded(encoded);
  return encoded;
}

int UsualSize(const std::string& algorithm) { return algorithm == "DES" ? 8 : algorithm == "3DES" ? 24 : 16; }

void GenerateSecret(const Options& options) {
  const auto algorithm = NewAlgorithm(options.algorithm.c_str());
  const auto generator = Own(KeyGenerator::Create(algorithm.get(), NewParameters().get()));
  const auto key = Own(generator->GenerateKey(options.size > 0 ? options.size : UsualSize(options.algorithm)));
  if (!key) throw Failure{Exit::kInside, "the system's random source failed"};
  const ByteArray bytes = Encoded(*key);
  if (options.text) {
    WriteFile(options.output, Hex(bytes) + "\n", options.force);
  } else {
    WriteFile(options.output, bytes, options.force);
  }
}

void WriteEncoding(const std::string& path, const char* label, const ByteArray& bytes, const Options& options) {
  if (options.der) {
    WriteFile(path, bytes, options.force);
  } else {
    WriteFile(path, Pem(label, bytes), options.force);
  }
}

Owned<IKey> NewRsaPrivateKey(int bits) {
  const Waiting waiting("generating an RSA key of " + std::to_string(bits) + " bits");
  const auto algorithm = NewAlgorithm("RSA");
  const auto generator = Own(KeyPairGenerator::Create(algorithm.get(), NewParameters().get()));
  return Own<IKey>(Own(generator->GenerateKeyPair(bits))->GetPrivateKey());
}

/// The public key goes first: when it cannot be written, no private key has been replaced.
void GenerateRsa(const Options& options, Outcome& outcome) {
  KeyFile file;
  const bool done = outcome.Attempt(options.output, [&] {
    file = {KeyFile::Kind::kPrivate, "PKCS #8", NewRsaPrivateKey(options.bits)};
  });
  const auto writePublic = [&] {
    WriteEncoding(options.publicOutput, "PUBLIC KEY", SubjectPublicKeyInfo(PublicNumbers(file)), options);
  };
  if (!done || (!options.publicOutput.empty() && !outcome.Attempt(options.publicOutput, writePublic))) return;
  outcome.Attempt(options.output, [&] { WriteEncoding(options.output, "PRIVATE KEY", Encoded(*file.key), options); });
}

void CheckUsage(const CLI::App& command, const Options& options) {
  const bool rsa = options.algorithm == "RSA";
  for (const char* option : {"--bits", "--der", "--public"}) {
    if (!rsa && command.count(option) > 0) throw CLI::ValidationError(option, "is for RSA only");
  }
  for (const char* option : {"--size", "--hex"}) {
    if (rsa && command.count(option) > 0) throw CLI::ValidationError(option, "is for secret keys only");
  }
  if (!options.publicOutput.empty()) RequireTwoFiles("--public", options.publicOutput, options.output);
}

void Generate(const Options& options, Outcome& outcome) {
  for (const auto& path : {options.output, options.publicOutput}) {
    if (!path.empty() && !outcome.Attempt(path, [&] { RequireFree(path, options.force); })) return;
  }
  if (options.algorithm == "RSA") return GenerateRsa(options, outcome);
  outcome.Attempt(options.output, [&] { GenerateSecret(options); });
}

}  // namespace

void AddKeyGenerate(CLI::App& key, Outcome& outcome) {
  auto* command = key.add_subcommand("generate", "Make a secret key or an RSA key pair");
  auto options = std::make_shared<Options>();
  command->add_option("-a,--algorithm", options->algorithm, "AES, 3DES, DES or RSA")
      ->required()
      ->check(CLI::IsMember({"AES", "3DES", "DES", "RSA"}));
  command->add_option("--size", options->size, "Bytes of a secret key (default: AES 16, 3DES 24, DES 8)")
      ->transform(Decimal(1, 4096));
  command->add_option("--bits", options->bits, "Bits of an RSA modulus (default 2048)")->transform(Decimal(512, 16384));
  command->add_option("-o,--output", options->output, "The new file, made with mode 0600; - is standard output")
      ->required()
      ->check(OutputPath());
  command->add_option("--public", options->publicOutput, "Write the RSA public key to this new file as well")
      ->check(OutputPath());
  command->add_flag("--hex", options->text, "A secret key in hex instead of raw bytes");
  command->add_flag("--der", options->der, "RSA keys in DER instead of PEM");
  command->add_flag("--force", options->force, "Replace files that exist");
  command->footer(
      "RSA keys are written as PKCS #8, their public keys as SubjectPublicKeyInfo.\n"
      "Examples:\n"
      "  rzcrypto key generate -a AES --size 16 -o aes.key\n"
      "  rzcrypto key generate -a RSA --bits 3072 -o key.pem --public public.pem");
  command->callback([command, options, &outcome] {
    CheckUsage(*command, *options);
    Generate(*options, outcome);
  });
}

}  // namespace rzcrypto
