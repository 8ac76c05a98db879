// Linked into every test program: an unhandled exception of the system prints where it happened and ends the
// process with 99. `i686-w64-mingw32-addr2line -f -C -e MODULE ADDRESS` gives the line; ADDRESS is the
// printed offset plus the module's image base (objdump -p).
#include <cstdio>

#include <windows.h>

namespace {

constexpr int kCrashExitCode = 99;
constexpr int kMaxFrames = 24;

void PrintPlace(const char* relation, void* address) {
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    char name[MAX_PATH] = "?";
    if (GetModuleHandleExA(kFlags, static_cast<LPCSTR>(address), &module))
        GetModuleFileNameA(module, name, sizeof name);
    const auto offset = reinterpret_cast<ULONG_PTR>(address) - reinterpret_cast<ULONG_PTR>(module);
    std::fprintf(stderr, "  %s %s offset 0x%lx\n", relation, name, static_cast<unsigned long>(offset));
}

bool IsReadable(const void* address) {
    MEMORY_BASIC_INFORMATION memory;
    return VirtualQuery(address, &memory, sizeof memory) != 0 && memory.State == MEM_COMMIT &&
           (memory.Protect & (PAGE_NOACCESS | PAGE_GUARD)) == 0;
}

/// Follows the saved frame pointers, which the checked and debug builds keep.
void PrintCallers(DWORD framePointer) {
    auto frame = reinterpret_cast<void**>(static_cast<ULONG_PTR>(framePointer));
    for (int i = 0; i < kMaxFrames && IsReadable(frame) && frame[1] != nullptr; ++i) {
        PrintPlace("by", frame[1]);
        const auto caller = static_cast<void**>(frame[0]);
        if (caller <= frame) break;
        frame = caller;
    }
}

LONG WINAPI ReportCrash(EXCEPTION_POINTERS* crash) {
    const EXCEPTION_RECORD& record = *crash->ExceptionRecord;
    std::fprintf(stderr, "CRASH code 0x%08lx", record.ExceptionCode);
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION)
        std::fprintf(stderr, " %s 0x%08lx", record.ExceptionInformation[0] != 0 ? "write" : "read",
                     static_cast<unsigned long>(record.ExceptionInformation[1]));
    std::fputc('\n', stderr);
    PrintPlace("at", record.ExceptionAddress);
    PrintCallers(crash->ContextRecord->Ebp);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), kCrashExitCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

struct Installer {
    Installer() {
        SetUnhandledExceptionFilter(ReportCrash);
        SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    }
} installer;

}  // namespace
