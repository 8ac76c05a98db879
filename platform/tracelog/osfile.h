#pragma once

#include <cstdint>

#include <windows.h>

/// The one way in which the engine reaches files. Test builds (TARN_TEST_SEAMS) count the calls and make the
/// n-th one fail; otherwise these are direct calls.
namespace TraceLog400::osfile {

#ifdef TARN_TEST_SEAMS
/// Counts a call. True when it is to fail, with the error set.
bool MustFail();
/// Makes the n-th call from now fail with an error, once or until told otherwise; 0: none.
void FailCall(unsigned long nth, DWORD error, bool onwards = false);
unsigned long CallsSoFar();
#else
inline bool MustFail() {
    return false;
}
#endif

/// Opens a file for appending, making it when it is missing. Others may read, write, rename and delete it; it
/// is not inherited by child processes.
inline HANDLE OpenForAppending(const wchar_t* path) {
    constexpr DWORD kEveryShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (MustFail()) return INVALID_HANDLE_VALUE;
    return CreateFileW(path, FILE_APPEND_DATA | SYNCHRONIZE | FILE_READ_ATTRIBUTES, kEveryShare, nullptr,
                       OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

inline bool Write(HANDLE file, const char* bytes, DWORD count, DWORD& written) {
    written = 0;
    return !MustFail() && WriteFile(file, bytes, count, &written, nullptr) != 0;
}

inline bool Size(HANDLE file, std::uint64_t& bytes) {
    LARGE_INTEGER size;
    if (MustFail() || !GetFileSizeEx(file, &size)) return false;
    bytes = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

/// Cuts a file that may be open elsewhere.
inline bool Cut(const wchar_t* path, std::uint64_t bytes) {
    constexpr DWORD kEveryShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (MustFail()) return false;
    const HANDLE file =
        CreateFileW(path, GENERIC_WRITE, kEveryShare, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(bytes);
    const bool isCut = SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file);
    CloseHandle(file);
    return isCut;
}

inline bool Exists(const wchar_t* path) {
    return !MustFail() && GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

/// Fails when the new name is taken.
inline bool Rename(const wchar_t* from, const wchar_t* to) {
    return !MustFail() && MoveFileExW(from, to, 0) != 0;
}

inline bool Remove(const wchar_t* path) {
    return !MustFail() && DeleteFileW(path) != 0;
}

inline bool MakeDirectory(const wchar_t* path) {
    return !MustFail() && (CreateDirectoryW(path, nullptr) != 0 || GetLastError() == ERROR_ALREADY_EXISTS);
}

}  // namespace TraceLog400::osfile
