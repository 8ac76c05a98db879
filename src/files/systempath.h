#pragma once

#include "system/longform.h"
#include "tarnlib/sstring.h"

/// Paths as the system takes them: UTF-16, absolute, and of any length.
namespace TarnLibA500 {

/// True when the system takes long paths as they are: the machine's setting is on, and the program's manifest says that it
/// knows them. System calls of this library do not count on it.
bool LongPathsEnabled();
/// The second of these. Only the system knows, and only one function of newer ones tells; without it the answer is no.
bool KnowsLongPaths();

/// What system calls get for a path in the code page. A text that has no absolute path goes as it is, so that
/// the system says what is wrong with it; one with a zero byte inside, or with bytes that are no character, is
/// no path at all: "?", which the system refuses.
SWCharString LongSystemPath(const SAnsiString& path, std::uint32_t shortEnd = kShortPathEnd);

/// A directory and a name in it, both as the system has them.
SWCharString JoinSystemPath(const SWCharString& directory, const wchar_t* name);

/// The same in the code page: what MakePath makes of them, but by the code page of names, where the last byte of
/// a directory may be half a character and look like a backslash to the C locale.
SAnsiString JoinPath(const SAnsiString& directory, const SAnsiString& name);

/// A path as people write it, in the code page.
SAnsiString ShownPath(const SWCharString& path);

}  // namespace TarnLibA500
