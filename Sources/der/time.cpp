// Calendar and second counts of the CHOICE Time.
#include "tavo/der/time.h"

#include "catalogue.h"

using namespace Tavo::Der;

namespace {

constexpr uint64_t kSecondsFrom1900To1970 = 2208988800;

// Either time type in one form; absent minutes and seconds are 0.
struct Fields {
  int64_t year;  // four digits
  int64_t month, day, hour, minute, second;
  bool hasFraction, hasOffsetHours, hasOffsetMinutes;
  int64_t offsetHours, offsetMinutes;
};

Fields From(const CSASNUTCTime& time) {
  const int64_t year = time.year + (time.year < 50 ? 2000 : 1900);
  return {year,
          time.month,
          time.day,
          time.hour,
          time.minute,
          time.second,
          false,
          time.hasOffsetHours,
          time.hasOffsetMinutes,
          time.offsetHours,
          time.offsetMinutes};
}

Fields From(const CSASNGeneralizedTime& time) {
  return {time.year,
          time.month,
          time.day,
          time.hour,
          time.hasMinute ? time.minute : 0,
          time.hasSecond ? time.second : 0,
          time.fraction != nullptr,
          time.hasOffsetHours,
          time.hasOffsetMinutes,
          time.offsetHours,
          time.offsetMinutes};
}

// 9 for what has no calendar form: nothing chosen, a month that is none, a two-digit year above 99.
Code Load(const CSTime* time, Fields& fields) {
  const auto& choice = *reinterpret_cast<const Choice*>(time);
  if (choice.chosen == 0) return CSResult_NOT_SUPPORTED;
  if (choice.chosen == 1) {
    const auto& utc = *static_cast<const CSASNUTCTime*>(choice.object);
    if (utc.year > 99) return CSResult_NOT_SUPPORTED;
    fields = From(utc);
  } else {
    fields = From(*static_cast<const CSASNGeneralizedTime*>(choice.object));
  }
  return fields.month < 1 || fields.month > 12 ? CSResult_NOT_SUPPORTED : CSResult_OK;
}

bool IsLeap(int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// Days from 1970-01-01; years up to 1970 contribute nothing.
int64_t Days(const Fields& time) {
  constexpr int kBeforeMonth[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const int64_t y = time.year > 1970 ? time.year : 1970;
  const int64_t years = 365 * (y - 1970) + (y - 1969) / 4 - (y - 1901) / 100 + (y - 1601) / 400;
  const int64_t leapDay = time.month > 2 && IsLeap(time.year) ? 1 : 0;
  return years + kBeforeMonth[time.month - 1] + leapDay + time.day - 1;
}

}  // namespace

uint32_t CSTime_ToTm(const CSTime* time, struct tm* out) {
  if (time == nullptr || out == nullptr) return CSResult_BAD_PARAMETER;
  Fields fields{};
  CS_TRY(Load(time, fields));
  if (fields.hasOffsetHours || fields.hasOffsetMinutes || fields.hasFraction) return CSResult_NOT_SUPPORTED;
  if (fields.year < INT32_MIN + 1900) return CSResult_NOT_SUPPORTED;
  *out = {};
  out->tm_year = static_cast<int>(fields.year - 1900);
  out->tm_mon = static_cast<int>(fields.month - 1);
  out->tm_mday = static_cast<int>(fields.day);
  out->tm_hour = static_cast<int>(fields.hour);
  out->tm_min = static_cast<int>(fields.minute);
  out->tm_sec = static_cast<int>(fields.second);
  return CSResult_OK;
}

uint32_t CSTime_ToTime_t(const CSTime* time, time_t* out) {
  if (time == nullptr || out == nullptr) return CSResult_BAD_PARAMETER;
  Fields fields{};
  CS_TRY(Load(time, fields));
  if (fields.hasOffsetMinutes && !fields.hasOffsetHours) return CSResult_NOT_SUPPORTED;
  const int64_t hours = Days(fields) * 24 + fields.hour + (fields.hasOffsetHours ? fields.offsetHours : 0);
  const int64_t shift = fields.hasOffsetMinutes ? fields.offsetMinutes : 0;
  const int64_t minutes = hours * 60 + fields.minute + (fields.offsetHours < 0 ? -shift : shift);
  *out = minutes * 60 + fields.second;
  return CSResult_OK;
}

uint32_t CSTime_ToUint64_t(const CSTime* time, uint64_t* out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  time_t seconds = 0;
  CS_TRY(CSTime_ToTime_t(time, &seconds));
  *out = static_cast<uint64_t>(seconds) + kSecondsFrom1900To1970;
  return CSResult_OK;
}

uint64_t CSTime_GetTimeInUint64_t(void) {
  const time_t now = time(nullptr);
  return now == static_cast<time_t>(-1) ? UINT64_MAX : static_cast<uint64_t>(now) + kSecondsFrom1900To1970;
}
