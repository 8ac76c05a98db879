#pragma once

#include <cstddef>

/// Comparison without regard to case, up to the first zero unit.
namespace TarnLibA500 {

/// By the collation of the C locale's LC_COLLATE category (in the "C" locale: by lower-cased bytes, in UTF-8 by
/// lower-cased code points): -1, 0 or 1. A text that the system cannot collate is compared by its lower-cased characters.
int CollateNoCase(const char* left, const char* right);
int CollateNoCase(const wchar_t* left, const wchar_t* right);
/// The same for two texts of one length in bytes, of which only the left one must be zero-terminated.
int CollateNoCase(const char* left, const char* right, std::size_t length);

/// True while ASCII texts are equal where they are the same but for the case of A to Z, and those of letters and digits
/// nowhere else: the system need not be asked for these.
bool CollatesLettersPlainly();

/// The difference of the first two lower-cased bytes that differ, not normalised.
int CompareBytesNoCase(const char* left, const char* right);

}  // namespace TarnLibA500
