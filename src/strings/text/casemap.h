#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Maps the characters of a narrow text in place: up to its first zero byte, its first invalid character,
/// or before one that would pass "limit" bytes; what follows moves up. In UTF-8 a character whose other case takes
/// more bytes stays as it is. Returns the text's new length, which is never longer.
std::uint32_t MapCase(char* text, std::uint32_t length, std::uint32_t limit, LetterCase to);
/// The bytes that a text takes in the other case when it may grow, which only UTF-8 does.
std::uint32_t CountMapped(const char* text, std::uint32_t length, LetterCase to);
/// Writes them.
void WriteMapped(const char* text, std::uint32_t length, char* out, LetterCase to);
/// The same for UTF-16 units, whose number stays.
void MapCase(wchar_t* text, std::uint32_t length, LetterCase to);
/// The same for ASCII bytes.
void MapAsciiCase(char* text, std::uint32_t length, LetterCase to);

}  // namespace TarnLibA500
