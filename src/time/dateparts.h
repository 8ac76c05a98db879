#pragma once

#include "tarnlib/sdatetime.h"
#include "time/calendar.h"
#include "time/zoneaccess.h"

/// Date-times taken apart, between the exported types.
namespace TarnLibA500 {

/// The unit under which dates and times report.
inline constexpr const char* kTimeUnit = "stime";
inline constexpr const char* kIsValid = "IsValid()";

struct TimeParts {
    std::int32_t hour;
    std::int32_t minute;
    std::int32_t second;
    std::int32_t millisecond;
};

/// Takes milliseconds since midnight.
constexpr TimeParts SplitTime(std::int32_t milliseconds) {
    // Unsigned: a division by a constant is cheaper then.
    const auto all = static_cast<std::uint32_t>(milliseconds);
    const std::uint32_t seconds = all / 1000;
    const std::uint32_t minutes = seconds / 60;
    return {static_cast<std::int32_t>(minutes / 60), static_cast<std::int32_t>(minutes % 60),
            static_cast<std::int32_t>(seconds % 60), static_cast<std::int32_t>(all % 1000)};
}

constexpr bool IsTime(const TimeParts& parts) {
    return parts.hour >= 0 && parts.hour < 24 && parts.minute >= 0 && parts.minute < 60 &&
           parts.second >= 0 && parts.second < 60 && parts.millisecond >= 0 && parts.millisecond < 1000;
}

/// The parts must be a time.
constexpr std::int32_t MillisecondsOf(const TimeParts& parts) {
    return ((parts.hour * 60 + parts.minute) * 60 + parts.second) * 1000 + parts.millisecond;
}

/// A value as the zone's calendar and clock show it; the value must be valid.
calendar::DayTime LocalOf(const SDateTime& value, const STimeZone& zone) noexcept;

/// From local parts that exist.
SDateTime FromLocal(calendar::DayTime local, const STimeZone& zone) noexcept;
/// The same from parts that may not: the invalid value then, and a time that does not exist is reported.
SDateTime FromLocalParts(const calendar::YearMonthDay& date, const TimeParts& time, const STimeZone& zone);

/// A day number some days on; the invalid one when 32 bits do not hold it, or for an invalid one.
std::int32_t AddDays(std::int32_t day, std::int64_t days) noexcept;

}  // namespace TarnLibA500
