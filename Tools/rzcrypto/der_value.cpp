#include "der_value.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "der_commands.h"
#include "encoding.h"
#include "oid_names.h"
#include "printable.h"
#include "tavo/der/time.h"
#include "tavo/text.h"

namespace rzcrypto::der {

namespace {

constexpr const char* kUniversal[] = {nullptr,
                                      "BOOLEAN",
                                      "INTEGER",
                                      "BIT STRING",
                                      "OCTET STRING",
                                      "NULL",
                                      "OBJECT IDENTIFIER",
                                      "ObjectDescriptor",
                                      "EXTERNAL",
                                      "REAL",
                                      "ENUMERATED",
                                      "EMBEDDED PDV",
                                      "UTF8String",
                                      "RELATIVE-OID",
                                      "TIME",
                                      nullptr,
                                      "SEQUENCE",
                                      "SET",
                                      "NumericString",
                                      "PrintableString",
                                      "T61String",
                                      "VideotexString",
                                      "IA5String",
                                      "UTCTime",
                                      "GeneralizedTime",
                                      "GraphicString",
                                      "VisibleString",
                                      "GeneralString",
                                      "UniversalString",
                                      "CHARACTER STRING",
                                      "BMPString"};

constexpr unsigned int kBoolean = 1, kInteger = 2, kBitString = 3, kOctetString = 4, kNull = 5, kOid = 6,
                       kEnumerated = 10, kUtcTime = 23, kGeneralizedTime = 24;

ByteArray Copy(Bytes bytes) { return ByteArray(bytes.begin(), bytes.end()); }

std::string HexOf(Bytes bytes, size_t most) {
  if (most == 0 || bytes.size() <= most) return Hex(Copy(bytes));
  return Hex(Copy(bytes.first(most))) + "... (" + std::to_string(bytes.size()) + " bytes)";
}

using Wide = unsigned __int128;

std::string Decimal(Wide value) {
  std::string digits;
  do {
    digits += static_cast<char>('0' + static_cast<int>(value % 10));
    value /= 10;
  } while (value != 0);
  return {digits.rbegin(), digits.rend()};
}

/// Up to eight octets in two's complement.
std::string IntegerText(Bytes contents) {
  if (contents.empty() || contents.size() > 8) return "";
  std::uint64_t bits = (contents[0] & 0x80) != 0 ? UINT64_MAX : 0;
  for (const std::uint8_t octet : contents) bits = bits << 8 | octet;
  return std::to_string(static_cast<std::int64_t>(bits));
}

/// "2049-12-31 23:59:59 UTC"; nothing for what has no such form: a fraction, an offset, no time at all.
std::string TimeText(const Node& node, Bytes contents) {
  CSTime* time = nullptr;
  std::uint64_t length = contents.size();
  if (CSTime_DERDecodeTLV(contents.data(), &length, 2, static_cast<std::uint32_t>(node.number), 0, 0, &time) !=
      CSResult_OK) {
    return "";
  }
  std::tm calendar{};
  const std::uint32_t code = CSTime_ToTm(time, &calendar);
  CSTime_Delete(&time);
  std::array<char, 64> text{};
  if (code != CSResult_OK || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &calendar) == 0) return "";
  return std::string(text.data()) + (contents.back() == 'Z' ? " UTC" : " local time");
}

std::string BooleanText(Bytes contents) {
  if (contents.size() != 1) return "";
  return contents[0] == 0 ? "FALSE" : contents[0] == 0xFF ? "TRUE" : "TRUE (not DER)";
}

/// Octets of no known type that are all printable ASCII: names under a tag of their own, for instance.
std::string AsciiText(Bytes contents) {
  const bool ascii =
      std::all_of(contents.begin(), contents.end(), [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; });
  return ascii ? std::string(contents.begin(), contents.end()) : "";
}

/// The value in words, without the hex; empty when there are none.
std::string Words(const Node& node, Bytes contents) {
  if (node.Class() != 0 || node.Is(kOctetString)) return AsciiText(contents);
  std::string text;
  switch (node.number) {
    case kBoolean:
      return BooleanText(contents);
    case kInteger:
    case kEnumerated:
      return IntegerText(contents);
    case kOid:
      return OidText(contents);
    case kUtcTime:
    case kGeneralizedTime:
      text = TimeText(node, contents);
      return text.empty() ? AsciiText(contents) : text;
    default:
      Tavo::Framework::StringToUtf8(static_cast<unsigned int>(node.number), contents.data(), contents.size(), text);
      return text;
  }
}

/// Characters of text that are shown for each byte of hex that may be.
constexpr size_t kTextForHex = 8;

bool IsText(const Node& node) {
  static constexpr unsigned int kNone[] = {kBoolean, kInteger, kOid, kEnumerated, kUtcTime, kGeneralizedTime};
  return node.Class() != 0 || std::find(std::begin(kNone), std::end(kNone), node.number) == std::end(kNone);
}

std::string BitStringText(Bytes contents, size_t most) {
  if (contents.empty()) return "(no unused-bits octet)";
  const std::uint64_t bits = 8 * (contents.size() - 1);
  const std::string unused = contents[0] == 0 ? "" : ", " + std::to_string(contents[0]) + " unused";
  const std::uint64_t used = bits - std::min<std::uint64_t>(bits, contents[0]);
  return Count(used, "bit") + unused + (bits == 0 ? "" : "  ") + HexOf(contents.subspan(1), most);
}

}  // namespace

std::string TagName(const Node& node) {
  static constexpr const char* kClasses[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE "};
  if (node.Class() == 0 && node.number < std::size(kUniversal) && kUniversal[node.number] != nullptr) {
    return kUniversal[node.number];
  }
  return std::string("[") + kClasses[node.Class()] + std::to_string(node.number) + "]";
}

std::string OidText(Bytes contents) {
  std::string text;
  Wide arc = 0;
  for (size_t i = 0; i < contents.size(); ++i) {
    if (arc >> 121 != 0) return "";
    arc = arc << 7 | (contents[i] & 0x7F);
    if (contents[i] >= 0x80) {
      if (i + 1 == contents.size()) return "";
      continue;
    }
    if (text.empty()) {
      const unsigned int first = arc < 80 ? static_cast<unsigned int>(arc) / 40 : 2;
      text = std::to_string(first);
      arc -= Wide{40} * first;
    }
    text += "." + Decimal(arc);
    arc = 0;
  }
  return text;
}

std::string ValueText(const Node& node, Bytes contents, size_t most) {
  if (node.Is(kNull) && contents.empty()) return "";
  if (node.Is(kBitString)) return BitStringText(contents, most);
  const std::string hex = HexOf(contents, most);
  std::string words = Words(node, contents);
  if (words.empty()) return hex.empty() ? "(empty)" : hex;
  if (most != 0 && words.size() > kTextForHex * most) words.replace(kTextForHex * most, words.size(), "...");
  if (node.Is(kOid)) {
    const std::string_view name = OidName(words);
    return words + (name.empty() ? "" : "  " + std::string(name));
  }
  if (node.Is(kBoolean)) return words;
  const bool isTime = node.Is(kUtcTime) || node.Is(kGeneralizedTime);
  if (IsText(node) || (isTime && words == AsciiText(contents))) words = "\"" + Printable(words) + "\"";
  return words + "  " + hex;
}

void AddValue(Json& facts, const Node& node, Bytes contents) {
  const std::string words = Words(node, contents);
  if (node.Is(kBoolean) && !words.empty()) {
    facts["value"] = contents[0] != 0;
  } else if (!words.empty()) {
    facts["value"] = words;
  }
  if (node.Is(kOid) && !OidName(words).empty()) facts["name"] = OidName(words);
  if (node.Is(kBitString) && !contents.empty()) facts["unusedBits"] = contents[0];
  facts["hex"] = Hex(Copy(node.Is(kBitString) && !contents.empty() ? contents.subspan(1) : contents));
}

}  // namespace rzcrypto::der
