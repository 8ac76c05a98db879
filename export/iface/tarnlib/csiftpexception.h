#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Why the dialogue with an FTP server failed: what failed, the number of a message text, and the detail.
///
/// Thrown by value by CSIftp, and to be caught by const reference. It has no base class. A server that says no to
/// an operation on a file or a directory is no exception but false.
///
///     try {
///         ftp.Login("reports", password);
///     } catch (const CSIftpException& failure) {
///         TARN_TRACE(7, "%1", failure.toString());
///     }
namespace TarnLibA500 {

/// Why the dialogue with an FTP server failed.
class TARN_API CSIftpException {
  public:
    /// What failed.
    enum ErrorCodes {
        dataConnectionError = 1,    ///< a step of the data connection
        dataCommandRefused = 2,     ///< the server does not take the command for a data connection
        controlConnectionError = 3  ///< the control connection, or what it takes to use it
    };

    /// What failed, the number of the message text (SResourceText), and the detail for it.
    CSIftpException(ErrorCodes code, unsigned short messageID, const SAnsiString& detail);
    /// Shares the texts.
    CSIftpException(const CSIftpException& other) noexcept;
    /// Shares the texts.
    CSIftpException& operator=(const CSIftpException& other) noexcept;

    /// What failed.
    ErrorCodes GetErrorCode() const noexcept { return code_; }
    /// The number of the message text.
    unsigned short GetMessageID() const noexcept { return messageID_; }
    /// "Error stringres ID [41327]. " and the detail.
    SAnsiString GetDetails() const;
    /// The message text with the detail in it.
    SAnsiString GetFTPErrorString() const;
    /// The same.
    SAnsiString toString() const;

    /// Not virtual: exceptions are not deleted through a pointer.
    ~CSIftpException();

  private:
    ErrorCodes code_;
    unsigned short messageID_;
    SAnsiString detail_;
};

}  // namespace TarnLibA500
