#pragma once

#include <cstring>

#include "strings/characters/mbchar.h"

/// Characters of a part of a text, beyond whose end nothing is read. A zero byte is one.
namespace TarnLibA500 {

inline unsigned BytesAt(const mbchar::CodePage& page, const char* at, const char* end) noexcept {
    return page.isAlone(*at) ? 1 : page.characterAt(at, end).bytes;
}

/// True when the same character stands at two places, where characters have so many bytes.
inline bool IsSameCharacter(const char* a, unsigned aBytes, const char* b, unsigned bBytes) noexcept {
    return aBytes == bBytes && (aBytes == 1 ? *a == *b : std::memcmp(a, b, aBytes) == 0);
}

/// The bytes of a character as one number, the first one the highest.
inline std::uint32_t NumberOf(const char* at, unsigned bytes) noexcept {
    std::uint32_t number = 0;
    for (; bytes != 0; --bytes) number = number << 8 | static_cast<unsigned char>(*at++);
    return number;
}

}  // namespace TarnLibA500
