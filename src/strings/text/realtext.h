#pragma once

#include "strings/base/realformat.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Calls take(characters, length) with a number in fixed notation (FormatFixed). All but huge numbers need no
/// memory.
template <class Take>
void WithRealText(double number, int precision, Take take) {
    constexpr std::uint32_t kUsualUnits = 32;
    char usual[kUsualUnits];
    const std::uint32_t length = FormatFixed(usual, sizeof usual, number, precision);
    if (length < sizeof usual) return take(usual, length);
    SAsciiString whole;
    whole.setSize(length);
    FormatFixed(whole.detach(), length + 1, number, precision);
    take(whole.getString(), length);
}

}  // namespace TarnLibA500
