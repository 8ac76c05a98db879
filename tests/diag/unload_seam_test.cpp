// The DLL itself, loaded and unloaded by a process that does not link to it.
#include <gtest/gtest.h>

#include <windows.h>

#include <tlhelp32.h>

namespace {

constexpr int kRounds = 100;
constexpr const wchar_t* kDll = L"tarnlib-5-0.dll";
constexpr const char* kInitialize = "_ZN11TarnLibA5007SLogger10InitializeEv";
constexpr const char* kTerminate = "_ZN11TarnLibA5007SLogger9TerminateEv";

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

DWORD Handles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

void LoadAndUnload(bool terminate) {
    const HMODULE module = LoadLibraryW(kDll);
    ASSERT_NE(module, nullptr) << GetLastError();
    ASSERT_TRUE(Find<bool (*)()>(module, kInitialize)());
    if (terminate) Find<void (*)()>(module, kTerminate)();
    FreeLibrary(module);
}

}  // namespace

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
        const DWORD handles = Handles();
        for (int i = 0; i < kRounds; ++i) LoadAndUnload(c.terminate);
        EXPECT_LE(Threads(), threads);
        EXPECT_LE(Handles(), handles + 3);
        EXPECT_EQ(GetModuleHandleW(kDll) != nullptr, c.staysLoaded);
    }
}
