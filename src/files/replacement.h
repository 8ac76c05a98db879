#pragma once

#include "tarnlib/sstring.h"

#include <windows.h>

/// Putting one file in the place of another. Results are the system's error codes, 0 for done; paths are the
/// system's, in their long form.
namespace TarnLibA500 {

/// A name for a new file in the directory of another one.
SWCharString NameBeside(const SWCharString& file);

/// Gives the file a name that nobody has yet.
DWORD MoveToNewName(const SWCharString& file, const SWCharString& target);

/// Gives the file the name of the target, which may be missing, and the rights of a target that there is. At every
/// moment the target is the old file or the new one, but for an instant in which some systems have none; when it
/// fails, both files have their names.
DWORD MoveInPlaceOf(const SWCharString& target, const SWCharString& file);

}  // namespace TarnLibA500
