#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A number that this process has not had before (it has four billion), and that other processes are not
/// likely to have. Whoever makes a file by it must still make sure that it is new.
std::uint32_t NextUniqueNumber() noexcept;

/// A file or directory of our own, as callers know it and as the system does.
struct UniquePath {
    SAnsiString path;
    SWCharString systemPath;
};
/// SFileSys::getUniqueFilename and getUniqueDirname. No memory is asked for when the file has been made.
UniquePath TakeUniquePath(const SAnsiString& directory, const SAnsiString& prefix, const SAnsiString& suffix,
                          bool create, bool isDirectory);

}  // namespace TarnLibA500
