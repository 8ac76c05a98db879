#pragma once

#include <cstdint>

/// Code points beyond U+FFFF as pairs of UTF-16 units.
namespace TarnLibA500::utf {

/// True for a half of a pair, whichever.
constexpr bool IsSurrogate(std::uint32_t code) noexcept {
    return (code & 0xFFFFF800) == 0xD800;
}
/// True for the first half.
constexpr bool IsHighSurrogate(std::uint32_t code) noexcept {
    return (code & 0xFFFFFC00) == 0xD800;
}
/// True for the second half.
constexpr bool IsLowSurrogate(std::uint32_t code) noexcept {
    return (code & 0xFFFFFC00) == 0xDC00;
}
/// The first half of a code point beyond U+FFFF.
constexpr wchar_t HighSurrogate(std::uint32_t code) noexcept {
    return static_cast<wchar_t>(0xD7C0 + (code >> 10));  // 0xD800 less what 0x10000 is of it
}
/// The second half.
constexpr wchar_t LowSurrogate(std::uint32_t code) noexcept {
    return static_cast<wchar_t>(0xDC00 | (code & 0x3FF));
}
/// The code point of both halves.
constexpr std::uint32_t PairCode(std::uint32_t high, std::uint32_t low) noexcept {
    return 0x10000 + ((high & 0x3FF) << 10 | (low & 0x3FF));
}

/// Writes a code point into one unit, or two beyond U+FFFF; returns how many.
constexpr unsigned WriteUnits(std::uint32_t code, wchar_t* out) noexcept {
    if (code <= 0xFFFF) {
        out[0] = static_cast<wchar_t>(code);
        return 1;
    }
    out[0] = HighSurrogate(code);
    out[1] = LowSurrogate(code);
    return 2;
}

}  // namespace TarnLibA500::utf
