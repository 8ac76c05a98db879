#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Paths as text: taking them apart and putting them together, without asking a file system.
///
/// Where no separator is an argument, "/" and "\" are both slashes. The functions step by multi-byte
/// characters of the process's code page, so a trail byte 5C is no backslash. They keep no state and may be
/// called from any thread.
///
///     SAnsiString dir, name, ext;
///     SplitPathEx("C:\\data\\report.2024.txt", dir, name, ext);   // "C:\data\"  "report.2024"  ".txt"
///     SAnsiString copy = MakePath(dir, name, ".bak");              // "C:\data\report.2024.bak"
///     SAnsiString folder = GetBottomLevelDir("/srv/ftp/in", '/');  // "in"
///     SAnsiString above = GetParentLevelDir("/srv/ftp/in", '/');   // "/srv/ftp"
///     if (!IsAbsolutePath(entry)) entry = MakePath("C:\\data", entry);
namespace TarnLibA500 {

/// The text after the last separator, separators at the end not counted. A path that holds no other separator
/// comes back as it was, separators at the end included: "abc/" gives "abc/". This is deliberate.
TARN_API SAnsiString GetBottomLevelDir(const SAnsiString& path, const SChar_t<char, 0>& separator);
/// The text before the last separator, separators at the end not counted; empty when there is none: "abc/"
/// gives "".
TARN_API SAnsiString GetParentLevelDir(const SAnsiString& path, const SChar_t<char, 0>& separator);

/// Splits into drive and directory (with its last slash), file name, and extension (from the last dot on,
/// with the dot). An output whose component is empty keeps what it held. Directory, name and extension take
/// at most 255 bytes each, in UTF-8 as many as 255 UTF-16 units take; a path with a longer one is reported by
/// assertion and leaves all outputs as they were.
TARN_API void SplitPathEx(const SAnsiString& path, SAnsiString& dir, SAnsiString& name, SAnsiString& ext);

/// A directory and a name with exactly one separator added where the directory has no slash at its end.
/// Slashes that begin the name are dropped. An empty directory gives the name, an empty name the directory.
TARN_API SAnsiString MakePath(const SAnsiString& dir, const SAnsiString& name,
                              const SChar_t<char, 0>& separator = '\\');
/// The same with an extension, whose dot is added when it is missing: the way back from SplitPathEx.
TARN_API SAnsiString MakePath(const SAnsiString& dir, const SAnsiString& name, const SAnsiString& ext);

/// True when the path begins with a slash, or with a drive and a slash ("C:\").
TARN_API bool IsAbsolutePath(const SAnsiString& path);
/// True when a component of the path is "." or "..".
TARN_API bool PathContainsRelativeDirTokens(const SAnsiString& path);
/// Reduces each run of slashes to its first. Two backslashes at the start, a network path, stay two.
TARN_API SAnsiString ReduceConsecutiveSlashes(const SAnsiString& path);
/// The path without the slashes at its start: "\\server" gives "server".
TARN_API SAnsiString StripSlashOffDirBegin(const SAnsiString& dir);
/// The path without the slashes at its end. Nothing is spared: "C:\" gives "C:", "/" gives "".
TARN_API SAnsiString StripSlashOffDirEnd(const SAnsiString& dir);
/// The path with each slash replaced by the separator.
TARN_API SAnsiString UnifyAllSlashes(const SAnsiString& path, const SChar_t<char, 0>& separator = '\\');

}  // namespace TarnLibA500
