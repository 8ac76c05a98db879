#include "diag/logging/nativeassert.h"

#include <cstdlib>

#include "seam/osmodules.h"
#include "tarnlib/sstring.h"
#include "waiting/waiting.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

/// The window system's part of it. Loaded when needed: servers do without.
struct WindowSystem {
    int(WINAPI* messageBox)(HWND, LPCWSTR, LPCWSTR, UINT) = nullptr;
    HWINSTA(WINAPI* ownStation)() = nullptr;
    BOOL(WINAPI* information)(HANDLE, int, PVOID, DWORD, LPDWORD) = nullptr;

    bool isThere() const { return messageBox != nullptr && ownStation != nullptr && information != nullptr; }
    /// False in a service: nobody sees its dialogs, and they would wait for ever.
    bool hasUser() const {
        USEROBJECTFLAGS flags{};
        return information(ownStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) &&
               (flags.dwFlags & WSF_VISIBLE) != 0;
    }
};

template <class Function>
void Find(HMODULE module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(osmodules::Find(module, name));
}

WindowSystem LoadWindowSystem() {
    WindowSystem windows;
    const HMODULE module = osmodules::Load(L"user32.dll", LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module == nullptr) return windows;
    Find(module, "MessageBoxW", windows.messageBox);
    Find(module, "GetProcessWindowStation", windows.ownStation);
    Find(module, "GetUserObjectInformationW", windows.information);
    return windows;
}

}  // namespace

void ShowNativeAssert(const char* utf8) {
    if (IsDebuggerPresent()) return DebugBreak();
    if (waiting::ProcessIsEnding()) return;  // a thread may have been ended while it loaded the dialog
    static const WindowSystem windows = LoadWindowSystem();
    if (!windows.isThere() || !windows.hasUser()) return;
    SWCharString text;
    if (!text.fromUTF8(utf8)) text = L"The assertion's text is not valid UTF-8.";
    switch (windows.messageBox(nullptr, text.getString(), L"Assertion failed",
                               MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL)) {
        case IDABORT:
            std::abort();
        case IDRETRY:
            return DebugBreak();
        default:  // ignored, or nobody to ask
            return;
    }
}

}  // namespace TarnLibA500
