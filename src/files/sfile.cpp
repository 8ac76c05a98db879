#include "tarnlib/sfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "files/filetext.h"
#include "files/osfiles.h"
#include "files/removal.h"
#include "files/sreadahead.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "strings/base/bytesearch.h"
#include "strings/base/memory.h"
#include "strings/text/lineend.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/snarrowtext.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfile";

constexpr const char kLineEnd[] = "\r\n";
constexpr std::uint32_t kLineEndBytes = 2;

constexpr int kNoMode = -1;
constexpr int kAccessBits = 3;
constexpr int kWriteAccessBits = SFile::writeOnly | SFile::readAndWrite;
constexpr int kDenyBits = SFile::denyRead | SFile::denyWrite | SFile::denyReadAndWrite;
constexpr long long kMaxPosition32 = 0xFFFFFFFFLL;
constexpr long long kMaxTextBytes = 0xFFFFFFF0LL;
// How often in one reading the system may say that there is nothing, while the file goes on.
constexpr int kEmptyReads = 10;

DWORD AccessOf(int mode) {
    constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE, 0};
    return kAccess[mode & kAccessBits];
}

// In this order: create and exclusive together open an existing file, deliberately.
DWORD DispositionOf(int mode) {
    if ((mode & SFile::truncate) != 0) return CREATE_ALWAYS;
    if ((mode & SFile::create) != 0) return OPEN_ALWAYS;
    return (mode & SFile::exclusive) != 0 ? CREATE_NEW : OPEN_EXISTING;
}

DWORD ShareOf(int share) {
    return (share & kDenyBits) != 0 ? 0 : oscodes::kShareButDelete;
}

DWORD FlagsOf(int mode) {
    if ((mode & SFile::sequential) != 0) return FILE_FLAG_SEQUENTIAL_SCAN;
    return (mode & SFile::random) != 0 ? FILE_FLAG_RANDOM_ACCESS : 0;
}

DWORD OriginOf(int origin) {
    if (origin == SFile::seekCurrent) return FILE_CURRENT;
    return origin == SFile::seekEnd ? FILE_END : FILE_BEGIN;
}

SAnsiString AccessLetters(DWORD access) {
    SAnsiString letters;
    if ((access & GENERIC_READ) != 0) letters.concat('r');
    if ((access & GENERIC_WRITE) != 0) letters.concat('w');
    if ((access & GENERIC_EXECUTE) != 0) letters.concat('x');
    if ((access & GENERIC_ALL) != 0) letters.concat('a');
    return letters;
}

const char* DispositionName(DWORD disposition) {
    switch (disposition) {
        case CREATE_NEW:
            return "CREATE_NEW";
        case CREATE_ALWAYS:
            return "CREATE_ALWAYS";
        case OPEN_EXISTING:
            return "OPEN_EXISTING";
        case OPEN_ALWAYS:
            return "OPEN_ALWAYS";
        case TRUNCATE_EXISTING:
            return "TRUNCATE_EXISTING";
        default:
            return "INVALID";
    }
}

// What a file was about to do, by the stage of the failure.
const char* StageName(SFileException::ErrorCodes stage) {
    constexpr const char* kNames[] = {"open", "read", "write", "flush", "seek in", "lock", "use", "close"};
    return kNames[std::min<std::size_t>(stage, std::size(kNames) - 1)];
}

// The sentences of the exception leave the file and the reason out for some stages.
void TraceFailure(int level, const SFileException& failure) noexcept try {
    TARN_TRACE_AT(level, kUnit, "cannot %1 \"%2\": %3", StageName(failure.ErrCode()), failure.fileName(),
                  WithoutLineEnd(failure.reason()));
} catch (const std::bad_alloc&) {
    TraceText(level, kUnit, "an operation on a file failed");
}

[[noreturn]] void Throw(const SFileException& failure) {
    TraceFailure(levels::kFailure, failure);
    throw failure;
}

// What a line keeps of its bytes: all but the carriage returns.
void AppendWithoutReturns(SecretText& line, const char* bytes, const char* end) {
    while (bytes != end) {
        const char* const stop = FindByte(bytes, end, '\r');
        line.append(bytes, static_cast<std::uint32_t>(stop - bytes));
        bytes = stop != end ? stop + 1 : end;
    }
}

// Where in a line the byte stands that has "before" bytes in front of it, carriage returns not counted.
std::uint32_t PlaceInLine(const char* bytes, std::uint32_t before) {
    const char* at = bytes;
    for (; *at == '\r' || before != 0; ++at) {
        if (*at != '\r') --before;
    }
    return static_cast<std::uint32_t>(at - bytes);
}

}  // namespace

// Their values stand in the class; these are the objects that references to them mean.
const int SFile::readOnly;
const int SFile::writeOnly;
const int SFile::readAndWrite;
const int SFile::append;
const int SFile::random;
const int SFile::sequential;
const int SFile::temporary;
const int SFile::noInherit;
const int SFile::create;
const int SFile::truncate;
const int SFile::exclusive;
const int SFile::denyReadAndWrite;
const int SFile::denyWrite;
const int SFile::denyRead;
const int SFile::denyNothing;
const int SFile::ownerRWXMask;
const int SFile::ownerRMask;
const int SFile::ownerWMask;
const int SFile::ownerXMask;
const int SFile::groupRWXMask;
const int SFile::groupRMask;
const int SFile::groupWMask;
const int SFile::groupXMask;
const int SFile::othersRWXMask;
const int SFile::othersRMask;
const int SFile::othersWMask;
const int SFile::othersXMask;
const int SFile::readMask;
const int SFile::writeMask;
const int SFile::readWriteMask;
const int SFile::defaultPermissions;
const int SFile::seekBegin;
const int SFile::seekSet;
const int SFile::seekCurrent;
const int SFile::seekEnd;
const int SFile::lockUnlock;
const int SFile::lockRetryLock;
const int SFile::lockNoRetryLock;

const SAnsiString SFile::EOL(kLineEnd);

// ------------------------------------------------------------------------------------------------ failures

void SFile::raiseOwnError(SFileException::ErrorCodes stage, SFileException::DetailCodes detail,
                          const SAnsiString& reason) const {
    Throw(SFileException(stage, 0, name_, detail, reason, SAnsiString()));
}

void SFile::raiseSystemError(SFileException::ErrorCodes stage, unsigned long code) const {
    Throw(SFileException(stage, static_cast<int>(code), name_, SFileException::MapSystemError(code),
                         SFileException::GetSystemMessage(code), SAnsiString()));
}

void SFile::raisePosixError(SFileException::ErrorCodes stage, int error) const {
    char text[256];
    if (strerror_s(text, sizeof text, error) != 0) text[0] = '\0';
    Throw(SFileException(stage, error, name_, SFileException::MapErrno(error), text, SAnsiString()));
}

void SFile::requireOpen(SFileException::ErrorCodes stage) const {
    if (!isOpen()) raiseOwnError(stage, SFileException::notOpen, "File not opened yet.");
}

// ------------------------------------------------------------------------------------------------ opening

SFile::SFile() noexcept : mode_(kNoMode), handle_(INVALID_HANDLE_VALUE), isOpen_(false), ahead_(nullptr) {}

SFile::SFile(const SAnsiString& name)
    : name_(name), mode_(kNoMode), handle_(INVALID_HANDLE_VALUE), isOpen_(false), ahead_(nullptr) {}

SFile::SFile(const SAnsiString& name, int mode, int permissions, int share) : SFile(name) {
    open(mode, permissions, share);
}

SFile::~SFile() {
    try {
        close();
    } catch (const SFileException& failure) {
        TraceFailure(levels::kLoss, failure);  // nobody else hears of it
    } catch (const std::bad_alloc&) {
        TraceText(levels::kLoss, kUnit, "out of memory while closing a file");
    }
}

// The handle decides: after a failed deletion isOpen_ is still set.
bool SFile::isOpen() const noexcept {
    return handle_ != INVALID_HANDLE_VALUE;
}

void SFile::open(const SAnsiString& name, int mode, int permissions, int share) {
    try {
        close();
    } catch (const SFileException&) {
        name_ = name;  // here as with every other failure
        throw;
    }
    name_ = name;
    open(mode, permissions, share);
}

void SFile::open(int mode, int /*permissions*/, int share) {
    close();
    if (mode == kNoMode)
        raiseOwnError(SFileException::openError, SFileException::otherError, "No file access mode provided.");
    openNamed(mode, share);
    long long end = 0;
    if ((mode & append) != 0 && !osfiles::Seek(handle_, FILE_END, 0, end)) {
        const DWORD error = GetLastError();
        osfiles::Close(handle_);
        handle_ = INVALID_HANDLE_VALUE;
        raiseSystemError(SFileException::openError, error);
    }
    isOpen_ = true;
    mode_ = mode;
}

void SFile::openNamed(int mode, int share) {
    const DWORD access = AccessOf(mode);
    const DWORD disposition = DispositionOf(mode);
    TARN_TRACE_AT(levels::kOpening, kUnit, "opening %1 with desired access: %2 and creation disposition: %3",
                  name_, AccessLetters(access), DispositionName(disposition));
    SECURITY_ATTRIBUTES security = {};
    security.nLength = sizeof security;
    security.bInheritHandle = (mode & noInherit) == 0 ? TRUE : FALSE;
    const SWCharString path = LongSystemPath(name_);
    if ((mode & temporary) != 0) temporaryPath_ = path;
    handle_ = osfiles::Open(path.getString(), access, ShareOf(share), &security, disposition, FlagsOf(mode))
                  .release();
    if (!isOpen()) raiseSystemError(SFileException::openError, GetLastError());
}

void SFile::close() {
    if (isOpen()) {
        osfiles::Close(handle_);
        handle_ = INVALID_HANDLE_VALUE;
        delete std::exchange(ahead_, nullptr);
        if (!name_.isEmpty() && (mode_ & temporary) != 0) deleteTemporary();
    }
    isOpen_ = false;
}

void SFile::deleteTemporary() {
    try {
        RemoveSystemPath(temporaryPath_, name_);
    } catch (const SFileSysException& failure) {
        raiseOwnError(SFileException::closeError, SFileException::otherError, failure.toString());
    }
}

// ------------------------------------------------------------------------------------------------ bytes

// Makes the system's position the one that the caller knows.
void SFile::dropReadAhead(SFileException::ErrorCodes stage) {
    if (ahead_ == nullptr || ahead_->unread() == 0) return;
    const long long unread = ahead_->unread();
    if (!seekEx(handle_, seekCurrent, -unread)) raiseSystemError(stage, GetLastError());
    ahead_->drop();
}

std::uint32_t SFile::readBlock(void* bytes, std::uint32_t count) {
    DWORD done = 0;
    if (!osfiles::Read(handle_, bytes, count, done))
        raiseSystemError(SFileException::readError, GetLastError());
    return done;
}

int SFile::read(void* buffer, std::uint32_t count) {
    requireOpen(SFileException::readError);
    if (ahead_ != nullptr && count <= ahead_->unread()) {
        std::memcpy(buffer, ahead_->bytes(), count);
        ahead_->consume(count);
        return static_cast<int>(count);
    }
    dropReadAhead(SFileException::readError);
    return static_cast<int>(readBlock(buffer, count));
}

int SFile::write(const void* buffer, std::uint32_t count) {
    requireOpen(SFileException::writeError);
    dropReadAhead(SFileException::writeError);
    DWORD done = 0;
    if (!osfiles::Write(handle_, buffer, count, done))
        raiseSystemError(SFileException::writeError, GetLastError());
    return static_cast<int>(done);
}

// The system may take less than all at once, on a disk that is just getting full for instance.
void SFile::writeAll(const void* buffer, std::uint32_t count) {
    const auto* at = static_cast<const char*>(buffer);
    while (count != 0) {
        const auto done = static_cast<std::uint32_t>(write(at, count));
        if (done == 0) raiseSystemError(SFileException::writeError, ERROR_WRITE_FAULT);
        at += done;
        count -= done;
    }
}

void SFile::flush() {
    if ((mode_ & kWriteAccessBits) == 0) return;
    if (!osfiles::Flush(handle_)) raiseSystemError(SFileException::flushError, GetLastError());
}

// ------------------------------------------------------------------------------------------------ position

bool SFile::seekEx(void* handle, int origin, long long offset, long long* position) {
    Require(handle != INVALID_HANDLE_VALUE, kUnit, "hFile != INVALID_HANDLE_VALUE");
    long long reached = 0;
    if (!osfiles::Seek(handle, OriginOf(origin), offset, reached)) return false;
    if (position != nullptr) *position = reached;
    return true;
}

long long SFile::position(SFileException::ErrorCodes stage) {
    long long reached = 0;
    if (!seekEx(handle_, seekCurrent, 0, &reached)) raiseSystemError(stage, GetLastError());
    return ahead_ != nullptr ? reached - ahead_->unread() : reached;
}

long long SFile::sizeNow(SFileException::ErrorCodes stage) {
    long long bytes = 0;
    if (!osfiles::Size(handle_, bytes)) raiseSystemError(stage, GetLastError());
    return bytes;
}

int SFile::seek(int origin, int offset) {
    Require(isOpen(), kUnit, "m_hFile != INVALID_HANDLE_VALUE");
    const long long reached = seekEx(origin, offset);
    if (reached > kMaxPosition32) raiseSystemError(SFileException::seekError, ERROR_INVALID_PARAMETER);
    return static_cast<int>(reached);
}

long long SFile::seekEx(int origin, long long offset) {
    requireOpen(SFileException::seekError);
    if (origin == seekCurrent && offset == 0) return position(SFileException::seekError);
    dropReadAhead(SFileException::seekError);
    long long reached = 0;
    if (!seekEx(handle_, origin, offset, &reached))
        raiseSystemError(SFileException::seekError, GetLastError());
    return reached;
}

std::uint32_t SFile::size() {
    const long long bytes = sizeEx();
    if (bytes > kMaxPosition32) raiseSystemError(SFileException::seekError, ERROR_INVALID_PARAMETER);
    return static_cast<std::uint32_t>(bytes);
}

long long SFile::sizeEx() {
    requireOpen(SFileException::seekError);
    return sizeNow(SFileException::seekError);
}

bool SFile::eof() {
    requireOpen(SFileException::seekError);
    if (ahead_ != nullptr && ahead_->unread() != 0) return false;
    return position(SFileException::seekError) >= sizeNow(SFileException::seekError);
}

// ------------------------------------------------------------------------------------------------ text

// Reads the next block ahead. False at the end of the file.
bool SFile::readMore(int& emptyReads) {
    if (ahead_ == nullptr) ahead_ = new SReadAhead;
    while (emptyReads > 0) {
        DWORD count = 0;
        const bool isRead = osfiles::Read(handle_, ahead_->room(), SReadAhead::kBlockBytes, count);
        const DWORD error = GetLastError();
        ahead_->filled(count);
        if (count != 0) return true;
        --emptyReads;
        // Where nothing is left, nothing had to be read, and it is no failure that it could not.
        if (position(SFileException::readError) >= sizeNow(SFileException::readError)) return false;
        if (!isRead) raiseSystemError(SFileException::readError, error);
    }
    return false;
}

// What is wrong with a text stands "bytesBack" bytes before the position.
void SFile::traceIllegalText(std::uint32_t bytesBack) const {
    long long reached = 0;
    seekEx(handle_, seekCurrent, 0, &reached);
    TARN_TRACE_AT(levels::kLoss, kUnit, "\"%1\" is not valid UTF-8 at byte %2, so its text %3", name_,
                  reached - ahead_->unread() - bytesBack,
                  SNarrowText::IsUtf8() ? "is kept as it stands" : "counts as empty");
}

// The text of a line, which usually needs no conversion and has no carriage return but at its end. "endBytes"
// stand behind it: its line feed, if there is one.
SAnsiString SFile::lineText(const char* bytes, const char* end, std::uint32_t endBytes,
                            FileEncoding encoding) {
    const char* const last = end != bytes && end[-1] == '\r' ? end - 1 : end;
    const auto count = static_cast<std::uint32_t>(last - bytes);
    const bool hasReturns = FindByte(bytes, last, '\r') != last;
    if (!hasReturns && IsAsItIs(bytes, count, encoding)) return ahead_->lines().lend(bytes, count);
    SecretText kept;
    if (hasReturns) AppendWithoutReturns(kept, bytes, last);
    TextDecoder text(encoding, count);
    text.add(hasReturns ? kept.getString() : bytes, hasReturns ? kept.getLength() : count);
    SAnsiString line = text.finish();
    if (!text.isLegal()) {
        const char* const wrong = bytes + PlaceInLine(bytes, text.validBytes());
        traceIllegalText(static_cast<std::uint32_t>(end - wrong) + endBytes);
    }
    return line;
}

// What lies across blocks, or ends with the file.
SAnsiString SFile::longLine(FileEncoding encoding) {
    int emptyReads = kEmptyReads;
    SecretText line;
    bool isComplete = false;
    while (!isComplete && ((ahead_ != nullptr && ahead_->unread() != 0) || readMore(emptyReads))) {
        const char* const bytes = ahead_->bytes();
        const char* const blockEnd = bytes + ahead_->unread();
        const char* const end = FindByte(bytes, blockEnd, '\n');
        isComplete = end != blockEnd;
        ahead_->consume(static_cast<std::uint32_t>(end - bytes) + (isComplete ? 1 : 0));
        line.append(bytes, static_cast<std::uint32_t>(end - bytes));
    }
    return lineText(line.getString(), line.end().getPtr(), isComplete ? 1 : 0, encoding);
}

SAnsiString SFile::readLine(FileEncoding encoding) try {
    requireOpen(SFileException::readError);
    if (ahead_ == nullptr || ahead_->unread() == 0) return longLine(encoding);
    const char* const bytes = ahead_->bytes();
    const char* const blockEnd = bytes + ahead_->unread();
    const char* const end = FindByte(bytes, blockEnd, '\n');
    if (end == blockEnd) return longLine(encoding);
    ahead_->consume(static_cast<std::uint32_t>(end - bytes) + 1);
    return lineText(bytes, end, 1, encoding);
} catch (const std::bad_alloc&) {
    raisePosixError(SFileException::readError, ENOMEM);
}

std::uint32_t SFile::remainingBytes() {
    const long long bytes = sizeNow(SFileException::readError) - position(SFileException::readError);
    if (bytes > kMaxTextBytes) throw BadAllocation();
    return bytes > 0 ? static_cast<std::uint32_t>(bytes) : 0;
}

SAnsiString SFile::readString(FileEncoding encoding) try {
    requireOpen(SFileException::readError);
    dropReadAhead(SFileException::readError);
    const std::uint32_t all = remainingBytes();
    if (all == 0) return SAnsiString();
    if (ahead_ == nullptr) ahead_ = new SReadAhead;
    TextDecoder text(encoding, all);
    std::uint32_t missing = all;
    for (int emptyReads = kEmptyReads; missing != 0 && emptyReads > 0;) {
        const std::uint32_t count = readBlock(ahead_->room(), std::min(missing, SReadAhead::kBlockBytes));
        ahead_->filled(count);
        text.add(ahead_->bytes(), count);
        ahead_->drop();
        missing -= count;
        if (count == 0) --emptyReads;
    }
    SAnsiString whole = text.finish();
    if (!text.isLegal()) traceIllegalText(all - missing - text.validBytes());
    return whole;
} catch (const std::bad_alloc&) {
    raisePosixError(SFileException::readError, ENOMEM);
}

std::uint32_t SFile::writeString(const SAnsiString& text) {
    const std::uint32_t count = text.getLength();
    if (IsAsItIs(text.getString(), count, utf8)) {
        writeAll(text.getString(), count);
        return count;
    }
    if (SNarrowText::IsUtf8()) {
        TARN_TRACE_AT(levels::kLoss, kUnit, "text for \"%1\" is not valid UTF-8, and written as it stands",
                      name_);
        writeAll(text.getString(), count);
        return count;
    }
    bool isWhole = true;
    const SSimpleBuffer encoded = EncodeFileText(text, isWhole);
    if (!isWhole)
        TARN_TRACE_AT(levels::kLoss, kUnit, "text for \"%1\" is not valid in the code page and left out",
                      name_);
    writeAll(encoded.getBufferProtected(), encoded.getNBytes());
    return encoded.getNBytes();
}

std::uint32_t SFile::writeNewLine() {
    writeAll(kLineEnd, kLineEndBytes);
    return kLineEndBytes;
}

}  // namespace TarnLibA500
