#include "system/systemtext.h"

#include <gtest/gtest.h>

#include "seam/osmodules.h"
#include "seam/ostext.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/print_strings.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/sfileexception.h"

using namespace TarnLibA500;

namespace {

std::wstring Units(const std::string& hex) {
    std::wstring units;
    for (std::size_t i = 0; i < hex.size(); i += 5)
        units += static_cast<wchar_t>(std::stoi(hex.substr(i, 4), nullptr, 16));
    return units;
}

}  // namespace

TEST(SharedLibraryFaults, AreToldAndLeaveNothingLoaded) {
    std::string codes;
    const auto use = [&codes] {
        try {
            CSharedLibrary(SAnsiString("Ole32.dll")).Resolve("CoCreateGuid");
        } catch (const CSharedLibraryException& failure) {
            codes += std::to_string(failure.GetErrorCode()) + " ";
        }
    };
    for (unsigned long nth = 1; tarntest::FailsAt<osmodules::Calls>(nth, ERROR_NOT_ENOUGH_MEMORY, use);)
        ++nth;
    EXPECT_EQ(codes, "8 127 ");  // whoever cannot look beside the library looks elsewhere
}

namespace {

std::wstring asked;

HMODULE WINAPI Load(const wchar_t* path, HANDLE, DWORD flags) {
    DWORD mode = GetThreadErrorMode();
    asked += std::wstring(path) + L" " + std::to_wstring(flags) + L" " + std::to_wstring(mode) + L"|";
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC WINAPI FindOnWindows7(HMODULE module, const char* symbol) {
    return std::string(symbol) == "AddDllDirectory" ? nullptr : GetProcAddress(module, symbol);
}

/// A text of the system: what it means in which language.
const wchar_t *ofSystem, *inEnglish;

DWORD WINAPI Format(DWORD, const void*, DWORD, DWORD language, wchar_t* out, DWORD, va_list*) {
    const wchar_t* const text = language == 0x409 ? inEnglish : ofSystem;
    std::wcscpy(out, text);
    return static_cast<DWORD>(std::wcslen(text));
}

}  // namespace

TEST(SharedLibraries, AreLookedForWhereTheSystemLooksAndWithoutDialogs) {
    const tarntest::Instead load(osmodules::loadLibrary, &Load);
    EXPECT_THROW(CSharedLibrary("none"), CSharedLibraryException);
    EXPECT_EQ(asked, L"none.dll 4096 32769|");
    const tarntest::Instead find(osmodules::getProcAddress, &FindOnWindows7);
    asked.clear();
    EXPECT_THROW(CSharedLibrary("none"), CSharedLibraryException);
    EXPECT_EQ(osmodules::LoadOfSystem(L"user32.dll"), nullptr);
    wchar_t directory[MAX_PATH];
    const std::wstring system(directory, GetSystemDirectoryW(directory, MAX_PATH));
    EXPECT_EQ(asked, system + L"\\none.dll 8 32769|" + system + L"\\user32.dll 8 32769|");
    EXPECT_EQ(GetThreadErrorMode() & SEM_NOOPENFILEERRORBOX, 0U);
}

TEST(SystemErrorTexts, AreInALanguageThatNarrowTextCanHold) {
    const tarntest::Instead format(ostext::formatMessage, &Format);
    const struct {
        const wchar_t *ofSystem, *inEnglish;
        const char *message, *text;
    } cases[] = {
        {L"Zugriff m\xF6glich.\r\n", L"Access.\r\n", "Zugriff m\xF6glich.\r\n", "Zugriff m\xF6glich."},
        {L"\x041D\x0435.\r\n", L"Access.\r\n", "Access.\r\n", "Access."},
        {L"\x65E5", L"", "system error", "system error 5"},
        {L"", L"Access.", "Access.", "Access."},
    };
    for (const auto& c : cases) {
        ofSystem = c.ofSystem;
        inEnglish = c.inEnglish;
        EXPECT_EQ(SFileException::GetSystemMessage(5), c.message);
        EXPECT_EQ(SystemErrorText(5), c.text);
    }
}

TEST(SystemText, IsExactOrSaysSo) {
    for (const auto& c : tarntest::ReadCases("system/system_texts.txt")) {
        const auto page = static_cast<unsigned>(std::stoul(c[0]));
        const SAnsiString bytes(c[1].c_str());
        const std::wstring units = Units(c[2]);
        SWCharString wide;
        SAnsiString narrow;
        if (c[3] != "units") {
            EXPECT_EQ(ToUtf16(bytes, page, wide), c[3].empty()) << c[0] << c[1];
            EXPECT_EQ(wide, units.c_str()) << c[0] << c[1];
        }
        if (c[3] != "bytes") {
            EXPECT_EQ(FromUtf16(units.c_str(), page, narrow), c[3].empty()) << c[0] << c[2];
            EXPECT_EQ(narrow, bytes) << c[0] << c[2];
        }
    }
    // Texts of several pieces: a pair must not be parted between two.
    for (const std::size_t before : {255U, 256U, 511U}) {
        const std::wstring units = std::wstring(before, L'x') + L"\xD83D\xDE00";
        SAnsiString narrow;
        EXPECT_TRUE(FromUtf16(units.c_str(), 65001, narrow));
        EXPECT_EQ(narrow.right(4), "\xF0\x9F\x98\x80") << before;
    }
    SWCharString cut;
    EXPECT_FALSE(ToSystemExactly(SAnsiString("a\0b", 3), cut));
}
