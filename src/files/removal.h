#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Removes what is at a path of the system: a file or an empty directory. Failures are those of SFileSys::remove,
/// and have the name in them.
void RemoveSystemPath(const SWCharString& path, const SAnsiString& name);

}  // namespace TarnLibA500
