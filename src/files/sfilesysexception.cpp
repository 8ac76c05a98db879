#include "tarnlib/sfilesysexception.h"

#include <cerrno>
#include <new>

#include "diag/assert/levels.h"
#include "files/failuretext.h"
#include "files/filesysfailure.h"
#include "strings/text/lineend.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr const char* kUnit = "sfilesys";

constexpr const char* kRemoveText =
    "Failed to remove the file %1 in a file system operation. Please check access rights or for a sharing "
    "violation.  Reason: %2";
constexpr const char* kUnknownText = "Unknown error in file system operation on file %1. Reason: %2";

struct OperationText {
    Exception::ErrorCodes code;
    const char* text;
};

// "give" is a slip that is kept: texts are stable.
constexpr OperationText kOperationTexts[] = {
    {Exception::fsOutOfMemory, "System is out of memory."},
    {Exception::fsMakeDirFailed,
     "Fail to create directory structure in file system operation on file %1.  Reason given: %2"},
    {Exception::fsFileNotFound, "File not found"},
    {Exception::fsGetAttributesFailed,
     "Fail to get file attributes from operating system in file system operation on file %1.  Reason given: "
     "%2"},
    {Exception::fsRemoveFailed, kRemoveText},
    {Exception::fsCopyFailed,
     "Failed to copy the file %1 to %2 in file system operation. Please check access rights. Reason given: "
     "%3"},
    {Exception::fsNotExist, "The file %1 does not exist.  File system operation failed. Reason give: %2"},
    {Exception::fsStatFailed,
     "Fail to get status of file from operating system in file system operation on file %1.  Reason given: "
     "%2"},
    {Exception::fsRemoveDirFailed, kRemoveText},
    {Exception::fsSetAttributesFailed,
     "Fail to set file attributes in file system operation on file %1.  Reason given: %2"},
    {Exception::fsSizeFailed,
     "Failed to determine the size of the file %1 in file system operation. Reason: %2"},
    {Exception::fsUniqueNameFailed, "Failed to generate a unique filename in dir %1. Reason: %2"},
    {Exception::fsDiskStatsFailed, "Failed to retrieve disk statistics from %1. Reason: %2"},
    {Exception::fsRenameFailed, "Failed to rename %1 to %2. Reason: %3"},
    {Exception::fsSetCurrentDirFailed, "Failed to set current directory to %1.  Reason: %2"},
    {Exception::fsChangeOwnerFailed, "Failed to change ownership to %1.  Reason: %2"},
};

const char* TextOf(Exception::ErrorCodes code) {
    for (const OperationText& row : kOperationTexts) {
        if (row.code == code) return row.text;
    }
    return kUnknownText;
}

bool HasTwoPaths(Exception::ErrorCodes code) {
    return code == Exception::fsCopyFailed || code == Exception::fsRenameFailed;
}

}  // namespace

SFileSysException::SFileSysException(ErrorCodes code, ErrorReasons reason, const SAnsiString& reasonText,
                                     const SAnsiString& firstPath, const SAnsiString& secondPath,
                                     const SAnsiString& extra)
    : code_(code),
      reason_(reason),
      reasonText_(reasonText),
      firstPath_(firstPath),
      secondPath_(secondPath),
      extra_(extra) {}

SFileSysException::SFileSysException(const SFileSysException& other) noexcept = default;
SFileSysException& SFileSysException::operator=(const SFileSysException& other) noexcept = default;
SFileSysException::~SFileSysException() = default;

SAnsiString SFileSysException::toString() const {
    return HasTwoPaths(code_) ? FillTemplate(TextOf(code_), firstPath_, secondPath_, reasonText_)
                              : FillTemplate(TextOf(code_), firstPath_, reasonText_);
}

SAnsiString SFileSysException::summary() const {
    return toString() + ":" + extra_;
}

SFileSysException::ErrorReasons SFileSysException::mapError(unsigned long code) noexcept {
    switch (code) {
        case ERROR_NOT_ENOUGH_QUOTA:
            return reasonOutOfMemory;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_NO_MORE_FILES:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
            return reasonNotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return reasonAccessDenied;
        case ERROR_DISK_FULL:
            return reasonDiskFull;
        default:
            return reasonOther;
    }
}

SFileSysException::ErrorReasons SFileSysException::mapErrno(int error) noexcept {
    switch (error) {
        case ENOMEM:
            return reasonOutOfMemory;
        case ENOENT:
            return reasonNotFound;
        case EINVAL:
        case ENAMETOOLONG:
            return reasonInvalidName;
        case EPERM:
        case EACCES:
            return reasonAccessDenied;
        case ENOSPC:
            return reasonDiskFull;
        case EEXIST:
            return reasonAlreadyExists;
        default:
            return reasonOther;
    }
}

// ------------------------------------------------------------------------------------------------ throwing

namespace {

// The reason, with the system's line end, stands at the end of each sentence. Failing memory costs only the line.
void TraceFailure(const SFileSysException& failure) noexcept try {
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1", WithoutLineEnd(failure.toString()));
} catch (const std::bad_alloc&) {
    TraceText(levels::kFailure, kUnit, "an operation of the file system failed");
}

}  // namespace

void ThrowTraced(const SFileSysException& failure) {
    TraceFailure(failure);
    throw failure;
}

void ThrowFileSys(SFileSysException::ErrorCodes code, DWORD systemError, const SAnsiString& path,
                  const SAnsiString& secondPath) {
    ThrowTraced(SFileSysException(code, FileSysFailure::reasonOf(systemError), SystemMessage(systemError),
                                  path, secondPath, SAnsiString()));
}

void ThrowUnreadable(DWORD systemError, const SAnsiString& directory) {
    const bool isMissing = FileSysFailure::reasonOf(systemError) == SFileSysException::reasonNotFound;
    ThrowFileSys(isMissing ? SFileSysException::fsNotExist : SFileSysException::fsStatFailed, systemError,
                 directory);
}

void FileSysFailure::note(SFileSysException::ErrorCodes failed, DWORD systemError, const SAnsiString& where) {
    if (happened()) {  // only the first one is thrown
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1: error %2", where, systemError);
        return;
    }
    code = failed;
    // A failure without a code is one all the same.
    error = systemError != ERROR_SUCCESS ? systemError : ERROR_GEN_FAILURE;
    path = where;
}

void FileSysFailure::throwIfHappened() const {
    if (happened()) ThrowFileSys(code, error, path);
}

}  // namespace TarnLibA500
