#pragma once

#include <cstdint>

namespace TarnLibA500 {

/// Writes a number in fixed notation with "precision" decimals (C format "%#.*f": the decimal point is always
/// there) as the C library does in its current locale. Returns the characters that the whole text has; when
/// that is not below the room, the text is cut. Always terminated.
std::uint32_t FormatFixed(char* out, std::uint32_t room, double value, int precision);

}  // namespace TarnLibA500
