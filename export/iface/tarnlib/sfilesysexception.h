#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

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
///         TARN_TRACE(7, "%1", failure.summary());
///     }
class TARN_API SFileSysException {
  public:
    /// The operation that failed. There is no 14.
    enum ErrorCodes {
        fsOutOfMemory = 0,    ///< no memory for the name of the directory for temporary files
        fsMakeDirFailed = 1,  ///< a directory was not made
        fsFileNotFound = 2,   ///< not thrown by SFileSys
        fsGetAttributesFailed =
            3,                  ///< giveAccess, giveAllAccess: nothing there, or a directory cannot be read
        fsRemoveFailed = 4,     ///< a file was not removed
        fsCopyFailed = 5,       ///< a file was not copied
        fsNotExist = 6,         ///< a directory to be listed is not there
        fsStatFailed = 7,       ///< a path or its attributes cannot be told, or a directory not listed
        fsRemoveDirFailed = 8,  ///< a directory was not removed
        fsSetAttributesFailed = 9,   ///< attributes or a time were not set
        fsSizeFailed = 10,           ///< a size cannot be told, or is too large for the result
        fsUniqueNameFailed = 11,     ///< no new name was found
        fsDiskStatsFailed = 12,      ///< the volume's figures cannot be told
        fsRenameFailed = 13,         ///< a file was not renamed, or not put in the place of another
        fsSetCurrentDirFailed = 15,  ///< the current directory was not changed
        fsChangeOwnerFailed = 16     ///< not thrown by SFileSys
    };
    /// What it comes down to.
    enum ErrorReasons {
        reasonOutOfMemory = 0,    ///< of the user's quota or of memory
        reasonNotFound = 1,       ///< a file, a directory, a drive, a share
        reasonInvalidName = 2,    ///< only from the C runtime
        reasonAccessDenied = 4,   ///< a sharing violation too
        reasonTempDir = 5,        ///< the directory for temporary files cannot be told
        reasonDiskFull = 6,       ///< no room on the volume
        reasonAlreadyExists = 7,  ///< only from the C runtime; the system's own code for it is reasonOther
        reasonOther = 8           ///< see the text
    };

    /// The second path is that of a copy or a renaming.
    SFileSysException(ErrorCodes code, ErrorReasons reason, const SAnsiString& reasonText,
                      const SAnsiString& firstPath, const SAnsiString& secondPath, const SAnsiString& extra);
    /// Copies share the texts.
    SFileSysException(const SFileSysException& other) noexcept;
    /// Copies share the texts.
    SFileSysException& operator=(const SFileSysException& other) noexcept;

    /// One sentence with the paths and the reason, by the operation.
    virtual SAnsiString toString() const;
    /// That sentence, ":" and the additional text, which is usually empty.
    virtual SAnsiString summary() const;

    /// The operation that failed.
    ErrorCodes ErrCode() const noexcept { return code_; }
    /// What the failure comes down to.
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
