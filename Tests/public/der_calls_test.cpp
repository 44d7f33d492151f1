// Functions of the DER library: der_calls.txt says what each answers to which arguments. Lines that follow each other
// share their objects.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "support/der_vectors.h"

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

 private:
  std::vector<std::string> m_words;
  size_t m_at = 0;
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
  const ExactOctets octets(FromHex(hex));
  uint64_t length = octets.size;
  EXPECT_EQ(CSASNInteger_DERDecodeTLV(octets.data(), &length, 2, &out), 0u);
}

void DecodeTime(uint32_t number, const std::string& text, Time& time) {
  uint64_t length = text.size();
  const auto* octets = reinterpret_cast<const uint8_t*>(text.data());
  EXPECT_EQ(CSTime_DERDecodeTLV(octets, &length, 2, number, 0, 0, &time), 0u);
}

// The objects of lines that follow each other, by name.
using Objects = std::map<std::string, void*>;

// One argument of a function, from a word: a number; octets or text, of a moving cursor too; the number that a pointer
// points to; a buffer for text ("#<size>"); an object, or the place for one ("$name"); null ("-").
template <class P>
class Argument {
  using T = std::remove_pointer_t<P>;
  static constexpr bool kIsText = std::is_same_v<T, char> || std::is_same_v<T, wchar_t>;

 public:
  Argument(Arguments& in, Objects& objects) {
    if constexpr (!std::is_pointer_v<P>) {
      value = in.Number<P>();
    } else if (const std::string word = in.Text(); word != "-") {
      if (word[0] == '$') {
        if constexpr (std::is_pointer_v<T>) {
          held = static_cast<T>(*(place = &objects[word]));
          value = &held;
        } else {
          value = static_cast<P>(objects.at(word));
        }
      } else if constexpr (std::is_same_v<T, const uint8_t>) {
        value = (octets = std::make_unique<ExactOctets>(FromHex(word)))->data();
      } else if constexpr (std::is_same_v<T, const char>) {
        value = (text = word).c_str();
      } else if constexpr (kIsText) {
        value = filled.assign(std::stoul(word.substr(1)), '#').data();
      } else if constexpr (std::is_same_v<T, const uint8_t*>) {
        held = start = (octets = std::make_unique<ExactOctets>(FromHex(word)))->data();
        value = &held;
      } else if constexpr (std::is_same_v<T, char*>) {
        held = start = (text = word).data();
        value = &held;
      } else if constexpr (std::is_arithmetic_v<T>) {
        number = static_cast<T>(std::stoll(word));
        value = &number;
      } else {
        throw std::invalid_argument(word);
      }
    }
  }
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;
  // What the function has written: a number, and how far it moved a cursor.
  std::string Answer() {
    if constexpr (std::is_pointer_v<P>) {
      if (place != nullptr) *place = const_cast<void*>(static_cast<const void*>(held));
      if constexpr (std::is_same_v<T, const uint8_t*> || std::is_same_v<T, char*>) {
        if (start != nullptr) return " " + Say(held - start);
      } else if constexpr (kIsText) {
        std::replace(filled.begin(), filled.end(), T(0), T('.'));
        return " " + std::string(filled.begin(), filled.end());
      } else if constexpr (std::is_arithmetic_v<T> && !std::is_const_v<T>) {
        if (value != nullptr) return " " + Say(number);
      }
    }
    return "";
  }
  P value = {};

 private:
  std::unique_ptr<ExactOctets> octets;
  std::string text;
  std::basic_string<std::conditional_t<kIsText, T, char>> filled;
  std::conditional_t<std::is_arithmetic_v<std::remove_const_t<T>>, std::remove_const_t<T>, char> number = {};
  std::conditional_t<std::is_pointer_v<T>, T, char*> held = nullptr, start = nullptr;
  void** place = nullptr;
};

using Call = std::function<std::string(Arguments&, Objects&)>;

// A line of a function of the library: its code, and what it has written, one argument after the other.
template <class... P>
Call Line(uint32_t (*function)(P...)) {
  return [=](Arguments& in, Objects& objects) {
    std::tuple<std::unique_ptr<Argument<P>>...> all{std::make_unique<Argument<P>>(in, objects)...};
    return std::apply(
        [&](auto&... each) {
          std::string answer = Say(function(each->value...));
          ((answer += each->Answer()), ...);
          return answer;
        },
        all);
  };
}

// The functions with lines of their own, and what CALL adds.
std::map<std::string, Call>& Calls() {
#define FN(name) calls[#name] = Line(name);
  static std::map<std::string, Call> calls;
  if (calls.empty()) {
    // clang-format off
    FN(CSASNUtil_DERDecodeTag) FN(CSASNUtil_DERDecodeSpecificTagInternal) FN(CSASNUtil_DERDecodeLength)
    FN(CSASNUtil_DERDecodeLengthInternal) FN(CSASNUtil_DERDetermineEncodingLength) FN(CSASNUtil_DERDecodeStart)
    FN(CSASNUtil_DERDecodeAddData) FN(CSASNUtil_IntToStringLengthWithoutNull)
    FN(CSASNUtil_IntToStringLength) FN(CSASNUtil_IntToStringWithoutNull) FN(CSASNUtil_IntToString)
    FN(CSASNUtil_IntToWString) FN(CSASNUtil_SignedLongToExactlyNChars) FN(CSASNUtil_DeleteDecodeContext) FN(CSASNUtil_ExactlyNCharsToSignedLong)
    FN(CSASNInteger_FromSigned32) FN(CSASNInteger_FromUnsigned32) FN(CSASNInteger_ToSigned32)
    FN(CSASNInteger_ToUnsigned32) FN(CSASNInteger_DERDecodeTLV) FN(CSASNInteger_DERDecodeSigned32TLV)
    FN(CSASNInteger_DERDecodeUnsigned32TLV) FN(CSASNInteger_DERDecodeUnsigned8TLV)
    FN(CSASNInteger_DEREncodedLengthSigned32) FN(CSASNInteger_DEREncodedLengthUnsigned32)
    FN(CSASNInteger_DERDecodeFinishUnsigned32) FN(CSASNInteger_DERDecodeFinishUnsigned8) FN(CSASNInteger_FromString)
    FN(CSASNInteger_ToString) FN(CSASNInteger_Add) FN(CSASNInteger_Subtract) FN(CSASNInteger_Delete)
    FN(CSASNBoolean_DERDecodeTLV) FN(CSASNBoolean_DERDecodeFinish) FN(CSASNOID_FromString) FN(CSASNOID_MatchesString)
    FN(CSASNOID_Delete) FN(CSASNOctetString_FromBytes) FN(CSASNOctetString_SetBytes) FN(CSASNOctetString_Delete)
    FN(CSASNIA5String_FromBytes) FN(CSASNBitString_Create) FN(CSASNBitString_DERDecodeTLV)
    FN(CSASNBitString_GetBitCount) FN(CSASNBitString_GetBit) FN(CSASNBitString_SetBit) FN(CSASNBitString_SetAllBits)
    FN(CSASNBitString_FromOctetString) FN(CSASNBitString_Delete) FN(CSASNAny_Create) FN(CSASNAny_SetTag)
    FN(CSASNAny_TagMatches) FN(CSASNAny_DERDecodeTLV) FN(CSASNAny_Delete) FN(CSAlgorithmIdentifier_Create)
    FN(CSAlgorithmIdentifier_SetAlgorithm) FN(CSAlgorithmIdentifier_GetAlgorithm)
    FN(CSAlgorithmIdentifier_SetParameters) FN(CSAlgorithmIdentifier_GetParameters)
    FN(CSAlgorithmIdentifier_ParametersIsPresent) FN(CSAlgorithmIdentifier_DERToAny)
    FN(CSAlgorithmIdentifier_DEREncodedLength) FN(CSAlgorithmIdentifier_Delete) FN(CSExtension_Create)
    FN(CSExtension_SetCritical) FN(CSExtension_GetCritical) FN(CSExtension_CriticalIsPresent)
    FN(CSExtension_DEREncodedLength) FN(CSExtension_Delete) FN(CSOtherName_DERDecodeTLV) FN(CSOtherName_GetValue)
    FN(CSOtherName_Delete) FN(CSExtKeyUsageSyntax_Create) FN(CSExtKeyUsageSyntax_AddItem)
    FN(CSExtKeyUsageSyntax_AddItemAt) FN(CSExtKeyUsageSyntax_GetItemAt) FN(CSExtKeyUsageSyntax_GetItemCount)
    FN(CSExtKeyUsageSyntax_IndexOfItem) FN(CSExtKeyUsageSyntax_RemoveItemAt) FN(CSExtKeyUsageSyntax_RemoveItem)
    FN(CSExtKeyUsageSyntax_Delete) FN(CSASNUTCTime_Create) FN(CSASNUTCTime_SetTimeData) FN(CSASNUTCTime_GetTimeData) FN(CSASNUTCTime_Delete)
    FN(CSTime_Create) FN(CSTime_SetUtcTime)
    FN(CSTime_ToTime_t) FN(CSTime_ToUint64_t) FN(CSTime_Delete) FN(CSASNGeneralizedTime_Create) FN(CSASNGeneralizedTime_SetTimeData) FN(CSASNGeneralizedTime_GetTimeData)
    FN(CSASNGeneralizedTime_Delete) FN(CSGeneralName_Create) FN(CSGeneralName_DERDecodeTLV)
    FN(CSGeneralName_WhatIsChosen) FN(CSGeneralName_DeleteChosenItem) FN(CSGeneralName_SetDNSName)
    FN(CSGeneralName_GetDNSName) FN(CSGeneralName_GetRfc822Name) FN(CSGeneralName_SetRegisteredID)
    FN(CSGeneralName_GetRegisteredID) FN(CSGeneralName_GetDirectoryName) FN(CSGeneralName_Delete)
    // clang-format on
  }
#undef FN
  return calls;
}
#define CALL(name)                                                      \
  std::string Call_##name(Arguments& in, Objects& objects);             \
  const bool known_##name = Calls().emplace(#name, Call_##name).second; \
  std::string Call_##name([[maybe_unused]] Arguments& in, [[maybe_unused]] Objects& objects)

// the encoding of an object, by the name of its type
CALL(encoded) {
  const DerType& type = DerTypeNamed(in.Text());
  const void* object = objects.at(in.Text());
  return Encoded([&](auto b, auto l) { return type.encode(object, b, l, true, true, true); });
}

// whether two objects are one; null for "-"
CALL(same) {
  const auto object = [&](const std::string& word) { return word == "-" ? nullptr : objects.at(word); };
  const void* one = object(in.Text());
  return Say(one == object(in.Text()));
}

CALL(encodedLength) {
  const auto value = in.Number<uint64_t>();
  uint8_t out[9];
  uint64_t written = 0;
  EXPECT_EQ(CSASNUtil_DEREncodeLength(out, &written, value), 0u);
  EXPECT_EQ(CSASNUtil_LengthOfDEREncodedLength(value), written);
  return ToHex(ByteArray(out, out + written));
}

// what a decode context holds
CALL(held) {
  const auto* context = static_cast<const CSASNDecodeContext*>(objects.at(in.Text()));
  const uint8_t* data = CSASNUtil_GetDecodeContextData(context);
  return ToHex(ByteArray(data, data + CSASNUtil_GetDecodeContextLength(context)));
}

// ---- decimal texts ----
CALL(fraction) {
  std::string text = in.Text();
  char* cursor = text.data();
  uint64_t left = text.size();
  double value = 99;
  EXPECT_EQ(CSASNUtil_FractionalSecondsToDouble(&cursor, &left, &value), 0u);
  return Say(value, cursor - text.data(), left) + " " + text;
}

// ---- INTEGER and BOOLEAN ----
CALL(encodedSigned) {
  return Encoded(
      [&](auto b, auto l) { return CSASNInteger_DEREncodeSigned32TLV(in.Number<int32_t>(), b, l, 1, 1, 1); });
}

CALL(encodedUnsigned) {
  return Encoded([&](auto b, auto l) { return CSASNInteger_DEREncodeUnsigned32TLV(in.Number(), b, l, 1, 1, 1); });
}

CALL(encodedBoolean) {
  return Encoded([&](auto b, auto l) { return CSASNBoolean_DEREncodeTLV(in.Number<uint8_t>(), b, l, 1, 1, 1); });
}

// contents in upper-case hex, once there is room for them: the characters needed
CALL(hex) {
  char text[16] = "";
  char* out = text;
  uint64_t room = 2;
  const auto* number = static_cast<const CSASNInteger*>(objects.at(in.Text()));
  EXPECT_EQ(CSASNInteger_ToHex(number, &out, &room, 1), 6u);
  EXPECT_EQ(CSASNInteger_ToHex(number, &out, &room, 1), 0u);
  return Say(room) + " " + text;
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

CALL(octetsWithTag) {
  const auto mode = in.Number(), number = in.Number(), tagClass = in.Number();
  const auto constructed = in.Number<uint8_t>();
  ExactOctets octets(FromHex(in.Text()));
  Held<CSASNOctetString, CSASNOctetString_Delete> string;
  const uint32_t code =
      CSASNOctetString_DERDecodeWithTag(octets.data(), &octets.length, mode, number, tagClass, constructed, &string);
  return Say(code, octets.length) + " " + Encoded([&](auto b, auto l) {
           return CSASNOctetString_DEREncodeWithTag(string, number, tagClass, constructed, b, l, 1, 1, 1);
         });
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

CALL(calendarForm) {
  struct tm out {};
  return Say(CSTime_ToTm(static_cast<CSTime*>(objects.at(in.Text())), &out));
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
  const ExactOctets octets(FromHex(in.Text()));
  uint64_t p[7] = {99, 99, 99, 99, 99, 99, 99};
  const auto* data = octets.data();
  const uint32_t code = find(data, octets.size, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], mode);
  EXPECT_EQ(find(data, octets.size, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, mode), code);
  return Say(code, p[0], p[1], p[2], p[3], p[4], p[5], p[6]);
}

class DerCalls : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(DerCalls, Answer) {
  Objects objects;
  for (const std::string& line : GetParam()) {
    const size_t colon = line.find(": "), arrow = line.find(" -> ");
    ASSERT_TRUE(colon < arrow && arrow != std::string::npos) << line;
    Arguments arguments(line.substr(colon + 2, arrow - colon - 2));
    EXPECT_EQ(Calls().at(line.substr(0, colon))(arguments, objects), line.substr(arrow + 4)) << line;
    EXPECT_TRUE(arguments.AtEnd()) << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Scripts, DerCalls, testing::ValuesIn(LoadParagraphs("der_calls.txt")));

}  // namespace
