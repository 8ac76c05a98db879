#pragma once

#include <algorithm>
#include <deque>
#include <string>
#include <utility>

#include <sddl.h>
#include <windows.h>

namespace tarntest {

/// Whose things are, as texts of security descriptors, one for each time that it is asked; then, and for "", what the system says.
inline std::deque<std::string> owners;

/// In the place of GetKernelObjectSecurity.
inline BOOL WINAPI OwnerInTurn(HANDLE file, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR into, DWORD bytes,
                               DWORD* needed) {
    const std::string told = owners.empty() ? "" : std::exchange(owners.front(), "");
    if (!owners.empty()) owners.pop_front();
    if (told.empty()) return GetKernelObjectSecurity(file, what, into, bytes, needed);
    PSECURITY_DESCRIPTOR made = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(told.c_str(), SDDL_REVISION_1, &made, needed))
        return FALSE;
    std::copy_n(static_cast<BYTE*>(made), std::min(*needed, bytes), static_cast<BYTE*>(into));
    return LocalFree(made) == nullptr;
}

}  // namespace tarntest
