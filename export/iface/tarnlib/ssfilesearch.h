#pragma once

#include "tarnlib/sfilesysexception.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A search over the entries of one directory.
///
/// A pattern has "*" for any characters, none included, and "?" for exactly one UTF-16 unit, where narrow text
/// is UTF-8 (SNarrowText) for one character; letters are compared without regard to case, long names only. A
/// text that is not valid in the code page matches nothing; a listed name with a "?" in it (see
/// FileProp::isExact) is no safe pattern. An empty pattern, "*" and "*.*" take every entry; "." and ".." are
/// never among them. Entries come in the system's order. One thread at a time uses an object.
///
///     SSFileSearch search;
///     for (bool found = search.FindFirst("C:\\data\\in", "*.csv"); found; found = search.FindNext())
///         if (!search.GetEntry().isDirectory) Import(search.GetEntry().name);
namespace TarnLibA500 {

/// One entry of a directory. Times are seconds since 1970 in universal time: SDateTime(entry.modified,
/// STimeZone::TZ_UTC()) is the moment.
struct FileProp {
    SAnsiString name;          ///< without the directory; "?" for what narrow text does not have
    bool isExact = true;       ///< false when the name has such a "?": it is shown, and leads to no file
    bool isDirectory = false;  ///< a directory, or a link to one
    bool isLink = false;       ///< a link or another reparse point: going into such directories may not end
    unsigned long long size = 0;  ///< bytes; 0 for a directory
    long long created = 0;        ///< when it was made
    long long modified = 0;       ///< when it was last written
    long long accessed = 0;       ///< when it was last read, as far as the file system notes that
};

/// A search over the entries of one directory.
class TARN_API SSFileSearch {
  public:
    /// Stands on no entry.
    SSFileSearch() noexcept;
    /// Ends the search.
    ~SSFileSearch();
    /// A search is one object's.
    SSFileSearch(const SSFileSearch&) = delete;
    /// A search is one object's.
    SSFileSearch& operator=(const SSFileSearch&) = delete;

    /// Goes to the first entry of a directory that matches; false when there is none. Throws
    /// SFileSysException when the directory cannot be read: fsNotExist when it is not there, otherwise
    /// fsStatFailed.
    bool FindFirst(const SAnsiString& directory, const SAnsiString& pattern);
    /// Goes to the next one; false behind the last, and when no search is open. Throws as FindFirst does.
    bool FindNext();
    /// The entry that the search stands on.
    const FileProp& GetEntry() const noexcept;
    /// Ends the search; nothing happens when none is open.
    void close() noexcept;
    /// True from a FindFirst that found something until the last entry is passed.
    bool IsOpen() const noexcept;

  private:
    struct State;
    State* state_;
    FileProp entry_;
};

/// Entries, as a listing gives them.
extern template class TARN_API SIArray<FileProp>;

}  // namespace TarnLibA500
