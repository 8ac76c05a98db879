#include "system.h"

#include <cstdio>

#include "codepagetext.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/sstring.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SFile;
using TarnLibA500::SFileException;
using TarnLibA500::SFileSys;
using TarnLibA500::SFileSysException;
using TarnLibA500::SWCharString;

std::string ToUtf8(const wchar_t* text) {
    const SWCharString wide(text);
    std::string utf8(wide.getNBytesForUTF8(), '\0');
    wide.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    utf8.pop_back();  // the terminator
    return utf8;
}

// What the file classes say, without the system's line end.
[[noreturn]] void Fail(SAnsiString why) {
    throw Failure(Utf8Text(why.trimRight()));
}

struct TemporaryFile {
    TemporaryFile() = default;
    ~TemporaryFile() {
        try {
            SFileSys::remove(name);
        } catch (const SFileSysException& failure) {
            PrintError(Utf8Text(failure.toString()));
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const SAnsiString name = SFileSys::getTempFilename("tarn");
};

}  // namespace

Words ReadCommandLine() {
    int count = 0;
    wchar_t** const all = CommandLineToArgvW(GetCommandLineW(), &count);
    Words words;
    for (int i = 1; all != nullptr && i < count; ++i) words.push_back(ToUtf8(all[i]));
    LocalFree(static_cast<void*>(all));
    return words;
}

Utf8Output::Utf8Output() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    if (_isatty(_fileno(stdout)) == 0) return;
    codePageBefore_ = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Output::~Utf8Output() {
    std::fflush(stdout);
    if (codePageBefore_ != 0) SetConsoleOutputCP(codePageBefore_);
}

void Print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintError(const std::string& line) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", line.c_str());
}

std::string ReadFile(const std::string& name) try {
    SFile file(FileName(name), SFile::readOnly | SFile::sequential, SFile::readWriteMask, SFile::denyNothing);
    const long long size = file.sizeEx();
    if (size > kMaxFileBytes) throw Failure("cannot read " + name + ": it is larger than 64 MiB");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    for (int count = -1; count != 0 && done < bytes.size(); done += static_cast<std::size_t>(count))
        count = file.read(bytes.data() + done, static_cast<std::uint32_t>(bytes.size() - done));
    bytes.resize(done);
    return bytes;
} catch (const SFileException& failure) {
    Fail(failure.toString());
}

void WriteFile(const std::string& name, const std::string& bytes) try {
    const TemporaryFile temporary;
    SFile file(temporary.name, SFile::writeOnly, SFile::readWriteMask, SFile::denyNothing);
    file.writeAll(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    file.close();
    SFileSys::copyFile(temporary.name, FileName(name), true);
} catch (const SFileException& failure) {
    Fail(failure.toString());
} catch (const SFileSysException& failure) {
    Fail(failure.toString());
}

}  // namespace tarn
