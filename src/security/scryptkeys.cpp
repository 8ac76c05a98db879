#include <algorithm>
#include <cstring>

#include "diag/assert/require.h"
#include "security/ciphertext.h"
#include "security/secretbytes.h"
#include "security/statusreport.h"
#include "security/utf8text.h"
#include "strings/base/wipe.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/sscrambler.h"
#include "tarnlib/stringhelper.h"

// Keys, random bytes and digests.
namespace TarnLibA500 {
namespace {

using Status = SCrypt::Status;
using ByteStr = SCrypt::ByteStr;

constexpr const char* kUnit = "scrypt";

/// Digests the parts one behind the other. The output is zeros when the module fails.
bool DigestParts(KCMAlg400::Digest digest, std::initializer_list<ByteStr> parts, unsigned char* out,
                 std::uint32_t size) {
    KCM400::Digester digester(digest);
    digester.init();
    for (const ByteStr& part : parts) digester.update(part.bytes, part.count);
    if (digester.finish(out, size) != KCM400::kFailed) return true;
    Wipe(out, size);
    return false;
}

/// A key from a pass phrase: its digest, and where that is shorter, the digest of the two at the key's end.
bool DeriveKey(const ByteStr& passPhrase, KCMAlg400::Digest digest, unsigned char* key,
               std::uint32_t keySize) {
    const std::uint32_t size = KCM400::getDigestSize(digest);
    if (size > keySize || !DigestParts(digest, {passPhrase}, key, size)) return false;
    const std::uint32_t extra = keySize - size;
    if (!Require(extra <= size, kUnit, "nExtraBytes <= sha_digest_lens")) return false;
    if (extra == 0) return true;
    SecretBytes second(size);
    if (!DigestParts(digest, {{key, size}, passPhrase}, second.data(), size)) return false;
    std::memcpy(key + extra, second.data(), size);
    return true;
}

template <class AnyKey>
Status MakeKey(const char* passPhrase, AnyKey& key, KCMAlg400::Digest digest) {
    const Status status = StatusOf("makeKey", [&] {
        if (!Require(passPhrase != nullptr, kUnit, "passPhrase != NULL")) return SCrypt::invalid;
        Utf8Text utf8(passPhrase, static_cast<std::uint32_t>(std::strlen(passPhrase)));
        return DeriveKey(utf8.bytes(), digest, key.bytes, sizeof key.bytes) ? SCrypt::success
                                                                            : SCrypt::noLibrary;
    });
    if (status != SCrypt::success) Wipe(key.bytes, sizeof key.bytes);
    return status;
}

Status SaltedDigest(const ByteStr& bytes, const unsigned char (&salt)[SCrypt::kSaltBytes],
                    unsigned char (&digest)[SCrypt::kDigestBytes]) {
    const bool isMade = DigestParts(KCMAlg400::SHA256, {{salt, sizeof salt}, bytes}, digest, sizeof digest);
    return Reported("makeDigest", isMade ? SCrypt::success : SCrypt::noLibrary);
}

}  // namespace

// ------------------------------------------------------------------------------------------------ keys

Status SCrypt::makeKey(const char* passPhrase, Key& key, KCMAlg400::Digest digest) const {
    return MakeKey(passPhrase, key, digest);
}

Status SCrypt::makeKey(const char* passPhrase, OldKey& key) const {
    return MakeKey(passPhrase, key, KCMAlg400::SHA1);
}

Status SCrypt::randomKey(Key& key) const {
    return random(key.bytes, sizeof key.bytes);
}

Status SCrypt::random(unsigned char* bytes, int count) const {
    if (!Require(count >= 0 && (bytes != nullptr || count == 0), kUnit, "bytes != NULL && count >= 0"))
        return Reported("random", invalid);
    return Reported("random", KCM400::random(bytes, static_cast<unsigned>(count)) ? success : noLibrary);
}

// ------------------------------------------------------------------------------------------------ digests

Status SCrypt::makeDigest(const SIArray<unsigned char>& bytes, const unsigned char (&salt)[kSaltBytes],
                          unsigned char (&digest)[kDigestBytes]) const {
    return SaltedDigest({bytes.Data(), bytes.GetSize()}, salt, digest);
}

Status SCrypt::makeDigest(const SSimpleBuffer& bytes, const unsigned char (&salt)[kSaltBytes],
                          unsigned char (&digest)[kDigestBytes]) const {
    return SaltedDigest({bytes.getBufferProtected(), bytes.getNBytes()}, salt, digest);
}

Status SCrypt::makeBase64Digest(const SAnsiString& text, SAnsiString& result, bool legacy) const {
    constexpr std::uint32_t kTextSize = (kDigestBytes + 2) / 3 * 4 + 1;
    return StatusOf("makeBase64Digest", [&] {
        if (!Require(!legacy, kUnit, "using weak digest algorithm")) return noLibrary;
        Utf8Text utf8(text);
        unsigned char digest[kDigestBytes];
        char base64[kTextSize];
        if (!DigestParts(KCMAlg400::SHA256, {utf8.bytes()}, digest, sizeof digest)) return noLibrary;
        const unsigned length = KCMUtility400::base64Into(base64, sizeof base64, digest, sizeof digest);
        if (length == KCM400::kFailed) return noLibrary;
        result = SAnsiString(base64, length);
        return success;
    });
}

// ------------------------------------------------------------------------------------------------ as text

SAnsiString SCrypt::toText(const Key& key) {
    constexpr std::uint32_t cCharTextMax = 49;
    const SAnsiString text = SScrambler::BinToAscii(key.bytes, sizeof key.bytes);
    Require(text.getLength() <= cCharTextMax, kUnit, "cCharText <= cCharTextMax");
    return text;
}

SAnsiString SCrypt::toText(const OldKey& key) {
    return SScrambler::BinToAscii(key.bytes, sizeof key.bytes);
}

Status SCrypt::toBinary(const SAnsiString& text, Key& key) {
    Wipe(key.bytes, sizeof key.bytes);
    return StatusOf("toBinary", [&] {
        SecretBytes bytes(text.getLength());  // never more bytes than symbols
        std::uint32_t count = 0;
        if (!SStringHelper::fromString(text, bytes.data(), bytes.size(), count)) return invalid;
        std::memcpy(key.bytes, bytes.data(), std::min<std::size_t>(count, sizeof key.bytes));
        return success;
    });
}

}  // namespace TarnLibA500
