#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Why an operation on an open file failed: the stage, a portable detail, the file, the system's text and its
/// number.
///
/// Thrown by value by every member of SFile that fails, and to be caught by const reference. It has no base
/// class.
///
///     try {
///         report.open("C:\\data\\report.txt", SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
///     } catch (const SFileException& failure) {
///         if (failure.DetailCode() == SFileException::notFound) return UsualReport();
///         TARN_TRACE(7, "%1", failure.summary());
///         throw;
///     }
namespace TarnLibA500 {

/// Why an operation on an open file failed.
class TARN_API SFileException {
  public:
    /// The stage that failed. There is no 6.
    enum ErrorCodes {
        openError = 0,   ///< opening, or going to the end right after it
        readError = 1,   ///< reading bytes or text
        writeError = 2,  ///< writing bytes or text
        flushError = 3,  ///< handing over to the disk
        seekError = 4,   ///< a position or a size
        lockError = 5,   ///< kept for locks of byte ranges; nothing raises it
        closeError = 7   ///< deleting a temporary file failed
    };
    /// What it comes down to.
    enum DetailCodes {
        accessDenied = 0,  ///< the system refuses it
        notFound = 1,      ///< no such file, directory, drive or server
        notOpen = 2,       ///< the operation needs an open file
        outOfMemory = 3,   ///< the system's memory, or ours
        notSupported = 4,  ///< not with this file system
        otherError = 5     ///< everything else; a sharing violation too
    };

    /// openError, otherError, number 0, no texts.
    SFileException() noexcept;
    /// The stage, the system's code or errno, the file, what it comes down to, the reason, and more of it.
    SFileException(ErrorCodes errorCode, int errorNumber, const SAnsiString& fileName, DetailCodes detailCode,
                   const SAnsiString& reason, const SAnsiString& extra);
    /// Shares the texts.
    SFileException(const SFileException& other) noexcept;
    /// Takes the texts.
    SFileException(SFileException&& other) noexcept;
    /// Shares the texts.
    SFileException& operator=(const SFileException& other) noexcept;
    /// Takes the texts.
    SFileException& operator=(SFileException&& other) noexcept;

    /// One sentence with the file and the reason, by the stage. The stages seekError, lockError and
    /// closeError deliberately have none: "Unknown error (exception).  ".
    virtual SAnsiString toString() const;
    /// That sentence, ":" and the additional text, which is usually empty.
    virtual SAnsiString summary() const;

    /// The stage.
    ErrorCodes ErrCode() const noexcept { return errorCode_; }
    /// What it comes down to.
    DetailCodes DetailCode() const noexcept { return detailCode_; }
    /// The system's error code, or the C runtime's errno; 0 when the error is the library's own.
    int getErrno() const noexcept { return errorNumber_; }
    /// The name of the file, as it was given to the object that failed.
    const SAnsiString& fileName() const noexcept { return fileName_; }
    /// The system's or the runtime's text as it comes (the system's has a line end), or one of our own.
    const SAnsiString& reason() const noexcept { return reason_; }

    /// The system's text for an error code as it comes, with its line end. It is in the system's language where the
    /// code page of narrow text (the C locale's, or UTF-8) has all its characters, and in English otherwise; "system
    /// error" when there is none of both.
    static SAnsiString GetSystemMessage(unsigned long code);
    /// The detail for a value of errno.
    static DetailCodes MapErrno(int error) noexcept;
    /// The detail for an error code of the system.
    static DetailCodes MapSystemError(unsigned long code) noexcept;

    /// Not virtual: exceptions are not deleted through a pointer.
    ~SFileException();

  private:
    ErrorCodes errorCode_ = openError;
    SAnsiString fileName_;
    SAnsiString reason_;
    SAnsiString extra_;
    DetailCodes detailCode_ = otherError;
    int errorNumber_ = 0;
};

}  // namespace TarnLibA500
