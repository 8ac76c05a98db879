#pragma once

#include <cstddef>

#include <windows.h>

namespace tarntest {

/// Bytes of memory that the process has for itself.
inline std::size_t CommittedBytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region;
    for (char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return bytes;
}

}  // namespace tarntest
