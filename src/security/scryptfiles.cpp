#include "security/ciphertext.h"
#include "security/filepieces.h"
#include "security/freshfile.h"
#include "security/statusreport.h"
#include "strings/base/wipe.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/sfile.h"

// Files, a piece at a time: the bytes are those that the same clear text gives in memory.
namespace TarnLibA500 {
namespace {

using Status = SCrypt::Status;
using ciphertext::kWritten;
using ciphertext::Layout;

constexpr std::uint32_t kBlockBytes = 8;  // what a cipher may give more than it got

/// The bytes that a file begins with.
struct Header {
    unsigned char bytes[ciphertext::kLargestHeader];
    std::uint32_t count;
};

Header ReadHeader(SFile& file) {
    Header header;
    header.count = static_cast<std::uint32_t>(file.read(header.bytes, sizeof header.bytes));
    return header;
}

/// What a cipher makes of the pieces of one file, written into another.
class CipherOutput {
  public:
    explicit CipherOutput(SFile& file) : file_(file) {}

    /// Null when the module fails.
    template <class Cipher>
    const unsigned char* convert(Cipher& cipher, const unsigned char* in, std::uint32_t count) {
        return taken(cipher.update(memory_.data(), memory_.size(), in, count));
    }
    /// Null when the module fails, or the padding is wrong.
    template <class Cipher>
    const unsigned char* finish(Cipher& cipher) {
        return taken(cipher.finish(memory_.data(), memory_.size()));
    }
    std::uint32_t count() const noexcept { return count_; }

  private:
    const unsigned char* taken(unsigned written) {
        if (written == KCM400::kFailed) return nullptr;
        count_ = written;
        file_.writeAll(memory_.data(), count_);
        return memory_.data();
    }

    SFile& file_;
    std::uint32_t count_ = 0;
    SecretBytes memory_{FilePieces::kPieceBytes + kBlockBytes};
};

// ------------------------------------------------------------------------------------------------ encrypting

// The digest in the header is not known before the end, so the header is written once more.
Status EncryptPieces(SFile& source, SFile& target, const SCrypt::Key& key, SProgress* progress) {
    unsigned char header[ciphertext::kLargestHeader] = {};
    if (!ciphertext::BeginHeader(header)) return SCrypt::noLibrary;
    target.writeAll(header, sizeof header);
    KCM400::Encrypter encrypter(key.bytes, sizeof key.bytes, kWritten.options(header));
    ciphertext::HeaderDigest digest(kWritten, header);
    CipherOutput output(target);
    for (FilePieces pieces(source, progress); pieces.next();) {
        digest.update(pieces.data(), pieces.count());
        if (output.convert(encrypter, pieces.data(), pieces.count()) == nullptr) return SCrypt::noLibrary;
    }
    if (output.finish(encrypter) == nullptr || !digest.writeTo(header)) return SCrypt::noLibrary;
    target.seekEx(SFile::seekBegin, 0);
    target.writeAll(header, sizeof header);
    return SCrypt::success;
}

// ------------------------------------------------------------------------------------------------ decrypting

Status DecryptPieces(SFile& source, SFile& target, const Layout& layout, const Header& header,
                     const SCrypt::Key& key, SProgress* progress) {
    KCM400::Decrypter decrypter(key.bytes, sizeof key.bytes, layout.options(header.bytes));
    ciphertext::HeaderDigest digest(layout, header.bytes);
    const unsigned most = decrypter.getFinalOutputSize();
    CipherOutput output(target);
    source.seekEx(SFile::seekBegin, layout.headerSize);
    for (FilePieces pieces(source, progress); pieces.next();) {
        const unsigned char* const clear = output.convert(decrypter, pieces.data(), pieces.count());
        if (clear == nullptr) return SCrypt::noLibrary;
        digest.update(clear, output.count());
    }
    const unsigned char* const last = output.finish(decrypter);
    if (last == nullptr) return ciphertext::FailedEnd(most);
    digest.update(last, output.count());
    return digest.compareWith(header.bytes);
}

// What is written has the target's name only when its digest has proved right.
Status DecryptFileAs(SFile& source, const SAnsiString& to, const Layout& layout, const Header& header,
                     const SCrypt::Key& key, SProgress* progress) {
    if (header.count < layout.headerSize) return SCrypt::invalid;
    FreshFile fresh(to);
    SFile target(fresh.path(), SFile::writeOnly | SFile::noInherit, SFile::readWriteMask, SFile::denyWrite);
    const Status status = DecryptPieces(source, target, layout, header, key, progress);
    if (status != SCrypt::success) return status;
    target.close();
    source.close();  // it may be the one whose place is taken
    fresh.takePlace();
    return status;
}

}  // namespace

Status SCrypt::encryptFile(const SAnsiString& from, const SAnsiString& to, const Key& key,
                           SProgress* progress) const {
    if (ciphertext::IsBlank(key)) return Reported("encryptFile", blankKey);
    SFile source(from, kReadFromFront, SFile::readWriteMask, SFile::denyNothing);
    FreshFile fresh(to);
    SFile target(fresh.path(), SFile::writeOnly | SFile::noInherit, SFile::readWriteMask, SFile::denyWrite);
    const Status status = EncryptPieces(source, target, key, progress);
    if (status != success) return Reported("encryptFile", status);
    target.close();
    source.close();  // it may be the one whose place is taken
    fresh.takePlace();
    return status;
}

Status SCrypt::decryptFile(const SAnsiString& from, const SAnsiString& to, const Key& key,
                           SProgress* progress) const {
    if (ciphertext::IsBlank(key)) return Reported("decryptFile", blankKey);
    SFile source(from, kReadFromFront, SFile::readWriteMask, SFile::denyNothing);
    const Header header = ReadHeader(source);
    int version = ciphertext::HeaderVersion({header.bytes, header.count});
    const Status status = ciphertext::TryLayouts(version, [&](const Layout& layout) {
        return DecryptFileAs(source, to, layout, header, key, progress);
    });
    return Reported("decryptFile", status);
}

Status SCrypt::sha256File(const SAnsiString& path, unsigned char (&digest)[kDigestBytes],
                          SProgress* progress) const {
    Wipe(digest, sizeof digest);
    SFile source(path, kReadFromFront, SFile::readWriteMask, SFile::denyNothing);
    KCM400::Digester digester(KCMAlg400::SHA256);
    digester.init();
    for (FilePieces pieces(source, progress); pieces.next();) digester.update(pieces.data(), pieces.count());
    const bool isMade = digester.finish(digest, sizeof digest) != KCM400::kFailed;
    return Reported("sha256File", isMade ? success : noLibrary);
}

}  // namespace TarnLibA500
