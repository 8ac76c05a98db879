#include "command.h"
#include "libraryprogress.h"
#include "options.h"
#include "passphrase.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/strongencryptionexception.h"

#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SCrypt;
using TarnLibA500::SIArray;

constexpr KCMAlg400::Digest kSha256 = static_cast<KCMAlg400::Digest>(3);

constexpr const char* kEncryptHelp =
    "-pass-env NAME | -pass-file P [-file F -out G]\n\n"
    "Encrypts a file, or standard input into a line of text on standard output.\n\n"
    "  -pass-env NAME   the pass phrase is the value of this environment variable\n"
    "  -pass-file P     the pass phrase is the first line of this file\n"
    "  -file F -out G   the file, and the one that it becomes: the whole file or nothing\n\n"
    "Exit status: 0.\n";

constexpr const char* kDecryptHelp =
    "-pass-env NAME | -pass-file P [-file F -out G]\n\n"
    "Decrypts a file that tarn encrypt made, or the line of text from standard input to standard output.\n\n"
    "  -pass-env NAME   the pass phrase is the value of this environment variable\n"
    "  -pass-file P     the pass phrase is the first line of this file\n"
    "  -file F -out G   the file, and the one that it becomes: the whole file or nothing\n\n"
    "Exit status: 0; 1 when the pass phrase is wrong, or what was encrypted has been changed or cut.\n";

struct PassKey : SCrypt::Key {
    explicit PassKey(const Options& options) : SCrypt::Key() {
        const PassPhrase phrase(options);
        if (SCrypt().makeKey(phrase.getString(), *this, kSha256) != SCrypt::success)
            throw Failure("no key can be made of the pass phrase");
    }
    ~PassKey() { SecureZeroMemory(bytes, sizeof bytes); }
    PassKey(const PassKey&) = delete;
    PassKey& operator=(const PassKey&) = delete;
};

std::string ReadAll(Source& source) {
    constexpr std::size_t kPiece = 64 * 1024;
    std::string all;
    for (std::string piece = source.read(kPiece); !piece.empty(); piece = source.read(kPiece)) all += piece;
    return all;
}

std::string WithoutLineEnd(std::string text) {
    if (!text.empty() && text.back() == '\n') text.pop_back();
    if (!text.empty() && text.back() == '\r') text.pop_back();
    return text;
}

SAnsiString TextOf(const std::string& bytes) {
    return SAnsiString(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

/// What a failure comes to: a line, and the status.
ExitStatus Outcome(const char* command, const std::string& what, SCrypt::Status status) {
    if (status == SCrypt::success) return kYes;
    const std::string reason = Str(TarnLibA500::StrongEncryptionException(status).GetReason());
    if (status == SCrypt::noLibrary) throw Failure(reason);
    PrintError(std::string("tarn ") + command + ": " + what + ": " + reason);
    return kNo;
}

SCrypt::Status EncryptText(const std::string& clear, const SCrypt::Key& key, std::string& text) {
    SIArray<unsigned char> bytes;
    bytes.SetSize(static_cast<std::uint32_t>(clear.size()));
    std::copy(clear.begin(), clear.end(), bytes.begin());
    const SCrypt::Status status = SCrypt().encrypt(bytes, key, bytes);
    text = SCrypt::toText(bytes).getString();
    text += "\n";
    return status;
}

SCrypt::Status DecryptText(const std::string& text, const SCrypt::Key& key, std::string& clear) {
    SIArray<unsigned char> bytes;
    const SCrypt::Status decoded = SCrypt::toBinary(TextOf(WithoutLineEnd(text)), bytes);
    if (decoded != SCrypt::success) return decoded;
    const SCrypt::Status status = SCrypt().decrypt(bytes, key, bytes);
    if (status == SCrypt::success) clear.assign(bytes.begin(), bytes.end());
    return status;
}

struct Direction {
    const char* command;
    SCrypt::Status (SCrypt::*file)(const SAnsiString&, const SAnsiString&, const SCrypt::Key&,
                                   TarnLibA500::SProgress*) const;
    SCrypt::Status (*text)(const std::string&, const SCrypt::Key&, std::string&);
};

ExitStatus Convert(const Direction& direction, const Words& arguments) {
    const Options options(arguments, {.values = {"pass-env", "pass-file", "file", "out"}});
    const int files = options.count({"file", "out"});
    if (files == 1) throw Failure("-file and -out go together");
    const PassKey key(options);
    if (files == 2) {
        LibraryProgress progress;
        const SCrypt::Status status = (SCrypt().*direction.file)(
            options.value("file").c_str(), options.value("out").c_str(), key, &progress);
        return Outcome(direction.command, options.value("file"), status);
    }
    Source input("-");
    std::string result;
    const SCrypt::Status status = direction.text(ReadAll(input), key, result);
    if (status == SCrypt::success) Print(result);
    return Outcome(direction.command, "standard input", status);
}

ExitStatus Encrypt(const Words& arguments) {
    return Convert({"encrypt", &SCrypt::encryptFile, EncryptText}, arguments);
}

ExitStatus Decrypt(const Words& arguments) {
    return Convert({"decrypt", &SCrypt::decryptFile, DecryptText}, arguments);
}

}  // namespace

const Command kEncryptCommand = {"encrypt", "a file or a text with a pass phrase", kEncryptHelp, Encrypt};
const Command kDecryptCommand = {"decrypt", "what encrypt made", kDecryptHelp, Decrypt};

}  // namespace tarn
