#include "system/longform.h"

#include <cwchar>

#include "strings/text/stringbuilder.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const wchar_t* kLongPrefix = L"\\\\?\\";
constexpr const wchar_t* kLongNetworkPrefix = L"\\\\?\\UNC";
constexpr std::size_t kLongUnits = 4;

bool IsNetworkPath(const wchar_t* path) {
    return path[0] == L'\\' && path[1] == L'\\';
}

// "\\?\..." and "\\.\...".
bool IsDevicePath(const wchar_t* path) {
    return IsNetworkPath(path) && (path[2] == L'?' || path[2] == L'.') && path[3] == L'\\';
}

}  // namespace

bool FullSystemPath(const SWCharString& path, SWCharString& full) {
    // Behind this prefix the system, too, takes every name as it is: "a." is not "a".
    if (std::wcsncmp(path.getString(), kLongPrefix, kLongUnits) == 0) {
        full = path;
        return true;
    }
    DWORD units = kShortPathEnd;
    for (;;) {
        StringBuilder<wchar_t, 1> room(units);
        const DWORD needed = GetFullPathNameW(path.getString(), units, room.units(), nullptr);
        if (needed == 0) return false;
        if (needed < units) {
            room.cut(needed);
            full = room;
            return true;
        }
        units = needed + 1;
    }
}

SWCharString LongForm(const SWCharString& full, std::uint32_t shortEnd) {
    return full.getLength() < shortEnd ? full : ExactForm(full);
}

SWCharString ExactForm(const SWCharString& full) {
    const wchar_t* const path = full.getString();
    if (full.isEmpty() || IsDevicePath(path)) return full;
    SWCharString longForm(IsNetworkPath(path) ? kLongNetworkPrefix : kLongPrefix);
    longForm.concat(IsNetworkPath(path) ? path + 1 : path);
    return longForm;
}

}  // namespace TarnLibA500
