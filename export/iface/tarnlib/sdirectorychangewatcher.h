#pragma once

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// What happens in a directory, and if wanted below it: files and directories that are made, changed, renamed
/// and removed.
///
/// The watcher has no thread of its own: the system records changes from open on, and wait picks them up. One
/// thread at a time uses an object; only stop may be called meanwhile by any other. The watcher keeps the
/// directory open, which does not keep anybody from renaming or removing it; a removed directory may stay
/// visible until the watcher is closed. Results are codes, and nothing throws but "bad allocation"; a wait
/// that is left by it loses no changes. One change of a file is often reported more than once, and a report
/// says that something happened, not what is there now.
///
///     SDirectoryChangeWatcher inbox;
///     if (!inbox.open("C:\\data\\inbox", false)) return Complain(inbox.lastError());
///     ListInbox();                                     // what came before the watch began
///     SIArray<SDirectoryChange> changes;
///     for (;;) {
///         const SDirectoryChangeWatcher::WaitResult result = inbox.wait(60000, changes);
///         if (result == SDirectoryChangeWatcher::changesSeen)
///             for (const SDirectoryChange& change : changes) Look(change.path);
///         else if (result == SDirectoryChangeWatcher::changesLost)
///             ListInbox();
///         else if (result != SDirectoryChangeWatcher::timedOut)
///             break;                                   // stopped, or the directory is gone
///     }
namespace TarnLibA500 {

/// One change of a directory.
struct SDirectoryChange {
    /// What happened.
    enum Kind {
        added = 1,        ///< made, or moved in
        removed = 2,      ///< deleted, or moved out
        modified = 3,     ///< content, size, time or attributes
        renamedFrom = 4,  ///< the old name; renamedTo follows
        renamedTo = 5     ///< the new name
    };

    /// What happened. Kinds of the system that are not among those count as modified.
    Kind kind = modified;
    /// Relative to the directory, with backslashes; "?" for what narrow text does not have. Where the file system keeps short
    /// names, it may come in that form ("LONGFI~1.TXT"), namely when a program used it: compare files, not names.
    SAnsiString path;
};

/// A watch over a directory.
class TARN_API SDirectoryChangeWatcher {
  public:
    /// How a wait ends. What is neither changesSeen, timedOut nor stopped is traced.
    enum WaitResult {
        changesSeen = 0,  ///< there is at least one
        timedOut = 1,     ///< nothing happened in that time
        changesLost =
            2,  ///< too much happened between two waits, or a server told what is none; only a new listing tells what
        stopped = 3,        ///< stop was called
        directoryGone = 4,  ///< nothing is at its path any more, or its drive or server is gone
        failed = 5          ///< lastError says why; also when no directory is open
    };

    /// What the system may record between two waits unless open is told otherwise: about 1,500 changes with
    /// names of 16 characters. Servers take no more: where one refuses what open is told, it is asked for this.
    static const unsigned long defaultRecordBytes = 0x10000;

    /// Watches nothing.
    SDirectoryChangeWatcher() noexcept;
    /// Closes. No stop may be under way then.
    ~SDirectoryChangeWatcher();
    /// A watch is one object's.
    SDirectoryChangeWatcher(const SDirectoryChangeWatcher&) = delete;
    /// A watch is one object's.
    SDirectoryChangeWatcher& operator=(const SDirectoryChangeWatcher&) = delete;

    /// Closes what was open, forgets a stop, and begins to watch; with "subtree" everything below too. False
    /// when it is no directory or cannot be read, and then lastError says why. Less than 1,024 bytes for the
    /// records counts as 1,024.
    bool open(const SAnsiString& directory, bool subtree, unsigned long recordBytes = defaultRecordBytes);
    /// Ends the watch; changes that no wait has fetched are forgotten. Nothing happens when it is closed.
    void close() noexcept;
    /// True from an open that succeeded to close, whatever became of the directory.
    bool isOpen() const noexcept { return watch_ != nullptr; }

    /// Returns what happened since the last wait, in its order, as soon as there is something; otherwise
    /// waits for it up to "milliseconds" (0: not at all, 0xFFFFFFFF: without end). The array is emptied
    /// first. A directory that goes is noticed within a second.
    WaitResult wait(unsigned long milliseconds, SIArray<SDirectoryChange>& changes);

    /// Ends a wait that is under way, and every later one until the next open, at once. Any thread may call
    /// it.
    void stop() noexcept;

    /// The system's error code of the last open or wait that failed; 0 before.
    unsigned long lastError() const noexcept { return lastError_; }

  private:
    struct Watch;

    WaitResult waitOnce(unsigned long milliseconds, SIArray<SDirectoryChange>& changes);
    WaitResult fetch(SIArray<SDirectoryChange>& changes);
    WaitResult fail(const Watch& watch) noexcept;

    Watch* watch_ = nullptr;
    void* stopEvent_;
    unsigned long lastError_ = 0;
};

}  // namespace TarnLibA500
