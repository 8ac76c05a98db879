#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Why an operation of the file system failed: the operation, a portable reason, the paths and the system's
/// text.
///
/// Thrown by value by the members of SFileSys and SSFileSearch, and to be caught by const reference. It has
/// no base class.
///
///     try {
///         SFileSys::makeDirectories("D:\\data\\in", SFile::defaultPermissions);
///     } catch (const SFileSysException& failure) {
///         if (failure.ErrReason() != SFileSysException::reasonDiskFull) throw;
///         TARN_TRACE(1, "%1", failure.summary());
///     }
namespace TarnLibA500 {

class TARN_API SFileSysException {
  public:
    /// The operation that failed. There is no 14.
    enum ErrorCodes {
        fsOutOfMemory = 0,
        fsMakeDirFailed = 1,
        fsFileNotFound = 2,
        fsGetAttributesFailed = 3,
        fsRemoveFailed = 4,
        fsCopyFailed = 5,
        fsNotExist = 6,
        fsStatFailed = 7,
        fsRemoveDirFailed = 8,
        fsSetAttributesFailed = 9,
        fsSizeFailed = 10,
        fsUniqueNameFailed = 11,
        fsDiskStatsFailed = 12,
        fsRenameFailed = 13,
        fsSetCurrentDirFailed = 15,
        fsChangeOwnerFailed = 16
    };
    /// What it comes down to.
    enum ErrorReasons {
        reasonOutOfMemory = 0,
        reasonNotFound = 1,
        reasonInvalidName = 2,
        reasonAccessDenied = 4,  ///< a sharing violation too
        reasonTempDir = 5,       ///< the directory for temporary files cannot be told
        reasonDiskFull = 6,
        reasonAlreadyExists = 7,  ///< only from the C runtime; the system's own code for it is reasonOther
        reasonOther = 8
    };

    /// The second path is that of a copy or a renaming.
    SFileSysException(ErrorCodes code, ErrorReasons reason, const SAnsiString& reasonText,
                      const SAnsiString& firstPath, const SAnsiString& secondPath, const SAnsiString& extra);
    SFileSysException(const SFileSysException& other) noexcept;
    SFileSysException& operator=(const SFileSysException& other) noexcept;

    /// One sentence with the paths and the reason, by the operation.
    virtual SAnsiString toString() const;
    /// That sentence, ":" and the additional text, which is usually empty.
    virtual SAnsiString summary() const;

    ErrorCodes ErrCode() const noexcept { return code_; }
    ErrorReasons ErrReason() const noexcept { return reason_; }
    /// The system's text as it comes, with its line end.
    const SAnsiString& reason() const noexcept { return reasonText_; }

    /// Not virtual: exceptions are not deleted through a pointer.
    ~SFileSysException();

  private:
    friend struct FileSysFailure;
    static ErrorReasons mapError(unsigned long code) noexcept;
    static ErrorReasons mapErrno(int error) noexcept;

    ErrorCodes code_;
    ErrorReasons reason_;
    SAnsiString reasonText_;
    SAnsiString firstPath_;
    SAnsiString secondPath_;
    SAnsiString extra_;
};

}  // namespace TarnLibA500
