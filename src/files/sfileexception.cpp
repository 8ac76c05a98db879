#include "tarnlib/sfileexception.h"

#include <cerrno>
#include <utility>

#include "files/failuretext.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kUnknown = "Unknown error (exception).  ";

struct StageText {
    SFileException::ErrorCodes stage;
    const char* text;
    bool isShown;
};

constexpr StageText kStageTexts[] = {
    {SFileException::openError, "Failed to open the file %1.  Reason: %2", true},
    {SFileException::readError, "Fail to read file %1.  Reason given: %2", true},
    {SFileException::writeError, "Fail to write file %1.  Reason given: %2", true},
    {SFileException::flushError,
     "Fail to flush file %1.  Reason given: %2.  File may not be completely written to disk.", true},
    // Deliberately not shown: who filters by text knows locks, too, by the unknown error.
    {SFileException::lockError, "Fail to lock bytes of file %1.  Reason given: %2", false},
};

const char* TextOf(SFileException::ErrorCodes stage) {
    for (const StageText& row : kStageTexts) {
        if (row.stage == stage && row.isShown) return row.text;
    }
    return kUnknown;
}

}  // namespace

SFileException::SFileException() noexcept = default;
SFileException::SFileException(const SFileException& other) noexcept = default;
SFileException::SFileException(SFileException&& other) noexcept = default;
SFileException& SFileException::operator=(const SFileException& other) noexcept = default;
SFileException& SFileException::operator=(SFileException&& other) noexcept = default;
SFileException::~SFileException() = default;

SFileException::SFileException(ErrorCodes errorCode, int errorNumber, const SAnsiString& fileName,
                               DetailCodes detailCode, const SAnsiString& reason, const SAnsiString& extra)
    : errorCode_(errorCode),
      fileName_(fileName),
      reason_(reason),
      extra_(extra),
      detailCode_(detailCode),
      errorNumber_(errorNumber) {}

SAnsiString SFileException::toString() const {
    return FillTemplate(TextOf(errorCode_), fileName_, reason_);
}

SAnsiString SFileException::summary() const {
    return toString() + ":" + extra_;
}

SAnsiString SFileException::GetSystemMessage(unsigned long code) {
    return SystemMessage(code);
}

SFileException::DetailCodes SFileException::MapErrno(int error) noexcept {
    switch (error) {
        case EACCES:
            return accessDenied;
        case ENOENT:
            return notFound;
        case ENOMEM:
            return outOfMemory;
        default:
            return otherError;
    }
}

SFileException::DetailCodes SFileException::MapSystemError(unsigned long code) noexcept {
    switch (code) {
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_NETWORK_ACCESS_DENIED:
            return accessDenied;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
            return notFound;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return outOfMemory;
        case ERROR_NOT_SUPPORTED:
            return notSupported;
        default:
            return otherError;
    }
}

}  // namespace TarnLibA500
