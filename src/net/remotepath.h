#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A path as it stands for a directory: an absolute one for itself, any other below the directory. "." and ".." are
/// resolved by the letters, not by what links on the server say; nothing is above "/". "." is the directory in which the
/// server begins, and ".." may stay in front of what is outside it.
SAnsiString RemotePath(const SAnsiString& directory, const SAnsiString& path);

}  // namespace TarnLibA500
