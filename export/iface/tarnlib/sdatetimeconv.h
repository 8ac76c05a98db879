#pragma once

#include "tarnlib/sdatetime.h"
#include "tarnlib/sstring.h"
#include "tarnlib/stimezone.h"
#include "tarnlib/tarnapi.h"

/// Date-times to and from the forms of the runtime and the system, and from text.
///
/// The functions keep no state and may be called from any thread. A null or invalid date-time is reported by
/// assertion ("Input SDateTime value is NULL or not valid") and gives 0, or a structure full of zeros.
///
///     SDateTime when;
///     if (!StringToDate("2024-02-29T12:30:00+01:00", when, STimeZone::TZ_Local())) ...
///     struct tm parts = sicSDateTimeToTm(&when);                           // universal time
///     long long seconds = sicSDateTimeToTime_t(&when, STimeZone::TZ_Local());
///     SDateTime again = sicTime_tToSDateTime(seconds, STimeZone::TZ_Local());
///     double sheet = sicSDateTimeToDATE(&when, STimeZone::TZ_Local());     // 45351.5 in Berlin
namespace TarnLibA500 {

/// Seconds since 1970: the parts in the zone, handed to the runtime's mktime. That takes them for local time
/// whatever the zone is, deliberately, and gets tm_isdst as it is in that zone; only the local zone gives true
/// seconds. -1 where mktime has no answer.
TARN_API long long sicSDateTimeToTime_t(const SDateTime* value, const STimeZone& zone);
/// See SDateTime's constructor.
TARN_API SDateTime sicTime_tToSDateTime(long long time, const STimeZone& zone);

/// The parts in universal time, with tm_wday, tm_yday and tm_isdst.
TARN_API struct tm sicSDateTimeToTm(const SDateTime* value);
/// The parts in the zone, with tm_wday, tm_yday and tm_isdst.
TARN_API struct tm sicSDateTimeToTm(const SDateTime* value, const STimeZone& zone);
/// See SDateTime's constructor.
TARN_API SDateTime sicTmToSDateTime(const struct tm* parts, const STimeZone& zone);

/// The local time as an OLE automation date.
TARN_API double sicSDateTimeToDATE(const SDateTime* value, const STimeZone& zone);
/// See SDateTime's constructor.
TARN_API SDateTime sicDATEToSDateTime(double oleDate, const STimeZone& zone);

/// The local parts in the system's form. A year before 1 gives a structure full of zeros.
TARN_API SYSTEMTIME sicSDateTimeToSYSTEMTIME(const SDateTime* value, const STimeZone& zone);
/// See SDateTime's constructor.
TARN_API SDateTime sicSYSTEMTIMEToSDateTime(const SYSTEMTIME* parts, const STimeZone& zone);

/// Reads a whole text: yyyy-MM-dd, yyyy/MM/dd or yyyyMMdd; then, if at all, "T", "@" or a blank and
/// HH:mm[:ss[.f]], where f is one to three digits; then, after a time, "Z" or +hh:mm or -hh:mm (local time
/// minus universal time), which overrides the zone. A date alone is its midnight. False, and the value
/// untouched, for any other text and for dates and times that do not exist; year 0 does not.
TARN_API bool StringToDate(const SAnsiString& text, SDateTime& value, const STimeZone& zone);
/// The same, and says what the text had; after false, nothing.
TARN_API bool StringToDate(const SAnsiString& text, SDateTime& value, bool& hasDate, bool& hasTime,
                           const STimeZone& zone);
/// Reads a text that is a date alone, as above. False, and nothing changed, for any other.
TARN_API bool StringToYMD(const SAnsiString& text, short& year, unsigned char& month, unsigned char& day);

}  // namespace TarnLibA500
