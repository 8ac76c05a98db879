#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A text without the line ends that the system's messages carry at their end, for lines of a log.
inline SAnsiString WithoutLineEnd(const SAnsiString& text) {
    std::uint32_t length = text.getLength();
    while (length != 0 && (text.getString()[length - 1] == '\r' || text.getString()[length - 1] == '\n'))
        --length;
    return length == text.getLength() ? text : SAnsiString(text.getString(), length);
}

}  // namespace TarnLibA500
