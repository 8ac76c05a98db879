#pragma once

#include "tarnlib/sstring.h"

/// Paths as the system takes them: UTF-16, absolute, and of any length.
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

/// True when the machine's setting for long paths is on. The system asks for more than that before it takes
/// them as they are, so system calls do not count on it.
bool LongPathsEnabled();

/// What system calls get for a path in the code page. A text that has no absolute path goes as it is, so that
/// the system says what is wrong with it; one with a zero byte inside, or with bytes that are no character, is
/// no path at all: "?", which the system refuses.
SWCharString LongSystemPath(const SAnsiString& path, std::uint32_t shortEnd = kShortPathEnd);

/// A directory and a name in it, both as the system has them.
SWCharString JoinSystemPath(const SWCharString& directory, const wchar_t* name);

/// The same in the code page: what MakePath makes of them, but by the code page of names, where the last byte of
/// a directory may be half a character and look like a backslash to the C locale.
SAnsiString JoinPath(const SAnsiString& directory, const SAnsiString& name);

/// An absolute path behind "\\?\" whatever its length, so that what a listing gave is taken as it is: "a." is
/// not "a" then, and "aux.c" no device.
SWCharString ExactForm(const SWCharString& full);

/// A path as people write it, in the code page.
SAnsiString ShownPath(const SWCharString& path);

}  // namespace TarnLibA500
