#pragma once

#include <cstdint>

/// The calendar: day numbers from years, months and days, and back. Integers throughout: the formulas are
/// mostly known with fractions such as 30.6001 and 365.25, and give the same here for every 32-bit day
/// number.
namespace TarnLibA500::calendar {

constexpr std::int32_t kMillisecondsPerDay = 86'400'000;
constexpr std::int32_t kDaysPerWeek = 7;
constexpr std::int32_t kMonthsPerYear = 12;
constexpr std::int32_t kFirstOf1601 = 2'305'813;
constexpr std::int32_t kFirstOf1970 = 2'440'587;

struct YearMonthDay {
    std::int32_t year;
    std::int32_t month;
    std::int32_t day;
};

/// A day number and milliseconds since its midnight, in whichever zone the context says.
struct DayTime {
    std::int32_t day;
    std::int32_t milliseconds;
};

/// Divides towards minus infinity, by a positive number.
template <class Integer>
constexpr Integer FloorDivide(Integer value, Integer by) {
    return value / by - (value % by < 0 ? 1 : 0);
}
/// What is left then, which is never negative.
template <class Integer>
constexpr Integer FloorModulo(Integer value, Integer by) {
    const Integer rest = value % by;
    return rest < 0 ? rest + by : rest;
}

/// Asks the number of the year as it is, also before year 1: -4 and -8 are leap years, -1 and -5 are not.
/// Together with the divisions of DayNumber and the 1158 of Split, which truncate towards zero, this makes
/// both directions agree down to -4716-03-01. It is not what astronomers do, and must stay so: day numbers
/// are stored.
constexpr bool IsLeapYear(std::int32_t year) {
    if (year % 4 != 0) return false;
    return year < 1582 || year % 100 != 0 || year % 400 == 0;
}

/// The month must be 1 to 12.
constexpr std::int32_t DaysOfMonth(std::int32_t year, std::int32_t month) {
    if (month == 2) return IsLeapYear(year) ? 29 : 28;
    return 30 + ((month + (month >> 3)) & 1);  // 31 and 30 take turns, and begin anew in August
}

constexpr bool IsDate(std::int32_t year, std::int32_t month, std::int32_t day) {
    return month >= 1 && month <= kMonthsPerYear && day >= 1 && day <= DaysOfMonth(year, month);
}

/// Takes years in 16 bits.
constexpr std::int32_t DayNumber(std::int32_t year, std::int32_t month, std::int32_t day) {
    constexpr std::int32_t kFirstGregorian = 1582'10'15;
    std::int32_t y = year < 0 ? year + 1 : year;
    std::int32_t m = month;
    if (m < 3) {
        y -= 1;
        m += kMonthsPerYear;
    }
    const bool gregorian = y * 10'000 + m * 100 + day >= kFirstGregorian;
    const std::int32_t correction = gregorian ? (y / 100) / 4 - y / 100 + 2 : 0;
    return y / 4 + day + 365 * y + (m + 1) * 306'001 / 10'000 + correction + 1'720'994;
}

namespace detail {

/// Integer must hold 20 times the day number.
template <class Integer>
constexpr YearMonthDay Split(Integer number) {
    constexpr Integer kFirstGregorian = 2'299'161;
    constexpr Integer kFirstOfYearOne = 1'721'424;
    Integer a = number + 1;
    if (a >= kFirstGregorian) {
        const Integer centuries = (4 * a - 7'468'865) / 146'097;
        a = number + 2 + centuries - centuries / 4;
    }
    const Integer b = a + (a < kFirstOfYearOne ? 1158 : 1524);
    const Integer c = (20 * b - 2442) / 7305;
    const auto inYear = static_cast<std::int32_t>(b - c * 1461 / 4);
    const std::int32_t e = inYear * 10'000 / 306'001;
    const std::int32_t month = e < 14 ? e - 1 : e - 13;
    const auto year = static_cast<std::int32_t>(c - (month > 2 ? 4716 : 4715));
    return {year, month, inYear - e * 306'001 / 10'000};
}

}  // namespace detail

/// The date with a day number. Before -4716-03-01 (-1036) the parts are no date, and do not lead back.
constexpr YearMonthDay Split(std::int32_t number) {
    // Every year of 16 bits is inside; 64-bit arithmetic is slow here.
    constexpr std::int32_t kNear = 100'000'000;
    if (number > -kNear && number < kNear) return detail::Split<std::int32_t>(number);
    return detail::Split<std::int64_t>(number);
}

/// 0 is Sunday.
constexpr std::int32_t DayOfWeek(std::int32_t number) {
    return (FloorModulo(number, kDaysPerWeek) + 2) % kDaysPerWeek;
}

/// Milliseconds since the midnight of day number 0.
constexpr std::int64_t Instant(DayTime value) {
    return static_cast<std::int64_t>(value.day) * kMillisecondsPerDay + value.milliseconds;
}

/// An instant that the system tells in units of 100 ns since 1601. Divides by 32 bits only, which the processor can.
constexpr DayTime DayTimeOf(std::uint64_t units) {
    constexpr std::uint32_t kUnitsPerMillisecond = 10'000;
    constexpr std::uint64_t kUnitsPerDay = std::uint64_t{kMillisecondsPerDay} * kUnitsPerMillisecond;
    constexpr int kPowerOfTwo = 14;  // that a day's units are a multiple of
    const std::uint64_t days =
        (units >> kPowerOfTwo) / static_cast<std::uint32_t>(kUnitsPerDay >> kPowerOfTwo);
    return {kFirstOf1601 + static_cast<std::int32_t>(days),
            static_cast<std::int32_t>((units - days * kUnitsPerDay) / kUnitsPerMillisecond)};
}

}  // namespace TarnLibA500::calendar
