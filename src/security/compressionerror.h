#pragma once

#include <cstdio>

#include "diag/assert/levels.h"
#include "tarnlib/sassert.h"
#include "tarnlib/scompression.h"

namespace TarnLibA500 {

/// What a code of zlib is here.
inline int ConvertErrorCode(int code) {
    constexpr int kMemory = -4;
    constexpr int kBuffer = -5;
    switch (code) {
        case 0:
            return SCompression::ok;
        case kBuffer:
            return SCompression::bufferError;
        case kMemory:
            return SCompression::outOfMemory;
        default:
            return SCompression::otherError;
    }
}

/// Traces a failure in memory: the format takes the code.
inline void TraceFailure(const char* format, int code) {
    char text[64];
    std::snprintf(text, sizeof text, format, code);
    TraceText(levels::kFailure, "scompress", text);
}

}  // namespace TarnLibA500
