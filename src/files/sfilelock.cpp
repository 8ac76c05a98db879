#include "tarnlib/sfilelock.h"

#include <new>

#include "files/filetimes.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "tarnlib/sassert.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilelock";
constexpr int kTraceLevel = 2;
constexpr DWORD kRoundMilliseconds = 100;

using CreationTime = unsigned long long;  // 0: of no file

enum class Deletion { Done, Gone, Anothers, Refused };

bool IsExistence(DWORD error) {
    return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

bool IsAbsence(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

CreationTime ToNumber(const FILETIME& time) {
    return static_cast<CreationTime>(TicksOf(time));
}

bool ReadCreationTime(const wchar_t* path, CreationTime& created) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(path, data)) return false;
    created = ToNumber(data.ftCreationTime);
    return true;
}

/// Creates the file unless it exists. The time is left alone when it cannot be read: that is no reason to
/// have no lock.
bool CreateLockFile(const wchar_t* path, CreationTime& created) {
    const HANDLE file = osfiles::Open(path, GENERIC_READ | GENERIC_WRITE, osfiles::kEveryShare, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    if (file == INVALID_HANDLE_VALUE) return false;
    FILETIME time;
    if (osfiles::CreationTime(file, time)) created = ToNumber(time);
    osfiles::Close(file);
    return true;
}

/// Deletes the file that was looked at, and not one that another process has put in its place since: two
/// waiters may find the same file stale, and the slower one would delete the lock of the faster one.
Deletion DeleteLockFile(const wchar_t* path, CreationTime seen) {
    const HANDLE file =
        osfiles::Open(path, DELETE | FILE_READ_ATTRIBUTES, osfiles::kEveryShare, nullptr, OPEN_EXISTING, 0);
    if (file == INVALID_HANDLE_VALUE) return IsAbsence(GetLastError()) ? Deletion::Gone : Deletion::Refused;
    FILETIME time;
    Deletion deletion = Deletion::Refused;
    if (osfiles::CreationTime(file, time)) {
        if (ToNumber(time) != seen) {
            deletion = Deletion::Anothers;
        } else if (osfiles::RemoveOnClose(file)) {
            deletion = Deletion::Done;
        }
    }
    osfiles::Close(file);
    return deletion;
}

/// What a waiter has seen of the lock file.
class Observation {
  public:
    explicit Observation(unsigned staleLimit) : staleLimit_(staleLimit) {}

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
        TARN_TRACE_AT(kTraceLevel, kUnit, "SFileLock::lockFile: Timeout waiting for file lock");
        return DeleteLockFile(path, created) == Deletion::Done;
    }

  private:
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
        TraceText(kTraceLevel, kUnit, "SFileLock: out of memory, the lock file is left behind");
    }
}

SFileLock::ErrorCodes SFileLock::lock() {
    const SWCharString path = maxTries_ != 0 ? LongSystemPath(lockFilePath_) : SWCharString();
    Observation observation(staleLimit_);
    bool hasBrokenStale = false;
    for (unsigned tries = 0; tries < maxTries_; ++tries) {
        if (CreateLockFile(path.getString(), ownCreationTime_)) {
            released_ = false;
            return hasBrokenStale ? lockOkBrokeStale : lockOk;
        }
        if (!osfiles::WasBeingDeleted() && !IsExistence(GetLastError())) return lockCreateFailed;
        if (observation.breakStale(path.getString())) {
            hasBrokenStale = true;
        } else {
            osfiles::Sleep(kRoundMilliseconds);
        }
    }
    TARN_TRACE_AT(kTraceLevel, kUnit, "SFileLock::lockFile: Giving up on waiting for file.");
    return lockTimedOut;
}

SFileLock::ErrorCodes SFileLock::unlock() {
    if (lockFilePath_.isEmpty()) {
        released_ = true;
        return lockOk;
    }
    const SWCharString path = LongSystemPath(lockFilePath_);
    CreationTime created = 0;
    if (!ReadCreationTime(path.getString(), created))
        return IsAbsence(GetLastError()) ? lockNotOwned : unlockFailed;
    const bool isOwn = ownCreationTime_ == 0 || ownCreationTime_ == created;
    const Deletion deletion = isOwn ? DeleteLockFile(path.getString(), created) : Deletion::Anothers;
    released_ = deletion == Deletion::Done || deletion == Deletion::Anothers;
    if (released_) return deletion == Deletion::Done ? lockOk : lockNotOwned;
    return deletion == Deletion::Gone ? lockNotOwned : unlockFailed;
}

}  // namespace TarnLibA500
