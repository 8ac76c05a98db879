#include "tracelog/logfile.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "console/console.h"
#include "oscodes/oscodes.h"
#include "seam/osclock.h"
#include "seam/ostext.h"
#include "tracelog/effective.h"
#include "tracelog/logline.h"
#include "tracelog/oldlogs.h"
#include "tracelog/osfile.h"

namespace TraceLog400::detail {
namespace {

constexpr ULONGLONG kRetryMilliseconds = 1000;
constexpr ULONGLONG kSweepMilliseconds = 3'600'000;
constexpr unsigned kLastNumber = 999'999;
constexpr int kMostTakenNumbers = 1000;  // are stepped over at a time

std::size_t LinesIn(const char* lines, std::size_t bytes) {
    return static_cast<std::size_t>(std::count(lines, lines + bytes, '\n'));
}

// Up to and with the last line end; 0 when there is none.
std::size_t WholeLines(const char* lines, std::size_t bytes) {
    while (bytes > 0 && lines[bytes - 1] != '\n') --bytes;
    return bytes;
}

std::wstring NumberedPath(const std::wstring& path, unsigned number) {
    constexpr std::size_t kExtension = 4;  // ".log"
    wchar_t inserted[16];
    std::swprintf(inserted, sizeof inserted / sizeof inserted[0], L".%03u", number);
    return std::wstring(path).insert(path.size() - kExtension, inserted);
}

// The system's text, as far as it is there, and the number.
std::string ErrorText(DWORD error) {
    constexpr DWORD kMaxText = 256;
    wchar_t text[kMaxText];
    DWORD length = ostext::ErrorText(error, 0, text, kMaxText);
    while (length > 0 && text[length - 1] <= L' ') --length;
    return ToUtf8(std::wstring(text, length)) + " (" + std::to_string(error) + ")";
}

// Where no log can take it.
void Say(const std::string& text) {
    const std::string line = text + "\n";
    console::Write(stderr, line.data(), line.size(), CP_UTF8);
    std::fflush(stderr);
    OutputDebugStringW(ToWide(line).c_str());
}

}  // namespace

void LogFile::append(const char* lines, std::size_t bytes) {
    if (!isReady()) return countLost(lines, bytes);
    while (bytes > 0) {
        const std::size_t part = fitting(lines, bytes);
        if (part == 0) {
            rotate();
            if (!isReady()) return countLost(lines, bytes);
            continue;
        }
        if (!writeAll(lines, part)) return countLost(lines + part, bytes - part);
        lines += part;
        bytes -= part;
    }
    removeOld();
    if (fileSettings.alwaysClose) close();
}

// The lines that still go into the file; at least one, and all of them when the file cannot be renamed at
// present.
std::size_t LogFile::fitting(const char* lines, std::size_t bytes) const {
    const std::uint64_t limit = fileSettings.sizeLimit;
    if (limit == 0 || size_ + bytes <= limit || osclock::Tick() < nextRotation_) return bytes;
    const std::size_t part = size_ < limit ? WholeLines(lines, static_cast<std::size_t>(limit - size_)) : 0;
    if (part != 0 || size_ != 0) return part;
    return static_cast<std::size_t>(std::find(lines, lines + bytes, '\n') - lines) + 1;
}

bool LogFile::isReady() {
    if (file_ != INVALID_HANDLE_VALUE) lookWhetherItIsThere();
    if (file_ != INVALID_HANDLE_VALUE) return true;
    if (osclock::Tick() < nextTry_) return false;
    const DWORD error = open();
    if (error != ERROR_SUCCESS) fail(error);
    return error == ERROR_SUCCESS;
}

// A file that somebody deleted would go on taking lines that nobody sees.
void LogFile::lookWhetherItIsThere() {
    const ULONGLONG now = osclock::Tick();
    if (now - lastLook_ < kRetryMilliseconds) return;
    lastLook_ = now;
    const bool hasMoved = openPath_ != PathOfLog(device_);
    if (hasMoved || !osfile::Exists(openPath_.c_str())) close();
    if (hasMoved && !fileSettings.keep) removeWritten();
}

DWORD LogFile::open() {
    openPath_ = PathOfLog(device_);
    file_ = osfile::OpenForAppending(openPath_.c_str());
    if (file_ == INVALID_HANDLE_VALUE && GetLastError() == ERROR_PATH_NOT_FOUND) {
        makeDirectory();
        file_ = osfile::OpenForAppending(openPath_.c_str());
    }
    if (file_ == INVALID_HANDLE_VALUE) return GetLastError();
    if (!osfile::Size(file_, size_)) size_ = 0;
    lastLook_ = osclock::Tick();
    if (isTorn_) endTornLine();
    if (lost_ != 0) reportLoss();
    return ERROR_SUCCESS;
}

void LogFile::makeDirectory() const {
    const std::wstring directory = CurrentDirectoryOfLogs();
    for (std::size_t slash = directory.find(L'\\', 3); slash != directory.npos;
         slash = directory.find(L'\\', slash + 1))
        osfile::MakeDirectory(directory.substr(0, slash).c_str());
}

// Writes lines and says how many bytes of them are in the file, always whole lines. A write that succeeds and
// is too short is a full disk; the system has no error to tell then.
DWORD LogFile::writeLines(const char* lines, std::size_t bytes, std::size_t& kept) {
    DWORD written = 0;
    const bool isWritten = osfile::Write(file_, lines, static_cast<DWORD>(bytes), written);
    const DWORD error = isWritten ? ERROR_DISK_FULL : GetLastError();
    kept = WholeLines(lines, written);
    std::uint64_t end = size_ + written;
    if (kept != written && osfile::Size(file_, end))
        isTorn_ = !osfile::Cut(openPath_.c_str(), end - (written - kept));
    size_ += kept;
    return isWritten && written == bytes ? ERROR_SUCCESS : error;
}

// What stands in the file without an end gets one, so that the next line is whole.
void LogFile::endTornLine() {
    DWORD written = 0;
    isTorn_ = !osfile::Write(file_, kLineEnd, kLineEndBytes, written) || written != kLineEndBytes;
}

bool LogFile::writeAll(const char* lines, std::size_t bytes) {
    std::size_t kept = 0;
    const DWORD error = writeLines(lines, bytes, kept);
    isFailing_ = isFailing_ && error != ERROR_SUCCESS;
    if (error == ERROR_SUCCESS) return true;
    fail(error);
    countLost(lines + kept, bytes - kept);
    return false;
}

// An error is said once, until something was written again.
void LogFile::fail(DWORD error) {
    nextTry_ = osclock::Tick() + kRetryMilliseconds;
    close();
    if (!isFailing_)
        Say("cannot write the log " + ToUtf8(openPath_) + ": " + ErrorText(error) +
            "; lines are lost until this works again");
    isFailing_ = true;
}

void LogFile::countLost(const char* lines, std::size_t bytes) {
    if (bytes != 0) lost_ += LinesIn(lines, bytes);
}

std::string LogFile::textOfLoss() const {
    return std::to_string(lost_) + " lines were lost";
}

// A line of the log's own.
bool LogFile::writeWarning(const std::string& text) {
    const std::string line = MakeLine('w', text.data(), text.size());
    std::size_t kept = 0;
    return writeLines(line.data(), line.size(), kept) == ERROR_SUCCESS;
}

void LogFile::reportLoss() {
    if (writeWarning(textOfLoss())) lost_ = 0;
}

// Without memory the count stays, for the next one who can tell it.
void LogFile::tellLoss() noexcept try {
    if (lost_ == 0) return;
    if (file_ != INVALID_HANDLE_VALUE) {
        reportLoss();
    } else {
        open();
    }
    if (lost_ != 0) Say(textOfLoss() + " of the log " + ToUtf8(openPath_));
} catch (const std::bad_alloc&) {
    return;
}

// Other processes' files grow old while this one writes, so it looks now and then, and after each full file.
void LogFile::removeOld() {
    const OldLogLimits limits{fileSettings.countLimit, fileSettings.dayLimit};
    if ((limits.files == 0 && limits.days == 0) || osclock::Tick() < nextSweep_) return;
    nextSweep_ = osclock::Tick() + kSweepMilliseconds;
    try {
        const OldLogFailure failure = RemoveOldLogs(limits, device_);
        if (failure.error != ERROR_SUCCESS && !hasOldThatStay_)
            writeWarning("cannot remove the old log " + ToUtf8(failure.path) + ": " +
                         ErrorText(failure.error));
        hasOldThatStay_ = failure.error != ERROR_SUCCESS;
    } catch (const std::bad_alloc&) {
        return;  // until the next look
    }
}

void LogFile::rotate() {
    nextRotation_ = 0;
    close();
    if (!renameToFree()) {
        nextRotation_ = osclock::Tick() + kRetryMilliseconds;
        return;
    }
    nextSweep_ = 0;
    if (fileSettings.keep) return;
    // Only the newest full file stays; the one before goes now that the renaming has worked.
    if (!newestFull_.empty()) osfile::Remove(newestFull_.c_str());
    newestFull_ = NumberedPath(openPath_, lastNumber_);
}

bool LogFile::renameToFree() {
    for (int taken = 0; taken < kMostTakenNumbers; ++taken) {
        const unsigned number = lastNumber_ % kLastNumber + 1;
        const bool isRenamed = osfile::Rename(openPath_.c_str(), NumberedPath(openPath_, number).c_str());
        const DWORD error = isRenamed ? ERROR_SUCCESS : GetLastError();
        if (!isRenamed && !oscodes::IsTaken(error)) return false;
        lastNumber_ = number;
        if (isRenamed) return true;
    }
    return false;  // the next try goes on from here
}

void LogFile::close() {
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
}

void LogFile::removeWritten() {
    if (!newestFull_.empty()) osfile::Remove(newestFull_.c_str());
    if (!openPath_.empty()) osfile::Remove(openPath_.c_str());
    newestFull_.clear();
}

void LogFile::finish(bool discard) {
    tellLoss();
    close();
    if (discard) removeWritten();
    newestFull_.clear();
    openPath_.clear();
    nextTry_ = nextRotation_ = nextSweep_ = 0;
    lastNumber_ = 0;
    isFailing_ = hasOldThatStay_ = false;
}

}  // namespace TraceLog400::detail
