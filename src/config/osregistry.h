#pragma once

#include <windows.h>

/// The one way in which the library reaches the registry. Test builds (TARN_TEST_SEAMS) count the calls and
/// make the n-th one fail; otherwise these are direct calls. Results are the system's error codes.
namespace TarnLibA500::osregistry {

#ifdef TARN_TEST_SEAMS
/// Counts a call; an error code when it is to fail, otherwise 0.
LONG Before(bool opens = false);
/// Makes the n-th call from now fail, once; 0: none.
void FailCall(unsigned long nth, LONG error);
unsigned long CallsSoFar();
unsigned long OpensSoFar();
#else
inline LONG Before(bool = false) {
    return ERROR_SUCCESS;
}
#endif

inline LONG Open(HKEY root, const wchar_t* path, REGSAM access, HKEY& key) {
    const LONG error = Before(true);
    return error != ERROR_SUCCESS ? error : RegOpenKeyExW(root, path, 0, access, &key);
}

inline LONG Create(HKEY root, const wchar_t* path, REGSAM access, HKEY& key) {
    const LONG error = Before(true);
    return error != ERROR_SUCCESS ? error
                                  : RegCreateKeyExW(root, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                                    nullptr, &key, nullptr);
}

inline LONG Connect(const wchar_t* machine, HKEY root, HKEY& remote) {
    const LONG error = Before();
    return error != ERROR_SUCCESS ? error : RegConnectRegistryW(machine, root, &remote);
}

inline LONG Query(HKEY key, const wchar_t* name, DWORD& type, BYTE* data, DWORD& bytes) {
    const LONG error = Before();
    return error != ERROR_SUCCESS ? error : RegQueryValueExW(key, name, nullptr, &type, data, &bytes);
}

inline LONG Set(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD bytes) {
    const LONG error = Before();
    return error != ERROR_SUCCESS ? error : RegSetValueExW(key, name, 0, type, data, bytes);
}

inline LONG DeleteValue(HKEY key, const wchar_t* name) {
    const LONG error = Before();
    return error != ERROR_SUCCESS ? error : RegDeleteValueW(key, name);
}

inline LONG DeleteKey(HKEY root, const wchar_t* path) {
    const LONG error = Before();
    return error != ERROR_SUCCESS ? error : RegDeleteKeyW(root, path);
}

inline LONG EnumKey(HKEY key, DWORD index, wchar_t* name, DWORD& units) {
    const LONG error = Before();
    return error != ERROR_SUCCESS
               ? error
               : RegEnumKeyExW(key, index, name, &units, nullptr, nullptr, nullptr, nullptr);
}

inline LONG EnumValue(HKEY key, DWORD index, wchar_t* name, DWORD& units) {
    const LONG error = Before();
    return error != ERROR_SUCCESS
               ? error
               : RegEnumValueW(key, index, name, &units, nullptr, nullptr, nullptr, nullptr);
}

inline void Close(HKEY key) noexcept {
    RegCloseKey(key);
}

}  // namespace TarnLibA500::osregistry
