#pragma once

#include <windows.h>

namespace tarntest {

/// True under Wine, for what it alone can be made to do. A test that needs it says why and is skipped elsewhere.
inline bool IsOnWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace tarntest
