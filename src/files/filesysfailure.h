#pragma once

#include "tarnlib/sfilesysexception.h"

#include <windows.h>

namespace TarnLibA500 {

/// What failed first in an operation, and how it is thrown.
struct FileSysFailure {
    SFileSysException::ErrorCodes code = SFileSysException::fsOutOfMemory;
    DWORD error = ERROR_SUCCESS;  ///< the system's
    SAnsiString path;

    bool happened() const noexcept { return error != ERROR_SUCCESS; }
    /// Keeps a failure unless there was one before.
    void note(SFileSysException::ErrorCodes failed, DWORD systemError, const SAnsiString& where);
    /// Throws when something failed.
    void throwIfHappened() const;

    static SFileSysException::ErrorReasons reasonOf(DWORD systemError) noexcept {
        return SFileSysException::mapError(systemError);
    }
    static SFileSysException::ErrorReasons reasonOfErrno(int error) noexcept {
        return SFileSysException::mapErrno(error);
    }
};

/// Traces a failure and throws it.
[[noreturn]] void ThrowTraced(const SFileSysException& failure);
/// Throws for an error code of the system.
[[noreturn]] void ThrowFileSys(SFileSysException::ErrorCodes code, DWORD systemError, const SAnsiString& path,
                               const SAnsiString& secondPath = SAnsiString());
/// For a directory whose entries the system does not give: fsNotExist when it is not there, or fsStatFailed.
[[noreturn]] void ThrowUnreadable(DWORD systemError, const SAnsiString& directory);

}  // namespace TarnLibA500
