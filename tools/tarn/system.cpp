#include "system.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "tarnlib/sstring.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace tarn {
namespace {

using TarnLibA500::SWCharString;

SWCharString ToWide(const std::string& text) {
    SWCharString wide;
    wide.fromUTF8(text.c_str());
    return wide;
}

std::string ToUtf8(const wchar_t* text) {
    const SWCharString wide(text);
    std::string utf8(wide.getNBytesForUTF8(), '\0');
    wide.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    utf8.pop_back();  // the terminator
    return utf8;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File Open(const std::string& name, const wchar_t* mode) {
    return File(_wfopen(ToWide(name).getString(), mode));
}

[[noreturn]] void FailOn(const char* what, const std::string& name, int error) {
    throw Failure(std::string("cannot ") + what + " " + name + ": " + std::strerror(error));
}

bool WriteThrough(const std::string& name, const std::string& bytes) {
    const File file = Open(name, L"wb");
    return file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
           std::fflush(file.get()) == 0 && _commit(_fileno(file.get())) == 0;
}

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

std::string ReadFile(const std::string& name) {
    const File file = Open(name, L"rb");
    if (!file) FailOn("read", name, errno);
    if (_fseeki64(file.get(), 0, SEEK_END) != 0) FailOn("read", name, errno);
    const long long size = _ftelli64(file.get());
    if (size > kMaxFileBytes) throw Failure("cannot read " + name + ": it is larger than 64 MiB");
    if (size < 0 || _fseeki64(file.get(), 0, SEEK_SET) != 0) FailOn("read", name, errno);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) FailOn("read", name, EIO);
    return bytes;
}

void WriteFile(const std::string& name, const std::string& bytes) {
    const std::string temporary = name + "." + std::to_string(GetCurrentProcessId()) + ".new";
    if (!WriteThrough(temporary, bytes)) {
        const int error = errno;
        DeleteFileW(ToWide(temporary).getString());
        FailOn("write", name, error);
    }
    if (!MoveFileExW(ToWide(temporary).getString(), ToWide(name).getString(), MOVEFILE_REPLACE_EXISTING)) {
        const unsigned long error = GetLastError();
        DeleteFileW(ToWide(temporary).getString());
        throw Failure("cannot replace " + name + ": system error " + std::to_string(error));
    }
}

}  // namespace tarn
