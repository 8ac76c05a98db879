#pragma once

#include <cstdint>

#include <windows.h>

/// The one way to the system's clocks and zone data. A test build can put its own functions behind it
/// (TARN_TEST_SEAMS); otherwise these are direct calls.
namespace TarnLibA500::osclock {

/// The rules of the system's zone in a year. False when the system does not say.
bool ReadSystemZone(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept;

#ifdef TARN_TEST_SEAMS
struct Functions {
    void(WINAPI* systemTime)(FILETIME*) = &GetSystemTimeAsFileTime;
    ULONGLONG(WINAPI* tickCount)() = &GetTickCount64;
    bool (*readZone)(unsigned short, TIME_ZONE_INFORMATION&) noexcept = &ReadSystemZone;
};
inline Functions functions;
inline void SystemTime(FILETIME& time) noexcept {
    functions.systemTime(&time);
}
inline std::uint64_t Tick() noexcept {
    return functions.tickCount();
}
inline bool ReadZone(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept {
    return functions.readZone(year, zone);
}
#else
inline void SystemTime(FILETIME& time) noexcept {
    GetSystemTimeAsFileTime(&time);
}
/// Milliseconds since the system was started.
inline std::uint64_t Tick() noexcept {
    return GetTickCount64();
}
inline bool ReadZone(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept {
    return ReadSystemZone(year, zone);
}
#endif

/// Milliseconds since 1601 in universal time.
inline std::int64_t Now() noexcept {
    constexpr std::int64_t kTicksPerMillisecond = 10'000;
    FILETIME time;
    SystemTime(time);
    const auto ticks = static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return ticks / kTicksPerMillisecond;
}

}  // namespace TarnLibA500::osclock
