#pragma once

#include <windows.h>

/// What flags and error codes of the system mean, said once for the library and for the modules below it.
/// Header only. Codes are signed or not, as the system's functions have them.
namespace oscodes {

/// Others may read, write, rename and delete a file that is open.
constexpr DWORD kEveryShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
/// As long as the file is open, its name stays its own: nobody deletes or renames it.
constexpr DWORD kShareButDelete = FILE_SHARE_READ | FILE_SHARE_WRITE;

/// A pipe can be named as a file: whoever made it may learn who opens it, but not act in his name. (A flag of opening.)
constexpr DWORD kOnlyIdentify = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

/// The name of a new file or directory is one that another has.
template <class Code>
constexpr bool IsTaken(Code error) noexcept {
    return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

/// There is no such file, directory, key or value, or nothing that it could be in.
template <class Code>
constexpr bool IsMissing(Code error) noexcept {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace oscodes
