#pragma once

#include "time/oszone.h"
#include "time/zoneyear.h"

/// The zone of the system, year by year, as it is set at present.
namespace TarnLibA500::systemzone {

/// What the system says of a year; years that it does not know count as the nearest one that it does.
bool Read(std::int32_t year, TIME_ZONE_INFORMATION& zone) noexcept;

/// The same in a form that is quick to ask. An answer is kept for a second at most. Universal time when the
/// system has none.
ZoneYear OfYear(std::int32_t year) noexcept;

/// The day of a switch in a year; the date must have a month, and that year if it has one.
std::int32_t DayOfSwitch(const SYSTEMTIME& date, std::int32_t year) noexcept;

}  // namespace TarnLibA500::systemzone
