#pragma once

#include <atomic>
#include <cstdint>

#include "seam/osmodules.h"
#include "seam/seam.h"

#include <windows.h>

/// The one way to the system's clocks. They never fail; tests set them.
namespace osclock {

inline constinit seam::Replaceable<decltype(GetSystemTimeAsFileTime)> systemTime;
inline constinit seam::Replaceable<decltype(GetTickCount64)> tickCount;
inline constinit seam::Replaceable<decltype(QueryPerformanceCounter)> performanceCounter;
inline constinit seam::Replaceable<decltype(::Sleep)> sleep;

/// The finest clock of universal time once it has been asked for, which Windows has from version 8 on; the one of Windows 7
/// steps by 10 to 16 ms. Both are the same time. (Under Wine the finest takes half as long as the other.)
inline void WINAPI FindFinestTime(FILETIME* time) noexcept;
inline constinit std::atomic<decltype(&GetSystemTimeAsFileTime)> finestTime{&FindFinestTime};

inline void WINAPI FindFinestTime(FILETIME* time) noexcept {
    const DWORD error = GetLastError();
    const auto find = osmodules::getProcAddress.orElse(GetProcAddress);
    void* const found =
        reinterpret_cast<void*>(find(GetModuleHandleW(L"kernel32.dll"), "GetSystemTimePreciseAsFileTime"));
    SetLastError(error);
    finestTime = found != nullptr ? reinterpret_cast<decltype(&GetSystemTimeAsFileTime)>(found)
                                  : &GetSystemTimeAsFileTime;
    finestTime.load()(time);
}

/// Universal time.
inline FILETIME SystemTime() noexcept {
    FILETIME time;
    systemTime.orElse(finestTime.load(std::memory_order_relaxed))(&time);
    return time;
}

/// A time in units of 100 ns since 1601.
inline std::int64_t UnitsOf(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

/// Universal time in these units.
inline std::int64_t Now() noexcept {
    return UnitsOf(SystemTime());
}

/// Milliseconds since the system was started.
inline std::uint64_t Tick() noexcept {
    return tickCount.orElse(GetTickCount64)();
}

/// The finest clock, in units of its own.
inline std::int64_t Counter() noexcept {
    LARGE_INTEGER count;
    performanceCounter.orElse(QueryPerformanceCounter)(&count);
    return count.QuadPart;
}

/// Microseconds since the counter stood at "start".
inline std::uint64_t MicrosecondsSince(std::int64_t start) noexcept {
    constexpr std::int64_t kMicroseconds = 1'000'000;
    LARGE_INTEGER second;
    QueryPerformanceFrequency(&second);
    const std::int64_t passed = Counter() - start;
    return static_cast<std::uint64_t>(passed / second.QuadPart * kMicroseconds +
                                      passed % second.QuadPart * kMicroseconds / second.QuadPart);
}

inline void Sleep(DWORD milliseconds) noexcept {
    sleep.orElse(::Sleep)(milliseconds);
}

}  // namespace osclock
