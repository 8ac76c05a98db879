#pragma once

#include <cstdint>

namespace TarnLibA500 {

/// True when all bytes are the same. The time that it takes does not depend on what they are.
inline bool EqualInConstantTime(const unsigned char* a, const unsigned char* b,
                                std::uint32_t count) noexcept {
    unsigned difference = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        difference |= static_cast<unsigned>(a[i] ^ b[i]);
        __asm__ volatile("" : "+r"(difference));  // the compiler may not leave the loop early
    }
    return difference == 0;
}

/// The same for "all bytes are zero".
inline bool IsZeroInConstantTime(const unsigned char* bytes, std::uint32_t count) noexcept {
    unsigned any = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        any |= bytes[i];
        __asm__ volatile("" : "+r"(any));
    }
    return any == 0;
}

}  // namespace TarnLibA500
