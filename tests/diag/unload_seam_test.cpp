// The DLL itself, loaded and unloaded by a process that does not link to it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <utility>

#include <windows.h>

#include <tlhelp32.h>

#include "support/file_bytes.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/csharedlibrary.h"

using namespace TarnLibA500;

namespace {

constexpr int kHandlesOfTheSystem = 3;  // it may have opened some of its own
constexpr const char* kDll = "tarnlib-5-0.dll";
constexpr const char* kInitialize = "_ZN11TarnLibA5007SLogger10InitializeEv";
constexpr const char* kTerminate = "_ZN11TarnLibA5007SLogger9TerminateEv";
constexpr const char* kLoadLandscape =
    "_ZN11TarnLibA50016ConfigFileReader17initializeFromXMLERKNS_11SAnsiStringE";

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

// Wine counts no handles (GetProcessHandleCount says 0), so every value that may be one is tried.
int Handles() {
    int count = 0;
    DWORD flags = 0;
    for (std::uintptr_t value = 4; value < 0x4000; value += 4)
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    return count;
}

void LoadAndUnload(bool terminate) {
    const CSharedLibrary module(kDll);
    ASSERT_TRUE(reinterpret_cast<bool (*)()>(module.Resolve(kInitialize))());
    if (terminate) reinterpret_cast<void (*)()>(module.Resolve(kTerminate))();
}

}  // namespace

#ifndef TARN_GUARD_HEAP  // its strings stand at odd addresses, which the checks in the DLL do not take

// With the library's own copy of the parser; strings and readers look the same on both sides.
TEST(Unloading, TheXmlParserGoesToo) {
    const std::filesystem::path folder = tarntest::MakeScratchFolder("unloading");
    tarntest::WriteBytes(folder / "landscape", "<Landscape/>");
    const SAnsiString path = tarntest::Text(folder / "landscape");
    int handles = 0;
    for (int round = 0; round < 10; ++round) {
        {
            const CSharedLibrary module(kDll);
            // A pointer to a member function is its address and an offset.
            const std::pair<void*, std::ptrdiff_t> parts(module.Resolve(kLoadLandscape), 0);
            bool (ConfigFileReader::*load)(const SAnsiString&) = nullptr;
            std::memcpy(&load, &parts, sizeof load);
            for (const SAnsiString& file : {path, SAnsiString("none"), path})
                EXPECT_EQ((ConfigFileReader().*load)(file), file != "none");
        }
        EXPECT_EQ(GetModuleHandleA(kDll), nullptr);
        if (round == 0) handles = Handles();
    }
    EXPECT_LE(Handles(), handles + kHandlesOfTheSystem);
}

#endif

TEST(Unloading, LeavesNothingBehind) {
    struct {
        const wchar_t* options;
        bool terminate, staysLoaded;
    } const cases[] = {{L"", true, false}, {L"-notracethread", false, false}, {L"", false, true}};
    // The last one's thread keeps the module, once and not a hundred times.
    for (const auto& c : cases) {
        SetEnvironmentVariableW(L"ZQE_LOGGER_ENVIRONMENT", c.options);
        LoadAndUnload(c.terminate);
        const int threads = Threads();
        const int handles = Handles();
        for (int i = 0; i < 100; ++i) LoadAndUnload(c.terminate);
        EXPECT_LE(Threads(), threads);
        EXPECT_LE(Handles(), handles + kHandlesOfTheSystem);
        EXPECT_EQ(GetModuleHandleA(kDll) != nullptr, c.staysLoaded);
    }
}
