#pragma once

/// The other case of a character for narrow text that is UTF-8: what the system knows of the whole of Unicode, one
/// character for one, and the same in every locale.
namespace TarnLibA500::unicodecase {

/// The lower case of a code point; what has none stays.
char32_t Lower(char32_t code) noexcept;
/// The upper case of a code point; what has none stays.
char32_t Upper(char32_t code) noexcept;

}  // namespace TarnLibA500::unicodecase
