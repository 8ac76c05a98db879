#include "command.h"
#include "libraryprogress.h"
#include "options.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/scompression.h"

namespace tarn {
namespace {

using TarnLibA500::SCompression;
using TarnLibA500::SSimpleBuffer;

constexpr int kUsualLevel = 6;

constexpr const char* kCompressHelp =
    "-file F -out G [-level N] [-strategy S] [-block]\n\n"
    "Compresses a file of any size into a gzip file: the whole file or nothing.\n\n"
    "  -level N      from 0 (stored) and 1 (fast) to 9 (small); otherwise 6\n"
    "  -strategy S   0 the usual one, 1 filtered data, 2 Huffman codes only; with -block also 3 runs, 4 "
    "fixed "
    "codes\n"
    "  -block        a block as programs keep it in memory: the length (32 bits, big-endian) and a zlib "
    "stream.\n"
    "                F and G may be - for the standard streams\n\n"
    "Exit status: 0; 1 when there is nothing to make a block of.\n";

constexpr const char* kExpandHelp =
    "-file F -out G [-block]\n\n"
    "Expands a gzip file of any size, or a block that tarn compress -block made: the whole file or "
    "nothing.\n\n"
    "Exit status: 0; 1 when F is no such file, damaged or cut.\n";

std::string Explained(int code) {
    switch (code) {
        case SCompression::bufferError:
            return "it ends early, or is more than it says";
        case SCompression::outOfMemory:
            return "there is not enough memory";
        case SCompression::invalidArguments:
            return "it is too short, or too long";
        case SCompression::fileError:
            return "it is damaged, or a file cannot be read or written";
        default:
            return "it is damaged";
    }
}

ExitStatus Outcome(const char* command, const std::string& file, int code) {
    if (code == SCompression::ok) return kYes;
    if (code == SCompression::outOfMemory) throw Failure(file + ": " + Explained(code));
    PrintError(std::string("tarn ") + command + ": " + file + ": " + Explained(code));
    return kNo;
}

SSimpleBuffer ReadAll(const std::string& name) {
    constexpr std::size_t kPiece = 1024 * 1024;
    Source source(name);
    SSimpleBuffer all;
    for (std::string piece = source.read(kPiece); !piece.empty(); piece = source.read(kPiece))
        all.append(piece.data(), static_cast<std::uint32_t>(piece.size()), all.getNBytes());
    return all;
}

void WriteAll(const SSimpleBuffer& bytes, const std::string& name) {
    Target target(name);
    target.write({reinterpret_cast<const char*>(bytes.getBufferProtected()), bytes.getNBytes()});
    target.finish();
}

ExitStatus Compress(const Words& arguments) {
    const Options options(
        arguments, {.required = {"file", "out"}, .values = {"level", "strategy"}, .switches = {"block"}});
    const int level = options.has("level") ? options.number("level", 0, 9) : kUsualLevel;
    const int mostStrategy = options.has("block") ? SCompression::fixedCodes : SCompression::huffmanOnly;
    const int strategy = options.has("strategy") ? options.number("strategy", 0, mostStrategy) : 0;
    const std::string file = options.value("file");
    if (options.has("block")) {
        SSimpleBuffer block;
        const SSimpleBuffer bytes = ReadAll(file);
        if (bytes.isEmpty()) return Outcome("compress", file, SCompression::invalidArguments);
        const int code = SCompression::compress_buffer(bytes, block, level, strategy);
        if (code == SCompression::ok) WriteAll(block, options.value("out"));
        return Outcome("compress", file, code);
    }
    Source(file).close();  // says why it cannot be read
    LibraryProgress progress;
    const int code = SCompression::compress_file(file.c_str(), options.value("out").c_str(), level, strategy,
                                                 false, &progress);
    if (code != SCompression::ok) throw Failure("cannot compress " + file + " into " + options.value("out"));
    return kYes;
}

ExitStatus Expand(const Words& arguments) {
    const Options options(arguments, {.required = {"file", "out"}, .switches = {"block"}});
    const std::string file = options.value("file");
    if (options.has("block")) {
        SSimpleBuffer bytes;
        const SSimpleBuffer block = ReadAll(file);
        const bool isShort = block.getNBytes() < sizeof(std::uint32_t);
        const int code =
            isShort ? SCompression::invalidArguments : SCompression::decompress_buffer(block, bytes);
        if (code == SCompression::ok) WriteAll(bytes, options.value("out"));
        return Outcome("expand", file, code);
    }
    constexpr const char* kMagic = "\x1F\x8B";
    if (Source(file).read(2) != kMagic) {
        PrintError("tarn expand: " + file + ": it is no gzip file");
        return kNo;
    }
    LibraryProgress progress;
    return Outcome(
        "expand", file,
        SCompression::decompress_file(file.c_str(), options.value("out").c_str(), false, &progress));
}

}  // namespace

const Command kCompressCommand = {"compress", "a file into a gzip file or a block", kCompressHelp, Compress};
const Command kExpandCommand = {"expand", "what compress or gzip made", kExpandHelp, Expand};

}  // namespace tarn
