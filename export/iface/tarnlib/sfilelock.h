#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// A lock between processes that agree on the path of a lock file: who creates the file has the lock, who
/// deletes it gives it back.
///
/// It is made for turns: short work that processes, which may die at it, do one after the other. **It cannot
/// keep a second instance of a program out; SInstanceLock does that.** A lock that is held for long is taken for
/// stale after staleLimit rounds and deleted under its living holder, and with autoUnlock the destructor of the
/// one who did not get the lock deletes it too.
///
/// Nothing throws but "bad allocation"; results are codes, and failures are traced. Waiting is polling, a round
/// every 100 ms, and not fair. A lock whose holder died stays behind: a waiter that sees the same file in
/// staleLimit rounds in a row deletes it. Therefore staleLimit * 100 ms must be longer than anybody ever holds
/// the lock; a holder that takes longer loses it, and its unlock says so. Holders are told apart by the creation
/// time of the file: lock sets one that no other holder has (now, but for 1.7 seconds), and nobody writes into the
/// file. Only a file system that keeps no creation times better than to seconds can mistake one holder for
/// another. Directories on the way must exist; a relative path is looked up anew at every call. One thread at a
/// time uses an object; two objects exclude each other as two processes do.
///
///     SFileLock lock("C:\\data\\queue.lock", 600, 100, false);  // stale after a minute, wait ten seconds
///     switch (lock.lock()) {
///         case SFileLock::lockOkBrokeStale:
///             RepairQueue();  // the last holder died at work
///             [[fallthrough]];
///         case SFileLock::lockOk:
///             WorkOnQueue();
///             return lock.unlock() == SFileLock::lockOk;
///         default:
///             return false;
///     }
class TARN_API SFileLock {
  public:
    /// What lock and unlock came to. There is no 1.
    enum ErrorCodes {
        lockOk = 0,            ///< the lock was taken, or given back
        lockTimedOut = 2,      ///< gave up after maxTries rounds
        unlockFailed = 3,      ///< the lock file could not be examined or deleted
        lockOkBrokeStale = 4,  ///< the lock was taken after this call deleted a stale one
        lockNotOwned = 5,      ///< unlock: the file is gone, or another holder's
        lockCreateFailed = 6   ///< the lock file could not be created, and not because it exists
    };

    /// Touches no file. staleLimit: after how many unchanged looks at the file in a row it is deleted; the
    /// first look is none, and 0 acts as 1. maxTries: after how many failed rounds lock gives up; with 0 it
    /// does so at once, without a look at the disk. autoUnlock: the destructor unlocks.
    SFileLock(const SAnsiString& lockFilePath, unsigned short staleLimit, unsigned short maxTries,
              bool autoUnlock);
    /// Everything is copied, the ownership of a lock that is held too: of two copies one gives it back.
    SFileLock(const SFileLock& other) noexcept;
    /// As the copy constructor. What this object held before is not given back.
    SFileLock& operator=(const SFileLock& other) noexcept;
    /// With autoUnlock, gives back what unlock has not given back yet. Deliberately also after a lock that
    /// timed out, or none at all: then it deletes the lock file whoever made it. Failures are traced.
    ~SFileLock();

    /// Waits for the lock: lockOk, lockOkBrokeStale, lockTimedOut or lockCreateFailed. A stale file that is
    /// found in the last round is deleted, and still the result is lockTimedOut. Of several waiters who find a
    /// file stale one deletes it.
    ErrorCodes lock();

    /// Gives the lock back: lockOk, also for an empty path; lockNotOwned when the file is gone or was created
    /// by another since; unlockFailed. Without a lock before, it deletes the lock file whoever made it.
    ErrorCodes unlock();

  private:
    bool released_ = false;
    bool autoUnlock_;
    SAnsiString lockFilePath_;
    unsigned short staleLimit_;
    unsigned short maxTries_;
    unsigned long long ownCreationTime_ = 0;  ///< of the file as lock created it; a FILETIME, 0 before
};

}  // namespace TarnLibA500
