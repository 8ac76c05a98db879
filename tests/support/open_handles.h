#pragma once

#include <cstdint>
#include <set>

#include <windows.h>

namespace tarntest {

/// The handles of the process. Wine counts none (GetProcessHandleCount says 0), so every value that may be one is tried.
inline std::set<HANDLE> OpenHandles() {
    constexpr std::uintptr_t kMostTried = 0x4000;
    std::set<HANDLE> handles;
    for (std::uintptr_t value = 4; value < kMostTried; value += 4) {
        const auto handle = reinterpret_cast<HANDLE>(value);  // NOLINT(performance-no-int-to-ptr)
        DWORD flags = 0;
        if (GetHandleInformation(handle, &flags)) handles.insert(handle);
    }
    return handles;
}

}  // namespace tarntest
