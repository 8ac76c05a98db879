#pragma once

#include "options.h"
#include "tarnlib/sstring.h"

namespace tarn {

/// What a command that turns one text into another is given: -text, or all of standard input.
TarnLibA500::SAnsiString TextOf(const Options& options);

/// Prints the result: on a line of its own for -text, just as it is for standard input.
void PrintResult(const Options& options, const std::string& result);

}  // namespace tarn
