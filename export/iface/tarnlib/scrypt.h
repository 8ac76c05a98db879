#pragma once

#include <cstdint>

#include "tarnlib/siarray.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/sprogress.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// The numbers of digests and ciphers; "kcm/kcmalg.h" has them by name: SHA-1 is 1, SHA-256 is 3.
namespace KCMAlg400 {
/// A digest.
enum Digest : int;
/// A cipher.
enum Cipher : int;
}  // namespace KCMAlg400

/// Encryption with a key: texts, bytes and files in a format that says its version and carries its random start
/// and a digest of the clear text, so that a wrong key or a changed byte is noticed.
///
/// What is written is AES with 256 bits in counter mode and SHA-256. What older versions wrote (triple DES and
/// SHA-1) can be read. docs/security.md has the layouts, and says what they protect against and what not.
/// Operations return a Status and throw nothing, failing memory is noLibrary; only those on files throw what files
/// throw. Each failure is traced. Intermediate copies of keys and of clear text are overwritten; arguments and
/// results are the caller's to overwrite. Input and output may be one object. An object has no state, and any
/// number of threads may use it.
///
///     SCrypt crypt;
///     SCrypt::Key key;
///     if (crypt.makeKey(passPhrase, key, KCMAlg400::SHA256) != SCrypt::success) return false;
///     SAnsiString hidden, text;
///     if (crypt.encrypt("a secret", key, hidden) != SCrypt::success) return false;
///     switch (crypt.decrypt(hidden, key, text)) {
///         case SCrypt::success: Use(text); break;
///         case SCrypt::mismatch: Say("wrong pass phrase"); break;
///         default: Say("this is no encrypted text");
///     }
namespace TarnLibA500 {

/// Encrypts and decrypts, makes keys and digests, and writes them as text.
class TARN_API SCrypt {
  public:
    /// What became of an operation. StrongEncryptionException has a sentence for each.
    enum Status {
        success = 0,  ///< done
        noLibrary =
            1,  ///< the cryptographic module fails, there is no memory, or the digest asked for is too weak
        keySpace = 2,  ///< there is too little room for a key; nothing returns it
        blankKey = 3,  ///< all bytes of the key are zero
        invalid = 4,   ///< too short, too long, of an unknown version, or no such text
        mismatch = 5   ///< the digest differs: the key is wrong, or something has been changed
    };
    /// Key material. All zeros are no key.
    struct Key {
        unsigned char bytes[32];  ///< of which versions 0 and 1 use the first 24
    };
    /// Key material of versions 0 and 1.
    struct OldKey {
        unsigned char bytes[24];  ///< as many as their cipher takes
    };
    /// Bytes that are read.
    struct ByteStr {
        const unsigned char* bytes;  ///< the first of them
        std::uint32_t count;         ///< how many there are
    };
    /// The version that is written.
    static constexpr int kVersion = 2;
    /// Bytes of the salt of a digest.
    static constexpr std::uint32_t kSaltBytes = 16;
    /// Bytes of a SHA-256 digest.
    static constexpr std::uint32_t kDigestBytes = 32;

    /// Nothing has to be prepared here: success.
    Status Init() const noexcept;

    // --- encrypting: 52 bytes more than the clear text; the output is empty when it fails ---
    /// Bytes.
    Status encrypt(const SIArray<unsigned char>& clear, const Key& key, SIArray<unsigned char>& cipher) const;
    /// Bytes.
    Status encrypt(const SSimpleBuffer& clear, const Key& key, SSimpleBuffer& cipher) const;
    /// A text, as UTF-8, into printable text (see toText). Zero bytes are characters like others; what is no
    /// character of the process's code page becomes "?", which is traced.
    Status encrypt(const SAnsiString& clear, const Key& key, SAnsiString& cipher) const;
    /// A text, as UTF-8.
    Status encrypt(const SAnsiString& clear, const Key& key, SIArray<unsigned char>& cipher) const;
    /// A text, as UTF-8.
    Status encrypt(const SAnsiString& clear, const Key& key, SSimpleBuffer& cipher) const;

    // --- decrypting: bytes that failed to decrypt are zeros, as many as the version in front announces, and none
    // for what is too short; a text that failed is empty ---
    /// Bytes. The version, if asked for, is that of the layout that proved right, or after a failure the one that
    /// the bytes begin with.
    Status decrypt(const SIArray<unsigned char>& cipher, const Key& key, SIArray<unsigned char>& clear,
                   int* version = 0) const;
    /// Bytes, and the version as above.
    Status decrypt(const SSimpleBuffer& cipher, const Key& key, SSimpleBuffer& clear, int* version = 0) const;
    /// Bytes of a text in UTF-8. What the process's code page does not have becomes "?", which is traced; invalid
    /// when it is no UTF-8.
    Status decrypt(const SIArray<unsigned char>& cipher, const Key& key, SAnsiString& clear) const;
    /// The same.
    Status decrypt(const SSimpleBuffer& cipher, const Key& key, SAnsiString& clear) const;
    /// Printable text of such bytes.
    Status decrypt(const SAnsiString& cipher, const Key& key, SAnsiString& clear) const;

    // --- files of any size in constant memory: the same bytes as in memory. They throw SFileException and
    // SFileSysException; without success, whatever stood at "to" stays. The two may be one file ---
    /// Encrypts a file.
    Status encryptFile(const SAnsiString& from, const SAnsiString& to, const Key& key,
                       SProgress* progress = 0) const;
    /// Decrypts a file of version 2 or 0 (1 is read as well).
    Status decryptFile(const SAnsiString& from, const SAnsiString& to, const Key& key,
                       SProgress* progress = 0) const;
    /// The SHA-256 digest of a file; zeros when that fails.
    Status sha256File(const SAnsiString& path, unsigned char (&digest)[kDigestBytes],
                      SProgress* progress = 0) const;

    // --- sizes and versions ---
    /// The bytes that a clear text becomes. For versions 0 and 1 they are those that older callers reserve: whole
    /// blocks of 8 and one more, and 28 or deliberately 31, one less than the header of version 1 has. invalid for
    /// another version, and beyond 32 bits; the count is 0 then.
    static Status getCrypttextNumBytes(std::uint32_t clearBytes, int version, std::uint32_t& cipherBytes);
    /// The bytes behind the header: the most that a clear text has. invalid for another version, and when there is
    /// less than a header; the count is 0 then.
    static Status getCleartextNumBytes(std::uint32_t cipherBytes, int version, std::uint32_t& clearBytes);
    /// The version that the bytes begin with: 1, 2, or 0 when that is none of them.
    int getHeaderVersion(const SIArray<unsigned char>& cipher) const;
    /// The same of printable text; 0 for what is no such text.
    int getHeaderVersion(const SAnsiString& cipher) const;

    // --- keys and random bytes; zeros when they fail ---
    /// Derives a key from a pass phrase in the process's code page: its digest as UTF-8. A digest that is
    /// shorter than the key is followed by that of itself and the pass phrase, which ends with the key and may
    /// overlap the first one. One digest is quick to compute, and to guess by: long phrases are needed.
    Status makeKey(const char* passPhrase, Key& key, KCMAlg400::Digest digest) const;
    /// The same with SHA-1.
    Status makeKey(const char* passPhrase, OldKey& key) const;
    /// A key that nobody can guess.
    Status randomKey(Key& key) const;
    /// Random bytes that nobody can guess.
    Status random(unsigned char* bytes, int count) const;

    // --- digests ---
    /// SHA-256 of the salt and the bytes; zeros when it fails.
    Status makeDigest(const SIArray<unsigned char>& bytes, const unsigned char (&salt)[kSaltBytes],
                      unsigned char (&digest)[kDigestBytes]) const;
    /// The same.
    Status makeDigest(const SSimpleBuffer& bytes, const unsigned char (&salt)[kSaltBytes],
                      unsigned char (&digest)[kDigestBytes]) const;
    /// SHA-256 of a text as UTF-8, in Base64 with padding. The legacy digest is reported by assertion and refused
    /// with noLibrary; the result stays as it was then, and after any failure.
    Status makeBase64Digest(const SAnsiString& text, SAnsiString& result, bool legacy) const;

    // --- printable text: the symbols A-Z a-z 0-9 _ and . as SScrambler writes them ---
    /// A key as 43 symbols.
    static SAnsiString toText(const Key& key);
    /// A key as 32 symbols.
    static SAnsiString toText(const OldKey& key);
    /// Bytes as symbols, four for three.
    static SAnsiString toText(const SIArray<unsigned char>& bytes);
    /// The way back: the first 32 bytes, and zeros for those that the text does not have. invalid, and zeros, when
    /// it is no such text.
    static Status toBinary(const SAnsiString& text, Key& key);
    /// The way back. invalid, and no bytes, when it is no such text.
    static Status toBinary(const SAnsiString& text, SIArray<unsigned char>& bytes);
    /// The room that the text of a number of bytes needs, a terminator included.
    static std::uint32_t getToTextSize(std::uint32_t bytes) noexcept;
};

}  // namespace TarnLibA500
