#include "tracelog/logfile.h"

#include <algorithm>
#include <cstdio>

#include "tracelog/effective.h"
#include "tracelog/logline.h"
#include "tracelog/osfile.h"

namespace TraceLog400::detail {
namespace {

constexpr ULONGLONG kRetryMilliseconds = 1000;
constexpr unsigned kLastNumber = 999'999;

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

// The system's text, as far as it is there.
std::string ErrorText(unsigned long error) {
    constexpr DWORD kMaxText = 256;
    wchar_t text[kMaxText];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  0, text, kMaxText, nullptr);
    while (length > 0 && text[length - 1] <= L' ') --length;
    return ToUtf8(std::wstring(text, length));
}

void Complain(const std::wstring& path, unsigned long error) {
    const std::string text = "cannot write the log " + ToUtf8(path) + ": " + ErrorText(error) + " (" +
                             std::to_string(error) + "); lines are lost until this works again\n";
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
    OutputDebugStringW(ToWide(text).c_str());
}

}  // namespace

std::wstring LogFile::path() const {
    return CurrentDirectoryOfLogs() + CurrentIdentity().fileStem + (device_.empty() ? L"" : L"." + device_) +
           L".log";
}

void LogFile::append(const char* lines, std::size_t bytes) {
    if (!isReady()) return fail(ERROR_SUCCESS, lines, bytes);
    while (bytes > 0) {
        const std::size_t part = fitting(lines, bytes);
        if (part == 0) {
            rotate();
            if (file_ == INVALID_HANDLE_VALUE && !open()) return fail(GetLastError(), lines, bytes);
            continue;
        }
        if (!writeAll(lines, part)) return fail(ERROR_SUCCESS, lines + part, bytes - part);
        lines += part;
        bytes -= part;
    }
    if (fileSettings.alwaysClose) close();
}

// The lines that still go into the file; at least one, and all of them when the file cannot be renamed at
// present.
std::size_t LogFile::fitting(const char* lines, std::size_t bytes) const {
    const std::uint64_t limit = fileSettings.sizeLimit;
    if (limit == 0 || size_ + bytes <= limit || GetTickCount64() < nextRotation_) return bytes;
    const std::size_t part = size_ < limit ? WholeLines(lines, static_cast<std::size_t>(limit - size_)) : 0;
    if (part != 0 || size_ != 0) return part;
    return static_cast<std::size_t>(std::find(lines, lines + bytes, '\n') - lines) + 1;
}

bool LogFile::isReady() {
    if (file_ != INVALID_HANDLE_VALUE) lookWhetherItIsThere();
    if (file_ != INVALID_HANDLE_VALUE) return true;
    if (GetTickCount64() < nextTry_) return false;
    if (open()) return true;
    fail(GetLastError(), nullptr, 0);
    return false;
}

// A file that somebody deleted would go on taking lines that nobody sees.
void LogFile::lookWhetherItIsThere() {
    const ULONGLONG now = GetTickCount64();
    if (now - lastLook_ < kRetryMilliseconds) return;
    lastLook_ = now;
    const bool hasMoved = openPath_ != path();
    if (hasMoved || !osfile::Exists(openPath_.c_str())) close();
    if (hasMoved && !fileSettings.keep) removeWritten();
}

bool LogFile::open() {
    openPath_ = path();
    file_ = osfile::OpenForAppending(openPath_.c_str());
    if (file_ == INVALID_HANDLE_VALUE && GetLastError() == ERROR_PATH_NOT_FOUND) {
        makeDirectory();
        file_ = osfile::OpenForAppending(openPath_.c_str());
    }
    if (file_ == INVALID_HANDLE_VALUE) return false;
    if (!osfile::Size(file_, size_)) size_ = 0;
    lastLook_ = GetTickCount64();
    if (isTorn_) endTornLine();
    if (lost_ != 0) reportLoss();
    return true;
}

void LogFile::makeDirectory() const {
    const std::wstring directory = CurrentDirectoryOfLogs();
    for (std::size_t slash = directory.find(L'\\', 3); slash != directory.npos;
         slash = directory.find(L'\\', slash + 1))
        osfile::MakeDirectory(directory.substr(0, slash).c_str());
}

// Writes lines and returns how many bytes of them are in the file, always whole lines; the error is kept.
std::size_t LogFile::writeLines(const char* lines, std::size_t bytes) {
    DWORD written = 0;
    if (osfile::Write(file_, lines, static_cast<DWORD>(bytes), written) && written == bytes) {
        size_ += bytes;
        return bytes;
    }
    const DWORD error = GetLastError();
    const std::size_t kept = WholeLines(lines, written);
    std::uint64_t end = size_ + written;
    if (kept != written && osfile::Size(file_, end))
        isTorn_ = !osfile::Cut(openPath_.c_str(), end - (written - kept));
    size_ += kept;
    SetLastError(error != ERROR_SUCCESS ? error : ERROR_DISK_FULL);
    return kept;
}

// What stands in the file without an end gets one, so that the next line is whole.
void LogFile::endTornLine() {
    DWORD written = 0;
    isTorn_ = !osfile::Write(file_, kLineEnd, kLineEndBytes, written) || written != kLineEndBytes;
}

bool LogFile::writeAll(const char* lines, std::size_t bytes) {
    const std::size_t kept = writeLines(lines, bytes);
    if (kept != bytes) {
        fail(GetLastError(), lines + kept, bytes - kept);
        return false;
    }
    isFailing_ = false;
    return true;
}

// Counts lines as lost; an error is said once, until something was written again.
void LogFile::fail(unsigned long error, const char* lines, std::size_t bytes) {
    countLost(lines, bytes);
    if (error == ERROR_SUCCESS) return;
    nextTry_ = GetTickCount64() + kRetryMilliseconds;
    close();
    if (!isFailing_) Complain(openPath_, error);
    isFailing_ = true;
}

void LogFile::countLost(const char* lines, std::size_t bytes) {
    if (bytes != 0) lost_ += LinesIn(lines, bytes);
}

void LogFile::reportLoss() {
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%llu lines were lost", lost_);
    const std::string line = MakeLine('w', text, static_cast<std::size_t>(length));
    if (writeLines(line.data(), line.size()) == line.size()) lost_ = 0;
}

void LogFile::rotate() {
    nextRotation_ = 0;
    close();
    if (!renameToFree()) {
        nextRotation_ = GetTickCount64() + kRetryMilliseconds;
        return;
    }
    if (fileSettings.keep) return;
    // Only the newest full file stays; the one before goes now that the renaming has worked.
    if (!newestFull_.empty()) osfile::Remove(newestFull_.c_str());
    newestFull_ = NumberedPath(openPath_, lastNumber_);
}

bool LogFile::renameToFree() {
    while (lastNumber_ < kLastNumber) {
        if (osfile::Rename(openPath_.c_str(), NumberedPath(openPath_, lastNumber_ + 1).c_str())) {
            ++lastNumber_;
            return true;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS) return false;
        ++lastNumber_;
    }
    return false;
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
    close();
    if (discard) removeWritten();
    newestFull_.clear();
    openPath_.clear();
    nextTry_ = nextRotation_ = 0;
    lastNumber_ = 0;
    isFailing_ = false;
    lost_ = 0;
}

}  // namespace TraceLog400::detail
