// The DLL itself, loaded and unloaded by a process that does not link to it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <utility>

#include <windows.h>

#include <tlhelp32.h>

#include "support/file_bytes.h"
#include "support/open_handles.h"
#include "tarnlib/configfilereader.h"

using namespace TarnLibA500;
using tarntest::OpenHandles;

namespace {

constexpr int kRounds = 100;
constexpr const wchar_t* kDll = L"tarnlib-5-0.dll";
constexpr const char* kInitialize = "_ZN11TarnLibA5007SLogger10InitializeEv";
constexpr const char* kTerminate = "_ZN11TarnLibA5007SLogger9TerminateEv";
constexpr const char* kLoadLandscape =
    "_ZN11TarnLibA50016ConfigFileReader17initializeFromXMLERKNS_11SAnsiStringE";

template <class Function>
Function Find(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

int Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int threads = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        threads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(snapshot);
    return threads;
}

void LoadAndUnload(bool terminate) {
    const HMODULE module = LoadLibraryW(kDll);
    ASSERT_NE(module, nullptr) << GetLastError();
    ASSERT_TRUE(Find<bool (*)()>(module, kInitialize)());
    if (terminate) Find<void (*)()>(module, kTerminate)();
    FreeLibrary(module);
}

}  // namespace

#ifndef TARN_GUARD_HEAP  // its strings stand at odd addresses, which the checks in the DLL do not take

namespace {

// A pointer to a member function is its address and an offset.
using Load = bool (ConfigFileReader::*)(const SAnsiString&);
Load FindLoad(HMODULE module) {
    const std::pair<FARPROC, std::ptrdiff_t> parts(GetProcAddress(module, kLoadLandscape), 0);
    Load load = nullptr;
    static_assert(sizeof load == sizeof parts);
    std::memcpy(&load, &parts, sizeof load);
    return load;
}

}  // namespace

// With the library's own copy of the parser; strings and readers look the same on both sides.
TEST(Unloading, TheXmlParserGoesToo) {
    const std::filesystem::path folder = tarntest::MakeScratchFolder("unloading");
    tarntest::WriteBytes(folder / "landscape", "<Landscape/>");
    const SAnsiString path = tarntest::Text(folder / "landscape");
    std::size_t handles = 0;
    for (int round = 0; round < 10; ++round) {
        const HMODULE module = LoadLibraryW(kDll);
        for (const SAnsiString& file : {path, SAnsiString("none"), path}) {
            ConfigFileReader reader;
            EXPECT_EQ((reader.*FindLoad(module))(file), file != "none");
        }
        FreeLibrary(module);
        EXPECT_EQ(GetModuleHandleW(kDll), nullptr);
        if (round == 0) handles = OpenHandles().size();
    }
    EXPECT_LE(OpenHandles().size(), handles + 3);  // the system may have opened some of its own
    std::filesystem::remove_all(folder);
}

#endif

TEST(Unloading, LeavesNothingBehind) {
    struct {
        const wchar_t* options;
        bool terminate;
        bool staysLoaded;
    } const cases[] = {
        {L"", true, false},
        {L"-notracethread", false, false},
        {L"", false, true},  // last: its thread keeps the module, once and not a hundred times
    };
    for (const auto& c : cases) {
        SetEnvironmentVariableW(L"ZQE_LOGGER_ENVIRONMENT", c.options);
        LoadAndUnload(c.terminate);
        const int threads = Threads();
        const std::size_t handles = OpenHandles().size();
        for (int i = 0; i < kRounds; ++i) LoadAndUnload(c.terminate);
        EXPECT_LE(Threads(), threads);
        EXPECT_LE(OpenHandles().size(), handles + 3);  // the system may have opened some of its own
        EXPECT_EQ(GetModuleHandleW(kDll) != nullptr, c.staysLoaded);
    }
}
