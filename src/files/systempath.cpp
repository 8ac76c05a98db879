#include "files/systempath.h"

#include <cwchar>

#include "seam/osmodules.h"
#include "system/osregistry.h"
#include "system/systemtext.h"
#include "tarnlib/pathparts.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const wchar_t* kLongPrefix = L"\\\\?\\";
constexpr const wchar_t* kLongNetworkPrefix = L"\\\\?\\UNC";
constexpr std::size_t kLongUnits = 4;
constexpr std::size_t kLongNetworkUnits = 7;
constexpr const wchar_t* kSettingsKey = L"SYSTEM\\CurrentControlSet\\Control\\FileSystem";
constexpr const wchar_t* kLongPathsValue = L"LongPathsEnabled";

bool ReadLongPathsEnabled() {
    osregistry::Key key;
    if (osregistry::Open(HKEY_LOCAL_MACHINE, kSettingsKey, KEY_READ, key.room()) != ERROR_SUCCESS)
        return false;
    DWORD value = 0;
    DWORD bytes = sizeof value;
    DWORD type = 0;
    const LONG error =
        osregistry::Query(key.get(), kLongPathsValue, type, reinterpret_cast<BYTE*>(&value), bytes);
    return error == ERROR_SUCCESS && type == REG_DWORD && value != 0;
}

}  // namespace

// The setting is read once: the system, too, looks at it when a process starts.
bool LongPathsEnabled() {
    static const bool isEnabled = ReadLongPathsEnabled();
    return isEnabled && KnowsLongPaths();
}

bool KnowsLongPaths() {
    const auto knows = osmodules::Found<BOOLEAN NTAPI()>(L"ntdll.dll", "RtlAreLongPathsEnabled");
    return knows != nullptr && knows() != 0;
}

SWCharString LongSystemPath(const SAnsiString& path, std::uint32_t shortEnd) {
    constexpr const wchar_t* kNoPath = L"?";
    SWCharString asGiven;
    if (!ToSystemExactly(path, asGiven)) return kNoPath;
    SWCharString full;
    return FullSystemPath(asGiven, full) ? LongForm(full, shortEnd) : asGiven;
}

SAnsiString ShownPath(const SWCharString& path) {
    const wchar_t* const text = path.getString();
    if (std::wcsncmp(text, kLongNetworkPrefix, kLongNetworkUnits) == 0)
        return "\\" + FromSystem(text + kLongNetworkUnits);
    // A volume without a letter has no other name.
    const bool hasDrive = std::wcsncmp(text, kLongPrefix, kLongUnits) == 0 && text[kLongUnits] != L'\0' &&
                          text[kLongUnits + 1] == L':';
    return FromSystem(hasDrive ? text + kLongUnits : text);
}

SAnsiString JoinPath(const SAnsiString& directory, const SAnsiString& name) {
    const SWCharString wide = ToSystem(directory);
    if (wide.isEmpty()) return name;
    const wchar_t last = wide.getString()[wide.getLength() - 1];
    const SAnsiString bare = StripSlashOffDirBegin(name);
    return last == L'\\' || last == L'/' ? directory + bare : directory + "\\" + bare;
}

SWCharString JoinSystemPath(const SWCharString& directory, const wchar_t* name) {
    SWCharString path(directory);
    const std::uint32_t length = path.getLength();
    if (length != 0 && path.getString()[length - 1] != L'\\') path.concat(L'\\');
    path.concat(name);
    return path;
}

}  // namespace TarnLibA500
