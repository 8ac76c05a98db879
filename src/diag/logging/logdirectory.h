#pragma once

#include "tarnlib/sstring.h"

/// Where log files go when the options do not say it, and making that directory.
namespace TarnLibA500 {

struct LogDirectory {
    SAnsiString path;  ///< absolute
    /// False for the default below the directory for temporary files, which another user may have made.
    bool isConfigured;
};

/// The directory of the options; without one the value "loggingPath" of the registry key "Logging" under the
/// settings root, and without that velmora\logging in the directory for temporary files. Nothing is written to
/// the registry.
LogDirectory FindLogDirectory(const SAnsiString& given);

/// A path as it is from now on, whatever becomes the current directory.
SAnsiString AbsolutePath(const SAnsiString& path);

/// Makes the directory and those above it. False when it is not there in the end. Nor is the default one when others may
/// have made it: a service would write where they want. "refusal" says why then, and is empty otherwise.
bool MakeLogDirectory(const LogDirectory& directory, SAnsiString& refusal);

/// A path that no directory can have, for logging to go on as if its directory could not be made.
SAnsiString NoLogDirectory();

/// What is said when it could not be made.
SAnsiString LogDirectoryFailure(const SAnsiString& directory);

}  // namespace TarnLibA500
