#pragma once

#include "tarnlib/sassert.h"

namespace TarnLibA500 {

/// Says whether a precondition holds and reports it by assertion when it does not:
///
///     if (!Require(out != nullptr, "sstring", "outBuffer != 0")) return -1;
///
/// The text is given and not taken from the expression, because reported texts are stable and code is not.
inline bool Require(bool holds, const char* unit, const char* text, int line = __builtin_LINE()) {
    if (!holds) [[unlikely]]
        SAssert(unit, line, text);
    return holds;
}

}  // namespace TarnLibA500
