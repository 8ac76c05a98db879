#pragma once

#include <cstddef>
#include <cstring>

namespace TarnLibA500 {

/// Overwrites memory that held a secret, and is freed or forgotten right after: the compiler may not drop it.
inline void Wipe(void* bytes, std::size_t count, int with = 0) noexcept {
    std::memset(bytes, with, count);
    __asm__ volatile("" : : "r"(bytes) : "memory");
}

}  // namespace TarnLibA500
