#include "tavo/der/time.h"

#include "catalogue.h"
#include "timetext.h"

using namespace Tavo::Der;

namespace {

constexpr uint64_t kShortest = 11;  // characters; the fewest that are looked at
constexpr uint64_t kLongest = 17;   // YYMMDDhhmmss+hhmm

const CSASNUTCTime& Object(const void* object) { return *static_cast<const CSASNUTCTime*>(object); }

Code ReadOffset(Text& text, CSASNUTCTime& time) {
  if (text.remaining < 5) return CSResult_BAD_UTCTIME;
  time.hasOffsetHours = time.hasOffsetMinutes = true;
  CS_TRY(ReadField(text, 3, CSResult_BAD_UTCTIME, time.offsetHours));
  return ReadTwoDigits(text, CSResult_BAD_UTCTIME, time.offsetMinutes);
}

// A character other than Z, + and - after the seconds is accepted and leaves the offset absent.
Code ReadTime(Text text, CSASNUTCTime& time) {
  if (text.remaining < kShortest) return CSResult_BUFFER_TOO_SMALL;
  for (uint8_t* field : {&time.year, &time.month, &time.day, &time.hour, &time.minute, &time.second}) {
    CS_TRY(ReadTwoDigits(text, CSResult_BAD_UTCTIME, *field));
  }
  if (text.remaining == 0) return CSResult_BAD_UTCTIME;
  return *text.position == '+' || *text.position == '-' ? ReadOffset(text, time) : static_cast<Code>(CSResult_OK);
}

Code New(const CSASNUTCTime& time, void*& object) {
  object = Allocate(sizeof(CSASNUTCTime));
  if (object == nullptr) return CSResult_OUT_OF_MEMORY;
  *static_cast<CSASNUTCTime*>(object) = time;
  return CSResult_OK;
}

Code Read(uint8_t, Input contents, void*& object) {
  CSASNUTCTime time{};
  CS_TRY(ReadTime({reinterpret_cast<const char*>(contents.position), contents.remaining}, time));
  return New(time, object);
}

Code Format(const CSASNUTCTime& time, TimeText<kLongest>& text) {
  for (const uint8_t field : {time.year, time.month, time.day, time.hour, time.minute, time.second}) {
    CS_TRY(text.Append(2, field));
  }
  if (!time.hasOffsetHours) return time.hasOffsetMinutes ? static_cast<Code>(CSResult_NOT_SUPPORTED) : text.Append('Z');
  CS_TRY(text.AppendOffset(time.offsetHours));
  return text.Append(2, time.hasOffsetMinutes ? time.offsetMinutes : 0);
}

Code Size(const void* object, uint64_t& octets) {
  TimeText<kLongest> text;
  CS_TRY(Format(Object(object), text));
  octets = text.Length();
  return CSResult_OK;
}

uint8_t* Write(const void* object, uint8_t* end) {
  TimeText<kLongest> text;
  Format(Object(object), text);
  return text.WriteTo(end);
}

Code Copy(const void* from, void*& to) { return New(Object(from), to); }

bool Equal(const void* a, const void* b) {
  const CSASNUTCTime& x = Object(a);
  const CSASNUTCTime& y = Object(b);
  return x.year == y.year && x.month == y.month && x.day == y.day && x.hour == y.hour && x.minute == y.minute &&
         x.second == y.second && SameOptional(x.hasOffsetHours, x.offsetHours, y.hasOffsetHours, y.offsetHours) &&
         SameOptional(x.hasOffsetMinutes, x.offsetMinutes, y.hasOffsetMinutes, y.offsetMinutes);
}

void Destroy(void* object) { Release(object); }

}  // namespace

const Leaf Tavo::Der::kUtcTime = {Read, Size, Write, Copy, Equal, Destroy};

uint32_t CSASNUTCTime_GetTimeData(const CSASNUTCTime* time, uint8_t* year, uint8_t* month, uint8_t* day, uint8_t* hour,
                                  uint8_t* minute, uint8_t* second, const int32_t** offsetHours,
                                  const uint8_t** offsetMinutes) {
  LendNothing(offsetHours, offsetMinutes);
  if (time == nullptr) return CSResult_BAD_PARAMETER;
  Give(year, time->year);
  Give(month, time->month);
  Give(day, time->day);
  Give(hour, time->hour);
  Give(minute, time->minute);
  Give(second, time->second);
  Lend(offsetHours, time->hasOffsetHours, time->offsetHours);
  Lend(offsetMinutes, time->hasOffsetMinutes, time->offsetMinutes);
  return CSResult_OK;
}

uint32_t CSASNUTCTime_SetTimeData(CSASNUTCTime* time, uint8_t year, uint8_t month, uint8_t day, uint8_t hour,
                                  uint8_t minute, uint8_t second, const int32_t* offsetHours,
                                  const uint8_t* offsetMinutes) {
  if (time == nullptr) return CSResult_BAD_PARAMETER;
  CSASNUTCTime changed{};
  changed.year = year;
  changed.month = month;
  changed.day = day;
  changed.hour = hour;
  changed.minute = minute;
  changed.second = second;
  Take(offsetHours, changed.hasOffsetHours, changed.offsetHours);
  Take(offsetMinutes, changed.hasOffsetMinutes, changed.offsetMinutes);
  *time = changed;
  return CSResult_OK;
}
