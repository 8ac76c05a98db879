#pragma once

#include "strings/base/asciichar.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The length of a text of "bytes" bytes without the line ends at its end, which the system's messages have.
inline std::uint32_t LengthWithoutLineEnd(const char* text, std::uint32_t bytes) {
    while (bytes != 0 && IsLineEnd(text[bytes - 1])) --bytes;
    return bytes;
}

/// A text without those line ends, for lines of a log.
inline SAnsiString WithoutLineEnd(const SAnsiString& text) {
    const std::uint32_t length = LengthWithoutLineEnd(text.getString(), text.getLength());
    return length == text.getLength() ? text : SAnsiString(text.getString(), length);
}

}  // namespace TarnLibA500
