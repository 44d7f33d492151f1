#include "key_source.h"

#include <cstdlib>
#include <cstring>

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

ByteArray FromDescriptor(const std::string& number) {
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) {
    throw Failure{Exit::kUsage, "fd: takes the number of an open file"};
  }
  return ReadInput("/dev/fd/" + number);
}

ByteArray FromCommandLine(const std::string& digits) {
  Outcome::Note("--key hex:", "warning: others see the key in the list of processes; use file:, env: or fd:");
  auto bytes = FromHex(digits);
  if (!bytes) throw Failure{Exit::kUsage, "hex: takes an even number of hex digits"};
  return *bytes;
}

struct Source {
  const char* prefix;
  const char* name;  // what stands before the rest, which is never shown for a key on the command line
  ByteArray (*read)(const std::string& rest);
};

const Source kSources[] = {
    {"file:", "", ReadInput},
    {"env:", "environment variable ", FromEnvironment},
    {"fd:", "descriptor ", FromDescriptor},
    {"hex:", nullptr, FromCommandLine},
};

const Source* Find(const std::string& source) {
  for (const auto& known : kSources) {
    if (source.rfind(known.prefix, 0) == 0) return &known;
  }
  return nullptr;
}

std::string RestOf(const std::string& source, const Source& known) { return source.substr(std::strlen(known.prefix)); }

/// The key's bytes: hex digits on the command line are binary at once.
Block ReadBlock(const std::string& source) {
  const Source* known = Find(source);
  ByteArray bytes = known != nullptr ? known->read(RestOf(source, *known)) : ReadInput(source);
  if (known != nullptr && known->read == FromCommandLine) return {std::move(bytes), ""};
  return std::move(Decode(bytes).blocks.front());
}

}  // namespace

std::string KeySourceName(const std::string& source) {
  const Source* known = Find(source);
  if (known == nullptr) return InputName(source);
  return known->name != nullptr ? known->name + InputName(RestOf(source, *known)) : "--key hex:";
}

KeyFile ReadKeySource(const std::string& source) { return ReadKey(ReadBlock(source)); }

KeyFile ReadSecretKey(const std::string& source) {
  KeyFile file = ReadKeySource(source);
  if (file.kind != KeyFile::Kind::kSecret) throw Failure{Exit::kBadInput, "an RSA key where a secret key is needed"};
  return file;
}

}  // namespace rzcrypto
