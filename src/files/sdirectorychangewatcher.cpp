#include "tarnlib/sdirectorychangewatcher.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

#include "diag/assert/levels.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "seam/nothrow.h"
#include "seam/osclock.h"
#include "strings/base/memory.h"
#include "system/systemtext.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sdirectorychangewatcher";
constexpr DWORD kWatched = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                           FILE_NOTIFY_CHANGE_ATTRIBUTES | FILE_NOTIFY_CHANGE_SIZE |
                           FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_CREATION;
constexpr DWORD kMinRecordBytes = 1024;
constexpr DWORD kMostOfServers = 64 * 1024;
// Not every system tells when a watched directory goes, so its path is looked at this often.
constexpr DWORD kLookMilliseconds = 1000;

struct FreeMemory {
    void operator()(void* block) const { memory::Free(block); }
};

/// How a request ends when the directory, or the way to it, goes. A removed one counts as refused.
bool MeansGone(DWORD error) {
    static constexpr DWORD kErrors[] = {ERROR_ACCESS_DENIED,  ERROR_DELETE_PENDING,  ERROR_FILE_NOT_FOUND,
                                        ERROR_PATH_NOT_FOUND, ERROR_NETNAME_DELETED, ERROR_DEV_NOT_EXIST,
                                        ERROR_UNEXP_NET_ERR,  ERROR_NOT_READY,       ERROR_DEVICE_REMOVED,
                                        ERROR_BAD_NETPATH};
    return std::find(std::begin(kErrors), std::end(kErrors), error) != std::end(kErrors);
}

bool IsGone(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(path, data)) return MeansGone(GetLastError());
    return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

constexpr DWORD kBareRecord = offsetof(FILE_NOTIFY_INFORMATION, FileName);

SDirectoryChange MakeChange(DWORD action, const wchar_t* name, DWORD units) {
    SDirectoryChange change;
    const bool isKnown = action >= FILE_ACTION_ADDED && action <= FILE_ACTION_RENAMED_NEW_NAME;
    if (isKnown) change.kind = static_cast<SDirectoryChange::Kind>(action);
    change.path = FromSystem(SWCharString(name, units).getString());
    return change;
}

/// Whether a record, and the one behind it, lie in what is left of the bytes.
bool IsSound(const FILE_NOTIFY_INFORMATION& record, DWORD left) {
    const DWORD name = record.FileNameLength;
    const DWORD step = record.NextEntryOffset;
    if (name > left - kBareRecord || name % sizeof(wchar_t) != 0) return false;
    return step == 0 ||
           (step >= kBareRecord + name && step <= left - kBareRecord && step % sizeof(wchar_t) == 0);
}

/// The records of a share come from its server as they are, so each is looked at before it is read. False for what are no
/// records.
bool ReadRecords(const unsigned char* records, DWORD bytes, SIArray<SDirectoryChange>& changes) {
    FILE_NOTIFY_INFORMATION record = {};
    for (DWORD at = 0; bytes - at >= kBareRecord; at += record.NextEntryOffset) {
        std::memcpy(&record, records + at, kBareRecord);  // where it stands depends on the length of names
        if (!IsSound(record, bytes - at)) return false;
        changes.Add(MakeChange(record.Action, reinterpret_cast<const wchar_t*>(records + at + kBareRecord),
                               record.FileNameLength / sizeof(wchar_t)));
        if (record.NextEntryOffset == 0) return true;
    }
    return false;
}

void TraceFailure(const SWCharString& directory, const char* what, DWORD error) noexcept try {
    TARN_TRACE_AT(levels::kFailure, kUnit, "watching \"%1\": %2 (%3)", ShownPath(directory), what,
                  error != ERROR_SUCCESS ? SystemErrorText(error) : SAnsiString("no error of the system"));
} catch (const std::bad_alloc&) {
    TraceText(levels::kFailure, kUnit, what);
}

/// What is left of a time that began with the object.
class Countdown {
  public:
    explicit Countdown(DWORD milliseconds) : start_(osclock::Tick()), milliseconds_(milliseconds) {}

    DWORD left() const {
        if (milliseconds_ == INFINITE) return INFINITE;
        const std::uint64_t passed = osclock::Tick() - start_;
        return passed < milliseconds_ ? milliseconds_ - static_cast<DWORD>(passed) : 0;
    }

  private:
    std::uint64_t start_;
    DWORD milliseconds_;
};

}  // namespace

/// An open directory and the one request for its changes.
struct SDirectoryChangeWatcher::Watch {
    Watch(const SAnsiString& directory, bool withSubtree, DWORD bytes)
        : path(LongSystemPath(directory)),
          records(static_cast<unsigned char*>(memory::Allocate(bytes))),
          recordBytes(bytes),
          subtree(withSubtree) {}

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    ~Watch() { cancel(); }

    bool open() {
        event = osfiles::NewEvent();
        if (!event) return false;
        request.hEvent = event.get();
        file = osfiles::Open(path.getString(), FILE_LIST_DIRECTORY, oscodes::kEveryShare, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED);
        return file && ask();
    }

    /// Makes sure that there is a request; true when there is.
    bool ask() {
        if (isAsked) return true;
        ResetEvent(request.hEvent);
        isAsked = requestChanges();
        if (isAsked || GetLastError() != ERROR_INVALID_PARAMETER || recordBytes <= kMostOfServers)
            return isAsked;
        TARN_TRACE_AT(levels::kLoss, kUnit, "watching \"%1\": its server records %2 bytes of changes, not %3",
                      ShownPath(path), kMostOfServers, recordBytes);
        recordBytes = kMostOfServers;
        isAsked = requestChanges();
        return isAsked;
    }

    bool requestChanges() {
        return osfiles::RequestChanges(file.get(), records.get(), recordBytes, subtree, kWatched, request);
    }

    /// The system writes into the records until the request has ended, so this waits for it.
    void cancel() {
        if (!isAsked) return;
        osfiles::CancelRequest(file.get(), request);
        isAsked = false;
    }

    SWCharString path;
    std::unique_ptr<unsigned char, FreeMemory> records;
    DWORD recordBytes;
    bool subtree;
    bool isAsked = false;
    osfiles::File event;
    osfiles::File file;
    OVERLAPPED request = {};
};

const unsigned long SDirectoryChangeWatcher::defaultRecordBytes;  // the object that a reference means

SDirectoryChangeWatcher::SDirectoryChangeWatcher() noexcept : stopEvent_(nullptr) {
    osfiles::File event = osfiles::NewEvent();
    if (event)
        stopEvent_ = event.release();
    else
        lastError_ = GetLastError();
}

SDirectoryChangeWatcher::~SDirectoryChangeWatcher() {
    close();
    if (stopEvent_ != nullptr) osfiles::Close(stopEvent_);
}

bool SDirectoryChangeWatcher::open(const SAnsiString& directory, bool subtree, unsigned long recordBytes) {
    close();
    if (stopEvent_ == nullptr) {  // lastError is the constructor's
        TraceFailure(ToSystem(directory), "cannot make an event", lastError_);
        return false;
    }
    ResetEvent(stopEvent_);
    std::unique_ptr<Watch> watch(new (seam::kNoThrow)
                                     Watch(directory, subtree, std::max(recordBytes, kMinRecordBytes)));
    if (!watch) throw BadAllocation();
    if (!watch->open()) {
        fail(*watch);
        return false;
    }
    watch_ = watch.release();
    return true;
}

void SDirectoryChangeWatcher::close() noexcept {
    delete watch_;
    watch_ = nullptr;
}

SDirectoryChangeWatcher::WaitResult SDirectoryChangeWatcher::wait(unsigned long milliseconds,
                                                                  SIArray<SDirectoryChange>& changes) {
    changes.RemoveAll();
    if (!isOpen()) {
        lastError_ = ERROR_INVALID_HANDLE;
        TraceFailure(SWCharString(), "no directory is open", lastError_);
        return failed;
    }
    const Countdown countdown(milliseconds);
    for (;;) {
        const DWORD left = countdown.left();
        const WaitResult result = waitOnce(std::min(left, kLookMilliseconds), changes);
        if (result != timedOut) return result;
        if (IsGone(watch_->path.getString())) {
            TraceFailure(watch_->path, "the directory is gone", ERROR_SUCCESS);
            return directoryGone;
        }
        if (left == 0) return timedOut;
    }
}

SDirectoryChangeWatcher::WaitResult SDirectoryChangeWatcher::waitOnce(unsigned long milliseconds,
                                                                      SIArray<SDirectoryChange>& changes) {
    if (!watch_->ask()) return fail(*watch_);
    const HANDLE events[] = {stopEvent_, watch_->request.hEvent};
    switch (osfiles::WaitForOne(events, 2, milliseconds)) {
        case WAIT_OBJECT_0:
            return stopped;
        case WAIT_OBJECT_0 + 1:
            return fetch(changes);
        case WAIT_TIMEOUT:
            return timedOut;
        default:
            return fail(*watch_);
    }
}

/// Reads what a request that has ended brought. When that throws, the request counts as open still, and the
/// next wait comes here again.
SDirectoryChangeWatcher::WaitResult SDirectoryChangeWatcher::fetch(SIArray<SDirectoryChange>& changes) {
    DWORD bytes = 0;
    const bool hasSucceeded = osfiles::RequestedChanges(watch_->file.get(), watch_->request, bytes);
    const DWORD error = hasSucceeded ? ERROR_SUCCESS : GetLastError();
    const bool isRead = !hasSucceeded || bytes == 0 ||
                        ReadRecords(watch_->records.get(), std::min(bytes, watch_->recordBytes), changes);
    watch_->isAsked = false;
    if (!isRead) {
        changes.RemoveAll();
        TraceFailure(watch_->path, "the records of changes are damaged: they are lost", ERROR_INVALID_DATA);
        return changesLost;
    }
    // The system drops what it has no room for, and says so in one of two ways.
    if (error == ERROR_NOTIFY_ENUM_DIR || (hasSucceeded && bytes == 0)) {
        TraceFailure(watch_->path, "too many changes: they are lost", error);
        return changesLost;
    }
    // A request ends with the thread that made it.
    if (error == ERROR_OPERATION_ABORTED) return watch_->ask() ? timedOut : fail(*watch_);
    if (hasSucceeded) return changesSeen;
    SetLastError(error);
    return fail(*watch_);
}

SDirectoryChangeWatcher::WaitResult SDirectoryChangeWatcher::fail(const Watch& watch) noexcept {
    lastError_ = GetLastError();
    TraceFailure(watch.path, "the system refuses", lastError_);
    return MeansGone(lastError_) ? directoryGone : failed;
}

void SDirectoryChangeWatcher::stop() noexcept {
    if (stopEvent_ != nullptr) SetEvent(stopEvent_);
}

}  // namespace TarnLibA500
