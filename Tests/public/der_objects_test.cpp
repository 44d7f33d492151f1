// What objects of the DER library do over several calls: ownership, presence, growth, memory handed in and out.
#include <gtest/gtest.h>

#include <string>

#include "support/vectors.h"
#include "tavo/der.h"

using Tavo::Framework::ByteArray;

namespace {

CSASNOID* NewOid(const char* text) {
  CSASNOID* oid = nullptr;
  EXPECT_EQ(CSASNOID_FromString(text, &oid), 0u);
  return oid;
}

template <class T, class Encode>
std::string Encoded(const T* object, Encode encode) {
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(encode(object, &buffer, &length, 1, 1, 1), 0u);
  const std::string hex = ToHex(ByteArray(buffer, buffer + length));
  free(buffer);
  return hex;
}

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

TEST(DerPrimitives, IntegerNotProvidedAndNative) {
  CSASNInteger* out = nullptr;
  EXPECT_EQ(CSASNInteger_FromString(nullptr, nullptr), 2u);
  EXPECT_EQ(CSASNInteger_ToString(nullptr, nullptr), 2u);
  EXPECT_EQ(CSASNInteger_Add(nullptr, nullptr, &out), 2u);
  EXPECT_EQ(CSASNInteger_Subtract(nullptr, nullptr, nullptr), 2u);

  CSASNDecodeContext* context = nullptr;
  ASSERT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
  const uint8_t in[] = {2, 2, 1, 0};
  int32_t surplus = 9;
  uint32_t value = 0;
  uint8_t small = 9;
  EXPECT_EQ(CSASNUtil_DERDecodeAddData(context, in, 4, &surplus), 0u);
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned32(context, &value), 0u);
  EXPECT_EQ(value, 256u);
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned8(context, &small), 6u);
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned8(nullptr, &small), 4u);
  EXPECT_EQ(CSASNBoolean_DERDecodeFinish(context, &small), 409u);
  EXPECT_EQ(small, 9);
  CSASNUtil_DeleteDecodeContext(&context);
}

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
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, nullptr, 0), 0u);
  EXPECT_EQ(Encoded(octets, CSASNOctetString_DEREncodeTLV), "0400");
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, nullptr, 1), 4u);
  EXPECT_EQ(CSASNOctetString_Delete(&octets), 0u);
  EXPECT_EQ(CSASNOctetString_GetBytes(nullptr, &bytes, &length), 4u);
  EXPECT_TRUE(bytes == nullptr && length == 0);
  EXPECT_EQ(CSASNOctetString_FromBytes(nullptr, 1, &octets), 4u);
  EXPECT_EQ(CSASNOctetString_FromBytes(bytes, UINT64_MAX - 8, &octets), 3u);
}

TEST(DerPrimitives, BitsGrow) {
  CSASNBitString* bits = nullptr;
  ASSERT_EQ(CSASNBitString_Create(&bits), 0u);
  struct {
    uint64_t bit;
    uint8_t on;
    const char* encoded;
  } const steps[] = {{0, 1, "03020780"}, {17, 5, "030406800040"}, {0, 0, "030406000040"}};
  for (const auto& step : steps) {
    EXPECT_EQ(CSASNBitString_SetBit(bits, step.bit, step.on), 0u);
    EXPECT_EQ(Encoded(bits, CSASNBitString_DEREncodeTLV), step.encoded);
  }
  const uint8_t octets[] = {0xAB, 0xCD};
  const uint8_t* lent = nullptr;
  uint64_t count = 0;
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, octets, 9), 0u);
  EXPECT_EQ(Encoded(bits, CSASNBitString_DEREncodeTLV), "030307abcd");
  EXPECT_EQ(CSASNBitString_GetAllBits(bits, &lent, &count), 0u);
  EXPECT_EQ(ToHex(ByteArray(lent, lent + count)), "abcd");
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, nullptr, 1), 4u);
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, nullptr, 0), 0u);
  EXPECT_EQ(Encoded(bits, CSASNBitString_DEREncodeTLV), "030100");
  EXPECT_EQ(CSASNBitString_Delete(&bits), 0u);

  CSASNOctetString* source = nullptr;
  ASSERT_EQ(CSASNOctetString_FromBytes(octets, 2, &source), 0u);
  EXPECT_EQ(CSASNBitString_FromOctetString(source, &bits), 0u);
  EXPECT_EQ(Encoded(bits, CSASNBitString_DEREncodeTLV), "030300abcd");
  CSASNOctetString_Delete(&source);
  CSASNBitString_Delete(&bits);
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

TEST(DerTimes, FieldsWithoutACalendarForm) {
  CSTime* time = nullptr;
  CSASNUTCTime* utc = nullptr;
  time_t seconds = -7;
  struct tm calendar {};
  uint64_t since1900 = 7;
  ASSERT_EQ(CSTime_Create(&time), 0u);
  EXPECT_EQ(CSTime_ToTime_t(time, &seconds), 9u);  // nothing chosen
  EXPECT_EQ(CSTime_ToUint64_t(time, &since1900), 9u);
  EXPECT_EQ(CSTime_ToTm(time, &calendar), 9u);
  ASSERT_EQ(CSASNUTCTime_Create(&utc), 0u);
  ASSERT_EQ(CSTime_SetUtcTime(time, utc), 0u);
  const uint8_t half = 30;
  const std::tuple<int, int, const uint8_t*> cases[] = {{100, 1, nullptr}, {247, 12, nullptr}, {50, 0, nullptr},
                                                        {50, 13, nullptr}, {50, 255, nullptr}, {50, 1, &half}};
  for (const auto& [year, month, minutes] : cases) {
    EXPECT_EQ(CSASNUTCTime_SetTimeData(utc, static_cast<uint8_t>(year), static_cast<uint8_t>(month), 1, 0, 0, 0,
                                       nullptr, minutes),
              0u);
    EXPECT_EQ(CSTime_ToTime_t(time, &seconds), 9u) << year << " " << month;
    EXPECT_EQ(CSTime_ToTm(time, &calendar), 9u);
  }
  EXPECT_EQ(seconds, -7);
  CSTime_Delete(&time);
}

// ---- records ----

TEST(DerRecords, ComponentsComeAndGo) {
  CSAlgorithmIdentifier* id = nullptr;
  CSASNAny *parameters = nullptr, *any = nullptr;
  CSASNOID* algorithm = NewOid("1.2.3.4");
  ASSERT_EQ(CSAlgorithmIdentifier_Create(&id), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_SetAlgorithm(id, algorithm, nullptr), 0u);
  uint8_t present = 9, match = 9;
  const auto isPresent = [&] {
    EXPECT_EQ(CSAlgorithmIdentifier_ParametersIsPresent(id, &present), 0u);
    return present;
  };
  EXPECT_EQ(isPresent(), 0);
  EXPECT_EQ(CSAlgorithmIdentifier_GetParameters(id, &parameters), 406u);
  ASSERT_EQ(CSASNAny_Create(&any), 0u);
  EXPECT_EQ(CSASNAny_SetTag(any, 5, 0, 0), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, any, nullptr), 0u);
  EXPECT_EQ(isPresent(), 1);
  EXPECT_EQ(CSAlgorithmIdentifier_GetParameters(id, &parameters), 0u);
  EXPECT_EQ(parameters, any);
  EXPECT_EQ(Encoded(id, CSAlgorithmIdentifier_DEREncodeTLV), "300706032a03040500");
  // As an ANY: a SEQUENCE with the same contents.
  CSASNAny* wrapped = nullptr;
  EXPECT_EQ(CSAlgorithmIdentifier_DERToAny(id, &wrapped), 0u);
  EXPECT_EQ(Encoded(wrapped, CSASNAny_DEREncodeTLV), "300706032a03040500");
  EXPECT_EQ(CSASNAny_TagMatches(wrapped, 16, 0, 1, &match), 0u);
  EXPECT_EQ(match, 1);
  CSASNAny_Delete(&wrapped);
  // Setting what is held changes nothing; null takes it out.
  CSASNAny* old = any;
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, any, &old), 0u);
  EXPECT_EQ(old, nullptr);
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, nullptr, &old), 0u);
  EXPECT_EQ(old, any);
  EXPECT_EQ(CSASNAny_Delete(&old), 0u);
  EXPECT_EQ(isPresent(), 0);

  // Without a mandatory component: 406 to read, 420 to encode, and the length of the rest.
  EXPECT_EQ(CSAlgorithmIdentifier_SetAlgorithm(id, nullptr, nullptr), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_GetAlgorithm(id, &algorithm), 406u);
  uint8_t* buffer = nullptr;
  uint64_t length = 5, total = 0;
  EXPECT_EQ(CSAlgorithmIdentifier_DEREncodeTLV(id, &buffer, &length, 1, 1, 1), 420u);
  EXPECT_TRUE(buffer == nullptr && length == 5);
  EXPECT_EQ(CSAlgorithmIdentifier_DEREncodedLength(id, &total), 0u);
  EXPECT_EQ(total, 2u);
  EXPECT_EQ(CSAlgorithmIdentifier_DERToAny(id, &wrapped), 420u);
  EXPECT_EQ(wrapped, nullptr);
  EXPECT_EQ(CSAlgorithmIdentifier_SetAlgorithm(nullptr, nullptr, nullptr), 4u);
  EXPECT_EQ(CSAlgorithmIdentifier_Delete(&id), 0u);
}

TEST(DerRecords, CriticalIsAByte) {
  CSExtension* extension = nullptr;
  ASSERT_EQ(CSExtension_Create(&extension), 0u);
  const uint8_t yes = 1, no = 0;
  for (const uint8_t* critical : {static_cast<const uint8_t*>(nullptr), &yes, &no}) {
    uint8_t value = 9, present = 9;
    uint64_t total = 0;
    EXPECT_EQ(CSExtension_SetCritical(extension, critical), 0u);
    EXPECT_EQ(CSExtension_GetCritical(extension, &value), critical == nullptr ? 406u : 0u);
    EXPECT_EQ(value, critical == nullptr ? 0 : *critical);
    EXPECT_EQ(CSExtension_CriticalIsPresent(extension, &present), 0u);
    EXPECT_EQ(present, critical == nullptr ? 0 : 1);
    EXPECT_EQ(CSExtension_DEREncodedLength(extension, &total), 0u);
    EXPECT_EQ(total, critical == nullptr ? 2u : 5u);
  }
  EXPECT_EQ(CSExtension_Delete(&extension), 0u);
}

// The value of an otherName is the element inside its wrapper.
TEST(DerRecords, OtherNameGivesTheInnerElement) {
  const ByteArray in = FromHex("30 0A 06 03 2A 03 04 A0 03 0C 01 41");
  uint64_t length = in.size();
  CSOtherName* name = nullptr;
  CSASNAny* value = nullptr;
  ASSERT_EQ(CSOtherName_DERDecodeTLV(in.data(), &length, 0, &name), 0u);
  ASSERT_EQ(CSOtherName_GetValue(name, &value), 0u);
  EXPECT_EQ(Encoded(value, CSASNAny_DEREncodeTLV), "0c0141");
  CSOtherName_Delete(&name);
}

// ---- lists and choices ----

TEST(DerLists, ItemsComeAndGo) {
  CSExtKeyUsageSyntax* list = nullptr;
  ASSERT_EQ(CSExtKeyUsageSyntax_Create(&list), 0u);
  CSASNOID* probe = NewOid("1.2.3");
  uint64_t index = 9, count = 9;
  EXPECT_EQ(CSExtKeyUsageSyntax_IndexOfItem(list, probe, &index), 406u);
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItem(list, probe), 406u);
  EXPECT_EQ(CSExtKeyUsageSyntax_AddItemAt(list, 0, probe), 400u);
  EXPECT_EQ(CSExtKeyUsageSyntax_AddItemAt(nullptr, 7, nullptr), 400u);
  for (const char* text : {"1.2.1", "1.2.2", "1.2.3", "1.2.2", "1.2.3", "1.2.6"}) {
    EXPECT_EQ(CSExtKeyUsageSyntax_AddItem(list, NewOid(text)), 0u);
  }
  EXPECT_EQ(CSExtKeyUsageSyntax_GetItemCount(list, &count), 0u);
  EXPECT_EQ(count, 6u);
  EXPECT_EQ(CSExtKeyUsageSyntax_IndexOfItem(list, probe, &index), 0u);
  EXPECT_EQ(index, 2u);
  const auto texts = [&] {
    std::string all;
    CSASNOID* item = nullptr;
    for (uint64_t i = 0; CSExtKeyUsageSyntax_GetItemAt(list, i, &item) == 0; ++i) {
      char text[16];
      EXPECT_EQ(CSASNOID_ToStringEx(item, text, sizeof text), 0u);
      all += text + 4;
    }
    return all;
  };
  EXPECT_EQ(texts(), "123236");
  CSASNOID* old = probe;
  EXPECT_EQ(CSExtKeyUsageSyntax_GetItemAt(list, 6, &old), 7u);
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItemAt(list, 6, &old), 7u);
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItemAt(list, 5, &old), 0u);  // the last one
  EXPECT_EQ(texts(), "12323");
  EXPECT_EQ(CSExtKeyUsageSyntax_AddItem(list, old), 0u);
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItem(list, probe), 0u);  // the first equal one
  EXPECT_EQ(texts(), "12236");
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItemAt(list, 0, nullptr), 0u);
  EXPECT_EQ(texts(), "2236");
  EXPECT_EQ(CSExtKeyUsageSyntax_AddItem(list, nullptr), 4u);
  CSASNOID_Delete(&probe);
  EXPECT_EQ(CSExtKeyUsageSyntax_Delete(&list), 0u);
}

TEST(DerChoices, OneAlternativeAtATime) {
  CSGeneralName* name = nullptr;
  ASSERT_EQ(CSGeneralName_Create(&name), 0u);
  const auto chosen = [&] {
    uint32_t number = 9;
    EXPECT_EQ(CSGeneralName_WhatIsChosen(name, &number), 0u);
    return number;
  };
  EXPECT_EQ(chosen(), 0u);
  EXPECT_EQ(CSGeneralName_DeleteChosenItem(name), 0u);
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(CSGeneralName_DEREncodeTLV(name, &buffer, &length, 1, 1, 1), 420u);

  CSASNIA5String* text = nullptr;
  ASSERT_EQ(CSASNIA5String_FromBytes(reinterpret_cast<const uint8_t*>("a"), 1, &text), 0u);
  EXPECT_EQ(CSGeneralName_SetDNSName(name, text), 0u);
  EXPECT_EQ(CSGeneralName_SetDNSName(name, text), 0u);  // already held
  EXPECT_EQ(CSGeneralName_SetDNSName(name, nullptr), 4u);
  EXPECT_EQ(chosen(), 3u);
  // No alternative hands out another one's object.
  CSASNIA5String* lent = nullptr;
  CSASNOID* oid = nullptr;
  CSName* directory = nullptr;
  EXPECT_EQ(CSGeneralName_GetDNSName(name, &lent), 0u);
  EXPECT_EQ(lent, text);
  EXPECT_EQ(CSGeneralName_GetRfc822Name(name, &lent), 406u);
  EXPECT_EQ(lent, nullptr);
  EXPECT_EQ(CSGeneralName_GetRegisteredID(name, &oid), 406u);
  EXPECT_EQ(CSGeneralName_GetDirectoryName(name, &directory), 406u);
  EXPECT_EQ(Encoded(name, CSGeneralName_DEREncodeTLV), "820161");
  EXPECT_EQ(CSGeneralName_SetRegisteredID(name, NewOid("1.2.3")), 0u);  // deletes the text
  EXPECT_EQ(chosen(), 9u);
  EXPECT_EQ(CSGeneralName_DeleteChosenItem(name), 0u);
  EXPECT_EQ(CSGeneralName_GetRegisteredID(name, &oid), 406u);
  EXPECT_EQ(CSGeneralName_Delete(&name), 0u);
}

}  // namespace
