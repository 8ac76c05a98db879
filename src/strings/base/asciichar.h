#pragma once

/// Kinds of ASCII characters, whatever the locale is. For the first byte of a character only.
namespace TarnLibA500 {

constexpr bool IsDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

constexpr bool IsLineEnd(char character) noexcept {
    return character == '\r' || character == '\n';
}

}  // namespace TarnLibA500
