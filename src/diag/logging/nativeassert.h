#pragma once

namespace TarnLibA500 {

/// Shows an assertion, in UTF-8, in the system's dialog and does what its user chooses: end the process, break into a
/// debugger, or go on. Goes on where no user can see a dialog. It waits for its user without end: processes
/// that serve somebody do not switch it on.
void ShowNativeAssert(const char* utf8);

}  // namespace TarnLibA500
