#pragma once

#include <cstddef>

namespace TarnLibA500 {

/// The first place in [text, text + length) where the n bytes of "what" stand, or null. n is at least 1.
const char* FindBytes(const char* text, std::size_t length, const char* what, std::size_t n) noexcept;

/// The first place of a byte, or the end of the text. Several times faster than the runtime's memchr, which
/// goes byte by byte.
const char* FindByte(const char* text, const char* end, char byte) noexcept;

/// The first byte that is not ASCII, or the end of the text.
const char* FindNonAscii(const char* text, const char* end) noexcept;

/// Bytes before the zero byte that ends a text, or as many as are asked for.
std::size_t LengthUpTo(const char* text, std::size_t most) noexcept;

}  // namespace TarnLibA500
