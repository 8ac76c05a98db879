#include "time/zoneaccess.h"

#include <algorithm>
#include <limits>

#include "seam/osclock.h"
#include "time/systemzone.h"

namespace TarnLibA500 {
namespace {

constexpr std::int32_t kFirstYear = std::numeric_limits<short>::min();
constexpr std::int32_t kLastYear = std::numeric_limits<short>::max();
constexpr std::int32_t kInvalidDay = std::numeric_limits<std::int32_t>::min();

std::int32_t PresentYear() {
    return calendar::Split(ZoneAccess::present().day).year;
}

}  // namespace

calendar::DayTime ZoneAccess::present() noexcept {
    return calendar::DayTimeOf(static_cast<std::uint64_t>(osclock::Now()));
}

calendar::DayTime ZoneAccess::add(calendar::DayTime value, std::int32_t milliseconds) noexcept {
    value.milliseconds += milliseconds;
    if (value.milliseconds < 0) {
        value.milliseconds += calendar::kMillisecondsPerDay;
        if (value.day != kInvalidDay) --value.day;
    } else if (value.milliseconds >= calendar::kMillisecondsPerDay) {
        value.milliseconds -= calendar::kMillisecondsPerDay;
        value.day = value.day < std::numeric_limits<std::int32_t>::max() ? value.day + 1 : kInvalidDay;
    }
    return value;
}

std::int32_t ZoneAccess::standardOffset(const STimeZone& zone) noexcept {
    if (zone.kind_ == STimeZone::Kind::System) return systemzone::OfYear(PresentYear()).standard;
    return zone.standardMinutes_ * kMillisecondsPerMinute;
}

calendar::DayTime ZoneAccess::utcOf(const SDateTime& value) noexcept {
    return {value.date_.GetDayNumber(), value.time_.milliseconds_};
}

ZoneYear ZoneAccess::ofYear(const STimeZone& zone, std::int32_t anyYear) noexcept {
    // The calendar takes years in 16 bits; far beyond them the rules of another year do.
    const std::int32_t year = std::clamp(anyYear, kFirstYear, kLastYear);
    if (zone.kind_ == STimeZone::Kind::System) return systemzone::OfYear(year);
    ZoneYear rules;
    rules.standard = zone.standardMinutes_ * kMillisecondsPerMinute;
    if (isFixed(zone)) return rules;
    rules.daylight = zone.daylightMinutes_ * kMillisecondsPerMinute;
    const auto clock = [year](const STimeZone::Switch& rule) {
        return calendar::Instant(
            {DayOfRule(year, rule.month, rule.week, rule.day), rule.minute * kMillisecondsPerMinute});
    };
    rules.start = clock(zone.toDaylight_) + rules.standard;
    rules.end = clock(zone.toStandard_) + rules.daylight;
    return rules;
}

// A year's rules hold from New Year to New Year in the zone's standard time.
ZoneYear ZoneAccess::ofInstant(const STimeZone& zone, calendar::DayTime utc) noexcept {
    const std::int32_t year = calendar::Split(utc.day).year;
    const ZoneYear rules = ofYear(zone, year);
    const calendar::DayTime local = add(utc, -rules.standard);
    if (local.day == utc.day) return rules;
    const std::int32_t localYear = calendar::Split(local.day).year;
    return localYear == year ? rules : ofYear(zone, localYear);
}

std::int32_t ZoneAccess::switchingOffsetAt(const STimeZone& zone, calendar::DayTime utc) noexcept {
    const ZoneYear rules = ofInstant(zone, utc);
    return rules.isDaylight(calendar::Instant(utc)) ? rules.daylight : rules.standard;
}

bool ZoneAccess::isDaylightAt(const STimeZone& zone, calendar::DayTime utc) noexcept {
    return !isFixed(zone) && ofInstant(zone, utc).isDaylight(calendar::Instant(utc));
}

calendar::DayTime ZoneAccess::toUniversal(const STimeZone& zone, calendar::DayTime local) noexcept {
    const ZoneYear rules = ofYear(zone, calendar::Split(local.day).year);
    const calendar::DayTime asStandard = add(local, rules.standard);
    if (!rules.hasDaylight()) return asStandard;
    // In the gap only the one reading is in daylight saving time, in the overlap only the other one.
    const calendar::DayTime asDaylight = add(local, rules.daylight);
    return isDaylightAt(zone, asStandard) && isDaylightAt(zone, asDaylight) ? asDaylight : asStandard;
}

}  // namespace TarnLibA500
