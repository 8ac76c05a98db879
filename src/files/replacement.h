#pragma once

#include "files/patience.h"
#include "tarnlib/sstring.h"

#include <windows.h>

/// Putting one file in the place of another. Results are the system's error codes, 0 for done; paths are the
/// system's, in their long form.
namespace TarnLibA500 {

/// A name for a new file in the directory of another one.
SWCharString NameBeside(const SWCharString& file);

/// Makes of the path of a link that of what it leads to. An error when it leads nowhere.
DWORD FollowLink(SWCharString& path);

/// Gives the file a name that nobody has yet.
DWORD MoveToNewName(const SWCharString& file, const SWCharString& target, Patience& patience);

/// What a file that is replaced hands on beside its rights, its creation time and its further streams.
enum class Heritage {
    Rights,  ///< nothing: attributes and owner are those of the file in its place
    All      ///< its attributes, and its owner where this process may make him that
};

/// How it ended.
struct Placed {
    DWORD error;
    /// False when it failed in the middle and the old file could not get its name back: both are whole then, the old
    /// one under a name beside the target, and nobody may remove the other.
    bool isUndone = true;
};

/// Gives the file the name of the target, which may be missing. At every moment the target is the old file or the new one, but
/// for an instant in which some systems have none; when it fails, both files have their names. With Heritage::All the file
/// is a copy, and reaches the disk before anything happens to the old one.
Placed PutInPlaceOf(const SWCharString& target, const SWCharString& file, Heritage heritage,
                    Patience& patience);

}  // namespace TarnLibA500
