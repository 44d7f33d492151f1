// What is beyond the lines of der_calls.txt: every identifier, memory handed in and out, the calendar.
#include <gtest/gtest.h>

#include <string>

#include "support/vectors.h"
#include "tavo/der.h"

using Tavo::Framework::ByteArray;

namespace {

// ---- core ----

// Class codes are not in the order of the class bits.
TEST(DerCore, EveryIdentifierGoesBothWays) {
  const uint32_t classes[] = {CSTagClass_UNIVERSAL, CSTagClass_APPLICATION, CSTagClass_CONTEXT_SPECIFIC,
                              CSTagClass_PRIVATE};
  for (unsigned octet = 0; octet < 256; ++octet) {
    const uint8_t in = static_cast<uint8_t>(octet);
    uint64_t length = 1;
    uint32_t number = 99, tagClass = 99;
    uint8_t constructed = 99, out = 0;
    const uint32_t code = CSASNUtil_DERDecodeTag(&in, &length, &number, &tagClass, &constructed);
    ASSERT_EQ(code, (octet & 31) == 31 ? 400u : 0u) << octet;
    if (code != 0) continue;
    EXPECT_TRUE(number == (octet & 31) && tagClass == classes[octet >> 6] && constructed == (octet & 0x20)) << octet;
    EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, number, tagClass, constructed), 0u);
    EXPECT_TRUE(out == octet && length == CSASNUtil_DEREncodedLengthOfTag()) << octet;
  }
  uint8_t out = 0;
  uint64_t length = 0;
  EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, 2, 0, 0), 6u);
  length = 1;
  EXPECT_EQ(CSASNUtil_DEREncodeTag(&out, &length, 2, 4, 0), 4u);
}

TEST(DerCore, BuffersAndArrays) {
  uint8_t* buffer = nullptr;
  uint64_t capacity = 0;
  uint8_t allocated = 9;
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, 0, &allocated), 0u);
  EXPECT_TRUE(buffer != nullptr && capacity == 0 && allocated == 1);
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, 1, &allocated), 6u);
  EXPECT_EQ(allocated, 0);
  EXPECT_EQ(CSASNUtil_PrepareBuffer(nullptr, &capacity, 5, nullptr), 4u);
  free(buffer);
  buffer = nullptr;
  EXPECT_EQ(CSASNUtil_PrepareBuffer(&buffer, &capacity, UINT64_MAX, nullptr), 3u);
  EXPECT_EQ(buffer, nullptr);

  void* array = nullptr;
  capacity = 0;
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

// ---- primitives ----

TEST(DerPrimitives, OctetsFromWithinAndAsText) {
  CSASNOctetString* octets = nullptr;
  const uint8_t* bytes = nullptr;
  uint64_t length = 0;
  ASSERT_EQ(CSASNOctetString_FromBytes(reinterpret_cast<const uint8_t*>("ab\0c\xE9"), 5, &octets), 0u);
  EXPECT_EQ(CSASNOctetString_GetBytes(octets, &bytes, &length), 0u);
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, bytes + 1, length - 1), 0u);
  char* narrow = nullptr;
  wchar_t* wide = nullptr;
  EXPECT_EQ(CSASNIA5String_GetStringLength(octets, &length), 0u);
  EXPECT_EQ(CSASNIA5String_ToString(octets, &narrow), 0u);
  EXPECT_EQ(CSASNIA5String_ToWString(octets, &wide), 0u);
  EXPECT_EQ(std::string(narrow, length), std::string("b\0c\xE9\0", 5));
  EXPECT_EQ(std::wstring(wide, length), std::wstring(L"b\0c\u00E9\0", 5));
  EXPECT_EQ(CSASNUtil_FreeString(&narrow), 0u);
  EXPECT_EQ(CSASNUtil_FreeString(&narrow), 4u);
  EXPECT_EQ(CSASNUtil_FreeWString(&wide), 0u);
  EXPECT_EQ(CSASNOctetString_Delete(&octets), 0u);
  EXPECT_EQ(CSASNOctetString_GetBytes(nullptr, &bytes, &length), 4u);
  EXPECT_TRUE(bytes == nullptr && length == 0);
}

// ---- times ----

// Every day from 1970 to 2499, at changing times of the day.
TEST(DerTimes, AgreeWithTheCLibrary) {
  for (time_t day = 0; day < 193534; ++day) {
    const time_t seconds = day * 86400 + day % 86400;
    struct tm expected {
    }, calendar{};
    gmtime_r(&seconds, &expected);
    char text[16];
    uint64_t length = strftime(text, sizeof text, "%Y%m%d%H%M%SZ", &expected);
    CSTime* time = nullptr;
    time_t converted = 0;
    ASSERT_EQ(CSTime_DERDecodeTLV(reinterpret_cast<uint8_t*>(text), &length, 2, 24, 0, 0, &time), 0u);
    ASSERT_EQ(CSTime_ToTime_t(time, &converted), 0u);
    ASSERT_EQ(CSTime_ToTm(time, &calendar), 0u);
    ASSERT_TRUE(converted == seconds && timegm(&calendar) == seconds) << text;
    CSTime_Delete(&time);
  }
  const auto before = static_cast<uint64_t>(time(nullptr));
  const uint64_t now = CSTime_GetTimeInUint64_t() - 2208988800;
  EXPECT_TRUE(now >= before && now <= before + 5);
}

}  // namespace
