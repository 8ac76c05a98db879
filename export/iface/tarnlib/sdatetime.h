#pragma once

#include <compare>
#include <cstdint>

#include "tarnlib/sdate.h"
#include "tarnlib/sstring.h"
#include "tarnlib/stime.h"
#include "tarnlib/stimespan.h"
#include "tarnlib/stimezone.h"
#include "tarnlib/tarnapi.h"

struct tm;
struct _SYSTEMTIME;  // NOLINT(bugprone-reserved-identifier): the system's name
/// The system's date and time in parts, as <windows.h> declares it, too.
typedef struct _SYSTEMTIME SYSTEMTIME;

namespace TarnLibA500 {

/// A date and a time of day in universal time.
///
/// A zone is applied when a value is built from local parts or read out, with daylight saving as it is in
/// force at that instant. When clocks go forward, a local time that they skip is read as standard time (02:30
/// becomes 03:30); when they go back, a time that comes twice is the second one, standard time. A plain value
/// of 8 bytes, to be copied freely; different objects may be used by different threads. Nothing throws: what
/// does not exist is the invalid date-time, and reading that is reported by assertion (unit "stime") and
/// gives 0. In universal time nothing here calls the system, except for the present time and for names.
///
///     const STimeZone& here = STimeZone::TZ_Local();
///     SDateTime start(2024, 3, 31, 0, 30, 0, 0, here);
///     SDateTime end = start + STimeSpan(0, 36, 0, 0, 0);
///     SAnsiString text = end.Format("yyyy-MM-dd@HH:mm:ss.SS", here);   // "2024-04-01@13:30:00.000"
///     SDateTime back;
///     if (StringToDate(text, back, here) && back == end) ...
///     if (SDateTime::GetCurrentDateTime() > end) ...
class SDateTime {
  public:
    /// The invalid date-time.
    constexpr SDateTime() noexcept = default;
    /// From what a calendar and a clock in the zone show; ranges as with SDate and STime.
    TARN_API SDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                       unsigned char minute, unsigned char second, unsigned short millisecond,
                       const STimeZone& zone);
    /// From a date and a time of day in universal time.
    constexpr SDateTime(const SDate& date, const STime& time) noexcept : date_(date), time_(time) {}
    /// From seconds since 1970 in universal time, negative ones included; the zone plays no part in it. -1 is
    /// the runtime's mark of failure: it is reported by assertion ("time_t is invalid") and gives the invalid
    /// date-time. A literal 0 must be written 0LL.
    TARN_API SDateTime(long long time, const STimeZone& zone);
    /// From an OLE automation date, days since 1899-12-30 local time, rounded to milliseconds. Before that
    /// day the fraction is the time of day all the same: -1.25 is 1899-12-29 06:00. A literal 0 must be
    /// written 0.0.
    TARN_API SDateTime(double oleDate, const STimeZone& zone);
    /// From local parts in the system's form; the day of the week is not looked at. Null is reported by
    /// assertion.
    TARN_API SDateTime(const SYSTEMTIME* parts, const STimeZone& zone);
    /// From local parts in the runtime's form; tm_wday, tm_yday and tm_isdst are not looked at. Null is
    /// reported by assertion.
    TARN_API SDateTime(const struct tm* parts, const STimeZone& zone);

    /// True when both the date and the time of day are valid.
    constexpr bool IsValid() const noexcept { return date_.IsValid() && time_.IsValid(); }

    /// The date in the zone.
    TARN_API SDate GetDate(const STimeZone& zone) const;
    /// The time of day in universal time.
    TARN_API STime GetTime() const;
    /// All parts at once, as a calendar and a clock in the zone show them.
    TARN_API void GetDateTime(short& year, unsigned char& month, unsigned char& day, unsigned char& hour,
                              unsigned char& minute, unsigned char& second, unsigned short& millisecond,
                              const STimeZone& zone) const;
    /// The year in the zone, cut to 16 bits.
    TARN_API short GetYear(const STimeZone& zone) const;
    /// The month in the zone, 1 to 12.
    TARN_API unsigned char GetMonth(const STimeZone& zone) const;
    /// The day of the month in the zone, 1 to 31.
    TARN_API unsigned char GetDay(const STimeZone& zone) const;
    /// The day of the week in the zone: 0 is Sunday, 6 Saturday.
    TARN_API unsigned char GetDayOfWeek(const STimeZone& zone) const;
    /// The hour in the zone, 0 to 23.
    TARN_API unsigned char GetHour(const STimeZone& zone) const;
    /// The minute in the zone, 0 to 59.
    TARN_API unsigned char GetMinute(const STimeZone& zone) const;
    /// The second, 0 to 59, the same in all zones.
    TARN_API unsigned char GetSecond() const;
    /// The millisecond, 0 to 999, the same in all zones.
    TARN_API unsigned short GetMillisecond() const;

    /// Seconds since 1970 by way of the runtime's mktime, which knows the local zone only: any other zone is
    /// reported by assertion and gives 0. mktime gets the parts of sicSDateTimeToTm as they are. -1 where it
    /// has no answer (before 1970, after 3000).
    TARN_API long long GetTimeT(const STimeZone& zone) const;
    /// The local time as an OLE automation date.
    TARN_API double GetOleDate(const STimeZone& zone) const;
    /// Writes the local parts, the day of the week included. False, with all parts 0, for an invalid value or
    /// a year before 1; false and nothing written for null.
    TARN_API bool GetSYSTEMTIME(SYSTEMTIME* parts, const STimeZone& zone) const;

    /// The local time by a pattern. Runs of letters stand for parts:
    ///
    ///     y, yy       the year's last two digits, plain or with leading zero; yyy and more: the full year
    ///     M, MM       the month, plain or with leading zero; MMM, MMMM: its short or long name
    ///     d, dd       the day, plain or with leading zero; ddd, dddd: the short or long name of the weekday
    ///     H, h, m, s  hour, hour of the 12-hour clock, minute, second; more than one letter: leading zero
    ///     S           milliseconds; more than one letter: three digits
    ///     t, g        AM or PM (more than one letter: its long form), the era
    ///
    /// Text between single or double quotes is copied without them, up to the end when the second is missing,
    /// and every other character as it is. Years before 1 have a "-" in the full form. Names are those of the
    /// thread's locale as narrow text. A part that is invalid renders nothing.
    TARN_API SAnsiString Format(const char* pattern, const STimeZone& zone) const;
    /// The same into memory of the caller, with a terminator, and without an allocation for texts of up to
    /// 100 bytes. Returns the bytes before the terminator, or -1 and an empty text when they do not fit.
    TARN_API int Format(char* out, std::uint32_t nBytes, const char* pattern, const STimeZone& zone) const;

    /// The present moment.
    TARN_API static SDateTime GetCurrentDateTime();

    /// An invalid value stays invalid, and a sum beyond what a date holds becomes it.
    TARN_API SDateTime& operator+=(const STimeSpan& span) noexcept;
    /// The same backwards.
    TARN_API SDateTime& operator-=(const STimeSpan& span) noexcept;
    /// The moment a span later, as += makes it.
    SDateTime operator+(const STimeSpan& span) const noexcept { return SDateTime(*this) += span; }
    /// The moment a span earlier, as -= makes it.
    SDateTime operator-(const STimeSpan& span) const noexcept { return SDateTime(*this) -= span; }
    /// The time from the other value to this one; none, reported by assertion, when one is invalid.
    TARN_API STimeSpan operator-(const SDateTime& other) const;
    /// Values compare by instant; invalid ones come before all others.
    constexpr bool operator==(const SDateTime&) const noexcept = default;
    /// The earlier instant is the lesser one.
    constexpr std::strong_ordering operator<=>(const SDateTime& other) const noexcept {
        if (date_ != other.date_) return date_ <=> other.date_;
        return time_.milliseconds_ <=> other.time_.milliseconds_;
    }

  private:
    friend struct ZoneAccess;

    SDate date_;
    STime time_;
};

static_assert(sizeof(SDateTime) == 8);

}  // namespace TarnLibA500
