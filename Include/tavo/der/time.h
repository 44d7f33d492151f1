/// ASN.1 time types: UTCTime and GeneralizedTime (X.680, 46 and 47), the CHOICE of the two, and Validity (RFC
/// 5280, 4.1.2.5).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h.
#ifndef TAVO_DER_TIME_H
#define TAVO_DER_TIME_H

#include <time.h>
#include "tavo/der/primitive.h"

/// CSASNUTCTime: YYMMDDhhmmss and an optional offset from UTC. Decoding: 403 for another identifier, 6 for too few
/// characters, 401 for a field that is not decimal, when nothing follows the seconds ("991231235959") and for an offset
/// of fewer than four digits ("+01"). A character other than 'Z', '+' and '-' after the seconds is accepted as 'Z' is.
/// Encodes with 'Z', or with the offset as +hhmm or -hhmm; a value that does not fit gives 6, offset minutes without
/// hours 9.
typedef struct CSASNUTCTime CSASNUTCTime;
/// CSASNGeneralizedTime: YYYYMMDDhh, optional minutes, seconds, fraction and offset. Decoding: 405 for another
/// identifier, 6 for too few characters, 402 for a field that is not decimal, for a fraction without a zone or
/// without seconds, and for an offset of none, one or three digits. Encodes what is present ("00" where a later part
/// needs a minute or second), then the offset, 'Z', or nothing for a local time; a value that does not fit gives 6,
/// offset minutes without hours 9.
typedef struct CSASNGeneralizedTime CSASNGeneralizedTime;
/// CSTime ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
typedef struct CSTime CSTime;
/// CSValidity ::= SEQUENCE { notBefore Time, notAfter Time }
typedef struct CSValidity CSValidity;

CS_BEGIN_DECLARATIONS

CS_TYPE(CSASNUTCTime)

/// CSASNUTCTime_GetTimeData writes the fields; each pointer may be null. `year` has two digits. An absent offset is a
/// null pointer; present ones are lent, the hours with their sign.
RZ_CRYPTO_API uint32_t CSASNUTCTime_GetTimeData(const CSASNUTCTime* time, uint8_t* year, uint8_t* month, uint8_t* day,
                                                uint8_t* hour, uint8_t* minute, uint8_t* second,
                                                const int32_t** offsetHours, const uint8_t** offsetMinutes);
/// CSASNUTCTime_SetTimeData replaces all fields, unchecked; a null offset is absent.
RZ_CRYPTO_API uint32_t CSASNUTCTime_SetTimeData(CSASNUTCTime* time, uint8_t year, uint8_t month, uint8_t day,
                                                uint8_t hour, uint8_t minute, uint8_t second,
                                                const int32_t* offsetHours, const uint8_t* offsetMinutes);

CS_TYPE(CSASNGeneralizedTime)

/// CSASNGeneralizedTime_GetTimeData writes the fields; each pointer may be null. Optional ones are lent, null when
/// absent; `fraction` is text from the decimal mark on; `localTime` is 1 when the value has neither 'Z' nor an offset.
RZ_CRYPTO_API uint32_t CSASNGeneralizedTime_GetTimeData(const CSASNGeneralizedTime* time, int32_t* year, uint8_t* month,
                                                        uint8_t* day, uint8_t* hour, const uint8_t** minute,
                                                        const uint8_t** second, const char** fraction,
                                                        uint8_t* localTime, const int32_t** offsetHours,
                                                        const uint8_t** offsetMinutes);
/// CSASNGeneralizedTime_SetTimeData replaces all fields, unchecked; null is absent, texts and values are copied.
RZ_CRYPTO_API uint32_t CSASNGeneralizedTime_SetTimeData(CSASNGeneralizedTime* time, int32_t year, uint8_t month,
                                                        uint8_t day, uint8_t hour, const uint8_t* minute,
                                                        const uint8_t* second, const char* fraction, uint8_t localTime,
                                                        const int32_t* offsetHours, const uint8_t* offsetMinutes);

CS_CHOICE(CSTime)
CS_ALTERNATIVE(CSTime, UtcTime, CSASNUTCTime)
CS_ALTERNATIVE(CSTime, GeneralTime, CSASNGeneralizedTime)

/// CSTime_ToTm gives the calendar form; members that the value does not have are 0. Two-digit years 50 to 99 are 1950
/// to 1999, 00 to 49 are 2000 to 2049. 9 for a value with an offset or a fraction, a month outside 1 to 12, or nothing
/// chosen. A local time is converted as it stands.
RZ_CRYPTO_API uint32_t CSTime_ToTm(const CSTime* time, struct tm* out);
/// CSTime_ToTime_t gives seconds since 1970-01-01 00:00, years before 1970 counting as 1970. Fractions are ignored, the
/// offset is added. 9 for a month outside 1 to 12, offset minutes without hours, or nothing chosen.
RZ_CRYPTO_API uint32_t CSTime_ToTime_t(const CSTime* time, time_t* out);
/// CSTime_ToUint64_t gives the same instant in seconds since 1900-01-01 00:00.
RZ_CRYPTO_API uint32_t CSTime_ToUint64_t(const CSTime* time, uint64_t* out);
/// CSTime_GetTimeInUint64_t returns the current time in seconds since 1900-01-01 00:00; UINT64_MAX when there is none.
RZ_CRYPTO_API uint64_t CSTime_GetTimeInUint64_t(void);

CS_RECORD(CSValidity)
CS_FIELD(CSValidity, NotBefore, CSTime)
CS_FIELD(CSValidity, NotAfter, CSTime)

CS_END_DECLARATIONS

#endif
