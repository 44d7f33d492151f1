#include "tavo/der/core.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/vectors.h"

using Tavo::Framework::ByteArray;

namespace {

// Class codes are not in the order of the class bits.
TEST(DerTags, EveryIdentifierGoesBothWays) {
  const uint32_t classes[] = {CSTagClass_UNIVERSAL, CSTagClass_APPLICATION, CSTagClass_CONTEXT_SPECIFIC,
                              CSTagClass_PRIVATE};
  EXPECT_EQ(CSASNUtil_DEREncodedLengthOfTag(), 1u);
  for (unsigned octet = 0; octet < 256; ++octet) {
    const uint8_t in = static_cast<uint8_t>(octet);
    uint64_t length = 1;
    uint32_t number = 99, tagClass = 99;
    uint8_t constructed = 99;
    const uint32_t code = CSASNUtil_DERDecodeTag(&in, &length, &number, &tagClass, &constructed);
    ASSERT_EQ(code, (octet & 31) == 31 ? 400u : 0u) << octet;
    if (code != 0) continue;
    EXPECT_EQ(number, octet & 31);
    EXPECT_EQ(tagClass, classes[octet >> 6]);
    EXPECT_EQ(constructed, octet & 0x20);
    uint8_t out = 0;
    length = 10;
    EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, number, tagClass, constructed), 0u);
    EXPECT_EQ(out, octet);
    EXPECT_EQ(length, 1u);
  }
  uint8_t out = 0;
  uint64_t length = 0;
  EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, 2, 0, 0), 6u);
  length = 1;
  EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, 2, 4, 0), 4u);
  EXPECT_EQ(CSASNUtil_DEREncodeTag(nullptr, &length, 2, 0, 0), 4u);
}

TEST(DerTags, EndMarkersAreSkipped) {
  struct {
    std::string in;
    uint32_t code;
    uint64_t consumed;
  } const cases[] = {{"00 00 30", 0, 3}, {"00 00", 6, 2}, {"00", 0, 1},
                     {"00 01", 0, 1},    {"", 6, 0},      {"00 00 1F", 400, 3}};
  for (const auto& c : cases) {
    const ByteArray in = FromHex(c.in);
    uint64_t length = in.size();
    uint32_t number = 0, tagClass = 0;
    uint8_t constructed = 0;
    const uint8_t none = 0;
    EXPECT_EQ(CSASNUtil_DERDecodeTag(in.empty() ? &none : in.data(), &length, &number, &tagClass, &constructed), c.code)
        << c.in;
    EXPECT_EQ(length, c.consumed) << c.in;
  }
}

TEST(DerTags, TheSpecificOne) {
  const ByteArray in = FromHex("00 00 A3 02");
  const uint8_t* cursor = in.data();
  uint64_t remaining = in.size(), consumed = 10;
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, &consumed, 2, 1, 1, 417), 417u);
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, &consumed, 3, 2, 1, 418), 418u);
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, &consumed, 3, 1, 0, 419), 419u);
  EXPECT_TRUE(cursor == in.data() && remaining == 4 && consumed == 10);
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, &consumed, 3, 1, 0x20, 417), 0u);
  EXPECT_TRUE(cursor == in.data() + 3 && remaining == 1 && consumed == 13);
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, nullptr, 2, 0, 0, 417), 0u);
  EXPECT_EQ(CSASNUtil_DERDecodeSpecificTagInternal(&cursor, &remaining, nullptr, 2, 0, 0, 417), 6u);
}

TEST(DerLengths, EncodeAndDecode) {
  struct {
    uint64_t value;
    std::string octets;
  } const cases[] = {{0, "00"},
                     {127, "7f"},
                     {128, "8180"},
                     {255, "81ff"},
                     {256, "820100"},
                     {300, "82012c"},
                     {65535, "82ffff"},
                     {65536, "83010000"},
                     {1ull << 32, "850100000000"},
                     {UINT64_MAX, "88ffffffffffffffff"}};
  for (const auto& c : cases) {
    uint8_t out[9];
    uint64_t written = 0;
    EXPECT_EQ(CSASNUtil_DEREncodeLength(out, &written, c.value), 0u);
    EXPECT_EQ(ToHex(ByteArray(out, out + written)), c.octets);
    EXPECT_EQ(CSASNUtil_LengthOfDEREncodedLength(c.value), written);
    uint64_t length = written, value = 1;
    EXPECT_EQ(CSASNUtil_DERDecodeLength(out, &length, &value), 0u);
    EXPECT_TRUE(length == written && value == c.value) << c.octets;
  }
}

struct LengthCase {
  std::string in;  // length octets and contents
  uint32_t code;   // of DERDecodeLength
  uint64_t value, consumed;
  uint32_t determined;  // the code of DetermineEncodingLength for an identifier and `in`
};

const LengthCase kLengths[] = {
    {"81 05", 0, 5, 2, 0},
    {"82 01", 6, 0, 0, 6},
    {"", 6, 0, 0, 6},
    {"FF" + std::string(2 * 126, '0') + "07", 0, 7, 128, 0},
    // nine significant octets, also below an indefinite length, where waiting for more would never end
    {"89 01 00 00 00 00 00 00 00 00", 6, 0, 0, 400},
    {"80 04 89 01 00 00 00 00 00 00 00 00", 6, 0, 0, 400},
    {"80 04 88 FF FF FF FF FF FF FF FF", 6, 0, 0, 400},
    {"80 04 88 7F FF FF FF FF FF FF FF", 6, 0, 0, 6},
    // a total that exceeds 64 bits
    {"88 FF FF FF FF FF FF FF FF", 0, UINT64_MAX, 9, 400},
    {"88 FF FF FF FF FF FF FF F5", 0, UINT64_MAX - 10, 9, 0},
    {"80 02 01 05 00 00", 0, 3, 1, 0},
    {"80 00 00", 0, 0, 1, 0},
    {"80 02 01 05 00", 6, 0, 0, 6},
    {"80", 6, 0, 0, 6},
    {"80 1F 01 00 00 00", 9, 0, 0, 9},
    {"80 1F", 6, 0, 0, 6},  // a lone octet is cut off before it is a bad tag
    {"80 30 80 30 80 05 00 00 00 00 00 00 00", 0, 10, 1, 0},
    // definite elements are skipped whole, whatever is in them
    {"80 30 04 1F 00 00 00 00 00", 0, 6, 1, 0},
    // identifier 0 that is no end marker
    {"80 00 01 05 00 00", 0, 3, 1, 0},
};

TEST(DerLengths, HostileOnes) {
  for (const LengthCase& c : kLengths) {
    const ByteArray in = FromHex(c.in.empty() ? "00" : c.in);
    uint64_t length = c.in.empty() ? 0 : in.size(), value = 77;
    const uint64_t available = length;
    EXPECT_EQ(CSASNUtil_DERDecodeLength(in.data(), &length, &value), c.code) << c.in;
    EXPECT_EQ(length, c.code == 0 ? c.consumed : available) << c.in;
    if (c.code == 0) {
      EXPECT_EQ(value, c.value) << c.in;
    }
    ByteArray element = {0x30};
    element.insert(element.end(), in.begin(), in.begin() + static_cast<long>(available));
    uint64_t total = 77;
    EXPECT_EQ(CSASNUtil_DERDetermineEncodingLength(element.data(), element.size(), &total), c.determined) << c.in;
    EXPECT_EQ(total, c.determined == 0 ? 1 + c.consumed + c.value : 0) << c.in;
  }
}

TEST(DerLengths, TheRangeIsNarrowedToTheContents) {
  const ByteArray in = FromHex("02 AA BB CC");
  const uint8_t* cursor = in.data();
  uint64_t remaining = 4, consumed = 5, value = 0;
  EXPECT_EQ(CSASNUtil_DERDecodeLengthInternal(&cursor, &remaining, &consumed, &value), 0u);
  EXPECT_TRUE(cursor == in.data() + 1 && remaining == 2 && consumed == 6 && value == 2);
  cursor = in.data();
  remaining = 2;
  EXPECT_EQ(CSASNUtil_DERDecodeLengthInternal(&cursor, &remaining, nullptr, &value), 6u);
  EXPECT_TRUE(cursor == in.data() && remaining == 2);
}

// ---- buffers and arrays ----

TEST(DerBuffers, Prepare) {
  uint8_t* buffer = nullptr;
  uint64_t capacity = 0;
  uint8_t allocated = 9;
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, 0, &allocated), 0u);
  EXPECT_TRUE(buffer != nullptr && capacity == 0 && allocated == 1);
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, 1, &allocated), 6u);
  EXPECT_EQ(allocated, 0);
  capacity = 5;
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, 5, nullptr), 0u);
  EXPECT_EQ(CSASNUtil_PrepareBuffer(nullptr, &capacity, 5, nullptr), 4u);
  free(buffer);
  buffer = nullptr;
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, UINT64_MAX, nullptr), 3u);
  EXPECT_TRUE(buffer == nullptr && capacity == 5);
}

TEST(DerBuffers, ArraysGrowByFiveZeroedPlaces) {
  void* array = nullptr;
  uint64_t capacity = 0;
  for (uint64_t expected = 5; expected <= 15; expected += 5) {
    const uint64_t full = capacity;
    ASSERT_EQ(CSASNUtil_IncreaseCapacity(&array, full, &capacity, 4), 0u);
    ASSERT_EQ(capacity, expected);
    auto* numbers = static_cast<uint32_t*>(array);
    for (uint64_t i = 0; i < capacity; ++i) {
      EXPECT_EQ(numbers[i], i < full ? 7u : 0u);
      numbers[i] = 7;
    }
  }
  EXPECT_EQ(CSASNUtil_IncreaseCapacity(&array, 15, &capacity, UINT64_MAX / 16), 3u);
  EXPECT_EQ(capacity, 15u);
  free(array);
}

// ---- decode context ----

struct Context {
  Context() { EXPECT_EQ(CSASNUtil_DERDecodeStart(&context), 0u); }
  ~Context() { EXPECT_EQ(CSASNUtil_DeleteDecodeContext(&context), 0u); }
  uint32_t Add(const std::string& hex) {
    const ByteArray bytes = FromHex(hex);
    const uint8_t none = 0;
    surplus = 77;
    return CSASNUtil_DERDecodeAddData(context, bytes.empty() ? &none : bytes.data(), bytes.size(), &surplus);
  }
  std::string Held() const {
    const uint8_t* data = CSASNUtil_GetDecodeContextData(context);
    return ToHex(ByteArray(data, data + CSASNUtil_GetDecodeContextLength(context)));
  }
  CSASNDecodeContext* context = nullptr;
  int32_t surplus = 0;
};

struct Fed {
  std::string hex;
  uint32_t code;
  int32_t surplus;
};

TEST(DerContexts, SurplusCountsFromMissingToPast) {
  struct {
    std::vector<Fed> pieces;
    std::string held;
  } const cases[] = {
      {{{"30", 408, 0}, {"82", 408, 0}, {"01", 408, 0}, {"00", 0, -256}, {"AA", 0, -255}}, "30820100aa"},
      {{{"02 01 05 06 07", 0, 2}}, "020105"},
      {{{"02 01 05", 0, 0}, {"06 07", 0, 2}, {"", 0, 0}}, "020105"},
      {{{"", 408, 0}, {"02 01", 0, -1}, {"05 06", 0, 1}}, "020105"},
      {{{"30 80 02 01 05 00", 408, 0}, {"00 01", 0, 1}, {"02 03", 0, 2}}, "30800201050000"},
      {{{"30 80 02 01 05 00 00 FF", 0, 1}}, "30800201050000"},
      // saturated: 2^32 and 2^31 octets missing, not 0
      {{{"30 85 01 00 00 00 00", 0, INT32_MIN}},
       "308501000000"
       "00"},
      {{{"30 84 80 00 00 00", 0, INT32_MIN}}, "308480000000"},
      {{{"30 84 7F FF FF FF", 0, -INT32_MAX}}, "30847fffffff"},
      // refused: at once nothing is kept, later the octets stay
      {{{"1F 01 00", 400, 0}, {"02 00", 0, 0}}, "0200"},
      {{{"30 80", 408, 0}, {"1F 01", 9, 0}, {"00", 9, 0}}, "30801f0100"},
      {{{"30 89 01 00 00 00 00 00 00 00 00", 400, 0}}, ""},
      {{{"30 80 04 88 FF FF FF FF FF FF FF FF", 400, 0}}, ""},
  };
  for (const auto& c : cases) {
    Context context;
    for (const Fed& piece : c.pieces) {
      SCOPED_TRACE(c.held + " + " + piece.hex);
      EXPECT_EQ(context.Add(piece.hex), piece.code);
      EXPECT_EQ(context.surplus, piece.surplus);
    }
    EXPECT_EQ(context.Held(), c.held);
  }
}

TEST(DerContexts, NullArguments) {
  int32_t surplus = 0;
  const uint8_t octet = 2;
  EXPECT_EQ(CSASNUtil_GetDecodeContextData(nullptr), nullptr);
  EXPECT_EQ(CSASNUtil_GetDecodeContextLength(nullptr), 0u);
  EXPECT_EQ(CSASNUtil_DERDecodeAddData(nullptr, &octet, 1, &surplus), 4u);
  EXPECT_EQ(CSASNUtil_DeleteDecodeContext(nullptr), 4u);
  EXPECT_EQ(CSASNUtil_DERDecodeStart(nullptr), 4u);
  Context context;
  EXPECT_EQ(CSASNUtil_GetDecodeContextData(context.context), nullptr);
  EXPECT_EQ(CSASNUtil_DERDecodeAddData(context.context, nullptr, 0, &surplus), 4u);
}

// ---- decimal texts ----

TEST(DerDecimals, Numbers) {
  for (const int32_t value : {0, 9, 10, -1, -10, INT32_MAX, INT32_MIN}) {
    const std::string text = std::to_string(value);
    EXPECT_EQ(CSASNUtil_IntToStringLengthWithoutNull(value), text.size());
    EXPECT_EQ(CSASNUtil_IntToStringLength(value), text.size() + 1);
    char out[16] = "###############";
    uint64_t count = 0;
    EXPECT_EQ(CSASNUtil_IntToStringWithoutNull(value, out, text.size() - 1, &count), 6u);
    EXPECT_EQ(CSASNUtil_IntToStringWithoutNull(value, out, text.size(), &count), 0u);
    EXPECT_EQ(std::string(out, text.size() + 1), text + "#");
    EXPECT_EQ(count, text.size());
    EXPECT_EQ(CSASNUtil_IntToString(value, out, text.size(), &count), 6u);
    EXPECT_EQ(CSASNUtil_IntToString(value, out, text.size() + 1, nullptr), 0u);
    EXPECT_EQ(out, text);
    wchar_t wide[16];
    EXPECT_EQ(CSASNUtil_IntToWString(value, wide, text.size(), &count), 6u);
    EXPECT_EQ(CSASNUtil_IntToWString(value, wide, text.size() + 1, &count), 0u);
    EXPECT_EQ(std::wstring(wide), std::wstring(text.begin(), text.end()));
    EXPECT_EQ(count, text.size() + 1);
  }
  EXPECT_EQ(CSASNUtil_IntToString(1, nullptr, 5, nullptr), 4u);
}

TEST(DerDecimals, FieldsOfFixedWidthWritten) {
  struct {
    uint8_t width;
    int32_t value;
    uint8_t plus;
    uint64_t capacity;
    std::string text;  // empty: 6
  } const cases[] = {{2, 7, 0, 2, "07"},  {1, 12, 0, 5, ""},
                     {3, 5, 1, 3, "+05"}, {3, -5, 0, 3, "-05"},
                     {1, 0, 0, 1, "0"},   {0, 0, 0, 5, ""},
                     {1, -1, 0, 5, ""},   {1, 0, 1, 5, ""},
                     {4, 7, 0, 3, ""},    {11, INT32_MIN, 0, 11, "-2147483648"}};
  for (const auto& c : cases) {
    char out[16] = "###############";
    EXPECT_EQ(CSASNUtil_SignedLongToExactlyNChars(out, c.capacity, c.width, c.value, c.plus), c.text.empty() ? 6u : 0u);
    EXPECT_EQ(std::string(out, c.text.size() + 1), c.text + "#");
  }
}

TEST(DerDecimals, FieldsOfFixedWidthRead) {
  struct {
    std::string text;
    uint8_t width;
    uint32_t code;
    int32_t value;
  } const cases[] = {{"12", 2, 0, 12},
                     {"123", 2, 0, 12},
                     {"1a", 2, 401, 0},
                     {" 7", 2, 0, 7},
                     {"\t+7", 3, 0, 7},
                     {"-7", 2, 0, -7},
                     {"--7", 3, 401, 0},
                     {"+", 1, 401, 0},
                     {"  ", 2, 401, 0},
                     {"7 ", 2, 401, 0},
                     {"1", 2, 6, 0},
                     {"", 0, 0, 0},
                     {"0x1", 3, 401, 0},
                     {"2147483647", 10, 0, INT32_MAX},
                     {"2147483648", 10, 401, 0},
                     {"-2147483648", 11, 0, INT32_MIN},
                     {"-2147483649", 11, 401, 0},
                     {"99999999999999999999", 20, 401, 0}};
  for (const auto& c : cases) {
    const std::string untouched = c.text;
    char* cursor = const_cast<char*>(c.text.data());
    uint64_t remaining = c.text.size();
    int32_t value = 99;
    EXPECT_EQ(CSASNUtil_ExactlyNCharsToSignedLong(&cursor, &remaining, c.width, &value, 401), c.code) << c.text;
    EXPECT_EQ(value, c.code == 0 ? c.value : 99) << c.text;
    EXPECT_EQ(cursor - c.text.data(), c.code == 0 ? c.width : 0);
    EXPECT_EQ(remaining, c.text.size() - (c.code == 0 ? c.width : 0));
    EXPECT_EQ(c.text, untouched);
  }
}

TEST(DerDecimals, Fractions) {
  struct {
    std::string text;
    double value;
    uint64_t consumed;
  } const cases[] = {{".5Z", 0.5, 2},
                     {",25+01", 0.25, 3},
                     {"12.5", 12.5, 4},
                     {".", 0, 0},
                     {"", 0, 0},
                     {"Z", 0, 0},
                     {"inf", 0, 0},
                     {"0x10", 0, 1},
                     {"1e5", 1, 1},
                     {".1.2", 0.1, 2},
                     {" 1", 0, 0},
                     {".000001", 1e-6, 7},
                     {".1234567890123456789", 0.123456789012345, 20},
                     {"12345678901234567", 12345678901234500.0, 17}};
  for (const auto& c : cases) {
    std::string text = c.text;
    char* cursor = text.data();
    uint64_t remaining = text.size();
    double value = 99;
    EXPECT_EQ(CSASNUtil_FractionalSecondsToDouble(&cursor, &remaining, &value), 0u);
    EXPECT_DOUBLE_EQ(value, c.value) << c.text;
    EXPECT_EQ(static_cast<uint64_t>(cursor - text.data()), c.consumed) << c.text;
    EXPECT_EQ(remaining, c.text.size() - c.consumed);
    if (c.text[0] == ',') {
      EXPECT_EQ(text[0], '.');
    }
  }
}

}  // namespace
