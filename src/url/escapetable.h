#pragma once

#include <cstdint>

/// How each byte is written in a URL.
namespace TarnLibA500 {

/// The escaped form of each byte.
struct EscapeTable {
    static constexpr unsigned kBytes = 256;
    static constexpr unsigned kMaxForm = 3;

    char form[kBytes][kMaxForm + 1];  ///< zero-terminated
    std::uint8_t length[kBytes];      ///< of the form
    bool isEscaped[kBytes];           ///< false for bytes that stand for themselves
};

/// Letters, digits, "." and "_" stand for themselves, a space becomes "+", every other byte "%XX".
extern const EscapeTable kStandardEscapes;
/// The same, with "%20" for a space.
extern const EscapeTable kStandardEscapesNoPlus;
/// Control bytes, bytes above 126 and % + , = { } & $ become "%XX", all others stand for themselves.
extern const EscapeTable kReducedEscapes;

inline constexpr char kUpperHexDigits[] = "0123456789ABCDEF";

}  // namespace TarnLibA500
