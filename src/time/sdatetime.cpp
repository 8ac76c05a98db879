#include <windows.h>
// After it: this header takes a macro of its away.
#include "tarnlib/sdatetime.h"

#include <cmath>
#include <ctime>
#include <limits>

#include "diag/assert/require.h"
#include "tarnlib/sdatetimeconv.h"
#include "time/dateparts.h"
#include "time/datepattern.h"

namespace TarnLibA500 {
namespace {

constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int32_t kOleDayZero = 2'415'018;  // 1899-12-30
constexpr double kOleLimit = 2e9;                // days; keeps the conversion to an integer defined

bool RequireDateTime(const SDateTime& value, int line = __builtin_LINE()) {
    return Require(value.IsValid(), kTimeUnit, kIsValid, line);
}

SDateTime Make(calendar::DayTime utc) noexcept {
    return {SDate::FromDayNumber(utc.day), STime::FromMilliseconds(utc.milliseconds)};
}

// What a clock in the zone shows; all zeros, reported, for an invalid value.
TimeParts ClockOf(const SDateTime& value, const STimeZone& zone) {
    return RequireDateTime(value) ? SplitTime(LocalOf(value, zone).milliseconds) : TimeParts{};
}

calendar::YearMonthDay CalendarOf(const SDateTime& value, const STimeZone& zone) {
    return RequireDateTime(value) ? calendar::Split(LocalOf(value, zone).day) : calendar::YearMonthDay{};
}

// Half a value cannot be shifted into a zone as a whole: a date alone stays as it is, a time alone is shown
// as STime shows it.
ShownTime ShownIn(const SDateTime& value, const SDate& date, const STime& time, const STimeZone& zone) {
    if (value.IsValid()) return {true, true, LocalOf(value, zone)};
    if (!time.IsValid()) return {date.IsValid(), false, {date.GetDayNumber(), 0}};
    unsigned char hour = 0;
    unsigned char minute = 0;
    unsigned char second = 0;
    time.GetHourMinuteSecond(hour, minute, second, zone);
    return {false, true, {0, MillisecondsOf({hour, minute, second, time.GetMillisecond()})}};
}

}  // namespace

// ------------------------------------------------------------------------------------------- between zones

std::int32_t AddDays(std::int32_t day, std::int64_t days) noexcept {
    std::int64_t sum = 0;
    const bool tooFar = __builtin_add_overflow(static_cast<std::int64_t>(day), days, &sum) ||
                        sum > std::numeric_limits<std::int32_t>::max() || sum < SDate::InvalidDate;
    return day == SDate::InvalidDate || tooFar ? SDate::InvalidDate : static_cast<std::int32_t>(sum);
}

calendar::DayTime LocalOf(const SDateTime& value, const STimeZone& zone) noexcept {
    return ZoneAccess::toLocal(zone, ZoneAccess::utcOf(value));
}

SDateTime FromLocal(calendar::DayTime local, const STimeZone& zone) noexcept {
    if (local.day == SDate::InvalidDate) return {};
    return Make(ZoneAccess::toUniversal(zone, local));
}

SDateTime FromLocalParts(const calendar::YearMonthDay& date, const TimeParts& time, const STimeZone& zone) {
    const bool isTime = Require(IsTime(time), kTimeUnit, "false");
    if (!isTime || !calendar::IsDate(date.year, date.month, date.day)) return {};
    const std::int32_t day = calendar::DayNumber(date.year, date.month, date.day);
    return FromLocal({day, MillisecondsOf(time)}, zone);
}

// ------------------------------------------------------------------------------------------- construction

SDateTime::SDateTime(short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, unsigned char second, unsigned short millisecond,
                     const STimeZone& zone)
    : SDateTime(FromLocalParts({year, month, day}, {hour, minute, second, millisecond}, zone)) {}

SDateTime::SDateTime(long long time, const STimeZone& /*zone*/) {
    if (!Require(time != -1, kTimeUnit, "time_t is invalid")) return;
    const std::int64_t days = calendar::FloorDivide<std::int64_t>(time, kSecondsPerDay);
    date_ = SDate::FromDayNumber(AddDays(calendar::kFirstOf1970, days));
    if (!date_.IsValid()) return;
    time_ = STime::FromMilliseconds(static_cast<std::int32_t>(time - days * kSecondsPerDay) * 1000);
}

SDateTime::SDateTime(double oleDate, const STimeZone& zone) {
    const bool inRange = oleDate > -kOleLimit && oleDate < kOleLimit;
    if (!Require(inRange, kTimeUnit, "false")) return;
    const double days = std::trunc(oleDate);
    const double part = std::fabs(oleDate - days) * calendar::kMillisecondsPerDay;
    calendar::DayTime local{AddDays(kOleDayZero, static_cast<std::int64_t>(days)), 0};
    local = ZoneAccess::add(local, static_cast<std::int32_t>(std::lround(part)));
    *this = FromLocal(local, zone);
}

SDateTime::SDateTime(const SYSTEMTIME* parts, const STimeZone& zone) {
    if (!Require(parts != nullptr, kTimeUnit, "pSystemTime != NULL")) return;
    if (parts->wYear > std::numeric_limits<short>::max()) return;
    *this = FromLocalParts({parts->wYear, parts->wMonth, parts->wDay},
                           {parts->wHour, parts->wMinute, parts->wSecond, parts->wMilliseconds}, zone);
}

SDateTime::SDateTime(const struct tm* parts, const STimeZone& zone) {
    constexpr int kBaseYear = 1900;
    if (!Require(parts != nullptr, kTimeUnit, "pTm != NULL")) return;
    constexpr int kLast = std::numeric_limits<short>::max() - kBaseYear;
    constexpr int kFirst = std::numeric_limits<short>::min() - kBaseYear;
    if (parts->tm_year > kLast || parts->tm_year < kFirst || parts->tm_mon < 0 || parts->tm_mon > 11) return;
    *this = FromLocalParts({parts->tm_year + kBaseYear, parts->tm_mon + 1, parts->tm_mday},
                           {parts->tm_hour, parts->tm_min, parts->tm_sec, 0}, zone);
}

SDateTime SDateTime::GetCurrentDateTime() {
    return Make(ZoneAccess::present());
}

// ------------------------------------------------------------------------------------------- reading

SDate SDateTime::GetDate(const STimeZone& zone) const {
    if (!RequireDateTime(*this)) return {};
    return SDate::FromDayNumber(LocalOf(*this, zone).day);
}

STime SDateTime::GetTime() const {
    return RequireDateTime(*this) ? time_ : STime();
}

void SDateTime::GetDateTime(short& year, unsigned char& month, unsigned char& day, unsigned char& hour,
                            unsigned char& minute, unsigned char& second, unsigned short& millisecond,
                            const STimeZone& zone) const {
    calendar::YearMonthDay date{};
    TimeParts time{};
    if (RequireDateTime(*this)) {
        const calendar::DayTime local = LocalOf(*this, zone);
        date = calendar::Split(local.day);
        time = SplitTime(local.milliseconds);
    }
    year = static_cast<short>(date.year);
    month = static_cast<unsigned char>(date.month);
    day = static_cast<unsigned char>(date.day);
    hour = static_cast<unsigned char>(time.hour);
    minute = static_cast<unsigned char>(time.minute);
    second = static_cast<unsigned char>(time.second);
    millisecond = static_cast<unsigned short>(time.millisecond);
}

short SDateTime::GetYear(const STimeZone& zone) const {
    return static_cast<short>(CalendarOf(*this, zone).year);
}

unsigned char SDateTime::GetMonth(const STimeZone& zone) const {
    return static_cast<unsigned char>(CalendarOf(*this, zone).month);
}

unsigned char SDateTime::GetDay(const STimeZone& zone) const {
    return static_cast<unsigned char>(CalendarOf(*this, zone).day);
}

unsigned char SDateTime::GetDayOfWeek(const STimeZone& zone) const {
    if (!RequireDateTime(*this)) return 0;
    return static_cast<unsigned char>(calendar::DayOfWeek(LocalOf(*this, zone).day));
}

unsigned char SDateTime::GetHour(const STimeZone& zone) const {
    return static_cast<unsigned char>(ClockOf(*this, zone).hour);
}

unsigned char SDateTime::GetMinute(const STimeZone& zone) const {
    return static_cast<unsigned char>(ClockOf(*this, zone).minute);
}

unsigned char SDateTime::GetSecond() const {
    return static_cast<unsigned char>(ClockOf(*this, STimeZone::TZ_UTC()).second);
}

unsigned short SDateTime::GetMillisecond() const {
    return static_cast<unsigned short>(ClockOf(*this, STimeZone::TZ_UTC()).millisecond);
}

long long SDateTime::GetTimeT(const STimeZone& zone) const {
    if (!Require(&zone == &STimeZone::TZ_Local(), kTimeUnit, "&tZone == &STimeZone::TZ_Local()")) return 0;
    return RequireDateTime(*this) ? sicSDateTimeToTime_t(this, zone) : 0;
}

double SDateTime::GetOleDate(const STimeZone& zone) const {
    if (!RequireDateTime(*this)) return 0;
    const calendar::DayTime local = LocalOf(*this, zone);
    const double days = static_cast<double>(local.day) - kOleDayZero;
    const double part = static_cast<double>(local.milliseconds) / calendar::kMillisecondsPerDay;
    return days < 0 ? days - part : days + part;
}

bool SDateTime::GetSYSTEMTIME(SYSTEMTIME* parts, const STimeZone& zone) const {
    if (!Require(parts != nullptr, kTimeUnit, "pSystemTime != NULL")) return false;
    *parts = SYSTEMTIME{};
    if (!RequireDateTime(*this)) return false;
    const calendar::DayTime local = LocalOf(*this, zone);
    const calendar::YearMonthDay date = calendar::Split(local.day);
    if (date.year < 1 || date.year > std::numeric_limits<WORD>::max()) return false;
    const TimeParts time = SplitTime(local.milliseconds);
    *parts = {static_cast<WORD>(date.year),
              static_cast<WORD>(date.month),
              static_cast<WORD>(calendar::DayOfWeek(local.day)),
              static_cast<WORD>(date.day),
              static_cast<WORD>(time.hour),
              static_cast<WORD>(time.minute),
              static_cast<WORD>(time.second),
              static_cast<WORD>(time.millisecond)};
    return true;
}

SAnsiString SDateTime::Format(const char* pattern, const STimeZone& zone) const {
    return RenderPattern(pattern, ShownIn(*this, date_, time_, zone));
}

int SDateTime::Format(char* out, std::uint32_t nBytes, const char* pattern, const STimeZone& zone) const {
    return RenderPattern(pattern, ShownIn(*this, date_, time_, zone), out, nBytes);
}

// ------------------------------------------------------------------------------------------- arithmetic

SDateTime& SDateTime::operator+=(const STimeSpan& span) noexcept {
    if (!IsValid()) return *this;
    const std::int64_t added = span.GetTotalMilliseconds();
    const std::int64_t days = added / calendar::kMillisecondsPerDay;
    const auto part = static_cast<std::int32_t>(added - days * calendar::kMillisecondsPerDay);
    const calendar::DayTime moved{AddDays(date_.GetDayNumber(), days), time_.milliseconds_};
    return *this = moved.day == SDate::InvalidDate ? SDateTime() : Make(ZoneAccess::add(moved, part));
}

SDateTime& SDateTime::operator-=(const STimeSpan& span) noexcept {
    return *this += STimeSpan() - span;
}

STimeSpan SDateTime::operator-(const SDateTime& other) const {
    if (!RequireDateTime(*this) || !RequireDateTime(other)) return {};
    return STimeSpan::FromMilliseconds(calendar::Instant(ZoneAccess::utcOf(*this)) -
                                       calendar::Instant(ZoneAccess::utcOf(other)));
}

}  // namespace TarnLibA500
