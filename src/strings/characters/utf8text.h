#pragma once

#include <cstdint>

#include "strings/characters/mbchar.h"

/// Narrow text that is UTF-8, by its length: what mbchar.h and codepagetext.h say, for this one page. Runs of
/// ASCII are passed sixteen bytes at a time. An invalid byte is a character by itself.
namespace TarnLibA500::utf8text {

/// Bytes of the character at a place, which is no zero byte; looks at none behind one.
unsigned Step(const char* text) noexcept;
/// The character at such a place.
mbchar::Character CharacterAt(const char* text) noexcept;
/// The character at a place before the end of a text.
mbchar::Character CharacterAt(const char* text, const char* end) noexcept;
/// Writes a code point. Returns its bytes, or -1 for half a surrogate pair and for what is beyond Unicode.
int FromCode(char* out, char32_t code) noexcept;

/// Characters up to the first zero byte or the end.
std::uint32_t CountCharacters(const char* text, const char* end) noexcept;
/// The text advanced by a number of characters, stopping at its first zero byte and at its end.
const char* Advance(const char* text, const char* end, std::uint32_t characters) noexcept;
/// The first invalid byte; the end when there is none.
const char* FindInvalid(const char* text, const char* end) noexcept;

/// UTF-16 units that a text becomes, one for an invalid byte. A zero byte is a character like others.
std::uint32_t CountUnits(const char* text, const char* end) noexcept;
/// Converts until the text is at its end or the next character does not fit, "?" for invalid bytes; the text is
/// advanced past what was read. Returns the units written.
std::uint32_t Decode(const char*& text, const char* end, wchar_t* out, std::uint32_t room) noexcept;
/// The other way, "?" for surrogates that belong to no pair.
std::uint32_t Encode(const wchar_t*& text, const wchar_t* end, char* out, std::uint32_t room) noexcept;

}  // namespace TarnLibA500::utf8text
