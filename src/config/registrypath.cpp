#include "config/registrypath.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "system/osregistry.h"

namespace TarnLibA500::registrypath {
namespace {

constexpr ULONG kUsualBytes = 512;

struct RootName {
    HKEY key;
    const wchar_t* name;
};

// Of a key that was opened; roots are no such keys, nor are those of other machines.
LONG OpenedName(HKEY key, std::wstring& name) {
    // The number of the name's bytes, and the name.
    std::vector<BYTE> information;
    LONG error = ERROR_SUCCESS;
    for (ULONG bytes = kUsualBytes; bytes > information.size();) {
        information.resize(bytes);
        error = osregistry::QueryName(key, information.data(), bytes);
    }
    name.clear();
    if (error != ERROR_SUCCESS) return error != ERROR_INVALID_HANDLE ? error : ERROR_SUCCESS;
    ULONG nameBytes = 0;
    std::memcpy(&nameBytes, information.data(), sizeof nameBytes);
    if (nameBytes > information.size() - sizeof nameBytes) return ERROR_INVALID_DATA;
    name.resize(nameBytes / sizeof(wchar_t));
    std::memcpy(name.data(), information.data() + sizeof nameBytes, nameBytes);
    return ERROR_SUCCESS;
}

LONG UserName(std::wstring& name) {
    osregistry::Key user;
    const LONG error = osregistry::OpenCurrentUser(user.room());
    return error != ERROR_SUCCESS ? error : OpenedName(user.get(), name);
}

std::wstring RootText(HKEY key) {
    static const RootName names[] = {{HKEY_CLASSES_ROOT, L"HKEY_CLASSES_ROOT"},
                                     {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER"},
                                     {HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE"},
                                     {HKEY_USERS, L"HKEY_USERS"},
                                     {HKEY_CURRENT_CONFIG, L"HKEY_CURRENT_CONFIG"}};
    for (const RootName& root : names) {
        if (root.key == key) return root.name;
    }
    std::wstring name;
    SystemName(key, name);
    return name;
}

std::wstring_view WithoutBackslashes(std::wstring_view path) {
    while (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
    return path;
}

bool IsEqual(std::wstring_view a, std::wstring_view b) {
    return a.empty() ? b.empty()
                     : CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                            static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace

LONG SystemName(HKEY key, std::wstring& name) {
    static const RootName names[] = {{HKEY_LOCAL_MACHINE, L"\\REGISTRY\\MACHINE"},
                                     {HKEY_USERS, L"\\REGISTRY\\USER"},
                                     // Where new classes are made.
                                     {HKEY_CLASSES_ROOT, L"\\REGISTRY\\MACHINE\\SOFTWARE\\Classes"}};
    if (key == HKEY_CURRENT_USER) return UserName(name);
    for (const RootName& root : names) {
        if (root.key != key) continue;
        name = root.name;
        return ERROR_SUCCESS;
    }
    return OpenedName(key, name);
}

bool IsSameOrBelow(std::wstring_view path, std::wstring_view top) {
    path = WithoutBackslashes(path);
    top = WithoutBackslashes(top);
    if (path.size() < top.size() || !IsEqual(path.substr(0, top.size()), top)) return false;
    return top.empty() || path.size() == top.size() || path[top.size()] == L'\\';
}

SAnsiString Describe(HKEY key, const wchar_t* below, const wchar_t* value) {
    std::wstring text = RootText(key);
    if (*below != L'\0') text += L"\\" + std::wstring(below);
    if (value != nullptr) text += L", value \"" + std::wstring(value) + L"\"";
    return FromSystem(text.c_str());
}

}  // namespace TarnLibA500::registrypath
