#include "config/registrypath.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "system/osregistry.h"

extern "C" LONG NTAPI NtQueryKey(HANDLE key, int informationClass, void* information, ULONG room,
                                 ULONG* bytes);

namespace TarnLibA500::registrypath {
namespace {

constexpr int kNameInformation = 3;
constexpr ULONG kUsualBytes = 512;

struct RootName {
    HKEY key;
    const wchar_t* name;
};

// Of a key that was opened; roots are no such keys.
std::wstring OpenedName(HKEY key) {
    // The number of the name's bytes, and the name.
    std::vector<BYTE> information;
    LONG status = 0;
    for (ULONG bytes = kUsualBytes; bytes > information.size();) {
        information.resize(bytes);
        status = NtQueryKey(key, kNameInformation, information.data(), bytes, &bytes);
    }
    ULONG nameBytes = 0;
    std::memcpy(&nameBytes, information.data(), sizeof nameBytes);
    if (status < 0 || nameBytes > information.size() - sizeof nameBytes) return std::wstring();
    std::wstring name(nameBytes / sizeof(wchar_t), L'\0');
    std::memcpy(name.data(), information.data() + sizeof nameBytes, nameBytes);
    return name;
}

std::wstring UserName() {
    osregistry::Key user;
    osregistry::OpenCurrentUser(user.room());
    return user.get() != nullptr ? OpenedName(user.get()) : std::wstring();
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
    return SystemName(key);
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

std::wstring SystemName(HKEY key) {
    if (key == HKEY_CURRENT_USER) return UserName();
    if (key == HKEY_LOCAL_MACHINE) return L"\\REGISTRY\\MACHINE";
    if (key == HKEY_USERS) return L"\\REGISTRY\\USER";
    // Where new classes are made.
    if (key == HKEY_CLASSES_ROOT) return L"\\REGISTRY\\MACHINE\\SOFTWARE\\Classes";
    return OpenedName(key);
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
