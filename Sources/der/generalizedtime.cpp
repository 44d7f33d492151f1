#include "tavo/der/time.h"

#include "catalogue.h"
#include "timetext.h"

using namespace Tavo::Der;

namespace {

using Time = CSASNGeneralizedTime;

constexpr Code kBad = CSResult_BAD_GENERALIZEDTIME;
constexpr uint64_t kLongestHead = 14;  // YYYYMMDDhhmmss, in characters
constexpr uint64_t kLongestZone = 5;   // +hhmm

const Time& Object(const void* object) { return *static_cast<const Time*>(object); }
char* Behind(Time* time) { return reinterpret_cast<char*>(time + 1); }

// ---- decoding ----

bool AtZone(const Text& text) { return *text.position == 'Z' || *text.position == '+' || *text.position == '-'; }

Code ReadYear(Text& text, Time& time) {
  CS_TRY(ReadField(text, 4, kBad, time.year));
  return time.year < 0 ? kBad : static_cast<Code>(CSResult_OK);
}

// Two digits unless the text ends here or a zone follows.
Code ReadOptional(Text& text, bool& has, uint8_t& value) {
  has = text.remaining != 0 && !AtZone(text);
  return has ? ReadTwoDigits(text, kBad, value) : static_cast<Code>(CSResult_OK);
}

// From the decimal mark up to the zone, which must follow: a Z if there is one, else a +, else a -.
Code ReadFraction(Text& text, Text& fraction) {
  if (*text.position != '.' && *text.position != ',') return kBad;
  const void* zone = nullptr;
  for (const char designator : {'Z', '+', '-'}) {
    if (zone == nullptr) zone = memchr(text.position, designator, text.remaining);
  }
  if (zone == nullptr) return kBad;
  fraction = {text.position, static_cast<uint64_t>(static_cast<const char*>(zone) - text.position)};
  text.Skip(fraction.remaining);
  return CSResult_OK;
}

Code ReadOffset(Text& text, Time& time) {
  if (text.remaining < 3) return kBad;
  time.hasOffsetHours = true;
  CS_TRY(ReadField(text, 3, kBad, time.offsetHours));
  if (text.remaining == 0) return CSResult_OK;
  if (text.remaining < 2) return kBad;
  time.hasOffsetMinutes = true;
  return ReadTwoDigits(text, kBad, time.offsetMinutes);
}

Code ReadTime(Text text, Time& time, Text& fraction) {
  if (text.remaining != 0 && memchr(text.position, 0, text.remaining) != nullptr) return kBad;
  CS_TRY(ReadYear(text, time));
  for (uint8_t* field : {&time.month, &time.day, &time.hour}) CS_TRY(ReadTwoDigits(text, kBad, *field));
  CS_TRY(ReadOptional(text, time.hasMinute, time.minute));
  CS_TRY(ReadOptional(text, time.hasSecond, time.second));
  if (text.remaining != 0 && !AtZone(text)) CS_TRY(ReadFraction(text, fraction));
  time.isLocal = text.remaining == 0;
  return time.isLocal || *text.position == 'Z' ? static_cast<Code>(CSResult_OK) : ReadOffset(text, time);
}

// A new object, with the fraction in the same block; a null position stands for none.
Code New(const Time& time, const Text& fraction, void*& object) {
  if (fraction.remaining > PTRDIFF_MAX - sizeof(Time) - 1) return CSResult_OUT_OF_MEMORY;
  auto* copy = static_cast<Time*>(Allocate(sizeof(Time) + fraction.remaining + 1));
  if (copy == nullptr) return CSResult_OUT_OF_MEMORY;
  *copy = time;
  copy->fraction = nullptr;
  if (fraction.position != nullptr) {
    copy->fraction = Behind(copy);
    CopyOctets(copy->fraction, fraction.position, fraction.remaining);
    copy->fraction[fraction.remaining] = 0;
  }
  object = copy;
  return CSResult_OK;
}

Text FractionOf(const Time& time) {
  return time.fraction == nullptr ? Text{nullptr, 0} : Text{time.fraction, strlen(time.fraction)};
}

Code Read(uint8_t, Input contents, void*& object) {
  Time time{};
  Text fraction{nullptr, 0};
  CS_TRY(ReadTime({reinterpret_cast<const char*>(contents.position), contents.remaining}, time, fraction));
  return New(time, fraction, object);
}

// ---- encoding ----

// Up to the fraction; an absent minute or second that a later part needs is written 00.
Code FormatHead(const Time& time, TimeText<kLongestHead>& text) {
  const bool second = time.hasSecond || time.fraction != nullptr;
  CS_TRY(text.Append(4, time.year));
  for (const uint8_t field : {time.month, time.day, time.hour}) CS_TRY(text.Append(2, field));
  if (time.hasMinute || second) CS_TRY(text.Append(2, time.hasMinute ? time.minute : 0));
  return second ? text.Append(2, time.hasSecond ? time.second : 0) : static_cast<Code>(CSResult_OK);
}

Code FormatZone(const Time& time, TimeText<kLongestZone>& text) {
  if (time.hasOffsetMinutes && !time.hasOffsetHours) return CSResult_NOT_SUPPORTED;
  if (time.hasOffsetHours) {
    CS_TRY(text.AppendOffset(time.offsetHours));
    return time.hasOffsetMinutes ? text.Append(2, time.offsetMinutes) : static_cast<Code>(CSResult_OK);
  }
  return time.isLocal ? static_cast<Code>(CSResult_OK) : text.Append('Z');
}

Code Size(const void* object, uint64_t& octets) {
  TimeText<kLongestHead> head;
  TimeText<kLongestZone> zone;
  CS_TRY(FormatHead(Object(object), head));
  CS_TRY(FormatZone(Object(object), zone));
  octets = head.Length() + FractionOf(Object(object)).remaining + zone.Length();
  return CSResult_OK;
}

uint8_t* Write(const void* object, uint8_t* end) {
  TimeText<kLongestHead> head;
  TimeText<kLongestZone> zone;
  FormatHead(Object(object), head);
  FormatZone(Object(object), zone);
  const Text fraction = FractionOf(Object(object));
  end = zone.WriteTo(end) - fraction.remaining;
  CopyOctets(end, fraction.position, fraction.remaining);
  return head.WriteTo(end);
}

// ---- objects ----

Code Copy(const void* from, void*& to) { return New(Object(from), FractionOf(Object(from)), to); }

bool Equal(const void* a, const void* b) {
  const Time& x = Object(a);
  const Time& y = Object(b);
  const bool sameFraction = (x.fraction == nullptr) == (y.fraction == nullptr) &&
                            (x.fraction == nullptr || strcmp(x.fraction, y.fraction) == 0);
  return x.year == y.year && x.month == y.month && x.day == y.day && x.hour == y.hour && sameFraction &&
         x.isLocal == y.isLocal && SameOptional(x.hasMinute, x.minute, y.hasMinute, y.minute) &&
         SameOptional(x.hasSecond, x.second, y.hasSecond, y.second) &&
         SameOptional(x.hasOffsetHours, x.offsetHours, y.hasOffsetHours, y.offsetHours) &&
         SameOptional(x.hasOffsetMinutes, x.offsetMinutes, y.hasOffsetMinutes, y.offsetMinutes);
}

void ReleaseFraction(Time* time) {
  const Text fraction = FractionOf(*time);
  Wipe(time->fraction, fraction.remaining);
  if (time->fraction != Behind(time)) Release(time->fraction);
}

void Destroy(void* object) {
  ReleaseFraction(static_cast<Time*>(object));
  Release(object);
}

}  // namespace

const Leaf Tavo::Der::kGeneralizedTime = {Read, Size, Write, Copy, Equal, Destroy};

uint32_t CSASNGeneralizedTime_GetTimeData(const CSASNGeneralizedTime* time, int32_t* year, uint8_t* month, uint8_t* day,
                                          uint8_t* hour, const uint8_t** minute, const uint8_t** second,
                                          const char** fraction, uint8_t* localTime, const int32_t** offsetHours,
                                          const uint8_t** offsetMinutes) {
  LendNothing(minute, second, fraction, offsetHours, offsetMinutes);
  if (time == nullptr) return CSResult_BAD_PARAMETER;
  Give(year, time->year);
  Give(month, time->month);
  Give(day, time->day);
  Give(hour, time->hour);
  Lend(minute, time->hasMinute, time->minute);
  Lend(second, time->hasSecond, time->second);
  if (fraction != nullptr) *fraction = time->fraction;
  Give(localTime, static_cast<uint8_t>(time->isLocal));
  Lend(offsetHours, time->hasOffsetHours, time->offsetHours);
  Lend(offsetMinutes, time->hasOffsetMinutes, time->offsetMinutes);
  return CSResult_OK;
}

uint32_t CSASNGeneralizedTime_SetTimeData(CSASNGeneralizedTime* time, int32_t year, uint8_t month, uint8_t day,
                                          uint8_t hour, const uint8_t* minute, const uint8_t* second,
                                          const char* fraction, uint8_t localTime, const int32_t* offsetHours,
                                          const uint8_t* offsetMinutes) {
  if (time == nullptr) return CSResult_BAD_PARAMETER;
  Time changed{};
  changed.year = year;
  changed.month = month;
  changed.day = day;
  changed.hour = hour;
  changed.isLocal = localTime != 0;
  Take(minute, changed.hasMinute, changed.minute);
  Take(second, changed.hasSecond, changed.second);
  Take(offsetHours, changed.hasOffsetHours, changed.offsetHours);
  Take(offsetMinutes, changed.hasOffsetMinutes, changed.offsetMinutes);
  if (fraction != nullptr) {
    const uint64_t octets = strlen(fraction) + 1;
    changed.fraction = static_cast<char*>(Allocate(octets));
    if (changed.fraction == nullptr) return CSResult_OUT_OF_MEMORY;
    CopyOctets(changed.fraction, fraction, octets);
  }
  ReleaseFraction(time);
  *time = changed;
  return CSResult_OK;
}
