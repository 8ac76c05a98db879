// A logging plug-in: appends every structured entry to the file named by the option "sampleJournal", one line
// each. It needs the header of the interface and nothing else of the library.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tarnlib/loggingplugin.h"

#include <windows.h>

namespace {

constexpr const char* kJournalOption = " -sampleJournal ";
constexpr const char* kCategories = "32";  // entries of the categories 0 to 31 are handed over

std::FILE* journal = nullptr;

char* CopyOf(const char* text) {
    const std::size_t bytes = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(std::malloc(bytes));
    if (copy != nullptr) std::memcpy(copy, text, bytes);
    return copy;
}

// The option's value in a command line: a word, or what stands in double quotes.
bool FindJournal(const char* options, char* path, std::size_t room) {
    const char* value = std::strstr(options, kJournalOption);
    if (value == nullptr) return false;
    value += std::strlen(kJournalOption);
    const bool isQuoted = *value == '"';
    if (isQuoted) ++value;
    const std::size_t length = std::strcspn(value, isQuoted ? "\"" : " ");
    if (length >= room) return false;
    std::memcpy(path, value, length);
    path[length] = '\0';
    return true;
}

// A process may have its texts in UTF-8 or in its ANSI code page, whose texts beyond ASCII hardly ever are UTF-8.
std::FILE* OpenJournal(const char* path) {
    wchar_t wide[512];
    constexpr int kRoom = sizeof wide / sizeof *wide;
    const bool isWide = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide, kRoom) != 0 ||
                        MultiByteToWideChar(CP_ACP, 0, path, -1, wide, kRoom) != 0;
    return isWide ? _wfopen(wide, L"ab") : nullptr;
}

// An argument with line ends in it would look like several entries.
void WriteArgument(const char* text) {
    std::fputc(' ', journal);
    for (; *text != '\0'; ++text) std::fputc(*text == '\r' || *text == '\n' ? ' ' : *text, journal);
}

}  // namespace

extern "C" {

__declspec(dllexport) int GetDLLVersion() {
    return TarnLibA500::LoggingPlugin::kInterfaceVersion;
}

__declspec(dllexport) int Initialize(const char* options) {
    char path[512];
    if (!FindJournal(options, path, sizeof path)) return 0;
    journal = OpenJournal(path);
    return journal != nullptr ? 1 : 0;
}

__declspec(dllexport) void Trace(int level, int category, unsigned long message, const char*,
                                 const char* const* arguments, unsigned count) {
    std::fprintf(journal, "%d/%d/%lu", level, category, message);
    for (unsigned i = 0; i < count; ++i) WriteArgument(arguments[i]);
    std::fputc('\n', journal);
    std::fflush(journal);
}

__declspec(dllexport) void Terminate() {
    std::fclose(journal);
    journal = nullptr;
}

__declspec(dllexport) char* GetParam(const char* name) {
    return std::strcmp(name, "numcategories") == 0 ? CopyOf(kCategories) : nullptr;
}

__declspec(dllexport) char* GetParamList() {
    return CopyOf("numcategories");
}

__declspec(dllexport) void FreeString(char* text) {
    std::free(text);
}

}  // extern "C"
