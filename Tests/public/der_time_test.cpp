#include "tavo/der/time.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/vectors.h"

using Tavo::Framework::ByteArray;

namespace {

// A CSTime decoded from the text of a UTCTime (23) or GeneralizedTime (24).
class Time {
 public:
  Time(uint32_t number, const std::string& text) {
    uint64_t length = text.size();
    m_code = CSTime_DERDecodeTLV(reinterpret_cast<const uint8_t*>(text.data()), &length, 2, number, 0, 0, &m_time);
  }
  explicit Time(CSTime* time) : m_time(time) {}
  ~Time() {
    if (m_time != nullptr) CSTime_Delete(&m_time);
  }
  Time(const Time&) = delete;
  Time& operator=(const Time&) = delete;
  uint32_t Code() const { return m_code; }
  CSTime* Get() const { return m_time; }

 private:
  uint32_t m_code = 0;
  CSTime* m_time = nullptr;
};

constexpr uint32_t kUtc = 23, kGeneral = 24;

struct Seconds {
  uint32_t number;
  std::string text;
  time_t seconds;
};

TEST(DerTime, SecondsSince1970) {
  const Seconds cases[] = {{kUtc, "700101000000Z", 0},
                           {kUtc, "000301000000Z", 951868800},
                           {kUtc, "491231235959Z", 2524607999},
                           {kUtc, "500101000000Z", 0},  // 1950: years before 1970 count as 1970
                           {kUtc, "690301000000Z", 59 * 86400},
                           {kUtc, "680301000000Z", 60 * 86400},  // but the leap day of the year itself
                           {kGeneral, "20000229235959Z", 951868799},
                           {kGeneral, "21000301000000Z", 4107542400},
                           {kGeneral, "24000301000000Z", 13574649600},
                           {kGeneral, "99991231235959Z", 253402300799},
                           {kGeneral, "1970010100", 0},
                           {kGeneral, "197001010001", 60},
                           {kGeneral, "19700101000000.999Z", 0},
                           // offsets are added; the minutes go the way of the hours
                           {kUtc, "700101000000+0130", 5400},
                           {kUtc, "700102000000-0130", 86400 - 5400},
                           {kUtc, "700101000000-0030", 1800},
                           {kGeneral, "19700101000000+01", 3600},
                           // fields beyond their range are arithmetic
                           {kUtc, "700100000000Z", -86400},
                           {kUtc, "700101256099Z", 25 * 3600 + 60 * 60 + 99}};
  for (const Seconds& c : cases) {
    SCOPED_TRACE(c.text);
    const Time time(c.number, c.text);
    ASSERT_EQ(time.Code(), 0u);
    time_t seconds = -7;
    EXPECT_EQ(CSTime_ToTime_t(time.Get(), &seconds), 0u);
    EXPECT_EQ(seconds, c.seconds);
    uint64_t since1900 = 0;
    EXPECT_EQ(CSTime_ToUint64_t(time.Get(), &since1900), 0u);
    EXPECT_EQ(since1900, static_cast<uint64_t>(c.seconds + 2208988800));
  }
}

// Against the C library, over every day from 1970 to 2499.
TEST(DerTime, AgreesWithTheCLibrary) {
  for (time_t day = 0; day < 193534; ++day) {
    const time_t seconds = day * 86400 + day % 86400;
    struct tm expected {};
    gmtime_r(&seconds, &expected);
    char text[16];
    strftime(text, sizeof text, "%Y%m%d%H%M%SZ", &expected);
    const Time time(kGeneral, text);
    time_t converted = 0;
    ASSERT_EQ(CSTime_ToTime_t(time.Get(), &converted), 0u);
    ASSERT_EQ(converted, seconds) << text;
    struct tm calendar {};
    ASSERT_EQ(CSTime_ToTm(time.Get(), &calendar), 0u);
    ASSERT_EQ(timegm(&calendar), seconds) << text;
  }
}

TEST(DerTime, Calendar) {
  struct {
    uint32_t number;
    std::string text;
    uint32_t code;
    int year, month;  // as in struct tm
  } const cases[] = {{kUtc, "491231235959Z", 0, 149, 11},        {kUtc, "500101000000Z", 0, 50, 0},
                     {kUtc, "991231235959Z", 0, 99, 11},         {kUtc, "000101000000Z", 0, 100, 0},
                     {kUtc, "491231235959+0100", 9, 0, 0},       {kGeneral, "20491231235959Z", 0, 149, 11},
                     {kGeneral, "00010101000000Z", 0, -1899, 0}, {kGeneral, "2049123123", 0, 149, 11},
                     {kGeneral, "20491231235959.5Z", 9, 0, 0},   {kGeneral, "2049123123+01", 9, 0, 0},
                     {kUtc, "490031235959Z", 9, 0, 0},           {kUtc, "491331235959Z", 9, 0, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const Time time(c.number, c.text);
    struct tm calendar;
    memset(&calendar, 0x55, sizeof calendar);
    EXPECT_EQ(CSTime_ToTm(time.Get(), &calendar), c.code);
    if (c.code != 0) continue;
    EXPECT_EQ(calendar.tm_year, c.year);
    EXPECT_EQ(calendar.tm_mon, c.month);
    EXPECT_TRUE(calendar.tm_isdst == 0 && calendar.tm_wday == 0 && calendar.tm_yday == 0);
  }
}

TEST(DerTime, WhatHasNoCalendarForm) {
  CSTime* choice = nullptr;
  ASSERT_EQ(CSTime_Create(&choice), 0u);
  const Time owner(choice);
  time_t seconds = -7;
  struct tm calendar {};
  uint64_t since1900 = 7;
  EXPECT_EQ(CSTime_ToTime_t(choice, &seconds), 9u);  // nothing chosen
  EXPECT_EQ(CSTime_ToTm(choice, &calendar), 9u);
  EXPECT_EQ(CSTime_ToUint64_t(choice, &since1900), 9u);

  CSASNUTCTime* utc = nullptr;
  ASSERT_EQ(CSASNUTCTime_Create(&utc), 0u);
  ASSERT_EQ(CSTime_SetUtcTime(choice, utc), 0u);
  const uint8_t half = 30;
  for (const auto& [year, month, minutes] : {std::tuple{100, 1, false},
                                             {247, 12, false},
                                             {50, 0, false},
                                             {50, 13, false},
                                             {50, 255, false},
                                             {50, 1, true}}) {
    EXPECT_EQ(CSASNUTCTime_SetTimeData(utc, static_cast<uint8_t>(year), static_cast<uint8_t>(month), 1, 0, 0, 0,
                                       nullptr, minutes ? &half : nullptr),
              0u);
    EXPECT_EQ(CSTime_ToTime_t(choice, &seconds), 9u) << year << " " << month;
    EXPECT_EQ(CSTime_ToTm(choice, &calendar), 9u);
  }
  EXPECT_EQ(seconds, -7);
  EXPECT_EQ(CSTime_ToTime_t(nullptr, &seconds), 4u);
  EXPECT_EQ(CSTime_ToTm(choice, nullptr), 4u);
}

TEST(DerTime, TheClock) {
  const auto before = static_cast<uint64_t>(time(nullptr));
  const uint64_t now = CSTime_GetTimeInUint64_t() - 2208988800;
  EXPECT_TRUE(now >= before && now <= before + 5);
}

// ---- fields ----

template <class T, class Encode>
std::string TextOf(const T* time, Encode encode, uint32_t expected = 0) {
  uint8_t* buffer = nullptr;
  uint64_t length = 0;
  EXPECT_EQ(encode(time, &buffer, &length, 0, 0, 1), expected);
  const std::string text(buffer, buffer + length);
  free(buffer);
  return text;
}

TEST(DerTime, UtcTimeFields) {
  CSASNUTCTime* time = nullptr;
  ASSERT_EQ(CSASNUTCTime_Create(&time), 0u);
  const int32_t hours = -5, tooFar = 100;
  const uint8_t minutes = 30;
  const auto set = [&](uint8_t year, const int32_t* h, const uint8_t* m) {
    EXPECT_EQ(CSASNUTCTime_SetTimeData(time, year, 2, 3, 4, 5, 6, h, m), 0u);
  };
  set(1, &hours, &minutes);
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV), "010203040506-0530");
  uint8_t year = 0, second = 0;
  const int32_t* lentHours = nullptr;
  const uint8_t* lentMinutes = nullptr;
  EXPECT_EQ(
      CSASNUTCTime_GetTimeData(time, &year, nullptr, nullptr, nullptr, nullptr, &second, &lentHours, &lentMinutes), 0u);
  EXPECT_TRUE(year == 1 && second == 6 && *lentHours == -5 && *lentMinutes == 30);
  set(99, lentHours, nullptr);  // what was lent, given back
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV), "990203040506-0500");
  set(99, nullptr, nullptr);
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV), "990203040506Z");
  set(100, nullptr, nullptr);
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV, 6), "");
  set(1, &tooFar, nullptr);
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV, 6), "");
  set(1, nullptr, &minutes);
  EXPECT_EQ(TextOf(time, CSASNUTCTime_DEREncodeTLV, 9), "");
  CSASNUTCTime_Delete(&time);
}

TEST(DerTime, GeneralizedTimeFields) {
  CSASNGeneralizedTime* time = nullptr;
  ASSERT_EQ(CSASNGeneralizedTime_Create(&time), 0u);
  const int32_t hours = 5;
  const uint8_t minute = 7, second = 8, offset = 30;
  struct {
    int32_t year;
    const uint8_t *minute, *second;
    const char* fraction;
    bool local;
    const int32_t* hours;
    const uint8_t* minutes;
    uint32_t code;
    std::string text;
  } const cases[] = {
      {2049, nullptr, nullptr, nullptr, false, nullptr, nullptr, 0, "2049020304Z"},
      {2049, nullptr, nullptr, nullptr, true, nullptr, nullptr, 0, "2049020304"},
      {49, &minute, nullptr, nullptr, false, nullptr, nullptr, 0, "004902030407Z"},
      {2049, nullptr, &second, nullptr, false, nullptr, nullptr, 0, "20490203040008Z"},
      {2049, nullptr, nullptr, ".25", false, &hours, nullptr, 0, "20490203040000.25+05"},
      {2049, &minute, &second, ",5", true, &hours, &offset, 0, "20490203040708,5+0530"},
      {2049, nullptr, nullptr, nullptr, false, nullptr, &offset, 9, ""},
      {10000, nullptr, nullptr, nullptr, false, nullptr, nullptr, 6, ""},
      {-1, nullptr, nullptr, nullptr, false, nullptr, nullptr, 6, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(CSASNGeneralizedTime_SetTimeData(time, c.year, 2, 3, 4, c.minute, c.second, c.fraction, c.local, c.hours,
                                               c.minutes),
              0u);
    EXPECT_EQ(TextOf(time, CSASNGeneralizedTime_DEREncodeTLV, c.code), c.text);
    const uint8_t *lentMinute = nullptr, *lentSecond = nullptr, *lentMinutes = nullptr;
    const int32_t* lentHours = nullptr;
    const char* fraction = nullptr;
    uint8_t local = 9;
    EXPECT_EQ(CSASNGeneralizedTime_GetTimeData(time, nullptr, nullptr, nullptr, nullptr, &lentMinute, &lentSecond,
                                               &fraction, &local, &lentHours, &lentMinutes),
              0u);
    EXPECT_EQ(lentMinute == nullptr, c.minute == nullptr);
    EXPECT_EQ(lentSecond == nullptr, c.second == nullptr);
    EXPECT_EQ(lentHours == nullptr, c.hours == nullptr);
    EXPECT_EQ(lentMinutes == nullptr, c.minutes == nullptr);
    EXPECT_STREQ(fraction, c.fraction);
    EXPECT_EQ(local, c.local ? 1 : 0);
  }
  CSASNGeneralizedTime_Delete(&time);
}

// One field changed at a time: never equal.
TEST(DerTime, EveryFieldCountsForEquality) {
  const char* texts[] = {"20490203040506Z",   "20500203040506Z",   "20490303040506Z",     "20490204040506Z",
                         "20490203050506Z",   "20490203040606Z",   "20490203040507Z",     "204902030405Z",
                         "2049020304Z",       "20490203040506",    "20490203040506.5Z",   "20490203040506,5Z",
                         "20490203040506+00", "20490203040506+01", "20490203040506+0000", "20490203040506+0001"};
  for (const char* a : texts) {
    for (const char* b : texts) {
      const Time x(kGeneral, a), y(kGeneral, b);
      uint8_t equal = 9;
      EXPECT_EQ(CSTime_Equals(x.Get(), y.Get(), &equal), 0u);
      EXPECT_EQ(equal, a == b ? 1 : 0) << a << " " << b;
    }
  }
  const char* utc[] = {"490203040506Z",     "490203040506+0000", "490203040506+0100",
                       "490203040506+0001", "500203040506Z",     "490203040507Z"};
  for (const char* a : utc) {
    for (const char* b : utc) {
      const Time x(kUtc, a), y(kUtc, b);
      uint8_t equal = 9;
      EXPECT_EQ(CSTime_Equals(x.Get(), y.Get(), &equal), 0u);
      EXPECT_EQ(equal, a == b ? 1 : 0) << a << " " << b;
    }
  }
}

}  // namespace
