#pragma once

#include <cstdint>

#include "kcm/kcm.h"
#include "tarnlib/scrypt.h"

/// The layouts of encrypted bytes, and encrypting and decrypting in memory that is there already.
namespace TarnLibA500::ciphertext {

/// A header: an initialisation vector, the digest of it and the clear text, and behind the header the cipher text.
struct Layout {
    int version;
    std::uint32_t ivAt;
    std::uint32_t digestAt;
    std::uint32_t headerSize;
    KCMAlg400::Digest digest;
    KCMAlg400::Cipher cipher;

    std::uint32_t ivSize() const { return KCM400::getCipherIVSize(cipher); }
    std::uint32_t digestSize() const { return KCM400::getDigestSize(digest); }
    KCM400::CipherOptions options(const unsigned char* header) const {
        return KCM400::CipherOptions(cipher, header + ivAt, ivSize());
    }
};

/// The layout that is written.
extern const Layout& kWritten;
constexpr std::uint32_t kLargestHeader = 52;
constexpr std::uint32_t kSmallestHeader = 28;
/// A header without a version: what bytes that cannot be decrypted as what they say they are may be.
constexpr int kNoVersion = 0;

/// Null for a number that is no version.
const Layout* FindLayout(int version) noexcept;

/// What the first bytes say: 1, 2, otherwise 0.
int HeaderVersion(const SCrypt::ByteStr& cipher) noexcept;

bool IsBlank(const SCrypt::Key& key) noexcept;

/// The digest over a header's initialisation vector and the clear text, made as that comes.
class HeaderDigest {
  public:
    HeaderDigest(const Layout& layout, const unsigned char* header);
    void update(const unsigned char* clear, std::uint32_t count) { digester_.update(clear, count); }
    /// Writes it to its place in the header; false when the module fails.
    bool writeTo(unsigned char* header);
    /// Compares it with the one in the header: success, mismatch, or noLibrary when the module fails.
    SCrypt::Status compareWith(const unsigned char* header);

  private:
    const Layout& layout_;
    KCM400::Digester digester_;
};

/// Writes the version and a new initialisation vector into a header; false when there are no random bytes.
bool BeginHeader(unsigned char* header);

/// Encrypts. The output has room for the header and as many bytes as the clear text; it is zeros after a failure.
SCrypt::Status Encrypt(const SCrypt::ByteStr& clear, const SCrypt::Key& key, unsigned char* cipher,
                       std::uint32_t space);

/// Why a cipher could not finish: with a padding, which is what the most bytes at the end are for, a wrong key shows
/// there; without one it is the module that fails.
SCrypt::Status FailedEnd(std::uint32_t finalOutputSize) noexcept;

/// Says what is tried, and that it was not so.
void TraceAttempt(const Layout& layout);
void TraceMismatch();

/// Tries to decrypt as a version, and when the digest differs once more as bytes without a version, which may begin
/// with what looks like one. "version" becomes the last one that was tried.
template <class Attempt>
SCrypt::Status TryLayouts(int& version, Attempt attempt) {
    for (;;) {
        const Layout* const layout = FindLayout(version);
        if (layout == nullptr) return SCrypt::invalid;
        TraceAttempt(*layout);
        const SCrypt::Status status = attempt(*layout);
        if (status != SCrypt::mismatch) return status;
        TraceMismatch();
        if (version == kNoVersion) return status;
        version = kNoVersion;
    }
}

/// Decrypts as TryLayouts does. The output has room for what is behind the smallest header; it is zeros after a
/// failure.
SCrypt::Status Decrypt(const SCrypt::ByteStr& cipher, const SCrypt::Key& key, int& version,
                       unsigned char* clear, std::uint32_t& count);

}  // namespace TarnLibA500::ciphertext
