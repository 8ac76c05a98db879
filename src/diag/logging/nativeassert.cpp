#include "diag/logging/nativeassert.h"

#include <cstdlib>

#include "diag/logging/osdesktop.h"
#include "seam/osmodules.h"
#include "tarnlib/sstring.h"
#include "waiting/waiting.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

/// The window system's part of it. Loaded when needed: servers do without.
struct WindowSystem {
    decltype(MessageBoxW)* messageBox = nullptr;
    decltype(GetProcessWindowStation)* ownStation = nullptr;
    decltype(GetUserObjectInformationW)* information = nullptr;

    bool isThere() const { return messageBox != nullptr && ownStation != nullptr && information != nullptr; }
    bool isStationVisible() const {
        USEROBJECTFLAGS flags{};
        return osdesktop::information.orElse(information)(ownStation(), UOI_FLAGS, &flags, sizeof flags,
                                                          nullptr) &&
               (flags.dwFlags & WSF_VISIBLE) != 0;
    }
};

template <class Function>
void Find(HMODULE module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(osmodules::Find(module, name));
}

WindowSystem LoadWindowSystem() {
    WindowSystem windows;
    const HMODULE module = osmodules::LoadOfSystem(L"user32.dll");
    if (module == nullptr) return windows;
    Find(module, "MessageBoxW", windows.messageBox);
    Find(module, "GetProcessWindowStation", windows.ownStation);
    Find(module, "GetUserObjectInformationW", windows.information);
    return windows;
}

const WindowSystem& Windows() {
    static const WindowSystem windows = LoadWindowSystem();
    return windows;
}

// Nobody sees session 0, also where an old setting lets services have a visible window station there.
bool IsAmongServices() {
    constexpr DWORD kSessionOfServices = 0;
    return osdesktop::OwnSession() == kSessionOfServices;
}

}  // namespace

bool CanShowNativeAssert() {
    if (waiting::ProcessIsEnding()) return false;  // a thread may have been ended while it loaded the dialog
    return !IsAmongServices() && Windows().isThere() && Windows().isStationVisible();
}

void ShowNativeAssert(const char* utf8) {
    SWCharString text;
    if (!text.fromUTF8(utf8)) text = L"The assertion's text is not valid UTF-8.";
    if (IsDebuggerPresent()) {
        OutputDebugStringW(text.getString());
        return DebugBreak();
    }
    switch (osdesktop::messageBox.orElse(Windows().messageBox)(
        nullptr, text.getString(), L"Assertion failed", MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL)) {
        case IDABORT:
            std::abort();
        case IDRETRY:
            return DebugBreak();
        default:  // ignored, or nobody to ask
            return;
    }
}

}  // namespace TarnLibA500
