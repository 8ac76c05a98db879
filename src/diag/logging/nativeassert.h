#pragma once

namespace TarnLibA500 {

/// Whether a user can see the system's dialog. False in a service, where it would wait for ever, and while the process
/// ends.
bool CanShowNativeAssert();

/// Shows an assertion, in UTF-8, in the system's dialog and does what its user chooses: end the process, break into a
/// debugger, or go on. A debugger that is attached takes the place of the dialog. Only after CanShowNativeAssert. It
/// waits for its user without end: processes that serve somebody do not switch it on.
void ShowNativeAssert(const char* utf8);

}  // namespace TarnLibA500
