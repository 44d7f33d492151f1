#include "tavo/der/primitive.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/vectors.h"

using Tavo::Framework::ByteArray;

namespace {

template <class T>
struct Owned {
  explicit Owned(uint32_t (*deleter)(T**)) : drop(deleter) {}
  ~Owned() {
    if (object != nullptr) drop(&object);
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  T** Out() { return &object; }
  operator T*() const { return object; }  // NOLINT: a test reads better without Get()
  uint32_t (*drop)(T**);
  T* object = nullptr;
};

struct Integer : Owned<CSASNInteger> {
  Integer() : Owned(CSASNInteger_Delete) {}
  explicit Integer(const std::string& contents) : Integer() {
    const ByteArray in = FromHex(contents);
    const uint8_t none = 0;
    uint64_t length = in.size();
    EXPECT_EQ(CSASNInteger_DERDecodeTLV(in.empty() ? &none : in.data(), &length, 2, Out()), 0u);
  }
};

// The encoding that an encoder with the usual three flags writes.
template <class Encode>
std::string Encoded(Encode encode) {
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(encode(&buffer, &length), 0u);
  const std::string hex = ToHex(ByteArray(buffer, buffer + length));
  free(buffer);
  return hex;
}

// ---- INTEGER ----

TEST(DerInteger, NativeNumbersBothWays) {
  struct {
    int64_t value;
    std::string encoded;
  } const cases[] = {{0, "020100"},
                     {1, "020101"},
                     {127, "02017f"},
                     {128, "02020080"},
                     {255, "020200ff"},
                     {256, "02020100"},
                     {32767, "02027fff"},
                     {32768, "0203008000"},
                     {INT32_MAX, "02047fffffff"},
                     {-1, "0201ff"},
                     {-128, "020180"},
                     {-129, "0202ff7f"},
                     {-32768, "02028000"},
                     {INT32_MIN, "020480000000"},
                     {0x80000000, "02050080000000"},
                     {UINT32_MAX, "020500ffffffff"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Integer number;
    uint64_t total = 0;
    const ByteArray in = FromHex(c.encoded);
    uint64_t length = in.size();
    if (c.value >= INT32_MIN && c.value <= INT32_MAX) {
      const auto value = static_cast<int32_t>(c.value);
      EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNInteger_DEREncodeSigned32TLV(value, b, l, 1, 1, 1); }),
                c.encoded);
      EXPECT_EQ(CSASNInteger_DEREncodedLengthSigned32(value, &total), 0u);
      EXPECT_EQ(total, in.size());
      Integer object;
      EXPECT_EQ(CSASNInteger_FromSigned32(value, object.Out()), 0u);
      int32_t back = 99;
      EXPECT_EQ(CSASNInteger_ToSigned32(object, &back), 0u);
      EXPECT_EQ(back, value);
      EXPECT_EQ(CSASNInteger_DERDecodeSigned32TLV(in.data(), &length, 0, &back), 0u);
      EXPECT_TRUE(back == value && length == in.size());
    }
    if (c.value >= 0) {
      const auto value = static_cast<uint32_t>(c.value);
      EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNInteger_DEREncodeUnsigned32TLV(value, b, l, 1, 1, 1); }),
                c.encoded);
      uint64_t contents = 0;
      EXPECT_EQ(CSASNInteger_DEREncodedLengthUnsigned32(value, &total), 0u);
      EXPECT_EQ(CSASNInteger_DEREncodedLengthUnsigned32TLV(value, nullptr, nullptr, &contents), 0u);
      EXPECT_TRUE(total == in.size() && contents == in.size() - 2);
      EXPECT_EQ(CSASNInteger_FromUnsigned32(value, number.Out()), 0u);
      uint32_t back = 99;
      EXPECT_EQ(CSASNInteger_ToUnsigned32(number, &back), 0u);
      EXPECT_EQ(back, value);
      EXPECT_EQ(CSASNInteger_DERDecodeUnsigned32TLV(in.data(), &length, 0, &back), 0u);
      EXPECT_EQ(back, value);
      uint8_t small = 99;
      EXPECT_EQ(CSASNInteger_DERDecodeUnsigned8TLV(in.data(), &length, 0, &small), value > 255 ? 6u : 0u);
      EXPECT_EQ(small, value > 255 ? 99u : value);
    }
  }
}

TEST(DerInteger, ContentsThatFitNoNativeNumber) {
  struct {
    std::string contents;
    uint32_t code;
    uint32_t asUnsigned;  // 99: untouched
    int32_t asSigned;
  } const cases[] = {{"", 0, 99, 99},
                     {"C0000001", 0, 0xC0000001, -0x3FFFFFFF},
                     {"00 00 00 00 00 07", 0, 7, 7},
                     {"01 00 00 00 02", 6, 99, 2},
                     {"FF 00 00 00 02", 6, 99, 2},
                     {"FF", 0, 255, -1}};
  for (const auto& c : cases) {
    const Integer number(c.contents);
    uint32_t asUnsigned = 99;
    int32_t asSigned = 99;
    EXPECT_EQ(CSASNInteger_ToUnsigned32(number, &asUnsigned), c.code) << c.contents;
    EXPECT_EQ(CSASNInteger_ToSigned32(number, &asSigned), 0u);
    EXPECT_EQ(asUnsigned, c.asUnsigned) << c.contents;
    EXPECT_EQ(asSigned, c.asSigned) << c.contents;
  }
}

TEST(DerInteger, OrderAndHex) {
  // In ascending order; equal values stand together.
  const std::vector<std::vector<std::string>> ordered = {
      {"FE FF", "FF FE FF"}, {"FF 00"},       {"80", "FF 80"}, {"FE"},    {"FF", "FF FF"},
      {"", "00", "00 00"},   {"01", "00 01"}, {"7F"},          {"00 80"}, {"01 00"}};
  for (size_t i = 0; i < ordered.size(); ++i) {
    for (size_t j = 0; j < ordered.size(); ++j) {
      for (const auto& a : ordered[i]) {
        for (const auto& b : ordered[j]) {
          int32_t result = 99;
          EXPECT_EQ(CSASNInteger_Compare(Integer(a), Integer(b), &result), 0u);
          EXPECT_EQ(result, i == j ? 0 : i < j ? -1 : 1) << a << " and " << b;
        }
      }
    }
  }
  struct {
    std::string contents, lower;
    uint64_t needed;
  } const texts[] = {{"", "00", 3}, {"00 00", "00", 5}, {"00 AB 01", "ab01", 7}, {"FF", "ff", 3}};
  for (const auto& t : texts) {
    const Integer number(t.contents);
    char* text = nullptr;
    uint64_t capacity = 0;
    EXPECT_EQ(CSASNInteger_ToHex(number, &text, &capacity, 0), 0u);
    EXPECT_EQ(text, t.lower);
    EXPECT_EQ(capacity, t.needed);
    capacity = t.needed - 1;
    EXPECT_EQ(CSASNInteger_ToHex(number, &text, &capacity, 1), 6u);
    EXPECT_EQ(capacity, t.needed);
    EXPECT_EQ(CSASNInteger_ToHex(number, &text, &capacity, 1), 0u);
    EXPECT_EQ(strcasecmp(text, t.lower.c_str()), 0);
    EXPECT_EQ(CSASNUtil_FreeString(&text), 0u);
    EXPECT_EQ(CSASNUtil_FreeString(&text), 4u);
  }
}

TEST(DerInteger, WhatIsNotProvided) {
  CSASNInteger* out = nullptr;
  char* text = nullptr;
  EXPECT_EQ(CSASNInteger_FromString(nullptr, nullptr), 2u);
  EXPECT_EQ(CSASNInteger_ToString(nullptr, &text), 2u);
  EXPECT_EQ(CSASNInteger_Add(nullptr, nullptr, &out), 2u);
  EXPECT_EQ(CSASNInteger_Subtract(nullptr, nullptr, nullptr), 2u);
}

TEST(DerInteger, FinishDecodesNatively) {
  CSASNDecodeContext* context = nullptr;
  ASSERT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
  const uint8_t in[] = {2, 2, 1, 0};
  int32_t surplus = 9;
  EXPECT_EQ(CSASNUtil_DERDecodeAddData(context, in, 4, &surplus), 0u);
  uint32_t value = 0;
  uint8_t small = 9;
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned32(context, &value), 0u);
  EXPECT_EQ(value, 256u);
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned8(context, &small), 6u);
  EXPECT_EQ(CSASNInteger_DERDecodeFinishUnsigned8(nullptr, &small), 4u);
  EXPECT_EQ(CSASNBoolean_DERDecodeFinish(context, &small), 409u);
  EXPECT_EQ(small, 9);
  CSASNUtil_DeleteDecodeContext(&context);
}

// ---- OBJECT IDENTIFIER ----

struct Oid : Owned<CSASNOID> {
  explicit Oid(const char* text) : Owned(CSASNOID_Delete) { EXPECT_EQ(CSASNOID_FromString(text, Out()), 0u) << text; }
};

TEST(DerOid, TextBothWays) {
  struct {
    const char* text;
    const char* back;
    const char* encoded;
  } const cases[] = {{"2.5.29.15", "2.5.29.15", "0603551d0f"},
                     {"1.2.840.113549.1.1.1", "1.2.840.113549.1.1.1", "06092a864886f70d010101"},
                     {"0.39", "0.39", "060127"},
                     {"1.3.4294967295", "1.3.4294967295", "06062b8fffffff7f"},
                     {"2.0.127.128", "2.0.127.128", "0604507f8100"},
                     {"", "", "0600"},
                     {"x", "", "0600"},
                     {".1", "", "0600"},
                     {"1.2.", "1.2", "06012a"},
                     {"1..2", "1", "060128"},
                     {"1.2 .3", "1.2", "06012a"},
                     {"1.02.3", "1.2.3", "06022a03"},
                     {"1.-2", "1", "060128"},
                     // one octet for the first two arcs: 80 + 231
                     {"2.999", "2.999", "060137"},
                     {"7", "7", "060118"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const Oid oid(c.text);
    EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNOID_DEREncodeTLV(oid, b, l, 1, 1, 1); }), c.encoded);
    const std::string back = c.back;
    uint64_t length = 0;
    EXPECT_EQ(CSASNOID_GetStringLength(oid, &length), 0u);
    EXPECT_EQ(length, back.size() + 1);
    char* narrow = nullptr;
    wchar_t* wide = nullptr;
    EXPECT_EQ(CSASNOID_ToString(oid, &narrow), 0u);
    EXPECT_EQ(CSASNOID_ToWString(oid, &wide), 0u);
    EXPECT_EQ(narrow, back);
    EXPECT_EQ(std::wstring(wide), std::wstring(back.begin(), back.end()));
    EXPECT_EQ(CSASNOID_ToStringEx(oid, narrow, length - 1), 6u);
    EXPECT_EQ(CSASNOID_ToStringEx(oid, narrow, length), 0u);
    EXPECT_EQ(CSASNOID_ToWStringEx(oid, wide, length - 1), 6u);
    EXPECT_EQ(CSASNOID_ToWStringEx(oid, wide, length), 0u);
    EXPECT_EQ(narrow, back);
    CSASNUtil_FreeString(&narrow);
    CSASNUtil_FreeWString(&wide);
    uint8_t match = 0;
    EXPECT_EQ(CSASNOID_MatchesString(oid, c.back, &match), 0u);
    EXPECT_EQ(match, 1);
  }
  CSASNOID* out = nullptr;
  EXPECT_EQ(CSASNOID_FromString("1.4294967296", &out), 400u);
  EXPECT_EQ(CSASNOID_FromString("1.99999999999999999999999", &out), 400u);
  EXPECT_EQ(CSASNOID_FromString(nullptr, &out), 4u);
}

TEST(DerOid, WhatMatches) {
  const Oid oid("2.5.0");
  const Oid none("");
  for (const char* text : {"", "2", "2.5", "2.5.", "2.5.0.", "2.5.0.1", "2.5.00x", "2.5..0", " 2.5.0", "+2.5.0",
                           "2.5.-0", "2.5.4294967296", "2x5x0"}) {
    uint8_t match = 9;
    EXPECT_EQ(CSASNOID_MatchesString(oid, text, &match), 0u);
    EXPECT_EQ(match, 0) << text;
    EXPECT_EQ(CSASNOID_MatchesString(none, text, &match), 0u);
    EXPECT_EQ(match, *text == 0 ? 1 : 0) << text;
  }
}

TEST(DerOid, ArcsGrow) {
  const Oid oid("1.2");
  std::string expected = "1.2";
  for (uint32_t arc = 0; arc < 100; ++arc) {
    EXPECT_EQ(CSASNOID_AddArc(oid, arc * 1000), 0u);
    expected += "." + std::to_string(arc * 1000);
  }
  uint8_t match = 0;
  EXPECT_EQ(CSASNOID_MatchesString(oid, expected.c_str(), &match), 0u);
  EXPECT_EQ(match, 1);
}

// ---- OCTET STRING, IA5String ----

struct OctetString : Owned<CSASNOctetString> {
  explicit OctetString(const std::string& text) : Owned(CSASNOctetString_Delete) {
    EXPECT_EQ(CSASNOctetString_FromBytes(reinterpret_cast<const uint8_t*>(text.data()), text.size(), Out()), 0u);
  }
  std::string Get() const {
    const uint8_t* bytes = nullptr;
    uint64_t length = 0;
    EXPECT_EQ(CSASNOctetString_GetBytes(object, &bytes, &length), 0u);
    return std::string(bytes, bytes + length);
  }
};

TEST(DerOctets, SetFromWithin) {
  const OctetString octets("abcdef");
  const uint8_t* bytes = nullptr;
  uint64_t length = 0;
  for (const char* expected : {"bcdef", "cdef", "def"}) {
    EXPECT_EQ(CSASNOctetString_GetBytes(octets, &bytes, &length), 0u);
    EXPECT_EQ(CSASNOctetString_SetBytes(octets, bytes + 1, length - 1), 0u);
    EXPECT_EQ(octets.Get(), expected);
  }
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, nullptr, 0), 0u);
  EXPECT_EQ(octets.Get(), "");
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, nullptr, 1), 4u);
  CSASNOctetString* out = nullptr;
  EXPECT_EQ(CSASNOctetString_FromBytes(nullptr, 1, &out), 4u);
  EXPECT_EQ(CSASNOctetString_FromBytes(bytes, UINT64_MAX - 8, &out), 3u);
}

TEST(DerOctets, AnyTag) {
  const OctetString octets("a");
  EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNOctetString_DEREncodeWithTag(octets, 2, 1, 0, b, l, 1, 1, 1); }),
            "820161");
  EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNIA5String_DEREncodeWithTag(octets, 22, 0, 0, b, l, 1, 1, 0); }),
            "1601");
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(CSASNOctetString_DEREncodeWithTag(octets, 2, 4, 0, &buffer, &length, 1, 1, 1), 4u);
  EXPECT_EQ(CSASNOctetString_DEREncodeWithTag(nullptr, 2, 1, 0, &buffer, &length, 1, 1, 1), 4u);
  const uint8_t in[] = {0x82, 1, 'a', 0xFF};
  struct {
    uint32_t mode, number, tagClass;
    uint8_t constructed;
    uint32_t code;
  } const cases[] = {{0, 2, 1, 0, 0},    {0, 3, 1, 0, 413}, {0, 2, 2, 0, 413}, {0, 2, 1, 1, 413},
                     {0, 34, 1, 0, 413}, {0, 2, 5, 0, 413}, {1, 2, 1, 0, 0},   {1, 99, 9, 9, 0}};
  for (const auto& c : cases) {
    CSASNOctetString* out = nullptr;
    uint64_t available = 4 - c.mode;
    EXPECT_EQ(
        CSASNOctetString_DERDecodeWithTag(in + c.mode, &available, c.mode, c.number, c.tagClass, c.constructed, &out),
        c.code);
    EXPECT_EQ(available, c.code == 0 ? 3 - c.mode : 4 - c.mode);
    EXPECT_EQ(out != nullptr, c.code == 0);
    if (out != nullptr) CSASNOctetString_Delete(&out);
  }
}

TEST(DerOctets, Texts) {
  for (const std::string& text : {std::string("a.org\0.evil", 11), std::string("\xE9", 1), std::string()}) {
    const OctetString string(text);
    uint64_t length = 0;
    EXPECT_EQ(CSASNIA5String_GetStringLength(string, &length), 0u);
    EXPECT_EQ(length, text.size() + 1);
    char* narrow = nullptr;
    wchar_t* wide = nullptr;
    EXPECT_EQ(CSASNIA5String_ToString(string, &narrow), 0u);
    EXPECT_EQ(CSASNIA5String_ToWString(string, &wide), 0u);
    EXPECT_EQ(std::string(narrow, length), text + std::string(1, '\0'));
    for (size_t i = 0; i < length; ++i) EXPECT_EQ(wide[i], static_cast<wchar_t>(static_cast<unsigned char>(narrow[i])));
    CSASNUtil_FreeString(&narrow);
    CSASNUtil_FreeWString(&wide);
  }
}

// ---- BIT STRING, BOOLEAN, ANY ----

struct Bits : Owned<CSASNBitString> {
  Bits() : Owned(CSASNBitString_Delete) { EXPECT_EQ(CSASNBitString_Create(Out()), 0u); }
  std::string Get() const {
    return Encoded([&](auto b, auto l) { return CSASNBitString_DEREncodeTLV(object, b, l, 1, 1, 1); });
  }
};

TEST(DerBits, GrowAndRead) {
  const Bits bits;
  EXPECT_EQ(CSASNBitString_SetBit(bits, 0, 1), 0u);
  EXPECT_EQ(bits.Get(), "03020780");
  EXPECT_EQ(CSASNBitString_SetBit(bits, 17, 5), 0u);
  EXPECT_EQ(bits.Get(), "030406800040");
  EXPECT_EQ(CSASNBitString_SetBit(bits, 0, 0), 0u);
  EXPECT_EQ(bits.Get(), "030406000040");
  uint8_t value = 9;
  EXPECT_EQ(CSASNBitString_GetBit(bits, 17, &value), 0u);
  EXPECT_EQ(value, 0x40);  // a mask
  EXPECT_EQ(CSASNBitString_GetBit(bits, 16, &value), 0u);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(CSASNBitString_GetBit(bits, 18, &value), 7u);
  const uint8_t octets[] = {0xAB, 0xCD};
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, octets, 9), 0u);
  EXPECT_EQ(bits.Get(), "030307abcd");
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, nullptr, 1), 4u);
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, nullptr, 0), 0u);
  EXPECT_EQ(bits.Get(), "030100");
  const OctetString source("ab");
  Bits other;
  EXPECT_EQ(CSASNBitString_Delete(other.Out()), 0u);
  EXPECT_EQ(CSASNBitString_FromOctetString(source, other.Out()), 0u);
  EXPECT_EQ(other.Get(), "0303006162");
  uint64_t count = 0;
  EXPECT_EQ(CSASNBitString_GetBitCount(other, &count), 0u);
  EXPECT_EQ(count, 16u);
}

// The bit count of a string with more unused bits than bits is 0, not 2^64 - 7.
TEST(DerBits, UnusedBitsNeverUnderflow) {
  for (const char* hex : {"03 01 07", "03 03 FF 00 00", "03 02 09 00"}) {
    const ByteArray in = FromHex(hex);
    Owned<CSASNBitString> bits(CSASNBitString_Delete);
    uint64_t length = in.size(), count = 9;
    ASSERT_EQ(CSASNBitString_DERDecodeTLV(in.data(), &length, 0, bits.Out()), 0u);
    EXPECT_EQ(CSASNBitString_GetBitCount(bits, &count), 0u);
    EXPECT_EQ(count, 0u) << hex;
    uint8_t value = 0;
    EXPECT_EQ(CSASNBitString_GetBit(bits, 0, &value), 7u);
  }
}

TEST(DerBoolean, Values) {
  struct {
    const char* in;
    uint32_t code;
  } const cases[] = {{"01 01 FF", 0},      {"01 01 00", 0},   {"01 01 01", 411}, {"01 00", 410},
                     {"01 02 00 00", 410}, {"02 01 FF", 409}, {"01 01", 6}};
  for (const auto& c : cases) {
    const ByteArray in = FromHex(c.in);
    uint64_t length = in.size();
    uint8_t value = 9;
    EXPECT_EQ(CSASNBoolean_DERDecodeTLV(in.data(), &length, 0, &value), c.code) << c.in;
    EXPECT_EQ(value, c.code == 0 ? in[2] : 9);
  }
  for (const int value : {0, 1, 255}) {
    EXPECT_EQ(
        Encoded([&](auto b, auto l) { return CSASNBoolean_DEREncodeTLV(static_cast<uint8_t>(value), b, l, 1, 1, 1); }),
        value == 0 ? "010100" : "0101ff");
  }
  uint64_t total = 0, tag = 0, octets = 0, contents = 0;
  EXPECT_EQ(CSASNBoolean_DEREncodedLength(1, &total), 0u);
  EXPECT_EQ(CSASNBoolean_DEREncodedLengthTLV(1, &tag, &octets, &contents), 0u);
  EXPECT_TRUE(total == 3 && tag == 1 && octets == 1 && contents == 1);
}

TEST(DerAny, Tags) {
  Owned<CSASNAny> any(CSASNAny_Delete);
  ASSERT_EQ(CSASNAny_Create(any.Out()), 0u);
  EXPECT_EQ(CSASNAny_SetTag(any, 31, 0, 0), 400u);
  EXPECT_EQ(CSASNAny_SetTag(any, 3, 4, 0), 4u);
  EXPECT_EQ(CSASNAny_SetTag(any, 30, CSTagClass_PRIVATE, 7), 0u);
  const uint8_t bytes[] = {1, 2};
  EXPECT_EQ(CSASNAny_SetBytes(any, bytes, 2), 0u);
  EXPECT_EQ(Encoded([&](auto b, auto l) { return CSASNAny_DEREncodeTLV(any, b, l, 1, 1, 1); }), "fe020102");
  uint32_t number = 0, tagClass = 0;
  uint8_t constructed = 0, match = 9;
  EXPECT_EQ(CSASNAny_GetTag(any, &number, &tagClass, &constructed), 0u);
  EXPECT_TRUE(number == 30 && tagClass == 3 && constructed != 0);
  EXPECT_EQ(CSASNAny_TagMatches(any, 30, 3, 1, &match), 0u);
  EXPECT_EQ(match, 1);
  for (const auto& [n, c, k] : {std::tuple{29u, 3u, 1u}, {30u, 1u, 1u}, {30u, 3u, 0u}, {62u, 3u, 1u}, {30u, 7u, 1u}}) {
    EXPECT_EQ(CSASNAny_TagMatches(any, n, c, static_cast<uint8_t>(k), &match), 0u);
    EXPECT_EQ(match, 0) << n << " " << c << " " << k;
  }
  // The identifier of a caller that has read it.
  uint64_t length = 2;
  Owned<CSASNAny> read(CSASNAny_Delete);
  EXPECT_EQ(CSASNAny_DERDecodeTLV(bytes, &length, 2, 31, 0, 0, read.Out()), 400u);
  EXPECT_EQ(CSASNAny_DERDecodeTLV(bytes, &length, 2, 5, 4, 0, read.Out()), 4u);
  EXPECT_EQ(CSASNAny_DERDecodeTLV(bytes, &length, 2, 30, 3, 1, read.Out()), 0u);
  EXPECT_EQ(CSASNAny_Equals(any, read, &match), 0u);
  EXPECT_EQ(match, 1);
}

}  // namespace
