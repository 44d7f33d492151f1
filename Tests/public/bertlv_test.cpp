#include "tavo/bertlv.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/caught.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

constexpr const char* kTag = "Invalid format while parsing BER TLV tag";
constexpr const char* kLength = "Invalid format while parsing BER TLV length";
constexpr const char* kUpdating = "Invalid format while updating BER TLV buffer";

std::string Contents(const BERTLVBuffer& buffer) { return ToHex(static_cast<const ByteArray&>(buffer)); }

std::string Joined(const ByteArrayList& list) {
  std::string text;
  for (const ByteArray& item : list) text += (text.empty() ? "" : " ") + (item.empty() ? "-" : ToHex(item));
  return text;
}

std::string Tags(const BERTLVBuffer& buffer) {
  ByteArrayList tags;
  buffer.ListTags(tags);
  return Joined(tags);
}

std::string Values(const BERTLVBuffer& buffer, const char* tag) {
  ByteArrayList values;
  buffer.GetValueList(FromHex(tag), values);
  return Joined(values);
}

class BerTlvEdges : public VectorTest {};

TEST_P(BerTlvEdges, OfTheEncoding) {
  const ByteArray octets = GetParam().Bytes("octets");
  BERTLVBuffer buffer;
  if (GetParam().section() == "accepted") {
    buffer.SetBuffer(octets);
    EXPECT_EQ(Tags(buffer), GetParam().Text("tags"));
  } else {
    const std::string message = GetParam().Text("message");
    EXPECT_THROWS(1000, 0, message, buffer.SetBuffer(octets));
    EXPECT_THROWS(1000, 0, message, BERTLVBuffer(octets).IsTagPresent(octets));
    // The refused bytes are kept; every walk over them ends the same way, and nothing is written.
    EXPECT_EQ(Contents(buffer), ToHex(octets));
    ByteArrayList list(1, FromHex("77"));
    ByteArray value = FromHex("77");
    const ByteArray tag = FromHex("5A"), absent = FromHex("7777");
    EXPECT_THROWS(1000, 0, message, buffer.GetValue(absent, value));
    EXPECT_THROWS(1000, 0, message, buffer.GetValueList(absent, list));
    EXPECT_THROWS(1000, 0, message, buffer.ListTags(list));
    EXPECT_THROWS(1000, 0, message, buffer.RemoveValue(tag));
    EXPECT_THROWS(1000, 0, message, buffer.RemoveValueList(tag));
    EXPECT_THROWS(1000, 0, message, buffer.AddValue(tag, value));
    EXPECT_THROWS(1000, 0, message, buffer.AddValueList(tag, list));
    EXPECT_EQ(Joined(list) + ToHex(value), "7777");
  }
  EXPECT_EQ(Contents(buffer), ToHex(octets));
}

INSTANTIATE_TEST_SUITE_P(X690, BerTlvEdges, testing::ValuesIn(LoadVectors("bertlv.txt")));

TEST(BerTlv, ValuesInAllLengthForms) {
  const BERTLVBuffer buffer(
      FromHex("80 80 81 81 01 41 82 82 00 02 42 43 83 89 01 00 00 00 00 00 00 00 01 44 80 01 45"));
  EXPECT_EQ(Values(buffer, "80"), "- 45");
  EXPECT_EQ(Values(buffer, "81"), "41");
  EXPECT_EQ(Values(buffer, "82"), "4243");
  EXPECT_EQ(Values(buffer, "83"), "44");
  ByteArray first = FromHex("77");
  EXPECT_TRUE(buffer.GetValue(FromHex("80"), first));
  EXPECT_EQ(ToHex(first), "") << "the first object's value";

  const BERTLVBuffer tags(FromHex("5F 20 01 41 5F 81 20 01 42 41 01 43"));
  EXPECT_TRUE(tags.IsTagPresent(FromHex("5F20")));
  EXPECT_TRUE(tags.IsTagPresent(FromHex("5F8120")));
  for (const char* absent : {"", "5F", "20", "5F81", "5F2001", "42", "43", "415F"}) {
    ByteArray value = FromHex("77");
    EXPECT_FALSE(tags.IsTagPresent(FromHex(absent))) << absent << ": a tag matches as a whole only";
    EXPECT_FALSE(tags.GetValue(FromHex(absent), value)) << absent;
    EXPECT_EQ(ToHex(value), "77") << "left alone when there is none";
  }
}

TEST(BerTlv, TheParsersTakeAnyPosition) {
  const BERTLVBuffer buffer(FromHex("5F 20 81 01 41"));
  unsigned long pos = 0;
  unsigned long length = 77;
  ByteArray tag = FromHex("01 02 03");
  buffer.ParseTag(pos, tag);
  EXPECT_EQ(ToHex(tag), "5f20");
  EXPECT_EQ(pos, 2UL);
  buffer.ParseLength(pos, length);
  EXPECT_EQ(length, 1UL);
  EXPECT_EQ(pos, 4UL);
  for (const unsigned long beyond : {5UL, 6UL, ~0UL, ~0UL - 1}) {
    pos = beyond;
    EXPECT_THROWS(1000, 0, kTag, buffer.ParseTag(pos, tag));
    EXPECT_THROWS(1000, 0, kLength, buffer.ParseLength(pos, length));
    EXPECT_EQ(pos, beyond) << "moves on success only";
    EXPECT_EQ(length, 1UL);
    EXPECT_TRUE(tag.empty()) << "cleared first";
  }
}

class BerTlvEdits : public VectorTest {};

TEST_P(BerTlvEdits, KeepEveryOtherOctet) {
  const Vector& v = GetParam();
  const std::string before = ToHex(v.Bytes("before")), after = ToHex(v.Bytes("after")), &edit = v.section();
  const ByteArray tag = v.Bytes("tag"), value = v.Has("value") ? v.Bytes("value") : ByteArray();
  const ByteArrayList values(v.Has("count") ? v.Number("count") : 0, value);
  BERTLVBuffer buffer(v.Bytes("before"));
  if (edit == "AppendValue") buffer.AppendValue(tag, value);
  if (edit == "AppendValueList") buffer.AppendValueList(tag, values);
  if (edit == "AddValue") buffer.AddValue(tag, value);
  if (edit == "AddValueList") buffer.AddValueList(tag, values);
  if (edit == "RemoveValueList") buffer.RemoveValueList(tag);
  if (edit == "RemoveValue") {
    EXPECT_EQ(buffer.RemoveValue(tag), before != after);
  }
  EXPECT_EQ(Contents(buffer), after);
  EXPECT_NO_THROW(Tags(buffer)) << "reads back";
}

INSTANTIATE_TEST_SUITE_P(X690, BerTlvEdits, testing::ValuesIn(LoadVectors("bertlv_edits.txt")));

TEST(BerTlv, ArgumentsMayBeTheBufferItself) {
  using Change = void (*)(BERTLVBuffer & buffer, const ByteArray& self);
  static const ByteArray kTag30 = FromHex("30"), kTag5a = FromHex("5A");
  static const ByteArrayList kTwo(2, FromHex("42"));
  const std::pair<Change, const char*> cases[] = {
      {[](auto& b, auto& self) { b.AppendValue(kTag30, self); }, "5a0141 30035a0141"},
      {[](auto& b, auto& self) { b.AppendValue(self, self); }, "5a0141 5a0141035a0141"},
      {[](auto& b, auto& self) { b.AppendValueList(self, kTwo); }, "5a0141 5a01410142 5a01410142"},
      {[](auto& b, auto& self) { b.AddValue(kTag5a, self); }, "5a035a0141"},
      {[](auto& b, auto& self) { b.AddValue(self, self); }, "5a0141 5a0141035a0141"},
      {[](auto& b, auto& self) { b.AddValueList(self, kTwo); }, "5a0141 5a01410142 5a01410142"},
      {[](auto& b, auto& self) { b.RemoveValueList(self); }, "5a0141"},
      {[](auto& b, auto& self) { EXPECT_FALSE(b.RemoveValue(self) || b.IsTagPresent(self)); }, "5a0141"},
      {[](auto& b, auto& self) { b.SetBuffer(self); }, "5a0141"}};
  for (const auto& [change, expected] : cases) {
    BERTLVBuffer buffer(FromHex("5A 01 41"));
    change(buffer, buffer);
    EXPECT_EQ(Contents(buffer), ToHex(FromHex(expected)));
  }
  ByteArray same = kTag5a;
  EXPECT_TRUE(BERTLVBuffer(FromHex("5A 01 41")).GetValue(same, same));
  EXPECT_EQ(ToHex(same), "41");
}

TEST(BerTlv, WhatAppendAndRemoveCanLeaveBehindFailsLaterAndNoMore) {
  BERTLVBuffer buffer(FromHex("5A 01 41"));
  buffer.AppendValue(FromHex("5F"), FromHex("42"));  // reads as tag 5F 01, length 42
  ByteArray value;
  EXPECT_TRUE(buffer.GetValue(FromHex("5A"), value)) << "found before the malformed place";
  EXPECT_THROWS(1000, 0, kUpdating, Tags(buffer));
  EXPECT_THROWS(1000, 0, kUpdating, buffer.RemoveValue(FromHex("5A")));
  EXPECT_EQ(Contents(buffer), "5a01415f0142");

  buffer.SetBuffer(FromHex("80 81 00 5A 00"));  // an empty object in the long form is read only while more follows
  EXPECT_TRUE(buffer.RemoveValue(FromHex("5A")));
  EXPECT_EQ(Contents(buffer), "808100");
  EXPECT_THROWS(1000, 0, kLength, Tags(buffer));
  buffer.AppendValue(FromHex("5A"), {});
  EXPECT_EQ(Tags(buffer), "80 5a");
}

TEST(BerTlv, CopiesStandAlone) {
  BERTLVBuffer buffer(FromHex("5A 01 41"));
  BERTLVBuffer copy(buffer);
  copy.AppendValue(FromHex("80"), {});
  EXPECT_EQ(Contents(buffer), "5a0141");
  buffer = copy;
  EXPECT_EQ(Contents(buffer), "5a01418000");
  buffer = BERTLVBuffer();
  EXPECT_EQ(Tags(buffer), "");
  EXPECT_EQ(Contents(copy), "5a01418000");
}

TEST(BerTlv, TheExceptionIsThrownByItsOwnType) {
  try {
    const BERTLVBuffer refused(FromHex("5A"));
    FAIL() << "nothing thrown";
  } catch (CGctlvException* exception) {
    const Owned<CGctlvException> owner(exception);
    EXPECT_EQ(exception->StringFromId(), "ID:1000 (GCTLV_INVALID_BUFFER_FORMAT)");
    EXPECT_EQ(exception->getFilename(), "Sources/tavobertlvbuffer");
    EXPECT_EQ(exception->getInnerException(), nullptr);
  }
  CGctlvException other("file", 7, "text", static_cast<GCTLVExceptionId>(1001),
                        new CGctlvException("", 0, "cause", GCTLV_INVALID_BUFFER_FORMAT, nullptr));
  EXPECT_EQ(other.StringFromId(), "ID:1001 (Unknown Exception Id)");
  EXPECT_STREQ(CGctlvException(other).getInnerException()->what(), "cause");
}

}  // namespace
