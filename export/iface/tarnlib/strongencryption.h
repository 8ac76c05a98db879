#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/strongencryptionexception.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Texts in and out of SCrypt's printable form, with a key that is built into the library: it keeps a text from being
/// read in passing, not from whoever has the library. A text that must stay secret needs SCrypt and a key of its own.
///
/// Any number of threads may call; one at a time gets its turn.
///
///     SAnsiString stored = StrongEncryption::encrypt(password);
///     try {
///         Connect(StrongEncryption::decrypt(stored));
///     } catch (const StrongEncryptionException& failure) {
///         Report(failure.GetReason());
///     }
class TARN_API StrongEncryption {
  public:
    /// Encrypts a text; throws StrongEncryptionException.
    static SAnsiString encrypt(const SAnsiString& text);
    /// Decrypts what encrypt gave; throws StrongEncryptionException.
    static SAnsiString decrypt(const SAnsiString& text);
};

}  // namespace TarnLibA500
