#include "tarnlib/sdatetimestring.h"

#include <algorithm>

#include <windows.h>

#include "tarnlib/slocale.h"
#include "time/calendar.h"

namespace TarnLibA500 {
namespace {

constexpr int kMarkerUnits = 40;
constexpr int kNameUnits = 80;
// The names do not depend on the year, and this one begins with a Friday.
constexpr WORD kYearOfNames = 1999;
constexpr WORD kFirstSundayOfNames = 3;
// The years that the system formats.
constexpr std::int32_t kFirstYear = 1601;
constexpr std::int32_t kLastYear = 9999;

SAnsiString FromWide(const wchar_t* text) {
    SAnsiString narrow;
    narrow.fromWChar(text);
    return narrow;
}

SAnsiString DateName(const SYSTEMTIME& date, const wchar_t* pattern) {
    wchar_t name[kNameUnits];
    const LCID locale = SLocale::GetCurrentThreadLocale();
    if (GetDateFormatW(locale, 0, &date, pattern, name, kNameUnits) == 0) return SAnsiString();
    return FromWide(name);
}

SAnsiString MonthName(int month, const wchar_t* pattern) {
    if (month < 1 || month > calendar::kMonthsPerYear) return SAnsiString();
    return DateName({kYearOfNames, static_cast<WORD>(month), 0, 1, 0, 0, 0, 0}, pattern);
}

SAnsiString DayName(int day, const wchar_t* pattern) {
    if (day < 0 || day >= calendar::kDaysPerWeek) return SAnsiString();
    const auto date = static_cast<WORD>(kFirstSundayOfNames + day);
    return DateName({kYearOfNames, 1, static_cast<WORD>(day), date, 0, 0, 0, 0}, pattern);
}

SAnsiString Marker(bool morning, const wchar_t* pattern) {
    const SYSTEMTIME time = {0, 0, 0, 0, static_cast<WORD>(morning ? 1 : 13), 0, 0, 0};
    wchar_t name[kMarkerUnits];
    const LCID locale = SLocale::GetCurrentThreadLocale();
    if (GetTimeFormatW(locale, 0, &time, pattern, name, kMarkerUnits) == 0) return SAnsiString();
    return FromWide(name);
}

}  // namespace

SAnsiString SDateTimeString::GetLongMonth(int month) {
    return MonthName(month, L"MMMM");
}

SAnsiString SDateTimeString::GetShortMonth(int month) {
    return MonthName(month, L"MMM");
}

SAnsiString SDateTimeString::GetLongDay(int day) {
    return DayName(day, L"dddd");
}

SAnsiString SDateTimeString::GetShortDay(int day) {
    return DayName(day, L"ddd");
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
    // One letter: some systems write the name once for every letter.
    return DateName({year, month, 0, day, 0, 0, 0, 0}, L"g");
}

}  // namespace TarnLibA500
