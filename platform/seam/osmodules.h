#pragma once

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

/// Counts a module that the system gave, if it did; passes it on.
inline HMODULE Opened(HMODULE module) noexcept {
    if (module != nullptr) Calls::Opened();
    return module;
}

inline HMODULE Load(const wchar_t* path, DWORD flags) {
    return Calls::MustFail() ? nullptr : Opened(LoadLibraryExW(path, nullptr, flags));
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
    return Calls::MustFail() ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, symbol));
}

/// The path in "units" units; as many when it is longer. A null module is the program.
inline DWORD Path(HMODULE module, wchar_t* path, DWORD units) {
    return Calls::MustFail() ? 0 : GetModuleFileNameW(module, path, units);
}

/// Whether a file is there to load.
inline bool IsThere(const wchar_t* path) {
    return !Calls::MustFail() && GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace osmodules
