#pragma once

#include <cstdint>

#include "time/calendar.h"

namespace TarnLibA500 {

/// A zone in one year of its own standard time. Offsets are milliseconds, universal time minus local time;
/// instants are milliseconds since the midnight of day number 0, universal time.
struct ZoneYear {
    std::int32_t standard = 0;
    std::int32_t daylight = 0;
    std::int64_t start = 0;  ///< of daylight saving time
    std::int64_t end = 0;    ///< the same as start when there is none; before it when summer is at New Year

    constexpr bool hasDaylight() const { return start != end; }
    constexpr bool isDaylight(std::int64_t instant) const {
        if (start <= end) return start <= instant && instant < end;
        return start <= instant || instant < end;
    }
};

/// The day number of the week-th (5: the last) weekday of a month; 0 is Sunday.
constexpr std::int32_t DayOfRule(std::int32_t year, std::int32_t month, std::int32_t week,
                                 std::int32_t weekday) {
    const std::int32_t first = calendar::DayNumber(year, month, 1);
    const std::int32_t ahead = weekday + calendar::kDaysPerWeek - calendar::DayOfWeek(first);
    std::int32_t day = ahead % calendar::kDaysPerWeek + (week - 1) * calendar::kDaysPerWeek;
    if (day >= calendar::DaysOfMonth(year, month)) day -= calendar::kDaysPerWeek;
    return first + day;
}

}  // namespace TarnLibA500
