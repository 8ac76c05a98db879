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
/// For each of the 256 bytes how it stands to others in this collation; null while the system must be asked. Texts in
/// which the same weights stand below each other are equal, and the first different ones are the order, as far as they
/// decide: 0 is the end of a text, up to 0x7F they do, above they do not, and 0xFF does not even equal itself.
const unsigned char* CollationWeights();

/// The difference of the first two lower-cased bytes that differ, not normalised.
int CompareBytesNoCase(const char* left, const char* right);

}  // namespace TarnLibA500
