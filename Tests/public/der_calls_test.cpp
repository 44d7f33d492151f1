// Single functions of the DER library: der_calls.txt says what each answers to which arguments.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "support/vectors.h"

using Tavo::Framework::ByteArray;

namespace {

// The arguments of a line, taken one after the other.
class Arguments {
 public:
  explicit Arguments(const std::string& line) {
    std::istringstream rest(line + "|");
    for (std::string word; std::getline(rest, word, '|');) {
      const size_t first = word.find_first_not_of(' ');
      word = first == std::string::npos ? "" : word.substr(first, word.find_last_not_of(' ') + 1 - first);
      m_words.push_back(word.size() > 1 && word[0] == '"' ? word.substr(1, word.size() - 2) : word);
    }
  }
  bool AtEnd() const { return m_at == m_words.size(); }
  std::string Text() { return m_words.at(m_at++); }
  template <class T = uint32_t>
  T Number() {
    const std::string word = Text();
    return static_cast<T>(word[0] == '-' ? static_cast<uint64_t>(std::stoll(word)) : std::stoull(word));
  }
  // A number to point to; null for "-".
  template <class T>
  std::unique_ptr<T> Optional() {
    if (m_words.at(m_at) != "-") return std::make_unique<T>(Number<T>());
    ++m_at;
    return nullptr;
  }

 private:
  std::vector<std::string> m_words;
  size_t m_at = 0;
};

// Octets in a block of exactly their size, so that a sanitizer sees one too far.
struct Octets {
  explicit Octets(const std::string& hex) {
    const ByteArray bytes = FromHex(hex);
    block = std::make_unique<uint8_t[]>(size = length = bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
  }
  const uint8_t* data() const { return block.get(); }
  std::unique_ptr<uint8_t[]> block;
  uint64_t size = 0;
  uint64_t length = 0;  // to be passed to a decoder
};

// The answer of a call: its values with blanks between.
template <class... T>
std::string Say(const T&... values) {
  std::ostringstream text;
  text.precision(15);
  ((text << (text.tellp() == 0 ? "" : " ") << +values), ...);
  return text.str();
}

// The hex of what an encoder writes, or its code.
template <class Encode>
std::string Encoded(Encode encode) {
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  const uint32_t code = encode(&buffer, &length);
  const std::string hex = ToHex(ByteArray(buffer, buffer + length));
  free(buffer);
  return code == 0 ? hex : "code " + Say(code);
}

// An object that is deleted at the end.
template <class T, uint32_t (*drop)(T**)>
struct Held {
  ~Held() {
    if (object != nullptr) drop(&object);
  }
  T** operator&() { return &object; }  // NOLINT: stands for the pointer
  operator T*() const { return object; }
  T* object = nullptr;
};
using Integer = Held<CSASNInteger, CSASNInteger_Delete>;
using Time = Held<CSTime, CSTime_Delete>;

void DecodeContents(const std::string& hex, Integer& out) {
  const Octets octets(hex);
  uint64_t length = octets.size;
  EXPECT_EQ(CSASNInteger_DERDecodeTLV(octets.data(), &length, 2, &out), 0u);
}

void DecodeTime(uint32_t number, const std::string& text, Time& time) {
  uint64_t length = text.size();
  const auto* octets = reinterpret_cast<const uint8_t*>(text.data());
  EXPECT_EQ(CSTime_DERDecodeTLV(octets, &length, 2, number, 0, 0, &time), 0u);
}

// A native number through the functions that take or give one.
template <class T, class Encode, class Size, class From, class To, class Decode>
std::string Native(T value, Encode encode, Size size, From from, To to, Decode decode) {
  const std::string hex = Encoded([&](auto b, auto l) { return encode(value, b, l, 1, 1, 1); });
  uint64_t total = 0;
  T converted = 99, decoded = 99;
  Integer object;
  EXPECT_EQ(size(value, &total), 0u);
  EXPECT_EQ(total, hex.size() / 2);
  EXPECT_EQ(from(value, &object), 0u);
  EXPECT_EQ(to(object, &converted), 0u);
  EXPECT_EQ(decode(FromHex(hex).data(), &total, 0, &decoded), 0u);
  EXPECT_TRUE(converted == value && decoded == value);
  return hex;
}

// CALL(name) defines what the lines of that name do.
std::map<std::string, std::string (*)(Arguments)>& Calls() {
  static std::map<std::string, std::string (*)(Arguments)> calls;
  return calls;
}
#define CALL(name)                                                      \
  std::string Call_##name(Arguments in);                                \
  const bool known_##name = Calls().emplace(#name, Call_##name).second; \
  std::string Call_##name(Arguments in)

// ---- identifiers and lengths ----
CALL(tag) {
  Octets octets(in.Text());
  uint32_t number = 99, tagClass = 99;
  uint8_t constructed = 99;
  const uint32_t code = CSASNUtil_DERDecodeTag(octets.data(), &octets.length, &number, &tagClass, &constructed);
  return code != 0 ? Say(code, octets.length) : Say(code, octets.length, number, tagClass, constructed);
}

CALL(specificTag) {
  const Octets octets(in.Text());
  const auto number = in.Number(), tagClass = in.Number(), constructed = in.Number();
  const uint8_t* cursor = octets.data();
  uint64_t left = octets.size, total = 10;
  const uint32_t code = CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &left, &total, number, tagClass,
                                                               static_cast<uint8_t>(constructed), 417);
  return Say(code, cursor - octets.data(), left, total);
}

CALL(encodedLength) {
  const auto value = in.Number<uint64_t>();
  uint8_t out[9];
  uint64_t written = 0;
  EXPECT_EQ(CSASNUtil_DEREncodeLength(out, &written, value), 0u);
  EXPECT_EQ(CSASNUtil_LengthOfDEREncodedLength(value), written);
  return ToHex(ByteArray(out, out + written));
}

CALL(length) {
  Octets octets(in.Text());
  uint64_t value = 77;
  const uint32_t code = CSASNUtil_DERDecodeLength(octets.data(), &octets.length, &value);
  return Say(code, octets.length, value);
}

CALL(elementLength) {
  const Octets octets(in.Text());
  uint64_t total = 77;
  const uint32_t code = CSASNUtil_DERDetermineEncodingLength(octets.data(), octets.size, &total);
  return Say(code, total);
}

CALL(range) {
  const Octets octets(in.Text());
  const uint8_t* cursor = octets.data();
  uint64_t left = octets.size, total = 5, value = 77;
  const uint32_t code = CSASNUtil_DERDecodeLengthInternal(&cursor, &left, &total, &value);
  return Say(code, cursor - octets.data(), left, total, value);
}

// pieces for a decode context: code and surplus of each, and what is held in the end
CALL(feed) {
  CSASNDecodeContext* context = nullptr;
  EXPECT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
  std::string answer;
  while (!in.AtEnd()) {
    const Octets piece(in.Text());
    int32_t surplus = 77;
    const uint32_t code = CSASNUtil_DERDecodeAddData(context, piece.data(), piece.size, &surplus);
    answer += Say(code, surplus) + ", ";
  }
  const uint8_t* data = CSASNUtil_GetDecodeContextData(context);
  answer += ToHex(ByteArray(data, data + CSASNUtil_GetDecodeContextLength(context)));
  EXPECT_EQ(CSASNUtil_DeleteDecodeContext(&context), 0u);
  return answer;
}

// ---- decimal texts ----
// the number as text, narrow and wide, with and without the closing NUL; each refuses one character less
CALL(number) {
  const auto value = in.Number<int32_t>();
  const uint64_t room = CSASNUtil_IntToStringLength(value);
  std::string bare(room, '#'), narrow(room, '#');
  std::wstring wide(room, L'#');
  uint64_t counts[3] = {};
  EXPECT_EQ(CSASNUtil_IntToStringLengthWithoutNull(value), room - 1);
  EXPECT_EQ(CSASNUtil_IntToStringWithoutNull(value, bare.data(), room - 2, nullptr), 6u);
  EXPECT_EQ(CSASNUtil_IntToString(value, narrow.data(), room - 1, nullptr), 6u);
  EXPECT_EQ(CSASNUtil_IntToWString(value, wide.data(), room - 1, nullptr), 6u);
  EXPECT_EQ(CSASNUtil_IntToStringWithoutNull(value, bare.data(), room - 1, &counts[0]), 0u);
  EXPECT_EQ(CSASNUtil_IntToString(value, narrow.data(), room, &counts[1]), 0u);
  EXPECT_EQ(CSASNUtil_IntToWString(value, wide.data(), room, &counts[2]), 0u);
  EXPECT_EQ(narrow.c_str() + std::string("#"), bare);
  EXPECT_EQ(wide, std::wstring(narrow.begin(), narrow.end()));
  return Say(counts[0], counts[1], counts[2]) + " " + narrow.c_str();
}

CALL(writeField) {
  std::string out(16, '#');
  const auto capacity = in.Number(), width = in.Number(), value = in.Number(), plus = in.Number();
  const uint32_t code = CSASNUtil_SignedLongToExactlyNChars(out.data(), capacity, static_cast<uint8_t>(width),
                                                            static_cast<int32_t>(value), static_cast<uint8_t>(plus));
  return Say(code) + " " + out.substr(0, 12);
}

CALL(readField) {
  const std::string text = in.Text();
  char* cursor = const_cast<char*>(text.data());
  uint64_t left = text.size();
  int32_t value = 99;
  const uint32_t code = CSASNUtil_ExactlyNCharsToSignedLong(&cursor, &left, in.Number<uint8_t>(), &value, 401);
  return Say(code, value, cursor - text.data(), left);
}

CALL(fraction) {
  std::string text = in.Text();
  char* cursor = text.data();
  uint64_t left = text.size();
  double value = 99;
  EXPECT_EQ(CSASNUtil_FractionalSecondsToDouble(&cursor, &left, &value), 0u);
  return Say(value, cursor - text.data(), left) + " " + text;
}

// ---- INTEGER ----
CALL(signed) {
  return Native(in.Number<int32_t>(), CSASNInteger_DEREncodeSigned32TLV, CSASNInteger_DEREncodedLengthSigned32,
                CSASNInteger_FromSigned32, CSASNInteger_ToSigned32, CSASNInteger_DERDecodeSigned32TLV);
}

CALL(unsigned) {
  const auto value = in.Number();
  const std::string hex =
      Native(value, CSASNInteger_DEREncodeUnsigned32TLV, CSASNInteger_DEREncodedLengthUnsigned32,
             CSASNInteger_FromUnsigned32, CSASNInteger_ToUnsigned32, CSASNInteger_DERDecodeUnsigned32TLV);
  uint8_t small = 99;
  uint64_t length = hex.size() / 2;
  EXPECT_EQ(CSASNInteger_DERDecodeUnsigned8TLV(FromHex(hex).data(), &length, 0, &small), value > 255 ? 6u : 0u);
  EXPECT_EQ(small, value > 255 ? 99u : value);
  return hex;
}

// contents as unsigned (code and value) and signed number, in hex, and the room that the hex needs
CALL(integer) {
  Integer number;
  DecodeContents(in.Text(), number);
  uint32_t asUnsigned = 99;
  int32_t asSigned = 99;
  const uint32_t code = CSASNInteger_ToUnsigned32(number, &asUnsigned);
  EXPECT_EQ(CSASNInteger_ToSigned32(number, &asSigned), 0u);
  char text[16] = "";
  char* out = text;
  uint64_t room = 2;
  EXPECT_EQ(CSASNInteger_ToHex(number, &out, &room, 1), 6u);
  EXPECT_EQ(CSASNInteger_ToHex(number, &out, &room, 1), 0u);
  return Say(code, asUnsigned, asSigned, room) + " " + text;
}

// contents in ascending order, "=" before those of the same value: every pair compares as its places do
CALL(ascending) {
  std::vector<std::pair<int, std::string>> numbers;
  for (int place = 0; !in.AtEnd();) {
    const std::string hex = in.Text();
    const bool same = !hex.empty() && hex[0] == '=';
    numbers.emplace_back(same ? place : ++place, hex.substr(same ? 1 : 0));
  }
  std::string wrong = "none wrong";
  for (const auto& [i, a] : numbers) {
    for (const auto& [j, b] : numbers) {
      Integer x, y;
      DecodeContents(a, x);
      DecodeContents(b, y);
      int32_t result = 99;
      EXPECT_EQ(CSASNInteger_Compare(x, y, &result), 0u);
      if (result != (i > j) - (i < j)) wrong = a + " and " + b;
    }
  }
  return wrong;
}

// ---- OBJECT IDENTIFIER ----
CALL(oid) {
  Held<CSASNOID, CSASNOID_Delete> oid;
  const uint32_t code = CSASNOID_FromString(in.Text().c_str(), &oid);
  if (code != 0) return Say(code);
  uint64_t length = 0;
  EXPECT_EQ(CSASNOID_GetStringLength(oid, &length), 0u);
  char* narrow = nullptr;
  wchar_t* wide = nullptr;
  EXPECT_EQ(CSASNOID_ToString(oid, &narrow), 0u);
  EXPECT_EQ(CSASNOID_ToWString(oid, &wide), 0u);
  EXPECT_EQ(CSASNOID_ToStringEx(oid, narrow, length - 1), 6u);
  EXPECT_EQ(CSASNOID_ToStringEx(oid, narrow, length), 0u);
  EXPECT_EQ(CSASNOID_ToWStringEx(oid, wide, length - 1), 6u);
  EXPECT_EQ(CSASNOID_ToWStringEx(oid, wide, length), 0u);
  const std::string text = narrow;
  EXPECT_EQ(length, text.size() + 1);
  EXPECT_EQ(std::wstring(wide), std::wstring(text.begin(), text.end()));
  CSASNUtil_FreeString(&narrow);
  CSASNUtil_FreeWString(&wide);
  return Encoded([&](auto b, auto l) { return CSASNOID_DEREncodeTLV(oid, b, l, 1, 1, 1); }) + " " + text;
}

CALL(oidMatches) {
  Held<CSASNOID, CSASNOID_Delete> oid;
  EXPECT_EQ(CSASNOID_FromString(in.Text().c_str(), &oid), 0u);
  uint8_t match = 9;
  const uint32_t code = CSASNOID_MatchesString(oid, in.Text().c_str(), &match);
  return Say(code, match);
}

// ---- the other primitives, and the choice with its identifier read ----
CALL(octetsWithTag) {
  const auto mode = in.Number(), number = in.Number(), tagClass = in.Number();
  const auto constructed = in.Number<uint8_t>();
  Octets octets(in.Text());
  Held<CSASNOctetString, CSASNOctetString_Delete> string;
  const uint32_t code =
      CSASNOctetString_DERDecodeWithTag(octets.data(), &octets.length, mode, number, tagClass, constructed, &string);
  return Say(code, octets.length) + " " + Encoded([&](auto b, auto l) {
           return CSASNOctetString_DEREncodeWithTag(string, number, tagClass, constructed, b, l, 1, 1, 1);
         });
}

CALL(bits) {
  Octets octets(in.Text());
  Held<CSASNBitString, CSASNBitString_Delete> bits;
  uint64_t count = 99;
  EXPECT_EQ(CSASNBitString_DERDecodeTLV(octets.data(), &octets.length, 0, &bits), 0u);
  EXPECT_EQ(CSASNBitString_GetBitCount(bits, &count), 0u);
  std::string answer = Say(count);
  uint8_t value = 99;
  for (uint64_t i = 0; CSASNBitString_GetBit(bits, i, &value) == 0; ++i) answer += " " + Say(value);
  return answer;
}

CALL(boolean) {
  Octets octets(in.Text());
  uint8_t value = 99;
  const uint32_t code = CSASNBoolean_DERDecodeTLV(octets.data(), &octets.length, 0, &value);
  return Say(code, octets.length, value) + " " +
         Encoded([&](auto b, auto l) { return CSASNBoolean_DEREncodeTLV(value / 2, b, l, 1, 1, 1); });
}

CALL(any) {
  const auto number = in.Number(), tagClass = in.Number();
  const auto constructed = in.Number<uint8_t>();
  Octets octets(in.Text());
  Held<CSASNAny, CSASNAny_Delete> any;
  const uint32_t code = CSASNAny_DERDecodeTLV(octets.data(), &octets.length, 2, number, tagClass, constructed, &any);
  return Say(code) + " " + Encoded([&](auto b, auto l) { return CSASNAny_DEREncodeTLV(any, b, l, 1, 1, 1); });
}

// the identifier FE: does it match, and can it be set instead
CALL(anyTag) {
  Held<CSASNAny, CSASNAny_Delete> any;
  const auto number = in.Number(), tagClass = in.Number();
  uint8_t match = 9;
  EXPECT_EQ(CSASNAny_Create(&any), 0u);
  EXPECT_EQ(CSASNAny_SetTag(any, 30, CSTagClass_PRIVATE, 7), 0u);
  EXPECT_EQ(CSASNAny_TagMatches(any, number, tagClass, in.Number<uint8_t>(), &match), 0u);
  return Say(match, CSASNAny_SetTag(any, number, tagClass, 0));
}

CALL(generalName) {
  const auto number = in.Number(), tagClass = in.Number();
  const auto constructed = in.Number<uint8_t>();
  Octets octets(in.Text());
  Held<CSGeneralName, CSGeneralName_Delete> name;
  uint32_t chosen = 99;
  const uint32_t code =
      CSGeneralName_DERDecodeTLV(octets.data(), &octets.length, 1, number, tagClass, constructed, &name);
  return code != 0 ? Say(code) : Say(CSGeneralName_WhatIsChosen(name, &chosen), chosen);
}

// ---- times ----
// seconds since 1970, then year and month of the calendar form; 9 and 99 for what has none
CALL(time) {
  Time time;
  const auto number = in.Number();
  DecodeTime(number, in.Text(), time);
  time_t seconds = 9;
  uint64_t since1900 = 2208988809;
  struct tm calendar;
  memset(&calendar, 0x55, sizeof calendar);
  const uint32_t code = CSTime_ToTime_t(time, &seconds);
  EXPECT_EQ(CSTime_ToUint64_t(time, &since1900), code);
  EXPECT_EQ(since1900, static_cast<uint64_t>(seconds + 2208988800));
  if (CSTime_ToTm(time, &calendar) != 0) return Say(code, seconds, CSTime_ToTm(time, &calendar));
  EXPECT_TRUE(calendar.tm_isdst == 0 && calendar.tm_wday == 0 && calendar.tm_yday == 0);
  return Say(code, seconds, 0, calendar.tm_year, calendar.tm_mon);
}

// fields that are set, what was lent set once more, and encoded
CALL(utcFields) {
  Held<CSASNUTCTime, CSASNUTCTime_Delete> time;
  EXPECT_EQ(CSASNUTCTime_Create(&time), 0u);
  auto year = in.Number<uint8_t>();
  const auto hours = in.Optional<int32_t>();
  const auto minutes = in.Optional<uint8_t>();
  const int32_t* h = hours.get();
  const uint8_t* m = minutes.get();
  uint8_t month = 2, day = 3, hour = 4, minute = 5, second = 6;
  EXPECT_EQ(CSASNUTCTime_SetTimeData(time, year, month, day, hour, minute, second, h, m), 0u);
  EXPECT_EQ(CSASNUTCTime_GetTimeData(time, &year, &month, &day, &hour, &minute, &second, &h, &m), 0u);
  EXPECT_EQ(CSASNUTCTime_SetTimeData(time, year, month, day, hour, minute, second, h, m), 0u);
  return Encoded([&](auto b, auto l) { return CSASNUTCTime_DEREncodeTLV(time, b, l, 0, 0, 1); });
}

CALL(generalFields) {
  Held<CSASNGeneralizedTime, CSASNGeneralizedTime_Delete> time;
  EXPECT_EQ(CSASNGeneralizedTime_Create(&time), 0u);
  auto year = in.Number<int32_t>();
  const auto minute = in.Optional<uint8_t>(), second = in.Optional<uint8_t>();
  const std::string fraction = in.Text();
  auto local = in.Number<uint8_t>();
  const auto hours = in.Optional<int32_t>();
  const auto minutes = in.Optional<uint8_t>();
  const uint8_t *mi = minute.get(), *s = second.get(), *m = minutes.get();
  const char* f = fraction == "-" ? nullptr : fraction.c_str();
  const int32_t* h = hours.get();
  uint8_t month = 2, day = 3, hour = 4;
  EXPECT_EQ(CSASNGeneralizedTime_SetTimeData(time, year, month, day, hour, mi, s, f, local, h, m), 0u);
  EXPECT_EQ(CSASNGeneralizedTime_GetTimeData(time, &year, &month, &day, &hour, &mi, &s, &f, &local, &h, &m), 0u);
  EXPECT_EQ(CSASNGeneralizedTime_SetTimeData(time, year, month, day, hour, mi, s, f, local, h, m), 0u);
  return Encoded([&](auto b, auto l) { return CSASNGeneralizedTime_DEREncodeTLV(time, b, l, 0, 0, 1); });
}

// texts that differ in one field: how many are equal to one
CALL(equalTimes) {
  const auto number = in.Number();
  std::vector<std::string> texts;
  while (!in.AtEnd()) texts.push_back(in.Text());
  int equals = 0;
  for (const auto& a : texts) {
    for (const auto& b : texts) {
      Time x, y;
      DecodeTime(number, a, x);
      DecodeTime(number, b, y);
      uint8_t equal = 9;
      EXPECT_EQ(CSTime_Equals(x, y, &equal), 0u);
      equals += equal;
      EXPECT_EQ(equal, a == b ? 1 : 0) << a << " " << b;
    }
  }
  return Say(equals);
}

// where a component is: tag, length, contents offsets; tag, length, contents octets; end
CALL(offset) {
  const DerFinder& find = DerFinders().at(in.Text());
  const auto mode = in.Number();
  const Octets octets(in.Text());
  uint64_t p[7] = {99, 99, 99, 99, 99, 99, 99};
  const auto* data = octets.data();
  const uint32_t code = find(data, octets.size, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], mode);
  EXPECT_EQ(find(data, octets.size, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, mode), code);
  return Say(code, p[0], p[1], p[2], p[3], p[4], p[5], p[6]);
}

std::vector<std::string> Lines() {
  std::ifstream file("data/der_calls.txt");
  if (!file) throw std::runtime_error("no der_calls.txt");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

class DerCalls : public testing::TestWithParam<std::string> {};

TEST_P(DerCalls, Answer) {
  const std::string& line = GetParam();
  const size_t colon = line.find(": "), arrow = line.find(" -> ");
  ASSERT_TRUE(colon < arrow && arrow != std::string::npos) << line;
  const Arguments arguments(line.substr(colon + 2, arrow - colon - 2));
  EXPECT_EQ(Calls().at(line.substr(0, colon))(arguments), line.substr(arrow + 4)) << line;
}

INSTANTIATE_TEST_SUITE_P(Lines, DerCalls, testing::ValuesIn(Lines()));

}  // namespace
