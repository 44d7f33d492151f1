// rzcrypto verify: whether an RSA signature is valid, and if not, where it fails.

#include <memory>

#include "commands.h"
#include "digest_info.h"
#include "encoding.h"
#include "io.h"
#include "key_source.h"
#include "printable.h"
#include "usage.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::string key;
  std::string padding = "PKCS1";
  std::string digest;
  std::string signature;
  std::string input = "-";
  bool json = false;
};

/// A public key as the library's own object; a private key gives its public numbers.
struct Verifier {
  Owned<IRSAPublicKey> key;
  size_t size;  // of the modulus in bytes

  explicit Verifier(const std::string& source) {
    const KeyFile file = ReadKeySource(source, KeyUse::kPublic);
    const RsaNumbers numbers = PublicNumbers(file);
    size = numbers.modulus.size();
    key = Own(IRSAPublicKey::Create(NewAlgorithm("RSA").get(),
                                    ByteArray(numbers.modulus.rbegin(), numbers.modulus.rend()),
                                    ByteArray(numbers.exponent.rbegin(), numbers.exponent.rend())));
  }
};

/// What must be under the padding.
ByteArray Payload(const Options& options, const ByteArray& data) {
  if (options.digest.empty()) return data;
  const auto digest = Own(MessageDigest::Create(NewAlgorithm(options.digest.c_str()).get(), NewParameters().get()));
  ByteArray hash;
  digest->Digest(data, hash);
  return DigestInfo(options.digest, hash);
}

bool IsValid(const Options& options, const Verifier& verifier, const ByteArray& payload, const ByteArray& signature) {
  const auto algorithm = NewAlgorithm("RSA");
  const auto parameters = NewParameters();
  parameters->SetPadding(options.padding.c_str());
  const auto service = Own(Signature::Create(algorithm.get(), parameters.get()));
  service->Init(verifier.key.get());
  return service->Verify(payload, signature);
}

/// The block that the signature opens to, which is what the public key makes of it; nothing when it is no number below
/// the modulus.
std::optional<ByteArray> Opened(const Verifier& verifier, const ByteArray& signature) {
  const auto algorithm = NewAlgorithm("RSA");
  const auto parameters = NewParameters();
  const auto cipher = Own(Cipher::Create(algorithm.get(), parameters.get()));
  cipher->Init(ENCRYPT_MODE, verifier.key.get());
  ByteArray block;
  try {
    Checked([&] { cipher->DoFinal(signature, block); });
  } catch (const Error&) {
    return std::nullopt;
  }
  return block;
}

/// What is in a PKCS #1 v1.5 signature block, 00 01 FF.. 00 payload, with eight FF or more; nothing in any other.
std::optional<ByteArray> Unpadded(const ByteArray& block) {
  constexpr size_t kFirst = 2, kLeast = 8;
  size_t at = kFirst;
  while (at < block.size() && block[at] == 0xff) ++at;
  if (at < kFirst + kLeast || at == block.size() || block[0] != 0 || block[1] != 1 || block[at] != 0) {
    return std::nullopt;
  }
  return ByteArray(block.begin() + static_cast<long>(at) + 1, block.end());
}

/// The step at which a signature that is not valid fails, a colon, and what is wrong there.
std::string Reason(const Options& options, const Verifier& verifier, const ByteArray& signature) {
  if (signature.size() != verifier.size) {
    return "length: the signature has " + std::to_string(signature.size()) + " bytes, the key's modulus " +
           std::to_string(verifier.size);
  }
  const auto block = Opened(verifier, signature);
  if (!block) return "number: the signature is not below the key's modulus, so it was not made with this key";
  if (options.padding == "None") return "data: the signature opens to another block";
  const auto payload = Unpadded(*block);
  if (!payload) return "padding: no PKCS #1 block comes out: another key, another padding, or a damaged signature";
  const auto digest = DigestInfoAlgorithm(*payload);
  if (options.digest.empty()) {
    return "data: the signature is over other bytes" + (digest ? ": a DigestInfo of " + *digest : std::string());
  }
  if (!digest) return "digest: the signature is over no DigestInfo that is known here";
  if (*digest != options.digest) return "digest: the signature is over " + *digest + ", not " + options.digest;
  return "data: the signature is over another " + *digest + " hash, so the data is not what was signed";
}

void Report(const Options& options, bool valid, const std::string& reason) {
  if (options.json) {
    Json answer = {{"file", options.input}, {"valid", valid}};
    if (!valid) {
      answer["step"] = reason.substr(0, reason.find(':'));
      answer["reason"] = reason;
    }
    return PrintJson(answer);
  }
  Print(Printable(InputName(options.input)) + (valid ? ": the signature is valid\n" : ": NOT valid: " + reason + "\n"));
}

/// Reads all that is needed; what cannot be read is an answer of its own.
void Run(const Options& options, Outcome& outcome) {
  const auto attempt = [&](const std::string& name, const std::string& file, auto&& body) {
    if (outcome.Attempt(name, body)) return true;
    if (options.json) PrintJson({{"file", file}, {"error", outcome.reason()}});
    return false;
  };
  std::unique_ptr<Verifier> verifier;
  ByteArray signature;
  const std::string key = KeySourceName(options.key);
  if (!attempt(key, key, [&] { verifier = std::make_unique<Verifier>(options.key); })) return;
  if (!attempt(InputName(options.signature), options.signature, [&] { signature = ReadInput(options.signature); })) {
    return;
  }
  attempt(InputName(options.input), options.input, [&] {
    const ByteArray payload = Payload(options, ReadInput(options.input));
    const bool valid = IsValid(options, *verifier, payload, signature);
    if (!valid) outcome.Add(Exit::kNo);
    Report(options, valid, valid ? "" : Reason(options, *verifier, signature));
  });
}

void CheckUsage(const Options& options) {
  if (options.padding == "None" && !options.digest.empty()) {
    throw CLI::ValidationError("--digest", "goes with --padding PKCS1");
  }
  RequireSeparate(
      {{"the key", KeySourcePath(options.key)}, {"the signature", options.signature}, {"the data", options.input}});
}

}  // namespace

void AddVerify(CLI::App& app, Outcome& outcome) {
  auto* command = app.add_subcommand("verify", "Verify an RSA signature and say where it fails");
  auto options = std::make_shared<Options>();
  command->add_option("-k,--key", options->key, "A certificate, a public or a private key")->required();
  command->add_option("--padding", options->padding, "PKCS1 (default), or None: the data is the whole block")
      ->check(CLI::IsMember({"PKCS1", "None"}));
  command
      ->add_option("--digest", options->digest,
                   "Hash the data: SHA1, SHA224, SHA256, SHA384, SHA512 or MD5. Without it the data is what the "
                   "signature holds, a DigestInfo for example")
      ->check(CLI::IsMember({"SHA1", "SHA224", "SHA256", "SHA384", "SHA512", "MD5"}));
  command->add_option("-s,--signature", options->signature, "The file with the signature, in binary")->required();
  command->add_option("FILE", options->input, "The signed data; - or none is standard input");
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "Exit code 0 for a valid signature, 1 for one that is not. The certificate itself is not judged.\n"
      "Example: rzcrypto verify --key certificate.pem --digest SHA256 --signature data.sig data.bin");
  command->callback([options, &outcome] {
    CheckUsage(*options);
    Run(*options, outcome);
  });
}

}  // namespace rzcrypto
