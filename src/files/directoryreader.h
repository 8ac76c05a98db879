#pragma once

#include "files/osfiles.h"
#include "tarnlib/sstring.h"

#include <windows.h>

/// Reading directories as the system has them, in UTF-16.
namespace TarnLibA500 {

/// The entries of one directory, without "." and "..".
class DirectoryReader {
  public:
    /// Stands before the first entry then. False, with error() set, when the directory cannot be read.
    bool open(const SWCharString& directory);
    /// Goes to the next entry. False behind the last, and, with error() set, when the system fails.
    bool next();
    void close() noexcept { search_.close(); }
    bool isOpen() const noexcept { return static_cast<bool>(search_); }
    const WIN32_FIND_DATAW& entry() const noexcept { return entry_; }
    /// Why the last call was false: 0 at the end.
    DWORD error() const noexcept { return error_; }

  private:
    bool advance();

    osfiles::Search search_;
    bool isFirst_ = false;  // the search came with an entry that was not given out yet
    DWORD error_ = ERROR_SUCCESS;
    WIN32_FIND_DATAW entry_;
};

inline bool IsDirectory(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
/// For the tag of a reparse point: true when it stands for something elsewhere. (Others are the thing itself,
/// stored in another way.)
inline bool IsLinkTag(DWORD tag) {
    constexpr DWORD kNameSurrogate = 0x20000000;
    // Wine gives no tag for the links of the system below it.
    return tag == 0 || (tag & kNameSurrogate) != 0;
}
inline bool IsLink(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLinkTag(entry.dwReserved0);
}
/// A reparse point that stands for nothing else: of a cloud, a container, a file that shares its content.
inline bool IsStoredOtherwise(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && !IsLinkTag(entry.dwReserved0);
}
/// A directory that is one, not a link to one.
inline bool IsOwnDirectory(const WIN32_FIND_DATAW& entry) {
    return IsDirectory(entry.dwFileAttributes) && !IsLink(entry);
}
inline unsigned long long SizeOf(const WIN32_FIND_DATAW& entry) {
    return static_cast<unsigned long long>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

}  // namespace TarnLibA500
