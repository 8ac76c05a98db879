#pragma once

#include <vector>

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
/// A reparse point that stands for something elsewhere. (Others are the thing itself, stored in another way.)
inline bool IsLink(const WIN32_FIND_DATAW& entry) {
    constexpr DWORD kNameSurrogate = 0x20000000;
    const bool isReparsePoint = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    // Wine gives no tag for the links of the system below it.
    return isReparsePoint && (entry.dwReserved0 == 0 || (entry.dwReserved0 & kNameSurrogate) != 0);
}
/// A directory that is one, not a link to one.
inline bool IsOwnDirectory(const WIN32_FIND_DATAW& entry) {
    return IsDirectory(entry.dwFileAttributes) && !IsLink(entry);
}
inline unsigned long long SizeOf(const WIN32_FIND_DATAW& entry) {
    return static_cast<unsigned long long>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

/// All that is below a directory, level by level. Links are entries; what they lead to is not.
class TreeWalk {
  public:
    enum class Step { Entry, Failed, End };

    /// The root itself may be a link.
    explicit TreeWalk(const SWCharString& root) { directories_.push_back(root); }
    /// Goes to the next entry. Failed: the present directory cannot be read on; the walk may be continued.
    Step next();
    const WIN32_FIND_DATAW& entry() const noexcept { return reader_.entry(); }
    DWORD error() const noexcept { return reader_.error(); }
    /// The directory that the entry is in, or that failed.
    const SWCharString& directory() const noexcept { return directories_[at_]; }
    SWCharString entryPath() const;
    /// Those met so far, the root first, each behind the one that it is in.
    const std::vector<SWCharString>& directories() const noexcept { return directories_; }

  private:
    Step fail() noexcept;

    bool isReading_ = false;
    bool hasFailed_ = false;  // the present directory is done with
    std::size_t at_ = 0;
    std::vector<SWCharString> directories_;
    DirectoryReader reader_;
};

}  // namespace TarnLibA500
