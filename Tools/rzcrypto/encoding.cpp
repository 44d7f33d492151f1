#include "encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "outcome.h"

namespace rzcrypto {

namespace {

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The value of each base64 digit by its octet; -1 for all others.
constexpr std::array<std::int8_t, 256> kBase64Values = [] {
  std::array<std::int8_t, 256> values{};
  for (auto& value : values) value = -1;
  for (size_t i = 0; i < kBase64Digits.size(); ++i) {
    values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<std::int8_t>(i);
  }
  return values;
}();

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string WithoutSpace(std::string_view text) {
  std::string dense;
  dense.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(dense), [](char c) { return !IsSpace(c); });
  return dense;
}

/// Takes the header off the body of an encrypted block (RFC 1421, 4.6.1.1: "Proc-Type: 4,ENCRYPTED") and returns
/// whether there was one. An empty line ends it.
bool DropHeaderOfEncrypted(std::string_view& body) {
  const size_t at = body.find_first_not_of("\r\n");
  if (at == std::string_view::npos || body.substr(at, 10) != "Proc-Type:") return false;
  size_t end = body.find("\n\n", at);
  if (end == std::string_view::npos) end = body.find("\n\r\n", at);
  if (end == std::string_view::npos || body.substr(at, end - at).find("ENCRYPTED") == std::string_view::npos) {
    return false;
  }
  body.remove_prefix(end);
  return true;
}

std::vector<Block> FromPem(std::string_view text) {
  static constexpr std::string_view kBegin = "-----BEGIN ";
  static constexpr std::string_view kDashes = "-----";
  std::vector<Block> blocks;
  for (size_t at = text.find(kBegin); at != std::string_view::npos; at = text.find(kBegin, at)) {
    const size_t labelAt = at + kBegin.size();
    const size_t labelEnd = text.find(kDashes, labelAt);
    if (labelEnd == std::string_view::npos) throw Failure{Exit::kBadInput, "PEM: the first line of a block is cut"};
    const std::string label(text.substr(labelAt, labelEnd - labelAt));
    const size_t bodyAt = labelEnd + kDashes.size();
    const size_t bodyEnd = text.find("-----END " + label + "-----", bodyAt);
    if (bodyEnd == std::string_view::npos) throw Failure{Exit::kBadInput, "PEM: no end of the block " + label};
    std::string_view body = text.substr(bodyAt, bodyEnd - bodyAt);
    const bool encrypted = DropHeaderOfEncrypted(body);
    auto bytes = FromBase64(body);
    if (!bytes) throw Failure{Exit::kBadInput, "PEM: the block " + label + " is not plain base64"};
    blocks.push_back({std::move(*bytes), (encrypted ? "ENCRYPTED " : "") + label});
    at = bodyEnd;
  }
  return blocks;
}

/// An initialiser list would copy the bytes.
Decoded OneBlock(Form form, ByteArray bytes) {
  Decoded decoded{form, {}};
  decoded.blocks.push_back({std::move(bytes), ""});
  return decoded;
}

}  // namespace

std::string Hex(std::span<const unsigned char> bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::optional<ByteArray> FromHex(std::string_view text) {
  ByteArray bytes;
  bytes.reserve(text.size() / 2);
  int high = -1;
  for (const char c : text) {
    if (IsSpace(c)) continue;
    const int digit = HexDigit(c);
    if (digit < 0) return std::nullopt;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<unsigned char>(high << 4 | digit));
      high = -1;
    }
  }
  if (high >= 0) return std::nullopt;
  return bytes;
}

std::string Base64(const ByteArray& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t j = 0; j < 3; ++j) group = group << 8 | (j < count ? bytes[i + j] : 0U);
    for (size_t j = 0; j < 4; ++j) text += j <= count ? kBase64Digits[group >> (18 - 6 * j) & 63] : '=';
  }
  return text;
}

std::optional<ByteArray> FromBase64(std::string_view text) {
  const std::string dense = WithoutSpace(text);
  if (dense.size() % 4 != 0) return std::nullopt;
  ByteArray bytes;
  bytes.reserve(dense.size() / 4 * 3);
  for (size_t i = 0; i < dense.size(); i += 4) {
    const bool last = i + 4 == dense.size();
    const size_t padding = !last || dense[i + 3] != '=' ? 0 : dense[i + 2] == '=' ? 2 : 1;
    uint32_t group = 0;
    for (size_t j = 0; j < 4; ++j) {
      const int digit = j < 4 - padding ? kBase64Values[static_cast<unsigned char>(dense[i + j])] : 0;
      if (digit < 0) return std::nullopt;
      group = group << 6 | static_cast<uint32_t>(digit);
    }
    for (size_t j = 0; j < 3 - padding; ++j) bytes.push_back(static_cast<unsigned char>(group >> (16 - 8 * j)));
  }
  return bytes;
}

std::string Pem(const std::string& label, const ByteArray& bytes) {
  static constexpr size_t kLine = 64;
  const std::string body = Base64(bytes);
  std::string text = "-----BEGIN " + label + "-----\n";
  for (size_t at = 0; at < body.size(); at += kLine) text += body.substr(at, kLine) + "\n";
  return text + "-----END " + label + "-----\n";
}

Decoded Decode(const ByteArray& input) {
  const std::string_view text = AsText(input);
  if (text.find("-----BEGIN ") != std::string_view::npos) return {Form::kPem, FromPem(text)};
  const bool blank = std::all_of(text.begin(), text.end(), IsSpace);
  if (!blank) {
    if (auto bytes = FromHex(text)) return OneBlock(Form::kHex, std::move(*bytes));
  }
  ByteArray bytes;
  Tavo::Framework::AssignBytes(bytes, input);
  return OneBlock(Form::kBinary, std::move(bytes));
}

void RequireNoSlip(const Decoded& input, const char* otherwise) {
  if (input.form != Form::kBinary) return;
  const ByteArray& bytes = input.blocks.front().bytes;
  const auto isHexOrSlip = [](unsigned char byte) {
    const char c = static_cast<char>(byte);
    return HexDigit(c) >= 0 || IsSpace(c) || c == ':';
  };
  if (bytes.empty() || !std::all_of(bytes.begin(), bytes.end(), isHexOrSlip)) return;
  throw Failure{Exit::kBadInput, std::string("hex with a digit too few or with colons; ") + otherwise};
}

}  // namespace rzcrypto
