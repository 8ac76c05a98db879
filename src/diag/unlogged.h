#pragma once

namespace TarnLibA500 {

/// Reports a text where no log can take it: to a debugger and on standard error.
void ReportUnlogged(const char* text);

}  // namespace TarnLibA500
