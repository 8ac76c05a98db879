#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "diag/assert/levels.h"
#include "files/systempath.h"
#include "security/compressionerror.h"
#include "security/filepieces.h"
#include "security/freshfile.h"
#include "tarnlib/scompression.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/straceobj.h"
#include "zqezlib/zqezlib.h"

// Files.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "scompress";
constexpr std::uint32_t kPieceBytes = 16384;

/// The name of a file as the compression module takes it.
std::vector<char> ModulePath(const SAnsiString& path) {
    const SWCharString wide = LongSystemPath(path);
    std::vector<char> utf8(wide.getNBytesForUTF8());
    wide.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    return utf8;
}

/// A gzip file, closed at the latest when the object goes.
class GzipFile {
  public:
    GzipFile(const SAnsiString& path, const char* mode) : file_(ZQ_gzopen(ModulePath(path).data(), mode)) {
        if (file_ == nullptr)
            TARN_TRACE_AT(levels::kFailure, kUnit, "cannot open %1: %2", path, std::strerror(errno));
    }
    ~GzipFile() { close(); }
    GzipFile(const GzipFile&) = delete;
    GzipFile& operator=(const GzipFile&) = delete;

    bool isOpen() const { return file_ != nullptr; }
    int read(void* bytes, std::uint32_t count) { return ZQ_gzread(file_, bytes, count); }
    bool write(const void* bytes, std::uint32_t count) {
        return ZQ_gzwrite(file_, bytes, count) == static_cast<int>(count);
    }
    /// An ErrCode.
    int close() {
        return isOpen() ? ConvertErrorCode(ZQ_gzclose(std::exchange(file_, nullptr))) : SCompression::ok;
    }

  private:
    void* file_;
};

struct Mode {
    char text[5];
};

/// How a file is opened to be compressed.
Mode ModeOf(int level, int strategy) {
    constexpr int kLevelOtherwise = 3;
    Mode mode = {"wb"};
    mode.text[2] = static_cast<char>('0' + (level >= 0 && level <= 9 ? level : kLevelOtherwise));
    if (strategy == SCompression::filtered) mode.text[3] = 'f';
    if (strategy == SCompression::huffmanOnly) mode.text[3] = 'h';
    return mode;
}

int CompressPieces(SFile& source, GzipFile& dest, SProgress* progress) {
    for (FilePieces pieces(source, progress, kPieceBytes); pieces.next();) {
        if (!dest.write(pieces.data(), pieces.count())) return SCompression::fileError;
    }
    return SCompression::ok;
}

int ExpandPieces(GzipFile& source, SFile& dest, SProgress* progress) {
    SecretBytes piece(kPieceBytes);
    for (unsigned long long done = 0;;) {
        if (progress != nullptr) progress->advance(done, 0);
        const int count = source.read(piece.data(), piece.size());
        if (count < 0) return SCompression::fileError;
        if (count == 0) return SCompression::ok;
        dest.writeAll(piece.data(), static_cast<std::uint32_t>(count));
        done += static_cast<unsigned>(count);
    }
}

// A source that was replaced by what was made of it is gone already.
void RemoveSource(const SAnsiString& source, const SAnsiString& dest) {
    if (SWCharStringCI(LongSystemPath(source)) != LongSystemPath(dest)) SFileSys::remove(source);
}

int CompressWhole(const SAnsiString& source, const SAnsiString& dest, const Mode& mode, SProgress* progress) {
    SFile in(source, kReadFromFront, SFile::readWriteMask, SFile::denyNothing);
    FreshFile fresh(dest);
    GzipFile out(fresh.path(), mode.text);
    if (!out.isOpen()) return SCompression::fileError;
    const int code = CompressPieces(in, out, progress);
    in.close();
    const int closed = out.close();
    if (code == SCompression::ok && closed == SCompression::ok) fresh.takePlace();
    return code != SCompression::ok ? code : closed;
}

int ExpandWhole(const SAnsiString& source, const SAnsiString& dest, SProgress* progress) {
    GzipFile in(source, "rb");
    if (!in.isOpen()) return SCompression::fileError;
    FreshFile fresh(dest);
    SFile out(fresh.path(), SFile::writeOnly | SFile::noInherit, SFile::readWriteMask, SFile::denyWrite);
    const int code = ExpandPieces(in, out, progress);
    const int closed = in.close();
    out.close();
    if (code == SCompression::ok && closed == SCompression::ok) fresh.takePlace();
    return code != SCompression::ok ? code : closed;
}

/// Does the work and then removes the source if asked to. What it throws is a code here; it has been traced.
template <class Work>
int Run(const SAnsiString& source, const SAnsiString& dest, bool removeSource, Work work) {
    int code = SCompression::fileError;
    try {
        code = work();
        if (code == SCompression::ok && removeSource) RemoveSource(source, dest);
    } catch (const SFileException&) {
        code = SCompression::fileError;
    } catch (const SFileSysException&) {
        code = SCompression::fileError;
    } catch (const std::bad_alloc&) {
        code = SCompression::outOfMemory;
    }
    if (code != SCompression::ok)
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 to %2: error code %3", source, dest, code);
    return code;
}

}  // namespace

int SCompression::compress_file(const SAnsiString& source, const SAnsiString& dest, int level, int strategy,
                                bool removeSource, SProgress* progress) {
    return Run(source, dest, removeSource,
               [&] { return CompressWhole(source, dest, ModeOf(level, strategy), progress); });
}

int SCompression::decompress_file(const SAnsiString& source, const SAnsiString& dest, bool removeSource,
                                  SProgress* progress) {
    return Run(source, dest, removeSource, [&] { return ExpandWhole(source, dest, progress); });
}

}  // namespace TarnLibA500
