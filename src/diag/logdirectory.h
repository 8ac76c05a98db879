#pragma once

#include "tarnlib/sstring.h"

/// Where log files go when the options do not say it, and making that directory.
namespace TarnLibA500 {

/// The value "loggingPath" of the registry key "Logging" under the settings root; without one velmora\logging
/// in the directory for temporary files. Nothing is written to the registry.
SAnsiString DefaultLogDirectory();

/// Makes the directory and those above it. False when it is not there in the end.
bool MakeLogDirectory(const SAnsiString& directory);

/// What is said when it could not be made.
SAnsiString LogDirectoryFailure(const SAnsiString& directory);

}  // namespace TarnLibA500
