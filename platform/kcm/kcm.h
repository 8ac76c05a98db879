#pragma once

#include <string>
#include <vector>

#include "kcm/kcmalg.h"

/// The cryptographic module: random bytes, digests, ciphers and Base64.
///
/// Lengths are bytes. No function throws, except that the two which fill a standard container pass on its
/// std::bad_alloc. A function that returns a length returns kFailed when it fails, the others false. A pointer
/// may be null when its length is 0. All functions may be called from any thread; an object is used by one
/// thread at a time. Copies of keys and of clear text are overwritten when an object ends.
///
///     unsigned char iv[16], hidden[sizeof clear];
///     if (!KCM400::random(iv, sizeof iv)) return false;
///     KCM400::Encrypter encrypter(key, sizeof key, KCM400::CipherOptions(KCMAlg400::AES256_CTR, iv, sizeof iv));
///     const unsigned done = encrypter.update(hidden, sizeof hidden, clear, sizeof clear);
///     if (done == KCM400::kFailed) return false;
///     return encrypter.finish(hidden + done, sizeof hidden - done) != KCM400::kFailed;
#if defined(KCM_STATIC)
/// Marks what the module exports.
#define KCM_API
#elif defined(kcm_EXPORTS)
#define KCM_API __declspec(dllexport)
#else
#define KCM_API __declspec(dllimport)
#endif

struct evp_md_ctx_st;      // of the library that the module stands on, which nobody else sees
struct evp_cipher_ctx_st;  // likewise

namespace KCM400 {

/// The system's error when the library that the module stands on was last looked for, beside this module and beside the
/// program, and could not be loaded: everything that needs it fails then. 0 when it was loaded or not yet needed.
KCM_API unsigned long libraryError();

/// What a function that returns a length returns when it fails: unsigned -1.
constexpr unsigned kFailed = static_cast<unsigned>(-1);

/// Fills the bytes from the system's seeded generator. When it fails, the bytes are zeros.
KCM_API bool random(unsigned char* bytes, unsigned count);

/// The length of a digest; kFailed for a number that is none.
KCM_API unsigned getDigestSize(KCMAlg400::Digest digest);
/// The length of a cipher's key; kFailed for a number that is none.
KCM_API unsigned getCipherKeySize(KCMAlg400::Cipher cipher);
/// The length of a cipher's initialisation vector; kFailed for a number that is none.
KCM_API unsigned getCipherIVSize(KCMAlg400::Cipher cipher);

/// A digest over bytes that come in pieces: init, update as often as needed, finish; then perhaps init again.
class KCM_API Digester {
  public:
    /// Nothing is digested before init.
    explicit Digester(KCMAlg400::Digest digest);
    ~Digester();
    Digester(const Digester&) = delete;
    Digester& operator=(const Digester&) = delete;

    /// Begins a digest and forgets what came before. A failure is told by finish.
    void init();
    /// The next bytes. A failure, also a call without init, is told by finish.
    void update(const unsigned char* bytes, unsigned count);
    /// Writes the digest and returns its length. Fails when an earlier call failed, when there is room for fewer
    /// bytes than getDigestSize says, and when init was not called since the last time.
    unsigned finish(unsigned char* out, unsigned capacity);

  private:
    KCMAlg400::Digest digest_;
    bool isReady_ = false;
    evp_md_ctx_st* context_ = nullptr;
};

/// Digests bytes in one call, writes the digest and returns its length. Fails when the room is too small.
KCM_API unsigned digestInto(unsigned char* out, unsigned capacity, const unsigned char* bytes, unsigned count,
                            KCMAlg400::Digest digest);

/// Digests bytes in one call. The vector is empty when that fails.
inline void digest(std::vector<unsigned char>& out, const unsigned char* bytes, unsigned count,
                   KCMAlg400::Digest algorithm) {
    const unsigned size = getDigestSize(algorithm);
    out.resize(size == kFailed ? 0 : size);
    if (digestInto(out.data(), static_cast<unsigned>(out.size()), bytes, count, algorithm) == kFailed)
        out.clear();
}

/// A cipher and where it begins.
struct CipherOptions {
    /// The most bytes that the initialisation vector of any cipher has.
    static constexpr unsigned kMaxIV = 16;

    /// Copies the initialisation vector. One that is not as long as getCipherIVSize says makes the encrypter or
    /// decrypter fail.
    CipherOptions(KCMAlg400::Cipher which, const unsigned char* bytes, unsigned length)
        : cipher(which), ivLength(length) {
        for (unsigned i = 0; i < length && i < kMaxIV && bytes != nullptr; ++i) iv[i] = bytes[i];
    }

    KCMAlg400::Cipher cipher;        ///< which one
    unsigned ivLength;               ///< as it was given
    unsigned char iv[kMaxIV] = {0};  ///< as much of it as there is room for
};

/// What an Encrypter and a Decrypter do: update as often as needed, then finish, once.
class KCM_API CipherRun {
  public:
    CipherRun(const CipherRun&) = delete;
    CipherRun& operator=(const CipherRun&) = delete;

    /// The next bytes; returns how many were written. With AES256_CTR that is count, and output and input may be
    /// one place. With DES3_CBC it is all whole blocks of 8 so far, when decrypting without the last one, and
    /// the output is elsewhere. With too little room it fails, and nothing has happened; any other failure ends
    /// the object's use.
    unsigned update(unsigned char* out, unsigned capacity, const unsigned char* in, unsigned count);
    /// Writes what is left, when decrypting without the padding, and returns its length. It ends the object's
    /// use. Fails with too little room, and when what was decrypted with DES3_CBC is not whole blocks or ends in
    /// no padding.
    unsigned finish(unsigned char* out, unsigned capacity);
    /// The most bytes that finish writes; kFailed when the constructor failed.
    unsigned getFinalOutputSize() const;

  protected:
    /// See Encrypter and Decrypter.
    CipherRun(const unsigned char* key, unsigned count, const CipherOptions& options, bool encrypts);
    ~CipherRun();

  private:
    void close();
    unsigned long long writtenBy(unsigned count) const;

    bool encrypts_;
    unsigned waiting_ = 0;          // bytes of which nothing is written yet
    unsigned finalSize_ = kFailed;  // a block, or 0 where there are none
    evp_cipher_ctx_st* context_ = nullptr;
};

/// Encrypts bytes that come in pieces.
class Encrypter : public CipherRun {
  public:
    /// The first getCipherKeySize bytes of the key are used. A failure, also a key that is shorter, is told by
    /// update and finish.
    Encrypter(const unsigned char* key, unsigned count, const CipherOptions& options)
        : CipherRun(key, count, options, true) {}
};

/// Decrypts bytes that come in pieces.
class Decrypter : public CipherRun {
  public:
    /// The first getCipherKeySize bytes of the key are used. A failure, also a key that is shorter, is told by
    /// update and finish.
    Decrypter(const unsigned char* key, unsigned count, const CipherOptions& options)
        : CipherRun(key, count, options, false) {}
};

}  // namespace KCM400

namespace KCMUtility400 {

/// Writes bytes as Base64 (RFC 4648, padded, in one line), with a zero behind, and returns the length without
/// the zero: four characters for every three bytes begun. Fails when there is too little room.
KCM_API unsigned base64Into(char* text, unsigned capacity, const unsigned char* bytes, unsigned count);

/// Bytes as Base64 (RFC 4648, padded, in one line). The text is empty when that fails.
inline void base64encodeBinaryToText(std::string& text, const unsigned char* bytes, unsigned count) {
    const std::size_t length = (static_cast<std::size_t>(count) / 3 + (count % 3 != 0)) * 4;
    text.resize(length + 1);
    const unsigned written = base64Into(text.data(), static_cast<unsigned>(text.size()), bytes, count);
    text.resize(written == KCM400::kFailed ? 0 : written);
}

}  // namespace KCMUtility400
