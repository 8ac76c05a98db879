#include <cstdio>

#include "command.h"
#include "options.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/md5.h"
#include "tarnlib/scompression.h"
#include "tarnlib/sha256.h"

namespace tarn {
namespace {

using TarnLibA500::MD5;
using TarnLibA500::SCompression;
using TarnLibA500::SHA256;

constexpr const char* kDigestHelp =
    "-md5 | -sha256 [-file F]\n\n"
    "Prints the digest of a file of any size in hexadecimal digits.\n\n"
    "  -file F   the file; without it, and with -, standard input\n\n"
    "Exit status: 0.\n";

constexpr const char* kCrc32Help =
    "[-file F]\n\n"
    "Prints the CRC-32 of gzip of a file of any size in hexadecimal digits.\n\n"
    "  -file F   the file; without it, and with -, standard input\n\n"
    "Exit status: 0.\n";

/// Hands a file on, a piece at a time.
template <class Use>
void ReadThrough(const Options& options, Use use) {
    constexpr std::size_t kPiece = 64 * 1024;
    Source source(options.has("file") ? options.value("file") : "-");
    Progress progress(source.size());
    unsigned long long done = 0;
    for (std::string piece = source.read(kPiece); !piece.empty(); piece = source.read(kPiece)) {
        use(reinterpret_cast<const unsigned char*>(piece.data()), static_cast<std::uint32_t>(piece.size()));
        progress.show(done += piece.size());
    }
}

void PrintHex(const unsigned char* bytes, std::size_t count) {
    std::string line;
    for (std::size_t i = 0; i < count; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(bytes[i]));
        line += digits;
    }
    Print(line + "\n");
}

template <class Digest>
Digest& DigestOf(const Options& options, Digest& digest) {
    ReadThrough(options,
                [&](const unsigned char* bytes, std::uint32_t count) { digest.Update(bytes, count); });
    return digest;
}

ExitStatus ShowDigest(const Words& arguments) {
    const Options options(arguments, {.values = {"file"}, .switches = {"md5", "sha256"}});
    if (options.count({"md5", "sha256"}) != 1) throw Failure("one of -md5 and -sha256 must be given");
    unsigned char result[SHA256::kDigestBytes];
    if (options.has("sha256")) {
        SHA256 digest;
        if (!DigestOf(options, digest).Finish(result)) throw Failure("the digest cannot be made");
        PrintHex(result, sizeof result);
    } else {
        unsigned char md5[MD5::kDigestBytes];
        MD5 digest;
        DigestOf(options, digest).Finish(md5);
        PrintHex(md5, sizeof md5);
    }
    return kYes;
}

ExitStatus ShowCrc32(const Words& arguments) {
    const Options options(arguments, {.values = {"file"}});
    std::uint32_t crc = 0;
    ReadThrough(options, [&](const unsigned char* bytes, std::uint32_t count) {
        crc = SCompression::get_crc32(crc, bytes, count);
    });
    const unsigned char bytes[] = {static_cast<unsigned char>(crc >> 24),
                                   static_cast<unsigned char>(crc >> 16),
                                   static_cast<unsigned char>(crc >> 8), static_cast<unsigned char>(crc)};
    PrintHex(bytes, sizeof bytes);
    return kYes;
}

}  // namespace

const Command kDigestCommand = {"digest", "MD5 and SHA-256 of files", kDigestHelp, ShowDigest};
const Command kCrc32Command = {"crc32", "CRC-32 of files", kCrc32Help, ShowCrc32};

}  // namespace tarn
