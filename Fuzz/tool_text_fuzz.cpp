// What the tool reads as text: checksum lines, and inputs that may be PEM, hex or binary.

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "checksum_line.h"
#include "encoding.h"
#include "outcome.h"
#include "printable.h"
#include "tavo/text.h"

using namespace rzcrypto;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

/// A line that was read is written and read again as the same line.
void CheckLines(std::string_view text, const std::string& algorithm) {
  for (const auto& line : ParseChecksums(text, algorithm)) {
    if (!line) continue;
    Require(algorithm.empty() || line->file.find('\0') == std::string::npos);
    for (const std::string& written : {PlainLine(*line), TaggedLine(*line)}) {
      Require(std::count(written.begin(), written.end(), '\n') == 1);
      const auto again = ParseChecksums(written, "");
      Require(again.size() == 1 && again[0] && again[0]->file == line->file && again[0]->digest == line->digest &&
              again[0]->algorithm == line->algorithm);
    }
  }
}

void CheckEncodings(std::string_view text, const ByteArray& bytes) {
  Require(FromHex(Hex(bytes)) == bytes && FromBase64(Base64(bytes)) == bytes);
  if (const auto read = FromHex(text)) {
    std::string digits;
    for (const char c : text) {
      if (std::isspace(static_cast<unsigned char>(c)) == 0) {
        digits += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      }
    }
    Require(Hex(*read) == digits);
  }
  const Decoded pem = Decode([&] {
    const std::string block = Pem("X", bytes);
    return ByteArray(block.begin(), block.end());
  }());
  Require(pem.form == Form::kPem && pem.blocks.size() == 1 && pem.blocks[0].bytes == bytes);
}

/// Whatever is shown on a terminal is UTF-8 in one line.
void CheckPrintable(std::string_view text) {
  const std::string shown = Printable(text);
  Require(std::none_of(shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }));
  Require(Tavo::Framework::IsUtf8(reinterpret_cast<const unsigned char*>(shown.data()), shown.size()));
  Require(Printable(shown) == shown);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  const ByteArray bytes(data, data + size);
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  CheckLines(text, "");
  CheckLines(text, "SHA256");
  CheckEncodings(text, bytes);
  CheckPrintable(text);
  try {
    const Decoded decoded = Decode(bytes);
    Require(decoded.form != Form::kBinary || decoded.blocks.at(0).bytes == bytes);
  } catch (const Failure& failure) {
    Require(failure.code == Exit::kBadInput && !failure.message.empty());
  }
  return 0;
}
