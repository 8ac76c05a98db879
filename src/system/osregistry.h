#pragma once

#include <utility>

#include "seam/seam.h"

#include <windows.h>

extern "C" LONG NTAPI NtDeleteKey(HANDLE key);
extern "C" LONG NTAPI NtQueryKey(HANDLE key, int informationClass, void* information, ULONG room,
                                 ULONG* bytes);
extern "C" ULONG NTAPI RtlNtStatusToDosError(LONG status);

/// The one way in which the library reaches the registry. Results are the system's error codes.
namespace TarnLibA500::osregistry {

/// What is open is keys.
struct Kind {};
using Calls = seam::Calls<Kind>;

/// Takes a key that the system gave, if it did; what it leaves in its place on a failure is not said.
inline LONG Take(LONG error, HKEY opened, HKEY& key) {
    if (error == ERROR_SUCCESS) {
        key = opened;
        Calls::Opened();
    }
    return error;
}

inline LONG Open(HKEY root, const wchar_t* path, REGSAM access, HKEY& key) {
    LONG error = Calls::Error();
    HKEY opened = nullptr;
    if (error == ERROR_SUCCESS) error = RegOpenKeyExW(root, path, 0, access, &opened);
    return Take(error, opened, key);
}

/// The same for a key right below an open one; of a link the link itself, which is not followed.
inline LONG OpenEntry(HKEY key, const wchar_t* name, REGSAM access, HKEY& entry) {
    LONG error = Calls::Error();
    HKEY opened = nullptr;
    if (error == ERROR_SUCCESS) error = RegOpenKeyExW(key, name, REG_OPTION_OPEN_LINK, access, &opened);
    return Take(error, opened, entry);
}

inline LONG Create(HKEY root, const wchar_t* path, REGSAM access, HKEY& key,
                   DWORD options = REG_OPTION_NON_VOLATILE) {
    LONG error = Calls::Error();
    HKEY opened = nullptr;
    if (error == ERROR_SUCCESS)
        error = RegCreateKeyExW(root, path, 0, nullptr, options, access, nullptr, &opened, nullptr);
    return Take(error, opened, key);
}

inline LONG Connect(const wchar_t* machine, HKEY root, HKEY& remote) {
    LONG error = Calls::Error();
    HKEY opened = nullptr;
    if (error == ERROR_SUCCESS) error = RegConnectRegistryW(machine, root, &opened);
    return Take(error, opened, remote);
}

/// The key that HKEY_CURRENT_USER stands for, under a handle of its own.
inline LONG OpenCurrentUser(HKEY& key) {
    LONG error = Calls::Error();
    HKEY opened = nullptr;
    if (error == ERROR_SUCCESS) error = RegOpenCurrentUser(KEY_QUERY_VALUE, &opened);
    return Take(error, opened, key);
}

inline LONG Query(HKEY key, const wchar_t* name, DWORD& type, BYTE* data, DWORD& bytes) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS ? error : RegQueryValueExW(key, name, nullptr, &type, data, &bytes);
}

inline LONG Set(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD bytes) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS ? error : RegSetValueExW(key, name, 0, type, data, bytes);
}

inline LONG DeleteValue(HKEY key, const wchar_t* name) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS ? error : RegDeleteValueW(key, name);
}

inline LONG DeleteKey(HKEY root, const wchar_t* path) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS ? error : RegDeleteKeyW(root, path);
}

/// Deletes an open key, which may be a link; RegDeleteKeyW may follow one.
inline LONG DeleteOpened(HKEY key) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS ? error : static_cast<LONG>(RtlNtStatusToDosError(NtDeleteKey(key)));
}

inline LONG EnumKey(HKEY key, DWORD index, wchar_t* name, DWORD& units) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS
               ? error
               : RegEnumKeyExW(key, index, name, &units, nullptr, nullptr, nullptr, nullptr);
}

inline LONG EnumValue(HKEY key, DWORD index, wchar_t* name, DWORD& units) {
    const LONG error = Calls::Error();
    return error != ERROR_SUCCESS
               ? error
               : RegEnumValueW(key, index, name, &units, nullptr, nullptr, nullptr, nullptr);
}

/// The system's own name of an open key, behind the number of its bytes. "bytes" is the room, and then what is
/// needed.
inline LONG QueryName(HKEY key, void* information, ULONG& bytes) {
    constexpr int kNameInformation = 3;
    const LONG error = Calls::Error();
    if (error != ERROR_SUCCESS) return error;
    return static_cast<LONG>(
        RtlNtStatusToDosError(NtQueryKey(key, kNameInformation, information, bytes, &bytes)));
}

inline void Close(HKEY key) noexcept {
    Calls::Closed();
    RegCloseKey(key);
}

/// A key that is open for as long as the object lives.
class Key {
  public:
    Key() noexcept = default;
    Key(Key&& other) noexcept : key_(other.release()) {}
    Key& operator=(Key&& other) noexcept {
        Key taken(std::move(other));
        std::swap(key_, taken.key_);
        return *this;
    }
    ~Key() { close(); }

    HKEY get() const noexcept { return key_; }
    /// Where one of the functions above puts the key that it opens; what was open before is closed.
    HKEY& room() noexcept {
        close();
        return key_;
    }
    void close() noexcept {
        if (key_ != nullptr) Close(key_);
        key_ = nullptr;
    }
    /// The key, which is the caller's to close from now on.
    [[nodiscard]] HKEY release() noexcept { return std::exchange(key_, nullptr); }

  private:
    HKEY key_ = nullptr;
};

}  // namespace TarnLibA500::osregistry
