#pragma once

#include <cwchar>

#include "seam/seam.h"

#include <windows.h>

/// The one way to the modules of the process: DLLs and the program. The calls fail as the system does: with null,
/// 0 or false, and the code in GetLastError.
namespace osmodules {

/// What is open is what Load and Hold have not given back.
struct Kind {
    static void SetError(DWORD error) noexcept { SetLastError(error); }
};
using Calls = seam::Calls<Kind>;

inline constinit seam::Replaceable<decltype(LoadLibraryExW)> loadLibrary;
inline constinit seam::Replaceable<decltype(GetProcAddress)> getProcAddress;

/// Counts a module that the system gave, if it did; passes it on.
inline HMODULE Opened(HMODULE module) noexcept {
    if (module != nullptr) Calls::Opened();
    return module;
}

/// Keeps the system from opening dialogs on this thread, about a damaged file or a disk that is not there: in a service
/// nobody would close them.
class WithoutDialogs {
  public:
    WithoutDialogs() noexcept {
        SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_);
    }
    ~WithoutDialogs() {
        const DWORD error = GetLastError();
        SetThreadErrorMode(before_, nullptr);
        SetLastError(error);
    }
    WithoutDialogs(const WithoutDialogs&) = delete;
    WithoutDialogs& operator=(const WithoutDialogs&) = delete;

  private:
    DWORD before_ = 0;
};

inline HMODULE Load(const wchar_t* path, DWORD flags) {
    const WithoutDialogs withoutDialogs;
    return Calls::MustFail() ? nullptr : Opened(loadLibrary.orElse(LoadLibraryExW)(path, nullptr, flags));
}

/// Not a call that can be made to fail: nobody could do anything about it.
inline void Free(HMODULE module) noexcept {
    Calls::Closed();
    FreeLibrary(module);
}

/// The module that an address is in.
inline HMODULE At(const void* address) {
    constexpr DWORD kFlags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    if (Calls::MustFail() || !GetModuleHandleExW(kFlags, static_cast<LPCWSTR>(address), &module))
        return nullptr;
    return module;
}

/// The same, and keeps it loaded until it is freed once more.
inline HMODULE Hold(const void* address) {
    constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    HMODULE module = nullptr;
    if (Calls::MustFail() || !GetModuleHandleExW(kFlags, static_cast<LPCWSTR>(address), &module))
        return nullptr;
    return Opened(module);
}

/// A module that is loaded already.
inline HMODULE Loaded(const wchar_t* name) {
    return Calls::MustFail() ? nullptr : GetModuleHandleW(name);
}

inline void* Find(HMODULE module, const char* symbol) {
    return Calls::MustFail() ? nullptr
                             : reinterpret_cast<void*>(getProcAddress.orElse(GetProcAddress)(module, symbol));
}

/// A function of the system that not every version has; null where there is none.
template <class Function>
Function* Found(const wchar_t* module, const char* symbol) {
    const HMODULE loaded = Loaded(module);
    return loaded != nullptr ? reinterpret_cast<Function*>(Find(loaded, symbol)) : nullptr;
}

/// Whether the flags LOAD_LIBRARY_SEARCH_... are known: Windows 7 has them with an update of its own.
inline bool KnowsSearchFlags() {
    const HMODULE kernel = Loaded(L"kernel32.dll");
    return kernel != nullptr && Find(kernel, "AddDllDirectory") != nullptr;
}

/// The path in "units" units; as many when it is longer. A null module is the program.
inline DWORD Path(HMODULE module, wchar_t* path, DWORD units) {
    return Calls::MustFail() ? 0 : GetModuleFileNameW(module, path, units);
}

/// The system's directory for modules, without a slash at its end, in "units" units; 0 or more when it fails.
inline DWORD SystemDirectory(wchar_t* path, DWORD units) {
    return Calls::MustFail() ? 0 : GetSystemDirectoryW(path, units);
}

/// Loads a module of the system's, whatever lies about elsewhere.
inline HMODULE LoadOfSystem(const wchar_t* name) {
    if (KnowsSearchFlags()) return Load(name, LOAD_LIBRARY_SEARCH_SYSTEM32);
    wchar_t path[2 * MAX_PATH];
    const DWORD length = SystemDirectory(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH || std::wcslen(name) >= MAX_PATH) return nullptr;
    path[length] = L'\\';
    std::wcscpy(path + length + 1, name);
    return Load(path, LOAD_WITH_ALTERED_SEARCH_PATH);
}

/// Whether a file is there to load.
inline bool IsThere(const wchar_t* path) {
    return !Calls::MustFail() && GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace osmodules
