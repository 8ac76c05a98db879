#pragma once

namespace TarnLibA500 {

/// Reports a text where no log can take it: to a debugger and on standard error, as one line, whatever it is
/// given. Needs no memory.
void ReportUnlogged(const char* text);

}  // namespace TarnLibA500
