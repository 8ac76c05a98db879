#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Why a text is no URL of a file in the file repository.
///
/// Thrown by value, and to be caught by const reference. It has no base class.
///
///     try {
///         FRSUrl url(text);
///     } catch (const FRSUrlException& failure) {
///         TARN_TRACE(7, "%1", failure.toString());   // "No protocol is specified in the file URL abc"
///     }
namespace TarnLibA500 {

/// Why a text is no URL of a file in the file repository.
class TARN_API FRSUrlException {
  public:
    /// What failed.
    enum ErrorCodes {
        frsNone = 0,       ///< nothing
        frsInvalidUrl = 1  ///< the text is no such URL
    };

    /// frsNone, no texts.
    FRSUrlException() noexcept;
    /// What failed, a template with %1 for the URL and %2 for the protocol that it should have, and the URL.
    FRSUrlException(ErrorCodes code, const SAnsiString& message, const SAnsiString& url) noexcept;
    /// Shares the texts.
    FRSUrlException(const FRSUrlException& other) noexcept;
    /// Takes the texts.
    FRSUrlException(FRSUrlException&& other) noexcept;
    /// Shares the texts.
    FRSUrlException& operator=(const FRSUrlException& other) noexcept;
    /// Takes the texts.
    FRSUrlException& operator=(FRSUrlException&& other) noexcept;
    /// Lets go of the texts.
    ~FRSUrlException();

    /// What failed.
    ErrorCodes ErrCode() const noexcept { return code_; }
    /// The template, with %1 and %2 in it.
    const SAnsiString& Message() const noexcept { return message_; }
    /// The text that is no URL.
    const SAnsiString& Url() const noexcept { return url_; }
    /// One sentence with the URL in it. What the URL itself holds is not looked at.
    SAnsiString toString() const;

  private:
    ErrorCodes code_ = frsNone;
    SAnsiString message_;
    SAnsiString url_;
};

}  // namespace TarnLibA500
