#pragma once

#include <cstdint>

#include "strings/characters/mbchar.h"

/// Narrow texts and UTF-16 into each other, by their length: zero units are characters like others.
/// The caller holds the page, because the size that it asks for and the text that it then writes must be
/// of the same one.
namespace TarnLibA500::mbchar {

/// The UTF-16 units that a text becomes: one for a character or an invalid byte, two for a character beyond
/// U+FFFF.
std::uint32_t CountUnits(const CodePage& page, const char* text, const char* end) noexcept;

/// Converts until the text is at its end or the next character does not fit, "?" for invalid bytes; the text is
/// advanced past what was read. Returns the units written.
std::uint32_t Decode(const CodePage& page, const char*& text, const char* end, wchar_t* out,
                     std::uint32_t room) noexcept;

/// The bytes that a text becomes, a unit without a character counting one.
std::uint32_t CountBytes(const CodePage& page, const wchar_t* text, const wchar_t* end) noexcept;

/// Converts until the text is at its end or the next character does not fit, "?" for units without a
/// character; the text is advanced past what was read. Returns the bytes written.
std::uint32_t Encode(const CodePage& page, const wchar_t*& text, const wchar_t* end, char* out,
                     std::uint32_t room) noexcept;

}  // namespace TarnLibA500::mbchar
