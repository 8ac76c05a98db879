#include "tarnlib/sdatetimestring.h"

#include <algorithm>

#include <windows.h>

#include "tarnlib/slocale.h"
#include "time/calendar.h"
#include "time/datenames.h"

namespace TarnLibA500 {
namespace {

constexpr int kMarkerUnits = 40;
// The years that the system formats.
constexpr std::int32_t kFirstYear = 1601;
constexpr std::int32_t kLastYear = 9999;

SAnsiString FromWide(std::wstring_view text) {
    SAnsiString narrow;
    if (!text.empty()) narrow.fromWChar(text.data(), static_cast<std::uint32_t>(text.size()));
    return narrow;
}

// What the system has written; it counts the terminator, and nothing when it fails.
SAnsiString FromSystem(const wchar_t* text, int count) {
    return FromWide({text, static_cast<std::size_t>(std::max(count - 1, 0))});
}

SAnsiString NarrowName(DateNames names, int number) {
    wchar_t room[kDateNameUnits];
    return FromWide(DateName(names, number, room));
}

SAnsiString Marker(bool morning, const wchar_t* pattern) {
    const SYSTEMTIME time = {0, 0, 0, 0, static_cast<WORD>(morning ? 1 : 13), 0, 0, 0};
    wchar_t name[kMarkerUnits];
    const LCID locale = SLocale::GetCurrentThreadLocale();
    return FromSystem(name, GetTimeFormatW(locale, 0, &time, pattern, name, kMarkerUnits));
}

}  // namespace

SAnsiString SDateTimeString::GetLongMonth(int month) {
    return NarrowName(DateNames::LongMonths, month);
}

SAnsiString SDateTimeString::GetShortMonth(int month) {
    return NarrowName(DateNames::ShortMonths, month);
}

SAnsiString SDateTimeString::GetLongDay(int day) {
    return NarrowName(DateNames::LongDays, day);
}

SAnsiString SDateTimeString::GetShortDay(int day) {
    return NarrowName(DateNames::ShortDays, day);
}

SAnsiString SDateTimeString::GetLongAM(bool morning) {
    return Marker(morning, L"tt");
}

SAnsiString SDateTimeString::GetShortAM(bool morning) {
    return Marker(morning, L"t");
}

SAnsiString SDateTimeString::GetEra(const SDate& date) {
    if (!date.IsValid()) return SAnsiString();
    const calendar::YearMonthDay parts = calendar::Split(date.GetDayNumber());
    if (parts.year < 1) return SAnsiString();
    const auto year = static_cast<WORD>(std::clamp(parts.year, kFirstYear, kLastYear));
    // February 29 need not exist in the year that stands for another.
    const bool exact = year == parts.year;
    const auto month = static_cast<WORD>(exact ? parts.month : 1);
    const auto day = static_cast<WORD>(exact ? parts.day : 1);
    const SYSTEMTIME shown = {year, month, 0, day, 0, 0, 0, 0};
    wchar_t name[kDateNameUnits];
    // One letter: some systems write the name once for every letter.
    const LCID locale = SLocale::GetCurrentThreadLocale();
    return FromSystem(name, GetDateFormatW(locale, 0, &shown, L"g", name, kDateNameUnits));
}

}  // namespace TarnLibA500
