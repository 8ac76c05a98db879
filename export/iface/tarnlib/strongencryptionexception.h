#pragma once

#include "tarnlib/scrypt.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Why StrongEncryption failed: a code and a sentence. Thrown by value; it has no base class.
class TARN_API StrongEncryptionException {
  public:
    /// What it comes down to.
    enum ErrorCodes {
        libraryError = 0,      ///< the cryptographic module cannot be used
        keyBlank = 1,          ///< there is no key
        checksumMismatch = 2,  ///< the key is wrong, or the text has been changed
        bufferInvalid = 3      ///< it is no encrypted text, or something unknown
    };

    /// The code and the sentence of a status; one that is no failure is an unknown error.
    explicit StrongEncryptionException(SCrypt::Status status);
    /// Shares the sentence.
    StrongEncryptionException(const StrongEncryptionException& other) noexcept;
    /// Shares the sentence.
    StrongEncryptionException& operator=(const StrongEncryptionException& other) noexcept;
    /// Not virtual: exceptions are not deleted through a pointer.
    ~StrongEncryptionException();

    /// What it comes down to.
    ErrorCodes GetErrorCode() const noexcept { return errorCode_; }
    /// The sentence.
    SAnsiString GetReason() const { return reason_; }
    /// The same.
    SAnsiString toString() const { return reason_; }

  private:
    ErrorCodes errorCode_;
    SAnsiString reason_;
};

}  // namespace TarnLibA500
