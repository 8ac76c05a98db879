#pragma once

#include <string_view>

/// The names of months and days in the calling thread's locale, in UTF-16: what becomes of them in narrow text depends on
/// its page, which the process may change.
namespace TarnLibA500 {

enum class DateNames { LongMonths, ShortMonths, LongDays, ShortDays };

/// Room for any name, with its terminator.
constexpr int kDateNameUnits = 80;

/// A name by its number: months from 1 on, days of the week from 0 (Sunday) on. Empty for a number out of range, and when
/// the system has none. The text stands in the room, or in memory that stays.
std::wstring_view DateName(DateNames names, int number, wchar_t (&room)[kDateNameUnits]);

}  // namespace TarnLibA500
