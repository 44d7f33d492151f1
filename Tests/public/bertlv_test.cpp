#include "tavo/bertlv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
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

// By hand, from the rules of the encoding: the tags that are listed, or the message.
struct Case {
  const char* octets;
  const char* tags;
  const char* message;
};
constexpr Case kCases[] = {
    {"", "", nullptr},
    {"5A", nullptr, kLength},
    {"5A 00", "5a", nullptr},
    {"5A 01", nullptr, kUpdating},
    {"5A 01 41", "5a", nullptr},
    {"80 03 01 02", nullptr, kUpdating},
    {"80 80", nullptr, kLength},
    {"80 80 5A 00", "80 5a", nullptr},
    {"80 81", nullptr, kLength},
    {"80 81 00", nullptr, kLength},
    {"80 81 01", nullptr, kLength},
    {"80 81 00 5A 00", "80 5a", nullptr},
    {"80 81 01 41", "80", nullptr},
    {"80 82 00 01", nullptr, kLength},
    {"80 82 00 01 41", "80", nullptr},
    {"80 84 FF FF FF FF 00", nullptr, kUpdating},
    {"80 88 FF FF FF FF FF FF FF F6 00", nullptr, kUpdating},  // position + length comes back to the start
    {"80 88 FF FF FF FF FF FF FF FF 00", nullptr, kUpdating},
    {"80 89 01 00 00 00 00 00 00 00 01 41", "80", nullptr},  // the length wraps to 1
    {"80 FF 00", nullptr, kLength},
    {"1F", nullptr, kTag},
    {"FF FF", nullptr, kTag},
    {"5F 20", nullptr, kLength},
    {"5F 20 00", "5f20", nullptr},
    {"5F 20 02 41 42", "5f20", nullptr},
    {"5F 81", nullptr, kTag},
    {"5F 81 20", nullptr, kLength},
    {"5F 81 20 00", "5f8120", nullptr},
    {"5F 80 80 01 00", "5f808001", nullptr},
    {"00 00", "00", nullptr},
    {"5A 00 00", nullptr, kLength},
    {"5A 01 41 5F", nullptr, kTag},
};

TEST(BerTlv, EveryEdgeOfTheEncoding) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.octets);
    const ByteArray octets = FromHex(c.octets);
    BERTLVBuffer buffer;
    if (c.message != nullptr) {
      EXPECT_THROWS(1000, 0, c.message, buffer.SetBuffer(octets));
      EXPECT_THROWS(1000, 0, c.message, BERTLVBuffer(octets).IsTagPresent(octets));
      // The refused bytes are kept; every walk over them ends the same way, and nothing is written.
      EXPECT_EQ(Contents(buffer), ToHex(octets));
      ByteArrayList list(1, FromHex("77"));
      ByteArray value = FromHex("77");
      const ByteArray absent = FromHex("7777");
      EXPECT_THROWS(1000, 0, c.message, buffer.IsTagPresent(absent));
      EXPECT_THROWS(1000, 0, c.message, buffer.GetValue(absent, value));
      EXPECT_THROWS(1000, 0, c.message, buffer.GetValueList(absent, list));
      EXPECT_THROWS(1000, 0, c.message, buffer.ListTags(list));
      EXPECT_THROWS(1000, 0, c.message, buffer.RemoveValue(FromHex("5A")));
      EXPECT_THROWS(1000, 0, c.message, buffer.RemoveValueList(FromHex("5A")));
      EXPECT_THROWS(1000, 0, c.message, buffer.AddValue(FromHex("5A"), value));
      EXPECT_THROWS(1000, 0, c.message, buffer.AddValueList(FromHex("5A"), list));
      EXPECT_EQ(Joined(list) + ToHex(value), "7777");
      EXPECT_EQ(Contents(buffer), ToHex(octets));
    } else {
      buffer.SetBuffer(octets);
      EXPECT_EQ(Tags(buffer), c.tags);
      EXPECT_EQ(Contents(buffer), ToHex(octets));
    }
  }
}

TEST(BerTlv, ValuesInAllLengthForms) {
  const BERTLVBuffer buffer(
      FromHex("80 80 81 81 01 41 82 82 00 02 42 43 83 89 01 00 00 00 00 00 00 00 01 44 80 01 45"));
  EXPECT_EQ(Values(buffer, "80"), "- 45");
  EXPECT_EQ(Values(buffer, "81"), "41");
  EXPECT_EQ(Values(buffer, "82"), "4243");
  EXPECT_EQ(Values(buffer, "83"), "44");
  ByteArray value = FromHex("77");
  EXPECT_TRUE(buffer.GetValue(FromHex("80"), value));
  EXPECT_EQ(ToHex(value), "") << "the first object's value";
}

TEST(BerTlv, ATagMatchesAsAWholeOnly) {
  const BERTLVBuffer buffer(FromHex("5F 20 01 41 5F 81 20 01 42 41 01 43"));
  EXPECT_TRUE(buffer.IsTagPresent(FromHex("5F20")));
  EXPECT_TRUE(buffer.IsTagPresent(FromHex("5F8120")));
  for (const char* absent : {"", "5F", "20", "5F81", "5F2001", "42", "43", "415F"}) {
    ByteArray value = FromHex("77");
    EXPECT_FALSE(buffer.IsTagPresent(FromHex(absent))) << absent;
    EXPECT_FALSE(buffer.GetValue(FromHex(absent), value)) << absent;
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
  pos = 2;  // a tag and a length read where another thing is
  buffer.ParseTag(pos, tag);
  EXPECT_EQ(ToHex(tag), "81");
  pos = 3;
  buffer.ParseLength(pos, length);
  EXPECT_EQ(length, 1UL);
}

TEST(BerTlv, LengthsAreWrittenInTheShortestForm) {
  const std::pair<size_t, const char*> kLengths[] = {
      {0, "00"},     {1, "01"},       {127, "7f"},     {128, "8180"},     {200, "81c8"},
      {255, "81ff"}, {256, "820100"}, {300, "82012c"}, {65535, "82ffff"}, {65536, "83010000"}};
  for (const auto& [size, octets] : kLengths) {
    BERTLVBuffer buffer;
    const ByteArray value(size, 0xab);
    buffer.AppendValue(FromHex("7F4E"), value);
    EXPECT_EQ(Contents(buffer), "7f4e" + std::string(octets) + ToHex(value)) << size;
    EXPECT_NO_THROW(BERTLVBuffer{buffer});
  }
}

TEST(BerTlv, ArgumentsMayBeTheBufferItself) {
  const ByteArray start = FromHex("5A 01 41");
  const auto after = [&](auto&& change) {
    BERTLVBuffer buffer(start);
    change(buffer, static_cast<const ByteArray&>(buffer));
    return Contents(buffer);
  };
  const ByteArray tag = FromHex("30");
  const ByteArrayList two(2, FromHex("42"));
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AppendValue(tag, self); }),
            "5a0141"
            "3003"
            "5a0141");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AppendValue(self, self); }),
            "5a0141"
            "5a0141"
            "03"
            "5a0141");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AppendValueList(self, two); }),
            "5a0141"
            "5a01410142"
            "5a01410142");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AddValue(FromHex("5A"), self); }),
            "5a03"
            "5a0141");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AddValue(self, self); }),
            "5a0141"
            "5a0141"
            "03"
            "5a0141");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.AddValueList(self, two); }),
            "5a0141"
            "5a01410142"
            "5a01410142");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.RemoveValueList(self); }), "5a0141");
  EXPECT_EQ(after([&](auto& b, auto& self) { b.SetBuffer(self); }), "5a0141");
  BERTLVBuffer buffer(start);
  EXPECT_FALSE(buffer.RemoveValue(buffer));
  EXPECT_FALSE(buffer.IsTagPresent(buffer));
  ByteArray same = FromHex("5A");
  EXPECT_TRUE(buffer.GetValue(same, same));
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

/// The objects of a buffer held one by one; nothing here shares code with the buffer.
struct Reference {
  struct Entry {
    std::string tag;
    std::string value;
    std::string whole;
  };
  std::vector<Entry> entries;

  bool Remove(const std::string& tag, bool all) {
    bool removed = false;
    for (auto entry = entries.begin(); entry != entries.end();) {
      if (entry->tag == tag && (all || !removed)) {
        entry = entries.erase(entry);
        removed = true;
      } else {
        ++entry;
      }
    }
    return removed;
  }
  std::string All(std::string Entry::*field, const std::string& separator) const {
    std::string text;
    for (const Entry& entry : entries) text += (text.empty() ? "" : separator) + entry.*field;
    return text;
  }
};

TEST(BerTlv, AThousandChangesAgreeWithAListOfObjects) {
  std::mt19937 random(20240229);
  const auto pick = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  const std::string tags[] = {"5a", "80", "00", "5f20", "7f4e", "5f8120"};
  const auto octet = [](size_t value) { return ToHex(ByteArray(1, static_cast<unsigned char>(value))); };
  for (int round = 0; round < 20; ++round) {
    Reference reference;
    BERTLVBuffer buffer;
    // Objects whose lengths the buffer would not write so: they keep their form until they are removed. None is empty,
    // because an empty one in the long form must not come to stand at the end.
    for (unsigned i = pick(20); i > 0; --i) {
      const std::string tag = tags[pick(6)];
      const std::string value = ToHex(ByteArray(1 + pick(5), 0x41));
      const char* forms[] = {"", "81", "8200", "8500000000"};
      std::string whole = tag;
      whole.append(forms[pick(4)]).append(octet(value.size() / 2)).append(value);
      reference.entries.push_back({tag, value, whole});
    }
    buffer.SetBuffer(FromHex(reference.All(&Reference::Entry::whole, "")));
    for (int step = 0; step < 50; ++step) {
      const std::string tag = tags[pick(6)];
      const unsigned change = pick(6);
      const ByteArray value(pick(120), static_cast<unsigned char>(step));
      const Reference::Entry added{tag, ToHex(value),
                                   std::string(tag).append(octet(value.size())).append(ToHex(value))};
      if (change == 0) {
        EXPECT_EQ(buffer.RemoveValue(FromHex(tag)), reference.Remove(tag, false));
      } else if (change == 1) {
        buffer.RemoveValueList(FromHex(tag));
        reference.Remove(tag, true);
      } else {
        const size_t count = change < 4 ? 1 : pick(4);
        if (change == 2) buffer.AppendValue(FromHex(tag), value);
        if (change == 3) buffer.AddValue(FromHex(tag), value);
        if (change == 4) buffer.AppendValueList(FromHex(tag), ByteArrayList(count, value));
        if (change == 5) buffer.AddValueList(FromHex(tag), ByteArrayList(count, value));
        if (change == 3 || change == 5) reference.Remove(tag, true);
        reference.entries.insert(reference.entries.end(), count, added);
      }
      ASSERT_EQ(Contents(buffer), reference.All(&Reference::Entry::whole, "")) << "round " << round << " step " << step;
      ASSERT_EQ(Tags(buffer), reference.All(&Reference::Entry::tag, " "));
    }
  }
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
