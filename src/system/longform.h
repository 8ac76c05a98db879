#pragma once

#include "tarnlib/sstring.h"

/// Paths of any length for the system, in UTF-16.
namespace TarnLibA500 {

/// A path of this many characters, or more, needs the system's long form.
constexpr std::uint32_t kShortPathEnd = 260;
/// The same for the path of a new directory: a short file name must fit behind it.
constexpr std::uint32_t kShortDirectoryEnd = 247;

/// The absolute path, with the current directory or that of its drive where it has none, without "." and
/// "..", and without blanks and full stops at the ends of its components. A path behind "\\?\" stays as it is.
/// False, with the system's error code set, when there is none.
bool FullSystemPath(const SWCharString& path, SWCharString& full);

/// An absolute path behind "\\?\" (or "\\?\UNC\") when it has "shortEnd" characters or more. Device paths,
/// and paths in the long form, stay as they are.
SWCharString LongForm(const SWCharString& full, std::uint32_t shortEnd = kShortPathEnd);

/// An absolute path behind "\\?\" whatever its length, so that what a listing gave is taken as it is: "a." is
/// not "a" then, and "aux.c" no device.
SWCharString ExactForm(const SWCharString& full);

}  // namespace TarnLibA500
