#include "security/ciphertext.h"

#include <cstring>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "security/constanttime.h"
#include "strings/base/wipe.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500::ciphertext {
namespace {

constexpr const char* kUnit = "scrypt";
constexpr std::uint32_t kVersionBytes = 4;
constexpr std::uint32_t kMostDigestBytes = 32;

constexpr Layout kLayouts[] = {
    {0, 0, 8, kSmallestHeader, KCMAlg400::SHA1, KCMAlg400::DES3_CBC},
    {1, 4, 12, 32, KCMAlg400::SHA1, KCMAlg400::DES3_CBC},
    {2, 4, 20, kLargestHeader, KCMAlg400::SHA256, KCMAlg400::AES256_CTR},
};

}  // namespace

const Layout& kWritten = kLayouts[SCrypt::kVersion];

const Layout* FindLayout(int version) noexcept {
    for (const Layout& layout : kLayouts) {
        if (layout.version == version) return &layout;
    }
    return nullptr;
}

int HeaderVersion(const SCrypt::ByteStr& cipher) noexcept {
    if (cipher.count < kVersionBytes) return kNoVersion;
    const unsigned char* const bytes = cipher.bytes;
    const bool isSmall = bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 0;
    return isSmall && (bytes[3] == 1 || bytes[3] == 2) ? bytes[3] : kNoVersion;
}

bool IsBlank(const SCrypt::Key& key) noexcept {
    return IsZeroInConstantTime(key.bytes, sizeof key.bytes);
}

// ------------------------------------------------------------------------------------------------ headers

SCrypt::Status FailedEnd(std::uint32_t finalOutputSize) noexcept {
    return finalOutputSize != 0 ? SCrypt::mismatch : SCrypt::noLibrary;
}

HeaderDigest::HeaderDigest(const Layout& layout, const unsigned char* header)
    : layout_(layout), digester_(layout.digest) {
    digester_.init();
    digester_.update(header + layout.ivAt, layout.ivSize());
}

bool HeaderDigest::writeTo(unsigned char* header) {
    return digester_.finish(header + layout_.digestAt, layout_.digestSize()) != KCM400::kFailed;
}

SCrypt::Status HeaderDigest::compareWith(const unsigned char* header) {
    unsigned char digest[kMostDigestBytes];
    if (digester_.finish(digest, sizeof digest) == KCM400::kFailed) return SCrypt::noLibrary;
    return EqualInConstantTime(digest, header + layout_.digestAt, layout_.digestSize()) ? SCrypt::success
                                                                                        : SCrypt::mismatch;
}

bool BeginHeader(unsigned char* header) {
    constexpr unsigned char kVersionWord[kVersionBytes] = {0, 0, 0, SCrypt::kVersion};
    std::memcpy(header, kVersionWord, kVersionBytes);
    return KCM400::random(header + kWritten.ivAt, kWritten.ivSize());
}

// ------------------------------------------------------------------------------------------------ encrypting

namespace {

bool EncryptBytes(const SCrypt::ByteStr& clear, const SCrypt::Key& key, unsigned char* cipher) {
    KCM400::Encrypter encrypter(key.bytes, sizeof key.bytes, kWritten.options(cipher));
    unsigned char* const out = cipher + kWritten.headerSize;
    const unsigned done = encrypter.update(out, clear.count, clear.bytes, clear.count);
    if (done == KCM400::kFailed) return false;
    const unsigned last = encrypter.finish(out + done, clear.count - done);
    return last != KCM400::kFailed &&
           Require(done + last == clear.count, kUnit, "done + last == clear.count");
}

bool EncryptWithHeader(const SCrypt::ByteStr& clear, const SCrypt::Key& key, unsigned char* cipher) {
    if (!BeginHeader(cipher)) return false;
    HeaderDigest digest(kWritten, cipher);
    digest.update(clear.bytes, clear.count);
    return digest.writeTo(cipher) && EncryptBytes(clear, key, cipher);
}

}  // namespace

SCrypt::Status Encrypt(const SCrypt::ByteStr& clear, const SCrypt::Key& key, unsigned char* cipher,
                       std::uint32_t space) {
    if (IsBlank(key)) return SCrypt::blankKey;
    if (space < kWritten.headerSize || space - kWritten.headerSize < clear.count) return SCrypt::invalid;
    if (EncryptWithHeader(clear, key, cipher)) return SCrypt::success;
    Wipe(cipher, space);
    return SCrypt::noLibrary;
}

// ------------------------------------------------------------------------------------------------ decrypting

namespace {

SCrypt::Status DecryptBytes(const Layout& layout, const SCrypt::ByteStr& cipher, const SCrypt::Key& key,
                            unsigned char* clear, std::uint32_t& count) {
    const std::uint32_t space = cipher.count - kSmallestHeader;
    KCM400::Decrypter decrypter(key.bytes, sizeof key.bytes, layout.options(cipher.bytes));
    const unsigned most = decrypter.getFinalOutputSize();
    const unsigned done =
        decrypter.update(clear, space, cipher.bytes + layout.headerSize, cipher.count - layout.headerSize);
    if (done == KCM400::kFailed) return SCrypt::noLibrary;
    const unsigned last = decrypter.finish(clear + done, space - done);
    if (last == KCM400::kFailed) return FailedEnd(most);
    Require(last <= most, kUnit, "last <= decrypter.getFinalOutputSize()");
    count = done + last;
    return SCrypt::success;
}

SCrypt::Status DecryptAs(const Layout& layout, const SCrypt::ByteStr& cipher, const SCrypt::Key& key,
                         unsigned char* clear, std::uint32_t& count) {
    if (cipher.count < layout.headerSize) return SCrypt::invalid;
    const SCrypt::Status status = DecryptBytes(layout, cipher, key, clear, count);
    if (status != SCrypt::success) return status;
    HeaderDigest digest(layout, cipher.bytes);
    digest.update(clear, count);
    return digest.compareWith(cipher.bytes);
}

}  // namespace

void TraceAttempt(const Layout& layout) {
    TARN_TRACE_AT(levels::kDetail, kUnit, "Decoding as header version %1", layout.version);
}

void TraceMismatch() {
    TraceText(levels::kFailure, kUnit, "Digest comparsion failed! Probably a wrong key.");
}

SCrypt::Status Decrypt(const SCrypt::ByteStr& cipher, const SCrypt::Key& key, int& version,
                       unsigned char* clear, std::uint32_t& count) {
    const auto attempt = [&](const Layout& layout) { return DecryptAs(layout, cipher, key, clear, count); };
    const SCrypt::Status status = IsBlank(key) ? SCrypt::blankKey : TryLayouts(version, attempt);
    if (status != SCrypt::success && cipher.count > kSmallestHeader)
        Wipe(clear, cipher.count - kSmallestHeader);
    return status;
}

}  // namespace TarnLibA500::ciphertext
