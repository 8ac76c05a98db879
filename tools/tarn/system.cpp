#include "system.h"

#include <cstdio>

#include "tarnlib/sstring.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace tarn {
namespace {

using TarnLibA500::SWCharString;

std::string ToUtf8(const wchar_t* text) {
    const SWCharString wide(text);
    std::string utf8(wide.getNBytesForUTF8(), '\0');
    wide.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    utf8.pop_back();  // the terminator
    return utf8;
}

std::FILE* printed = stdout;

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
    _setmode(_fileno(stdin), _O_BINARY);
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
    std::fwrite(text.data(), 1, text.size(), printed);
}

void PrintToError() {
    printed = stderr;
}

void PrintError(const std::string& line) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", line.c_str());
}

bool FlushOutput() {
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

std::string SystemReason(unsigned long error) {
    wchar_t text[512] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                   sizeof text / sizeof *text, nullptr);
    const std::string reason = ToUtf8(SWCharString(text).trimRight().getString());
    return !reason.empty() ? reason : "error " + std::to_string(error);
}

}  // namespace tarn
