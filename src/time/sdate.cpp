#include "tarnlib/sdate.h"

#include "diag/assert/require.h"
#include "tarnlib/sdatetime.h"
#include "time/calendar.h"
#include "time/dateparts.h"
#include "time/datepattern.h"

namespace TarnLibA500 {
namespace {

constexpr unsigned char kLongestMonth = 31;

bool RequireDate(const SDate& date, int line = __builtin_LINE()) {
    return Require(date.IsValid(), kTimeUnit, kIsValid, line);
}

// October 1582 goes from the 4th to the 15th.
std::int32_t DaysLeftOutBefore(const calendar::YearMonthDay& date) {
    return date.year == 1582 && date.month == 10 && date.day >= 15 ? 10 : 0;
}

}  // namespace

SDate::SDate(short year, unsigned char month, unsigned char day) noexcept : day_(InvalidDate) {
    if (calendar::IsDate(year, month, day)) day_ = YMDToJulian(year, month, day);
}

SDate::SDate(short year, unsigned char month, unsigned char day, bool clamp) noexcept
    : SDate(year, month, day) {
    const bool hasLast = calendar::IsDate(year, month, 1) && day > 0 && day <= kLongestMonth;
    if (IsValid() || !clamp || !hasLast) return;
    *this = SDate(year, month, static_cast<unsigned char>(calendar::DaysOfMonth(year, month)));
}

bool SDate::Set(short year, unsigned char month, unsigned char day) noexcept {
    *this = SDate(year, month, day);
    return IsValid();
}

short SDate::GetYear() const {
    return RequireDate(*this) ? static_cast<short>(calendar::Split(day_).year) : short{0};
}

unsigned char SDate::GetMonth() const {
    return RequireDate(*this) ? static_cast<unsigned char>(calendar::Split(day_).month) : std::uint8_t{0};
}

unsigned char SDate::GetDay() const {
    return RequireDate(*this) ? static_cast<unsigned char>(calendar::Split(day_).day) : std::uint8_t{0};
}

void SDate::GetYearMonthDay(short& year, unsigned char& month, unsigned char& day) const {
    year = 0;
    month = 0;
    day = 0;
    if (RequireDate(*this)) JulianToYMD(day_, year, month, day);
}

unsigned char SDate::GetDayOfWeek() const {
    return RequireDate(*this) ? static_cast<unsigned char>(calendar::DayOfWeek(day_)) : std::uint8_t{0};
}

unsigned char SDate::GetWeekOfMonth(unsigned char firstDay) const {
    if (!RequireDate(*this)) return 0;
    const calendar::YearMonthDay date = calendar::Split(day_);
    const std::int32_t before = date.day - 1;
    const std::int32_t firstOfMonth = calendar::DayOfWeek(day_) - before + DaysLeftOutBefore(date);
    const std::int32_t inWeek = calendar::FloorModulo(firstOfMonth - firstDay, calendar::kDaysPerWeek);
    return static_cast<unsigned char>((before + inWeek) / calendar::kDaysPerWeek + 1);
}

unsigned char SDate::GetNumDaysInCurMonth() const {
    if (!RequireDate(*this)) return 0;
    const calendar::YearMonthDay date = calendar::Split(day_);
    return static_cast<unsigned char>(calendar::DaysOfMonth(date.year, date.month));
}

SAnsiString SDate::Format(const char* pattern) const {
    return RenderPattern(pattern, {IsValid(), false, {day_, 0}});
}

SDate SDate::GetCurrentDate(const STimeZone& zone) {
    return SDateTime::GetCurrentDateTime().GetDate(zone);
}

SDate& SDate::operator+=(const STimeSpan& span) noexcept {
    day_ = AddDays(day_, span.GetTotalMilliseconds() / calendar::kMillisecondsPerDay);
    return *this;
}

SDate& SDate::operator-=(const STimeSpan& span) noexcept {
    day_ = AddDays(day_, -(span.GetTotalMilliseconds() / calendar::kMillisecondsPerDay));
    return *this;
}

STimeSpan SDate::operator-(const SDate& other) const {
    if (!RequireDate(*this) || !RequireDate(other)) return {};
    const std::int64_t days = static_cast<std::int64_t>(day_) - other.day_;
    return STimeSpan::FromMilliseconds(days * calendar::kMillisecondsPerDay);
}

std::int32_t SDate::YMDToJulian(short year, unsigned char month, unsigned char day) noexcept {
    return calendar::DayNumber(year, month, day);
}

void SDate::JulianToYMD(std::int32_t number, short& year, unsigned char& month, unsigned char& day) noexcept {
    const calendar::YearMonthDay date = calendar::Split(number);
    year = static_cast<short>(date.year);
    month = static_cast<unsigned char>(date.month);
    day = static_cast<unsigned char>(date.day);
}

}  // namespace TarnLibA500
