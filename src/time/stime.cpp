#include "tarnlib/stime.h"

#include "diag/assert/require.h"
#include "time/dateparts.h"
#include "time/datepattern.h"

namespace TarnLibA500 {
namespace {

bool RequireTime(const STime& time, int line = __builtin_LINE()) {
    return Require(time.IsValid(), kTimeUnit, kIsValid, line);
}

std::int32_t Wrap(std::int32_t milliseconds) {
    return calendar::FloorModulo(milliseconds, calendar::kMillisecondsPerDay);
}

// What a clock in the zone shows; the time must be valid.
TimeParts Shown(std::int32_t milliseconds, const STimeZone& zone) {
    return SplitTime(Wrap(milliseconds - ZoneAccess::standardOffset(zone)));
}

}  // namespace

STime::STime(unsigned char hour, unsigned char minute, unsigned char second, unsigned short millisecond,
             const STimeZone& zone)
    : milliseconds_(InvalidTime) {
    const TimeParts parts{hour, minute, second, millisecond};
    if (!Require(IsTime(parts), kTimeUnit, "false")) return;
    milliseconds_ = Wrap(MillisecondsOf(parts) + ZoneAccess::standardOffset(zone));
}

bool STime::Set(unsigned char hour, unsigned char minute, unsigned char second, unsigned short millisecond,
                const STimeZone& zone) {
    *this = STime(hour, minute, second, millisecond, zone);
    return IsValid();
}

unsigned char STime::GetHour(const STimeZone& zone) const {
    if (!RequireTime(*this)) return 0;
    return static_cast<unsigned char>(Shown(milliseconds_, zone).hour);
}

unsigned char STime::GetMinute(const STimeZone& zone) const {
    if (!RequireTime(*this)) return 0;
    return static_cast<unsigned char>(Shown(milliseconds_, zone).minute);
}

unsigned char STime::GetSecond() const {
    return RequireTime(*this) ? static_cast<unsigned char>(SplitTime(milliseconds_).second) : std::uint8_t{0};
}

unsigned short STime::GetMillisecond() const {
    return RequireTime(*this) ? static_cast<unsigned short>(milliseconds_ % 1000) : std::uint16_t{0};
}

void STime::GetHourMinuteSecond(unsigned char& hour, unsigned char& minute, unsigned char& second,
                                const STimeZone& zone) const {
    const TimeParts parts = RequireTime(*this) ? Shown(milliseconds_, zone) : TimeParts{};
    hour = static_cast<unsigned char>(parts.hour);
    minute = static_cast<unsigned char>(parts.minute);
    second = static_cast<unsigned char>(parts.second);
}

long STime::GetTotalMilliseconds() const {
    return RequireTime(*this) ? milliseconds_ : 0;
}

SAnsiString STime::Format(const char* pattern, const STimeZone& zone) const {
    ShownTime shown;
    shown.hasTime = IsValid();
    if (IsValid()) shown.value.milliseconds = Wrap(milliseconds_ - ZoneAccess::standardOffset(zone));
    return RenderPattern(pattern, shown);
}

STime STime::GetCurrentTime() {
    return FromMilliseconds(ZoneAccess::present().milliseconds);
}

STime& STime::operator+=(const STimeSpan& span) noexcept {
    const auto part = static_cast<std::int32_t>(span.GetTotalMilliseconds() % kMillisecondsPerDay);
    if (IsValid()) milliseconds_ = Wrap(milliseconds_ + part);
    return *this;
}

STime& STime::operator-=(const STimeSpan& span) noexcept {
    const auto part = static_cast<std::int32_t>(span.GetTotalMilliseconds() % kMillisecondsPerDay);
    if (IsValid()) milliseconds_ = Wrap(milliseconds_ - part);
    return *this;
}

int STimeComparison(const STime& a, const STime& b, const STimeZone& zone) {
    if (!RequireTime(a) || !RequireTime(b)) {
        return static_cast<int>(a.IsValid()) - static_cast<int>(b.IsValid());
    }
    const std::int32_t offset = ZoneAccess::standardOffset(zone);
    return Wrap(a.GetTotalMilliseconds() - offset) - Wrap(b.GetTotalMilliseconds() - offset);
}

}  // namespace TarnLibA500
