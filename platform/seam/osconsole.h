#pragma once

#include "seam/seam.h"

#include <windows.h>

/// The one way to consoles.
namespace osconsole {

inline constinit seam::Replaceable<decltype(GetConsoleMode)> consoleMode;
inline constinit seam::Replaceable<decltype(WriteConsoleW)> writeConsole;

/// False for a file, a pipe and the null device.
inline bool IsConsole(HANDLE handle) noexcept {
    DWORD mode = 0;
    return consoleMode.orElse(GetConsoleMode)(handle, &mode) != 0;
}

/// Writes UTF-16; "done" may be less than "units".
inline bool Write(HANDLE console, const wchar_t* text, DWORD units, DWORD& done) noexcept {
    done = 0;
    return writeConsole.orElse(WriteConsoleW)(console, text, units, &done, nullptr) != 0;
}

}  // namespace osconsole
