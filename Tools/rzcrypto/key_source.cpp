#include "key_source.h"

#include <fcntl.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "io.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

ByteArray Bytes(const char* text) {
  ByteArray bytes;
  AppendBytes(bytes, reinterpret_cast<const unsigned char*>(text), std::strlen(text));
  return bytes;
}

ByteArray FromEnvironment(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) throw Failure{Exit::kReadOrWrite, "there is no such environment variable"};
  return Bytes(value);
}

constexpr size_t kLongestSource = size_t{1}
                                  << 20;  // bytes: many certificates in one file, but not a device without end

ByteArray FromFile(const std::string& path) {
  if (path.empty()) throw Failure{Exit::kUsage, "takes the name of a file"};
  return ReadInput(Input(path), kLongestSource);
}

/// Nothing for what is no number; -1 for one that no open file can have.
std::optional<int> Descriptor(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  int number = -1;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string PathOfDescriptor(const std::string& text) {
  return "/dev/fd/" + std::to_string(Descriptor(text).value_or(-1));
}

ByteArray FromDescriptor(const std::string& text) {
  const auto number = Descriptor(text);
  if (!number) throw Failure{Exit::kUsage, "fd: takes the number of an open file"};
  if (fcntl(*number, F_GETFD) < 0) throw Failure{Exit::kReadOrWrite, std::strerror(errno)};
  return ReadInput(Input(*number), kLongestSource);
}

ByteArray FromCommandLine(const std::string& digits) {
  Outcome::Note("--key hex", "warning: others see the key in the list of processes; use file:, env: or fd:");
  auto bytes = FromHex(digits);
  if (!bytes) throw Failure{Exit::kUsage, "hex: takes an even number of hex digits"};
  return *bytes;
}

std::string SamePath(const std::string& path) { return path; }
std::string NoPath(const std::string&) { return ""; }

/// What is done with the bytes of a source: their form is found out, or they are binary, or they are a secret key.
enum class Content { kAny, kBinary, kSecret };

struct Source {
  const char* prefix;
  const char* name;  // what stands before the rest, which is never shown for a key on the command line
  ByteArray (*read)(const std::string& rest);
  std::string (*path)(const std::string& rest);
  Content content;
};

const Source kSources[] = {
    {"file:", "", FromFile, SamePath, Content::kAny},
    {"raw:", "", FromFile, SamePath, Content::kSecret},
    {"env:", "environment variable ", FromEnvironment, NoPath, Content::kAny},
    {"fd:", "descriptor ", FromDescriptor, PathOfDescriptor, Content::kAny},
    {"hex:", nullptr, FromCommandLine, NoPath, Content::kBinary},
    {"", "", FromFile, SamePath, Content::kAny},
};

const Source& Find(const std::string& source) {
  const Source* known = kSources;
  while (source.rfind(known->prefix, 0) != 0) ++known;  // the last one takes everything
  return *known;
}

std::string RestOf(const std::string& source, const Source& known) { return source.substr(std::strlen(known.prefix)); }

constexpr size_t kSurelySecret = 32;  // bytes: no key of another kind is as short, in whatever encoding

/// Throws unless the key can be used so.
void RequireServing(const KeyFile& file, KeyUse use) {
  const bool secret = file.kind == KeyFile::Kind::kSecret;
  if (use == KeyUse::kSecret) {
    if (!secret) throw Failure{Exit::kBadInput, "an RSA key where a secret key is needed"};
  } else if (secret) {
    throw Failure{Exit::kBadInput, "no RSA key and no certificate"};
  } else if (use == KeyUse::kPrivate && file.kind != KeyFile::Kind::kPrivate) {
    throw Failure{Exit::kBadInput, "a public key where the private key is needed"};
  }
}

/// The first key among the blocks that serves.
KeyFile FirstServing(const Decoded& input, KeyUse use) {
  const bool pem = input.form == Form::kPem;
  std::optional<Failure> first;
  for (const auto& block : input.blocks) {
    try {
      const bool raw = use == KeyUse::kSecret && !pem && block.bytes.size() <= kSurelySecret;
      KeyFile file = raw ? RawKey(block.bytes) : ReadKey(block);
      RequireServing(file, use);
      return file;
    } catch (const Failure& failure) {
      if (!first) first = failure;
    }
  }
  throw *first;
}

}  // namespace

std::string KeySourceName(const std::string& source) {
  const Source& known = Find(source);
  const std::string rest = RestOf(source, known);
  if (known.name != nullptr && !rest.empty()) return known.name + InputName(rest);
  const std::string kind(known.prefix);
  return kind.empty() ? "--key" : "--key " + kind.substr(0, kind.size() - 1);
}

std::string KeySourcePath(const std::string& source) {
  const Source& known = Find(source);
  return known.path(RestOf(source, known));
}

KeyFile ReadKeySource(const std::string& source, KeyUse use) {
  const Source& known = Find(source);
  ByteArray bytes = known.read(RestOf(source, known));
  if (known.content == Content::kSecret) {
    KeyFile file = RawKey(bytes);
    RequireServing(file, use);
    return file;
  }
  if (known.content == Content::kAny) {
    const Decoded input = Decode(bytes);
    RequireNoSlip(input, "raw:PATH takes a secret key byte for byte");
    return FirstServing(input, use);
  }
  Decoded binary{Form::kBinary, {}};
  binary.blocks.push_back({std::move(bytes), ""});
  return FirstServing(binary, use);
}

void WarnOfSurplus(const char* what, size_t size, size_t used) {
  if (size <= used) return;
  Outcome::Note("warning", std::string("of the ") + what + "'s " + std::to_string(size) + " bytes only the first " +
                               std::to_string(used) + " bytes are taken");
}

}  // namespace rzcrypto
