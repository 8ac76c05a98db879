#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// How many of so many bytes are left without the line ends that the system's messages carry at their end.
inline std::uint32_t LengthWithoutLineEnd(const char* text, std::uint32_t bytes) {
    while (bytes != 0 && (text[bytes - 1] == '\r' || text[bytes - 1] == '\n')) --bytes;
    return bytes;
}

/// A text without those line ends, for lines of a log.
inline SAnsiString WithoutLineEnd(const SAnsiString& text) {
    const std::uint32_t length = LengthWithoutLineEnd(text.getString(), text.getLength());
    return length == text.getLength() ? text : SAnsiString(text.getString(), length);
}

}  // namespace TarnLibA500
