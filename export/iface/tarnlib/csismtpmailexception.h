#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Why a mail was not sent: the server's reply code, or a code of the library's own, and the detail.
///
/// Thrown by value by CSISMTPMail, CSISMTPClient and CSISMTPMessage, and to be caught by const reference. It has no
/// base class.
///
///     try {
///         CSISMTPMail(settings).Send(message);
///     } catch (const CSISMTPMailException& failure) {
///         if (failure.GetErrorCode() == 550) return NoSuchRecipient(failure.GetDetails());
///         TARN_TRACE(7, "%1", failure.toString());
///     }
namespace TarnLibA500 {

/// Why a mail was not sent.
class TARN_API CSISMTPMailException {
  public:
    /// The codes that no server has sent.
    enum ErrorCodes {
        cannotConnect = 2,       ///< there is no connection, or the server does not serve
        noReply = 3,             ///< no reply came in time, or the connection was lost
        notAuthenticated = 4,    ///< the server refuses the user, or knows no method that we know
        messageNotPossible = 5,  ///< the message cannot be built, or has what must not be sent
    };

    /// A reply code or one of the above, and what happened.
    CSISMTPMailException(int code, const SAnsiString& details);
    /// Shares the text.
    CSISMTPMailException(const CSISMTPMailException& other) noexcept;
    /// Shares the text.
    CSISMTPMailException& operator=(const CSISMTPMailException& other) noexcept;

    /// The reply code, 100 and above, or one of ErrorCodes.
    int GetErrorCode() const noexcept { return code_; }
    /// The number of the message text (SResourceText); 0 for a code that has none.
    unsigned short GetMessageID() const noexcept;
    /// What was tried and the reply to it, or what is wrong with the message.
    const SAnsiString& GetDetails() const noexcept { return details_; }
    /// The message text of the code; "[599]" for a code that has none.
    SAnsiString SMTPErrorCodeString() const;
    /// That text, a colon and the details.
    SAnsiString toString() const;

    /// Not virtual: exceptions are not deleted through a pointer.
    ~CSISMTPMailException();

  private:
    int code_;
    SAnsiString details_;
};

}  // namespace TarnLibA500
