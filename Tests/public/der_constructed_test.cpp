// Records, lists and choices: ownership, presence and where components are found.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/vectors.h"
#include "tavo/der.h"

using Tavo::Framework::ByteArray;

namespace {

template <class T>
T* Decoded(const std::string& hex, uint32_t (*decode)(const uint8_t*, uint64_t*, uint32_t, T**)) {
  const ByteArray in = FromHex(hex);
  uint64_t length = in.size();
  T* object = nullptr;
  EXPECT_EQ(decode(in.data(), &length, 0, &object), 0u);
  return object;
}

CSASNOID* NewOid(const char* text) {
  CSASNOID* oid = nullptr;
  EXPECT_EQ(CSASNOID_FromString(text, &oid), 0u);
  return oid;
}

// ---- records ----

TEST(DerRecords, MandatoryAndOptionalComponents) {
  auto* id = Decoded("30 05 06 03 2A 03 04", CSAlgorithmIdentifier_DERDecodeTLV);
  CSASNAny* parameters = nullptr;
  uint8_t present = 9;
  EXPECT_EQ(CSAlgorithmIdentifier_ParametersIsPresent(id, &present), 0u);
  EXPECT_EQ(present, 0);
  EXPECT_EQ(CSAlgorithmIdentifier_GetParameters(id, &parameters), 406u);

  CSASNAny* any = nullptr;
  ASSERT_EQ(CSASNAny_Create(&any), 0u);
  EXPECT_EQ(CSASNAny_SetTag(any, 5, 0, 0), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, any, nullptr), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_ParametersIsPresent(id, &present), 0u);
  EXPECT_EQ(present, 1);
  EXPECT_EQ(CSAlgorithmIdentifier_GetParameters(id, &parameters), 0u);
  EXPECT_EQ(parameters, any);
  // Setting what is held changes nothing; null takes it out.
  CSASNAny* old = any;
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, any, &old), 0u);
  EXPECT_EQ(old, nullptr);
  EXPECT_EQ(CSAlgorithmIdentifier_SetParameters(id, nullptr, &old), 0u);
  EXPECT_EQ(old, any);
  EXPECT_EQ(CSASNAny_Delete(&old), 0u);
  EXPECT_EQ(CSAlgorithmIdentifier_ParametersIsPresent(id, &present), 0u);
  EXPECT_EQ(present, 0);

  // Without a mandatory component: 406 to read, 420 to encode, and the length of the rest.
  EXPECT_EQ(CSAlgorithmIdentifier_SetAlgorithm(id, nullptr, nullptr), 0u);
  CSASNOID* algorithm = nullptr;
  EXPECT_EQ(CSAlgorithmIdentifier_GetAlgorithm(id, &algorithm), 406u);
  uint8_t* buffer = nullptr;
  uint64_t length = 5, total = 0;
  EXPECT_EQ(CSAlgorithmIdentifier_DEREncodeTLV(id, &buffer, &length, 1, 1, 1), 420u);
  EXPECT_TRUE(buffer == nullptr && length == 5);
  EXPECT_EQ(CSAlgorithmIdentifier_DEREncodedLength(id, &total), 0u);
  EXPECT_EQ(total, 2u);
  CSASNAny* wrapped = any;
  EXPECT_EQ(CSAlgorithmIdentifier_DERToAny(id, &wrapped), 420u);
  EXPECT_EQ(wrapped, nullptr);
  EXPECT_EQ(CSAlgorithmIdentifier_SetAlgorithm(nullptr, nullptr, nullptr), 4u);
  EXPECT_EQ(CSAlgorithmIdentifier_GetAlgorithm(nullptr, &algorithm), 4u);
  EXPECT_EQ(CSAlgorithmIdentifier_Delete(&id), 0u);
}

TEST(DerRecords, CriticalIsAByte) {
  CSExtension* extension = nullptr;
  ASSERT_EQ(CSExtension_Create(&extension), 0u);
  uint8_t value = 9, present = 9;
  EXPECT_EQ(CSExtension_GetCritical(extension, &value), 406u);
  EXPECT_EQ(value, 0);
  const uint8_t yes = 1, no = 0;
  for (const uint8_t* critical : {&yes, &no}) {
    EXPECT_EQ(CSExtension_SetCritical(extension, critical), 0u);
    EXPECT_EQ(CSExtension_GetCritical(extension, &value), 0u);
    EXPECT_EQ(value, *critical);
    EXPECT_EQ(CSExtension_CriticalIsPresent(extension, &present), 0u);
    EXPECT_EQ(present, 1);
    uint64_t total = 0;
    EXPECT_EQ(CSExtension_DEREncodedLength(extension, &total), 0u);
    EXPECT_EQ(total, 5u);
  }
  EXPECT_EQ(CSExtension_SetCritical(extension, nullptr), 0u);
  EXPECT_EQ(CSExtension_CriticalIsPresent(extension, &present), 0u);
  EXPECT_EQ(present, 0);
  EXPECT_EQ(CSExtension_SetCritical(nullptr, &yes), 4u);
  EXPECT_EQ(CSExtension_Delete(&extension), 0u);
}

TEST(DerRecords, AsAnyItKeepsItsContents) {
  auto* id = Decoded("30 80 06 03 2A 03 04 05 81 00 00 00", CSAlgorithmIdentifier_DERDecodeTLV);
  CSASNAny* any = nullptr;
  ASSERT_EQ(CSAlgorithmIdentifier_DERToAny(id, &any), 0u);
  uint8_t match = 0;
  EXPECT_EQ(CSASNAny_TagMatches(any, 16, 0, 1, &match), 0u);
  EXPECT_EQ(match, 1);
  const uint8_t* bytes = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(CSASNAny_GetBytes(any, &bytes, &length), 0u);
  EXPECT_EQ(ToHex(ByteArray(bytes, bytes + length)), "06032a03040500");
  CSASNAny_Delete(&any);
  CSAlgorithmIdentifier_Delete(&id);
}

// The value of an otherName is the element inside its wrapper.
TEST(DerRecords, OtherNameGivesTheInnerElement) {
  auto* name = Decoded("30 0A 06 03 2A 03 04 A0 03 0C 01 41", CSOtherName_DERDecodeTLV);
  CSASNAny* value = nullptr;
  ASSERT_EQ(CSOtherName_GetValue(name, &value), 0u);
  const uint8_t* bytes = nullptr;
  uint64_t length = 0;
  uint8_t match = 0;
  EXPECT_EQ(CSASNAny_GetBytes(value, &bytes, &length), 0u);
  EXPECT_EQ(std::string(bytes, bytes + length), "A");
  EXPECT_EQ(CSASNAny_TagMatches(value, 12, 0, 0, &match), 0u);
  EXPECT_EQ(match, 1);
  CSOtherName_Delete(&name);
}

// ---- lists ----

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
    for (uint64_t i = 0;; ++i) {
      CSASNOID* item = nullptr;
      const uint32_t code = CSExtKeyUsageSyntax_GetItemAt(list, i, &item);
      if (code == CSResult_INDEX_OUT_OF_RANGE) return all;
      char text[16];
      EXPECT_EQ(CSASNOID_ToStringEx(item, text, sizeof text), 0u);
      all += text + 4;
    }
  };
  EXPECT_EQ(texts(), "123236");
  CSASNOID* old = probe;
  EXPECT_EQ(CSExtKeyUsageSyntax_RemoveItemAt(list, 6, &old), 7u);
  EXPECT_EQ(old, nullptr);
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

// ---- choices ----

TEST(DerChoices, OneAlternativeAtATime) {
  CSGeneralName* name = nullptr;
  ASSERT_EQ(CSGeneralName_Create(&name), 0u);
  uint32_t number = 9;
  EXPECT_EQ(CSGeneralName_WhatIsChosen(name, &number), 0u);
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(CSGeneralName_DeleteChosenItem(name), 0u);
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(CSGeneralName_DEREncodeTLV(name, &buffer, &length, 1, 1, 1), 420u);

  CSASNIA5String* text = nullptr;
  ASSERT_EQ(CSASNIA5String_FromBytes(reinterpret_cast<const uint8_t*>("a"), 1, &text), 0u);
  EXPECT_EQ(CSGeneralName_SetDNSName(name, text), 0u);
  EXPECT_EQ(CSGeneralName_SetDNSName(name, text), 0u);  // already held
  EXPECT_EQ(CSGeneralName_SetDNSName(name, nullptr), 4u);
  EXPECT_EQ(CSGeneralName_WhatIsChosen(name, &number), 0u);
  EXPECT_EQ(number, 3u);
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
  EXPECT_EQ(CSGeneralName_DEREncodeTLV(name, &buffer, &length, 1, 1, 1), 0u);
  EXPECT_EQ(ToHex(ByteArray(buffer, buffer + length)), "820161");
  free(buffer);

  EXPECT_EQ(CSGeneralName_SetRegisteredID(name, NewOid("1.2.3")), 0u);  // deletes the text
  EXPECT_EQ(CSGeneralName_WhatIsChosen(name, &number), 0u);
  EXPECT_EQ(number, 9u);
  EXPECT_EQ(CSGeneralName_DeleteChosenItem(name), 0u);
  EXPECT_EQ(CSGeneralName_GetRegisteredID(name, &oid), 406u);
  EXPECT_EQ(CSGeneralName_Delete(&name), 0u);
}

TEST(DerChoices, NumbersAreTagNumbersPlusOne) {
  const char* names[] = {"A0 0A 06 03 2A 03 04 A0 03 0C 01 41",
                         "81 00",
                         "82 00",
                         "A3 02 05 00",
                         "A4 02 30 00",
                         "A5 02 05 00",
                         "86 00",
                         "87 00",
                         "88 00"};
  for (uint32_t i = 0; i < 9; ++i) {
    const ByteArray in = FromHex(names[i]);
    uint64_t length = in.size();
    CSGeneralName* name = nullptr;
    ASSERT_EQ(CSGeneralName_DERDecodeTLV(in.data(), &length, 0, 99, 99, 99, &name), 0u);
    uint32_t number = 0;
    EXPECT_EQ(CSGeneralName_WhatIsChosen(name, &number), 0u);
    EXPECT_EQ(number, i + 1);
    CSGeneralName_Delete(&name);
    // With the identifier from the caller: numbers and classes that none has.
    length = in.size() - 1;
    EXPECT_EQ(CSGeneralName_DERDecodeTLV(in.data() + 1, &length, 1, 9, 1, 0, &name), 418u);
    EXPECT_EQ(CSGeneralName_DERDecodeTLV(in.data() + 1, &length, 1, 33 + i, 1, 0, &name), 418u);
    EXPECT_EQ(CSGeneralName_DERDecodeTLV(in.data() + 1, &length, 1, i, 5, in[0] & 0x20, &name), 418u);
    EXPECT_EQ(CSGeneralName_DERDecodeTLV(in.data() + 1, &length, 1, i, 1, in[0] & 0x20, &name), 0u);
    CSGeneralName_Delete(&name);
  }
}

// ---- offsets ----

using Offsets = uint32_t (*)(const uint8_t*, uint64_t, uint64_t*, uint64_t*, uint64_t*, uint64_t*, uint64_t*, uint64_t*,
                             uint64_t*, uint32_t);

struct Found {
  uint32_t code;
  std::vector<uint64_t> places;  // tag, length, contents offsets; tag, length, contents octets; end
};

Found Find(const std::string& hex, Offsets offsets, uint32_t mode) {
  const ByteArray in = FromHex(hex);
  std::vector<uint64_t> p(7, 99);
  const uint32_t code = offsets(in.data(), in.size(), &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], mode);
  EXPECT_EQ(offsets(in.data(), in.size(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, mode), code);
  return {code, p};
}

TEST(DerOffsets, OfComponents) {
  const std::vector<uint64_t> none(7, 99);
  struct {
    const char* what;
    const char* in;
    Offsets offsets;
    uint32_t mode, code;
    std::vector<uint64_t> places;
  } const cases[] = {
      {"first", "30 05 06 03 2A 03 04", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 0, 0, {2, 3, 4, 1, 1, 3, 7}},
      {"mode 1", "05 06 03 2A 03 04", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 1, 0, {1, 2, 3, 1, 1, 3, 6}},
      {"mode 2", "06 03 2A 03 04", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 2, 0, {0, 1, 2, 1, 1, 3, 5}},
      {"absent", "30 05 06 03 2A 03 04", CSAlgorithmIdentifier_DEROffsetOfParametersTLV, 0, 406, none},
      {"long length",
       "30 08 06 81 03 2A 03 04 05 00",
       CSAlgorithmIdentifier_DEROffsetOfParametersTLV,
       0,
       0,
       {8, 9, 10, 1, 1, 0, 10}},
      {"indefinite, end included",
       "30 80 06 01 2A 30 80 05 00 00 00 00 00",
       CSAlgorithmIdentifier_DEROffsetOfParametersTLV,
       0,
       0,
       {5, 6, 7, 1, 1, 2, 11}},
      {"after an end marker",
       "30 0F 06 01 2A 01 80 05 00 00 00 04 04 01 02 03 04",
       CSExtension_DEROffsetOfExtnValueTLV,
       0,
       0,
       {11, 12, 13, 1, 1, 4, 17}},
      {"critical", "30 08 06 01 2A 01 01 FF 04 00", CSExtension_DEROffsetOfCriticalTLV, 0, 0, {5, 6, 7, 1, 1, 1, 8}},
      {"critical absent", "30 05 06 01 2A 04 00", CSExtension_DEROffsetOfCriticalTLV, 0, 406, none},
      {"explicit: the wrapper",
       "30 05 A0 03 02 01 02",
       CSTBSCertificate_DEROffsetOfVersionTLV,
       0,
       0,
       {2, 3, 4, 1, 1, 3, 7}},
      {"no version", "30 03 02 01 05", CSTBSCertificate_DEROffsetOfVersionTLV, 0, 406, none},
      {"serial without version",
       "30 03 02 01 05",
       CSTBSCertificate_DEROffsetOfSerialNumberTLV,
       0,
       0,
       {2, 3, 4, 1, 1, 1, 5}},
      {"not a SEQUENCE", "31 00", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 0, 412, none},
      {"missing", "30 00", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 0, 420, none},
      {"unexpected", "30 02 05 00", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 0, 417, none},
      {"unexpected before", "30 02 05 00", CSAlgorithmIdentifier_DEROffsetOfParametersTLV, 0, 417, none},
      {"unknown choice", "30 02 05 00", CSValidity_DEROffsetOfNotBeforeTLV, 0, 418, none},
      {"cut off", "30 05 06 04 2A 03 04", CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV, 0, 6, none},
  };
  for (const auto& c : cases) {
    const Found found = Find(c.in, c.offsets, c.mode);
    EXPECT_EQ(found.code, c.code) << c.what;
    EXPECT_EQ(found.places, c.places) << c.what;
  }
  uint64_t offset = 0;
  EXPECT_EQ(CSAlgorithmIdentifier_DEROffsetOfAlgorithmTLV(nullptr, 5, &offset, nullptr, nullptr, nullptr, nullptr,
                                                          nullptr, nullptr, 0),
            4u);
}

TEST(DerOffsets, OfItems) {
  const ByteArray in = FromHex("30 0A 06 01 2A 06 02 2A 03 06 01 2A");
  const uint64_t starts[] = {2, 5, 9, 12};
  for (uint64_t i = 0; i < 4; ++i) {
    uint64_t offset = 99, end = 99;
    EXPECT_EQ(CSExtKeyUsageSyntax_DEROffsetOfNthTLV(in.data(), in.size(), i, &offset, nullptr, nullptr, nullptr,
                                                    nullptr, nullptr, &end, 0),
              i < 3 ? 0u : 7u);
    if (i < 3) {
      EXPECT_TRUE(offset == starts[i] && end == starts[i + 1]) << i;
    }
  }
  const ByteArray wrong = FromHex("30 05 06 01 2A 05 00");
  EXPECT_EQ(CSExtKeyUsageSyntax_DEROffsetOfNthTLV(wrong.data(), wrong.size(), 1, nullptr, nullptr, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, 0),
            416u);
}

}  // namespace
