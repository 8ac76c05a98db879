#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "time/calendar.h"

namespace TarnLibA500 {

/// A date and a time to be written: what a calendar and a clock show. Either may be missing.
struct ShownTime {
    bool hasDate = false;
    bool hasTime = false;
    calendar::DayTime value{0, 0};
};

/// Writes a date and time by a pattern of letters, as SDateTime::Format says. Null is reported and gives an
/// empty text.
SAnsiString RenderPattern(const char* pattern, const ShownTime& shown);
/// The same into memory of the caller, with a terminator. The bytes before it, or -1 and an empty text.
int RenderPattern(const char* pattern, const ShownTime& shown, char* out, std::uint32_t nBytes);

}  // namespace TarnLibA500
