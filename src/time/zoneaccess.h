#pragma once

#include "tarnlib/sdatetime.h"
#include "time/calendar.h"
#include "time/zoneyear.h"

namespace TarnLibA500 {

/// What dates and times ask a zone. Offsets are milliseconds, universal time minus local time, below a day.
struct ZoneAccess {
    /// The present year's, for the zone of the system.
    static std::int32_t standardOffset(const STimeZone& zone) noexcept;
    /// What is in force at an instant.
    static std::int32_t offsetAt(const STimeZone& zone, calendar::DayTime utc) noexcept {
        return isFixed(zone) ? zone.standardMinutes_ * kMillisecondsPerMinute : switchingOffsetAt(zone, utc);
    }
    static bool isDaylightAt(const STimeZone& zone, calendar::DayTime utc) noexcept;

    static calendar::DayTime toLocal(const STimeZone& zone, calendar::DayTime utc) noexcept {
        return add(utc, -offsetAt(zone, utc));
    }
    /// A local time that is skipped counts as standard time, and so does one that comes twice.
    static calendar::DayTime toUniversal(const STimeZone& zone, calendar::DayTime local) noexcept;

    /// The value as it is kept, also when it is invalid.
    static calendar::DayTime utcOf(const SDateTime& value) noexcept;

    /// What the system's clock shows, in universal time.
    static calendar::DayTime present() noexcept;

    /// Adds up to a day. A day number that 32 bits do not hold becomes the invalid one.
    static calendar::DayTime add(calendar::DayTime value, std::int32_t milliseconds) noexcept;

    static constexpr STimeZone makeUniversal() noexcept { return STimeZone(STimeZone::Kind::Fixed); }
    static constexpr STimeZone makeSystem() noexcept { return STimeZone(STimeZone::Kind::System); }

  private:
    static constexpr std::int32_t kMillisecondsPerMinute = 60'000;

    static bool isFixed(const STimeZone& zone) noexcept { return zone.kind_ == STimeZone::Kind::Fixed; }
    static ZoneYear ofYear(const STimeZone& zone, std::int32_t anyYear) noexcept;
    static ZoneYear ofInstant(const STimeZone& zone, calendar::DayTime utc) noexcept;
    static std::int32_t switchingOffsetAt(const STimeZone& zone, calendar::DayTime utc) noexcept;
};

}  // namespace TarnLibA500
