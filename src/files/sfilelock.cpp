#include "tarnlib/sfilelock.h"

#include <new>

#include "diag/assert/levels.h"
#include "files/filetimes.h"
#include "files/osfiles.h"
#include "files/patience.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "oscodes/oscodes.h"
#include "seam/osclock.h"
#include "tarnlib/sassert.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilelock";
constexpr DWORD kRoundMilliseconds = 100;

using CreationTime = unsigned long long;  // 0: of no file

enum class Deletion { Done, Gone, Anothers, InUse, Refused };

CreationTime ToNumber(const FILETIME& time) {
    return static_cast<CreationTime>(TicksOf(time));
}

bool ReadCreationTime(const wchar_t* path, CreationTime& created) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(path, data)) return false;
    created = ToNumber(data.ftCreationTime);
    return true;
}

/// A time that no other lock file has: now, with a low part (1.7 seconds) of this process's own. File systems
/// that are less exact keep some of it.
FILETIME TimeOfNewHolder() {
    constexpr DWORD kOwnPart = 0xFFFFFF;
    FILETIME time = osclock::SystemTime();
    time.dwLowDateTime = (time.dwLowDateTime & ~kOwnPart) | (NextUniqueNumber() & kOwnPart);
    return time;
}

/// Creates the file unless it exists, and gives it a time of its own: the system's may be that of the file which
/// had the name before. Nobody can delete it before that is done. The time is left alone when it cannot be
/// read: that is no reason to have no lock.
bool CreateLockFile(const wchar_t* path, CreationTime& created) {
    const osfiles::File file = osfiles::Open(path, GENERIC_READ | GENERIC_WRITE, oscodes::kShareButDelete,
                                             nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    if (!file) return false;
    osfiles::SetCreationTime(file.get(), TimeOfNewHolder());
    FILETIME time;  // as the file system keeps it
    if (osfiles::CreationTime(file.get(), time)) created = ToNumber(time);
    return true;
}

/// Deletes the file that was looked at, and not one that another process has put in its place since: two
/// waiters may find the same file stale, and the slower one would delete the lock of the faster one. Only one at
/// a time can have the file in hand, so that of those two one has deleted it, and the other knows that he has
/// not: a second mark for deletion is no failure everywhere.
Deletion DeleteLockFile(const wchar_t* path, CreationTime seen) {
    const osfiles::File file = osfiles::Open(path, DELETE | FILE_READ_ATTRIBUTES, oscodes::kShareButDelete,
                                             nullptr, OPEN_EXISTING, 0);
    if (!file) {
        const DWORD error = GetLastError();
        if (oscodes::IsMissing(error) || osfiles::WasBeingDeleted()) return Deletion::Gone;
        return IsInUse(error) ? Deletion::InUse : Deletion::Refused;
    }
    FILETIME time;
    if (!osfiles::CreationTime(file.get(), time)) return Deletion::Refused;
    if (ToNumber(time) != seen) return Deletion::Anothers;
    return osfiles::RemoveOnClose(file.get()) ? Deletion::Done : Deletion::Refused;
}

/// The holder's deletion, which a waiter who takes the file for stale, or a scanner, hinders for a moment. Every try looks
/// whose the file is. One that has gone since the first is given back, whoever has deleted it.
Deletion DeleteOwnLockFile(const wchar_t* path, CreationTime own) {
    Deletion deletion = Deletion::Done;
    const auto remove = [&] {
        deletion = DeleteLockFile(path, own);
        if (deletion == Deletion::Gone) return DWORD{ERROR_FILE_NOT_FOUND};
        return deletion == Deletion::InUse || deletion == Deletion::Refused ? GetLastError()
                                                                            : DWORD{ERROR_SUCCESS};
    };
    const DWORD error = Patience().retryRemoval(remove);
    return error == ERROR_SUCCESS && deletion == Deletion::Gone ? Deletion::Done : deletion;
}

/// Traces a failure with the system's error code, which stays what it was.
void TraceFailure(int level, const char* what, const SAnsiString& path) {
    const DWORD error = GetLastError();
    TARN_TRACE_AT(level, kUnit, "%1 %2: error %3", what, path, error);
    SetLastError(error);
}

/// What a waiter has seen of the lock file.
class Observation {
  public:
    Observation(const SAnsiString& path, unsigned staleLimit) : path_(path), staleLimit_(staleLimit) {}

    /// Looks at the file once more, and deletes it when it is stale; true when it did.
    bool breakStale(const wchar_t* path) {
        CreationTime created = 0;
        const bool isThere = ReadCreationTime(path, created);
        if (isThere && created != lastSeen_) {
            lastSeen_ = created;
            unchanged_ = 0;
            return false;
        }
        // A file that vanished counts as unchanged, but there is nothing to delete.
        ++unchanged_;
        if (!isThere || unchanged_ < staleLimit_) return false;
        unchanged_ = 0;
        TARN_TRACE_AT(levels::kLoss, kUnit, "SFileLock::lockFile: Timeout waiting for file lock");
        const Deletion deletion = DeleteLockFile(path, created);
        if (deletion == Deletion::Done)
            TARN_TRACE_AT(levels::kLoss, kUnit, "%1 was left behind and has been deleted", path_);
        if (deletion == Deletion::Refused) TraceFailure(levels::kFailure, "cannot delete the stale", path_);
        return deletion == Deletion::Done;
    }

  private:
    const SAnsiString& path_;
    unsigned staleLimit_;
    unsigned unchanged_ = 0;
    CreationTime lastSeen_ = 0;
};

}  // namespace

SFileLock::SFileLock(const SAnsiString& lockFilePath, unsigned short staleLimit, unsigned short maxTries,
                     bool autoUnlock)
    : autoUnlock_(autoUnlock), lockFilePath_(lockFilePath), staleLimit_(staleLimit), maxTries_(maxTries) {}

SFileLock::SFileLock(const SFileLock& other) noexcept = default;
SFileLock& SFileLock::operator=(const SFileLock& other) noexcept = default;

SFileLock::~SFileLock() {
    if (!autoUnlock_ || released_) return;
    try {
        unlock();
    } catch (const std::bad_alloc&) {
        TraceText(levels::kLoss, kUnit, "SFileLock: out of memory, the lock file is left behind");
    }
}

SFileLock::ErrorCodes SFileLock::lock() {
    const SWCharString path = maxTries_ != 0 ? LongSystemPath(lockFilePath_) : SWCharString();
    Observation observation(lockFilePath_, staleLimit_);
    bool hasBrokenStale = false;
    for (unsigned tries = 0; tries < maxTries_; ++tries) {
        if (CreateLockFile(path.getString(), ownCreationTime_)) {
            released_ = false;
            return hasBrokenStale ? lockOkBrokeStale : lockOk;
        }
        if (!osfiles::WasBeingDeleted() && !oscodes::IsTaken(GetLastError())) {
            TraceFailure(levels::kFailure, "cannot create", lockFilePath_);
            return lockCreateFailed;
        }
        if (observation.breakStale(path.getString())) {
            hasBrokenStale = true;
        } else {
            osclock::Sleep(kRoundMilliseconds);
        }
    }
    TARN_TRACE_AT(levels::kFailure, kUnit, "SFileLock::lockFile: Giving up on waiting for file.");
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 was not to be had in %2 rounds", lockFilePath_, maxTries_);
    return lockTimedOut;
}

SFileLock::ErrorCodes SFileLock::unlock() {
    if (lockFilePath_.isEmpty()) {
        released_ = true;
        return lockOk;
    }
    const SWCharString path = LongSystemPath(lockFilePath_);
    CreationTime created = 0;
    Deletion deletion = Deletion::Anothers;
    if (!ReadCreationTime(path.getString(), created)) {
        const bool isGone = oscodes::IsMissing(GetLastError()) || osfiles::WasBeingDeleted();
        deletion = isGone ? Deletion::Gone : Deletion::Refused;
    } else if (ownCreationTime_ == 0 || ownCreationTime_ == created) {
        deletion = DeleteOwnLockFile(path.getString(), created);
    }
    released_ = deletion == Deletion::Done || deletion == Deletion::Anothers;
    if (deletion == Deletion::Done) return lockOk;
    if (deletion == Deletion::Gone || deletion == Deletion::Anothers) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 was deleted while it was held", lockFilePath_);
        return lockNotOwned;
    }
    TraceFailure(levels::kFailure, "cannot delete", lockFilePath_);
    return unlockFailed;
}

}  // namespace TarnLibA500
