#pragma once

#include <cstdint>
#include <utility>

#include "oscodes/oscodes.h"
#include "seam/seam.h"

#include <windows.h>

/// The one way in which the engine reaches files. The calls fail as the system does: with false or an invalid
/// handle, and the code in GetLastError.
namespace TraceLog400::osfile {

struct Kind {
    static void SetError(DWORD error) noexcept { SetLastError(error); }
};
using Calls = seam::Calls<Kind>;

inline constinit seam::Replaceable<decltype(WriteFile)> writeFile;

/// Opens a file for appending, making it when it is missing. Others may read, write, rename and delete it; it
/// is not inherited by child processes.
inline HANDLE OpenForAppending(const wchar_t* path) {
    if (Calls::MustFail()) return INVALID_HANDLE_VALUE;
    return CreateFileW(path, FILE_APPEND_DATA | SYNCHRONIZE | FILE_READ_ATTRIBUTES, oscodes::kEveryShare,
                       nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | oscodes::kOnlyIdentify, nullptr);
}

inline bool Write(HANDLE file, const char* bytes, DWORD count, DWORD& written) {
    written = 0;
    return !Calls::MustFail() && writeFile.orElse(WriteFile)(file, bytes, count, &written, nullptr) != 0;
}

inline bool Size(HANDLE file, std::uint64_t& bytes) {
    LARGE_INTEGER size;
    if (Calls::MustFail() || !GetFileSizeEx(file, &size)) return false;
    bytes = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

/// Cuts a file that may be open elsewhere.
inline bool Cut(const wchar_t* path, std::uint64_t bytes) {
    if (Calls::MustFail()) return false;
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, oscodes::kEveryShare, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | oscodes::kOnlyIdentify, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(bytes);
    const bool isCut = SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file);
    CloseHandle(file);
    return isCut;
}

inline bool Exists(const wchar_t* path) {
    return !Calls::MustFail() && GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

/// Fails when the new name is taken.
inline bool Rename(const wchar_t* from, const wchar_t* to) {
    return !Calls::MustFail() && MoveFileExW(from, to, 0) != 0;
}

inline bool Remove(const wchar_t* path) {
    return !Calls::MustFail() && DeleteFileW(path) != 0;
}

/// Removes a file that nobody has open; otherwise fails with ERROR_SHARING_VIOLATION.
inline bool RemoveUnused(const wchar_t* path) {
    if (Calls::MustFail()) return false;
    const HANDLE file = CreateFileW(path, DELETE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OPEN_REPARSE_POINT | oscodes::kOnlyIdentify, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    FILE_DISPOSITION_INFO removal{};
    removal.DeleteFile = TRUE;
    const bool isRemoved =
        SetFileInformationByHandle(file, FileDispositionInfo, &removal, sizeof removal) != 0;
    const DWORD error = GetLastError();
    CloseHandle(file);
    SetLastError(error);
    return isRemoved;
}

/// Calls for each plain file that the pattern finds, until the system has no more of them or fails.
template <class Action>
void ForEachFile(const wchar_t* pattern, Action action) {
    constexpr DWORD kNotPlain = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    struct Search {
        explicit Search(HANDLE opened) : handle(opened) {}
        ~Search() { FindClose(handle); }
        Search(const Search&) = delete;
        Search& operator=(const Search&) = delete;
        HANDLE handle;
    };
    WIN32_FIND_DATAW found;
    if (Calls::MustFail()) return;
    const HANDLE opened = FindFirstFileW(pattern, &found);
    if (opened == INVALID_HANDLE_VALUE) return;
    const Search search(opened);
    do {
        if ((found.dwFileAttributes & kNotPlain) == 0) action(std::as_const(found));
    } while (!Calls::MustFail() && FindNextFileW(search.handle, &found) != 0);
}

/// False only when the system says that no such process exists, or that it has ended.
inline bool IsAlive(DWORD process) {
    const HANDLE opened = OpenProcess(SYNCHRONIZE, FALSE, process);
    if (opened == nullptr) return GetLastError() != ERROR_INVALID_PARAMETER;
    const bool hasEnded = WaitForSingleObject(opened, 0) == WAIT_OBJECT_0;
    CloseHandle(opened);
    return !hasEnded;
}

inline bool MakeDirectory(const wchar_t* path) {
    return !Calls::MustFail() &&
           (CreateDirectoryW(path, nullptr) != 0 || GetLastError() == ERROR_ALREADY_EXISTS);
}

}  // namespace TraceLog400::osfile
