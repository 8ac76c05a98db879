#include "tarnlib/sdatetimeconv.h"

#include <ctime>

#include <windows.h>

#include "diag/assert/require.h"
#include "time/dateparts.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kTmUnit = "sic_sdatetime_tm";
constexpr const char* kDateUnit = "sic_sdatetime_date";
constexpr const char* kSystemTimeUnit = "sic_sdatetime_systemtime";

bool RequireValue(const SDateTime* value, const char* unit, int line = __builtin_LINE()) {
    return Require(value != nullptr && value->IsValid(), unit, "Input SDateTime value is NULL or not valid",
                   line);
}

}  // namespace

// ------------------------------------------------------------------------------------------- the runtime

struct tm sicSDateTimeToTm(const SDateTime* value) {
    return sicSDateTimeToTm(value, STimeZone::TZ_UTC());
}

struct tm sicSDateTimeToTm(const SDateTime* value, const STimeZone& zone) {
    constexpr int kBaseYear = 1900;
    struct tm parts = {};
    if (!RequireValue(value, kTmUnit)) return parts;
    const calendar::DayTime local = LocalOf(*value, zone);
    const calendar::YearMonthDay date = calendar::Split(local.day);
    const TimeParts time = SplitTime(local.milliseconds);
    parts.tm_year = date.year - kBaseYear;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    parts.tm_wday = calendar::DayOfWeek(local.day);
    const auto year = static_cast<short>(date.year);
    // Beyond 16 bits there is no first of January to count from.
    if (year == date.year) parts.tm_yday = local.day - SDate(year, 1, 1).GetDayNumber();
    parts.tm_isdst = zone.InDST(*value) ? 1 : 0;
    return parts;
}

long long sicSDateTimeToTime_t(const SDateTime* value, const STimeZone& zone) {
    if (!RequireValue(value, kTmUnit)) return 0;
    // With the flag as it is: left to itself the runtime takes today's rules of its zone for all years.
    struct tm parts = sicSDateTimeToTm(value, zone);
    return _mktime64(&parts);
}

SDateTime sicTime_tToSDateTime(long long time, const STimeZone& zone) {
    return {time, zone};
}

SDateTime sicTmToSDateTime(const struct tm* parts, const STimeZone& zone) {
    return {parts, zone};
}

// ------------------------------------------------------------------------------------------- the system

double sicSDateTimeToDATE(const SDateTime* value, const STimeZone& zone) {
    return RequireValue(value, kDateUnit) ? value->GetOleDate(zone) : 0.0;
}

SDateTime sicDATEToSDateTime(double oleDate, const STimeZone& zone) {
    return {oleDate, zone};
}

SYSTEMTIME sicSDateTimeToSYSTEMTIME(const SDateTime* value, const STimeZone& zone) {
    SYSTEMTIME parts = {};
    if (RequireValue(value, kSystemTimeUnit)) value->GetSYSTEMTIME(&parts, zone);
    return parts;
}

SDateTime sicSYSTEMTIMEToSDateTime(const SYSTEMTIME* parts, const STimeZone& zone) {
    return {parts, zone};
}

}  // namespace TarnLibA500
