#pragma once

#include "tarnlib/sdatetime.h"

#include <windows.h>

/// The system's times of files: 100 nanoseconds since 1601 in universal time.
namespace TarnLibA500 {

constexpr long long kTicksPerSecond = 10'000'000;
constexpr long long kTicksPerMillisecond = 10'000;
constexpr long long kSecondsTo1970 = 11'644'473'600;

inline long long TicksOf(const FILETIME& time) {
    return static_cast<long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

inline long long UnixSeconds(const FILETIME& time) {
    return TicksOf(time) / kTicksPerSecond - kSecondsTo1970;
}

inline SDateTime FirstFileTime() {
    constexpr std::int32_t kFirstOf1601 = 2'305'813;
    return SDateTime(SDate::FromDayNumber(kFirstOf1601), STime::FromMilliseconds(0));
}

/// Rounded down to milliseconds.
inline SDateTime DateTimeOf(const FILETIME& time) {
    return FirstFileTime() + STimeSpan::FromMilliseconds(TicksOf(time) / kTicksPerMillisecond);
}

/// False for an invalid date-time and one before 1601.
inline bool FileTimeOf(const SDateTime& time, FILETIME& out) {
    if (!time.IsValid() || time < FirstFileTime()) return false;
    const long long ticks = (time - FirstFileTime()).GetTotalMilliseconds() * kTicksPerMillisecond;
    out.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFF);
    out.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return true;
}

}  // namespace TarnLibA500
