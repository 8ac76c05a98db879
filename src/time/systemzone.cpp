#include "time/systemzone.h"

#include <algorithm>

#include "seam/osclock.h"

namespace TarnLibA500::systemzone {
namespace {

constexpr std::int32_t kMillisecondsPerMinute = 60'000;
constexpr std::int32_t kFirstYear = 1601;
constexpr std::int32_t kLastYear = 30827;
constexpr std::uint64_t kKeepMilliseconds = 1000;

std::int64_t InstantOfSwitch(const SYSTEMTIME& date, std::int32_t year) noexcept {
    const std::int32_t minutes = date.wHour * 60 + date.wMinute;
    const std::int32_t milliseconds =
        minutes * kMillisecondsPerMinute + date.wSecond * 1000 + date.wMilliseconds;
    return calendar::Instant({DayOfSwitch(date, year), milliseconds});
}

// A date with a year happens once, one without it every year.
bool IsOfYear(const SYSTEMTIME& date, std::int32_t year) noexcept {
    return date.wYear == 0 || date.wYear == year;
}

ZoneYear Make(const TIME_ZONE_INFORMATION& zone, std::int32_t year) noexcept {
    ZoneYear made;
    made.standard = static_cast<std::int32_t>(zone.Bias) * kMillisecondsPerMinute;
    // A zone without daylight saving may have a DaylightBias all the same; the dates tell.
    if (zone.StandardDate.wMonth == 0 || zone.DaylightDate.wMonth == 0) return made;
    const std::int32_t bias = made.standard;
    made.standard += static_cast<std::int32_t>(zone.StandardBias) * kMillisecondsPerMinute;
    if (!IsOfYear(zone.DaylightDate, year) || !IsOfYear(zone.StandardDate, year)) return made;
    made.daylight = bias + static_cast<std::int32_t>(zone.DaylightBias) * kMillisecondsPerMinute;
    made.start = InstantOfSwitch(zone.DaylightDate, year) + made.standard;
    made.end = InstantOfSwitch(zone.StandardDate, year) + made.daylight;
    return made;
}

// One year's answer. Nobody ever waits for the lock: at the end of the process a thread may have died with
// it.
struct Slot {
    SRWLOCK lock = SRWLOCK_INIT;
    std::int32_t year = 0;
    std::uint64_t expires = 0;
    ZoneYear zone;
};
constexpr std::uint32_t kSlots = 64;  // a lifetime of years: reading one takes half a millisecond
constinit Slot slots[kSlots];

bool Recall(Slot& slot, std::int32_t year, std::uint64_t now, ZoneYear& zone) noexcept {
    if (!TryAcquireSRWLockShared(&slot.lock)) return false;
    const bool known = slot.year == year && now < slot.expires;
    if (known) zone = slot.zone;
    ReleaseSRWLockShared(&slot.lock);
    return known;
}

void Keep(Slot& slot, std::int32_t year, std::uint64_t now, const ZoneYear& zone) noexcept {
    if (!TryAcquireSRWLockExclusive(&slot.lock)) return;
    slot.year = year;
    slot.expires = now + kKeepMilliseconds;
    slot.zone = zone;
    ReleaseSRWLockExclusive(&slot.lock);
}

}  // namespace

bool Read(std::int32_t year, TIME_ZONE_INFORMATION& zone) noexcept {
    return oszone::Read(static_cast<unsigned short>(std::clamp(year, kFirstYear, kLastYear)), zone);
}

std::int32_t DayOfSwitch(const SYSTEMTIME& date, std::int32_t year) noexcept {
    const std::int32_t month = std::clamp<std::int32_t>(date.wMonth, 1, calendar::kMonthsPerYear);
    if (date.wYear != 0) return calendar::DayNumber(year, month, date.wDay);
    return DayOfRule(year, month, std::clamp<std::int32_t>(date.wDay, 1, 5), date.wDayOfWeek);
}

ZoneYear OfYear(std::int32_t year) noexcept {
    Slot& slot = slots[static_cast<std::uint32_t>(year) % kSlots];
    const std::uint64_t now = osclock::Tick();
    ZoneYear zone;
    if (Recall(slot, year, now, zone)) return zone;
    TIME_ZONE_INFORMATION information;
    if (Read(year, information)) zone = Make(information, year);
    Keep(slot, year, now, zone);
    return zone;
}

}  // namespace TarnLibA500::systemzone
