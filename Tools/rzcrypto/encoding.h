#ifndef RZCRYPTO_ENCODING_H
#define RZCRYPTO_ENCODING_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavo/framework/bytes.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;

/// AsText lends the bytes as text.
inline std::string_view AsText(std::span<const unsigned char> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Hex returns two lower-case digits for each byte.
std::string Hex(std::span<const unsigned char> bytes);
/// FromHex reads hex digits of either case; white space between them is skipped. Nothing for any other character or
/// half a byte.
std::optional<ByteArray> FromHex(std::string_view text);

/// Base64 and FromBase64 are RFC 4648, section 4; reading skips white space and wants the padding.
std::string Base64(const ByteArray& bytes);
std::optional<ByteArray> FromBase64(std::string_view text);

/// One piece of an input: its bytes in binary, and the label of the PEM block it came in ("CERTIFICATE"), else empty.
struct Block {
  ByteArray bytes;
  std::string label;  // that of a block whose own header says that it is encrypted (RFC 1421) begins with "ENCRYPTED "
};

/// Pem returns the bytes as a PEM block (RFC 7468).
std::string Pem(const std::string& label, const ByteArray& bytes);

/// How an input was written.
enum class Form { kBinary, kPem, kHex };

struct Decoded {
  Form form;
  std::vector<Block> blocks;
};

/// Decode tells PEM (RFC 7468), hex text and binary apart by content. PEM gives every block in it, the others give one.
/// An empty input is binary and gives one empty block. Throws Failure kBadInput for a PEM block without an end or with
/// text that is no base64.
Decoded Decode(const ByteArray& input);

/// RequireNoSlip throws Failure kBadInput, which ends with `otherwise`, for an input that was taken as binary and would
/// be hex but for a digit too few or for colons.
void RequireNoSlip(const Decoded& input, const char* otherwise);

}  // namespace rzcrypto

#endif
