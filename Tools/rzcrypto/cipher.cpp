// rzcrypto encrypt, rzcrypto decrypt: one file with a block cipher, one block with RSA.

#include <algorithm>
#include <memory>
#include <string_view>

#include "commands.h"
#include "encoding.h"
#include "io.h"
#include "key_source.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  int operation = ENCRYPT_MODE;
  std::string algorithm;
  std::string mode = "CBC";
  std::string padding;
  std::string iv;
  std::string key;
  std::string input = "-";
  std::string output = "-";
  bool force = false;
};

bool IsRsa(const Options& options) { return options.algorithm == "RSA"; }

struct BlockCipher {
  std::string_view name;
  size_t leastKey;  // bytes; nothing between the two lengths will do
  size_t key;       // bytes that are used
  size_t block;     // bytes
};

constexpr BlockCipher kBlockCiphers[] = {{"AES", 16, 16, 16}, {"3DES", 16, 24, 8}, {"DES", 8, 8, 8}};

const BlockCipher& CipherOf(const Options& options) {
  return *std::ranges::find(kBlockCiphers, std::string_view(options.algorithm), &BlockCipher::name);
}

size_t IvSize(const Options& options) { return FromHex(options.iv).value().size(); }

void Warn(const std::string& message) { Outcome::Note("warning", message); }

/// What a person should know before he relies on the result; the library does as it is told.
void WarnOfWeakness(const Options& options) {
  if (options.algorithm == "DES") Warn("DES has keys of 56 bits, which are found by trying them all");
  if (options.algorithm == "3DES") Warn("3DES is withdrawn (SP 800-131A): 64-bit blocks repeat within a few gigabytes");
  if (options.mode == "ECB") Warn("ECB shows which blocks of the message are equal");
  if (options.mode == "CBC" && options.iv.empty()) {
    Warn("no IV: a block of zeros is taken, which shows messages that begin alike");
  }
  if (options.mode == "CBC") WarnOfSurplus("IV", IvSize(options), CipherOf(options).block);
}

/// The library says as much, but only when the message has been read, as if that were at fault.
void CheckKeySize(const Options& options, size_t size) {
  const BlockCipher& cipher = CipherOf(options);
  if (size < cipher.key && size != cipher.leastKey) {
    const std::string other = cipher.leastKey < cipher.key ? std::to_string(cipher.leastKey) + " or " : "";
    throw Failure{Exit::kBadInput, "a key of " + std::to_string(size) + " bytes is too short: " + options.algorithm +
                                       " needs " + other + std::to_string(cipher.key)};
  }
  WarnOfSurplus("key", size, cipher.key);
}

/// The library's key for the direction: a private key encrypts with its public numbers.
Owned<IKey> RsaKey(const Options& options) {
  const bool decrypting = options.operation == DECRYPT_MODE;
  KeyFile file = ReadKeySource(options.key, decrypting ? KeyUse::kPrivate : KeyUse::kPublic);
  if (decrypting || file.kind == KeyFile::Kind::kPublic) return std::move(file.key);
  const RsaNumbers numbers = PublicNumbers(file);
  return Own<IKey>(IRSAPublicKey::Create(NewAlgorithm("RSA").get(),
                                         ByteArray(numbers.modulus.rbegin(), numbers.modulus.rend()),
                                         ByteArray(numbers.exponent.rbegin(), numbers.exponent.rend())));
}

Owned<IKey> SecretKey(const Options& options) {
  KeyFile file = ReadKeySource(options.key, KeyUse::kSecret);
  ByteArray bytes;
  file.key->GetEncoded(bytes);
  CheckKeySize(options, bytes.size());
  WarnOfWeakness(options);
  return std::move(file.key);
}

Owned<ICryptoParserParameterMap> Parameters(const Options& options) {
  auto parameters = NewParameters();
  parameters->SetPadding(options.padding.c_str());
  if (IsRsa(options)) return parameters;
  parameters->SetCipherMode(options.mode.c_str());
  if (!options.iv.empty()) parameters->SetIv(FromHex(options.iv).value());
  return parameters;
}

/// What a failure that libcrypto gives no reason for most often means.
std::string LikelyReason(const Options& options) {
  if (options.operation == DECRYPT_MODE) {
    return "does not decrypt: another key or padding, a wrong length, or damaged data";
  }
  if (IsRsa(options)) return "too long for the key and the padding, or a number not below the modulus";
  return "not whole blocks: --padding PKCS7 fills them up";
}

ByteArray Run(const Options& options, IKey& key, const ByteArray& in) {
  const auto algorithm = NewAlgorithm(options.algorithm.c_str());
  const auto parameters = Parameters(options);
  const auto cipher = Own(Cipher::Create(algorithm.get(), parameters.get()));
  ByteArray out;
  try {
    WithCause([&] {
      cipher->Init(options.operation, &key);
      cipher->DoFinal(in, out);
    });
  } catch (const Failure& failure) {
    if (failure.code != Exit::kInside) throw;
    throw Failure{Exit::kBadInput, LikelyReason(options)};
  }
  return out;
}

void Convert(const Options& options, Outcome& outcome) {
  Owned<IKey> key;
  const bool usable =
      outcome.Attempt(KeySourceName(options.key), [&] { key = IsRsa(options) ? RsaKey(options) : SecretKey(options); });
  if (!usable || !outcome.Attempt(options.output, [&] { RequireFree(options.output, options.force); })) return;
  ByteArray result;
  if (!outcome.Attempt(InputName(options.input), [&] { result = Run(options, *key, ReadInput(options.input)); }))
    return;
  outcome.Attempt(options.output, [&] { WriteFile(options.output, result, options.force); });
}

void Complete(Options& options, const CLI::App& command) {
  if (IsRsa(options)) {
    for (const char* option : {"--mode", "--iv"}) {
      if (command.count(option) > 0) throw CLI::ValidationError(option, "is for block ciphers only");
    }
  }
  if (options.padding.empty()) options.padding = IsRsa(options) ? "OAEP" : "PKCS7";
  const bool ofRsa = options.padding == "PKCS1" || options.padding == "OAEP";
  if (options.padding != "None" && ofRsa != IsRsa(options)) {
    throw CLI::ValidationError("--padding", options.padding + " is not for " + options.algorithm);
  }
  if (!FromHex(options.iv)) throw CLI::ValidationError("--iv", "takes an even number of hex digits");
  if (!options.iv.empty() && options.mode == "CBC" && IvSize(options) < CipherOf(options).block) {
    throw CLI::ValidationError("--iv", options.algorithm + " needs " + std::to_string(CipherOf(options).block) +
                                           " bytes, not " + std::to_string(IvSize(options)));
  }
  RequireSeparate({{"the key", KeySourcePath(options.key)}, {"the data", options.input}});
}

void AddCipher(CLI::App& app, Outcome& outcome, int operation, const char* name, const char* help,
               const char* examples) {
  auto* command = app.add_subcommand(name, help);
  auto options = std::make_shared<Options>();
  options->operation = operation;
  command->add_option("-a,--algorithm", options->algorithm, "AES (AES-128), 3DES, DES or RSA")
      ->required()
      ->check(CLI::IsMember({"AES", "3DES", "DES", "RSA"}));
  command->add_option("--mode", options->mode, "CBC (default) or ECB")->check(CLI::IsMember({"CBC", "ECB"}));
  command->add_option("--padding", options->padding, "PKCS7 (default) or None; RSA: OAEP (default), PKCS1 or None")
      ->check(CLI::IsMember({"PKCS7", "None", "PKCS1", "OAEP"}));
  command->add_option("--iv", options->iv, "The initialisation vector in hex, one block");
  command->add_option("-k,--key", options->key, kKeySourceHelp)->required();
  command->add_option("-o,--output", options->output, "The new file, made with mode 0600; - or none is standard output")
      ->check(OutputPath());
  command->add_flag("--force", options->force, "Replace a file that exists");
  command->add_option("FILE", options->input, "The input; - or none is standard input");
  command->footer(examples);
  command->callback([command, options, &outcome] {
    Complete(*options, *command);
    Convert(*options, outcome);
  });
}

}  // namespace

void AddEncrypt(CLI::App& app, Outcome& outcome) {
  AddCipher(
      app, outcome, ENCRYPT_MODE, "encrypt", "Encrypt a file with a block cipher, or a block with RSA",
      "RSA takes a certificate, a public or a private key. Nothing here authenticates: put a MAC over the result.\n"
      "Examples:\n"
      "  rzcrypto encrypt -a AES --iv 000102030405060708090a0b0c0d0e0f --key file:aes.key -o out.bin in.bin\n"
      "  rzcrypto encrypt -a RSA --padding OAEP --key certificate.pem -o wrapped.bin session.key");
}

void AddDecrypt(CLI::App& app, Outcome& outcome) {
  AddCipher(app, outcome, DECRYPT_MODE, "decrypt", "Decrypt a file with a block cipher, or a block with RSA",
            "RSA needs the private key.\n"
            "Examples:\n"
            "  rzcrypto decrypt -a AES --iv 000102030405060708090a0b0c0d0e0f --key file:aes.key -o in.bin out.bin\n"
            "  rzcrypto decrypt -a RSA --padding OAEP --key key.pem wrapped.bin");
}

}  // namespace rzcrypto
