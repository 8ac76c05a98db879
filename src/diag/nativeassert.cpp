#include "diag/nativeassert.h"

#include <bit>
#include <cstdlib>

#include <windows.h>

namespace TarnLibA500 {
namespace {

using MessageBoxFunction = int(WINAPI*)(HWND, LPCSTR, LPCSTR, UINT);

// Loaded when needed: servers do without the window system.
MessageBoxFunction FindMessageBox() {
    const HMODULE windows = LoadLibraryExW(L"user32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (windows == nullptr) return nullptr;
    return std::bit_cast<MessageBoxFunction>(GetProcAddress(windows, "MessageBoxA"));
}

}  // namespace

void ShowNativeAssert(const char* text) {
    if (IsDebuggerPresent()) return DebugBreak();
    static const MessageBoxFunction show = FindMessageBox();
    if (show == nullptr) return;
    switch (show(nullptr, text, "Assertion failed", MB_ABORTRETRYIGNORE | MB_ICONERROR | MB_TASKMODAL)) {
        case IDABORT:
            std::abort();
        case IDRETRY:
            return DebugBreak();
        default:  // ignored, or nobody to ask
            return;
    }
}

}  // namespace TarnLibA500
