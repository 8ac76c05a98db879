#include "system.h"

#include <cstdio>

#include "tarnlib/senvironment.h"
#include "tarnlib/sfileexception.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SEnvironment;
using TarnLibA500::SFileException;

std::FILE* printed = stdout;

}  // namespace

Words ReadCommandLine() {
    Words words;
    for (const SAnsiString& word : SEnvironment::GetArguments()) words.push_back(Str(word));
    if (!words.empty()) words.erase(words.begin());
    return words;
}

Utf8Output::Utf8Output() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    if (_isatty(_fileno(stdout)) == 0 && _isatty(_fileno(stderr)) == 0) return;
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
    const std::string reason = Str(SFileException::GetSystemMessage(error).trimRight());
    return reason != "system error" ? reason : reason + " " + std::to_string(error);
}

}  // namespace tarn
