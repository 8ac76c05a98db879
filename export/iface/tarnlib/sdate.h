#pragma once

#include <compare>
#include <cstdint>
#include <limits>

#include "tarnlib/sstring.h"
#include "tarnlib/stimespan.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

class STimeZone;

/// A calendar date: one signed 32-bit day number.
///
/// The number is the astronomical Julian day number minus one, so 2000-01-01 is 2451544. Dates up to
/// 1582-10-04 are Julian, from 1582-10-15 on Gregorian. There is no year 0: year -1 comes before year 1. A
/// plain value of 4 bytes, without a zone, to be copied freely; different objects may be used by different
/// threads. Nothing throws: a date that does not exist is the invalid date, and reading that is reported by
/// assertion (unit "stime") and gives 0.
///
///     SDate due(2024, 2, 29);
///     if (!due.IsValid()) ...                            // no such day
///     due += STimeSpan(30, 0, 0, 0, 0);                  // 2024-03-30
///     due.GetDayOfWeek();                                // 6, Saturday
///     SAnsiString text = due.Format("d MMM yyyy");       // "30 Mar 2024"
///     long days = (due - SDate::GetCurrentDate(STimeZone::TZ_Local())).GetDays();
class SDate {
  public:
    /// The day number of the invalid date.
    static constexpr std::int32_t InvalidDate = std::numeric_limits<std::int32_t>::min();

    /// The invalid date.
    constexpr SDate() noexcept : day_(InvalidDate) {}
    /// The date, or the invalid one when the month is not 1 to 12 or the day not in the month. Before 1582
    /// every year whose number 4 divides is a leap year, year -4 as well as year 4. Two deliberate oddities
    /// that stored day numbers rely on: year 0 is not refused and stands for year -1, and the days that
    /// October 1582 leaves out (5 to 14) are read back ten days later. Dates before -4716-03-01 are numbered,
    /// but do not read back.
    TARN_API SDate(short year, unsigned char month, unsigned char day) noexcept;
    /// With "clamp" a day up to 31 that the month does not have becomes the month's last day.
    TARN_API SDate(short year, unsigned char month, unsigned char day, bool clamp) noexcept;
    /// The date with a day number; InvalidDate gives the invalid date.
    static constexpr SDate FromDayNumber(std::int32_t day) noexcept {
        SDate date;
        date.day_ = day;
        return date;
    }
    /// Constructs the date anew; false when it is the invalid one now.
    TARN_API bool Set(short year, unsigned char month, unsigned char day) noexcept;

    /// False for the invalid date.
    constexpr bool IsValid() const noexcept { return day_ != InvalidDate; }
    /// The day number; InvalidDate for the invalid date, without a report.
    constexpr std::int32_t GetDayNumber() const noexcept { return day_; }

    /// The year, up to 32767; arithmetic can lead beyond, and the year is then cut to 16 bits.
    TARN_API short GetYear() const;
    /// The month, 1 to 12.
    TARN_API unsigned char GetMonth() const;
    /// The day of the month, 1 to 31.
    TARN_API unsigned char GetDay() const;
    /// Year, month and day at once; three zeros for the invalid date.
    TARN_API void GetYearMonthDay(short& year, unsigned char& month, unsigned char& day) const;
    /// 0 is Sunday, 6 Saturday.
    TARN_API unsigned char GetDayOfWeek() const;
    /// The week of the month, 1 to 6, when weeks begin on the given day (0 is Sunday).
    TARN_API unsigned char GetWeekOfMonth(unsigned char firstDay) const;
    /// The length of the date's month, 28 to 31. October 1582 counts 31.
    TARN_API unsigned char GetNumDaysInCurMonth() const;
    /// The date by a pattern of letters (see SDateTime::Format); the letters of times render nothing.
    TARN_API SAnsiString Format(const char* pattern) const;

    /// Today, as a clock in the zone shows it.
    TARN_API static SDate GetCurrentDate(const STimeZone& zone);

    /// A span counts by its whole days, truncated towards zero. An invalid date stays invalid, and a sum that
    /// 32 bits do not hold becomes it.
    TARN_API SDate& operator+=(const STimeSpan& span) noexcept;
    /// The same backwards.
    TARN_API SDate& operator-=(const STimeSpan& span) noexcept;
    /// The date a span later, as += makes it.
    SDate operator+(const STimeSpan& span) const noexcept { return SDate(*this) += span; }
    /// The date a span earlier, as -= makes it.
    SDate operator-(const STimeSpan& span) const noexcept { return SDate(*this) -= span; }
    /// The days from the other date to this one; no time, reported by assertion, when one is invalid.
    TARN_API STimeSpan operator-(const SDate& other) const;
    /// Dates compare as day numbers; the invalid date comes before all others.
    constexpr std::strong_ordering operator<=>(const SDate&) const noexcept = default;

  private:
    static std::int32_t YMDToJulian(short year, unsigned char month, unsigned char day) noexcept;
    static void JulianToYMD(std::int32_t number, short& year, unsigned char& month,
                            unsigned char& day) noexcept;

    std::int32_t day_;
};

static_assert(sizeof(SDate) == 4);

}  // namespace TarnLibA500
