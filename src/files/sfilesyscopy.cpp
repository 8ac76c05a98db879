#include <cwchar>

#include "files/filesysfailure.h"
#include "files/osfiles.h"
#include "files/replacement.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "tarnlib/sfilesys.h"

// Copying, renaming and replacing.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr int kAttempts = 100;

void RemoveCopy(const SWCharString& copy) {
    osfiles::SetAttributes(copy.getString(), FILE_ATTRIBUTE_NORMAL);  // it may be read-only, as its source
    osfiles::Remove(copy.getString());
}

// Copies the file to a new name beside its target. The system's error code, 0 when it is done.
DWORD CopyBeside(const SWCharString& from, const SWCharString& to, SWCharString& copy) {
    DWORD error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        copy = NameBeside(to);
        if (osfiles::Copy(from.getString(), copy.getString(), false)) return ERROR_SUCCESS;
        error = GetLastError();
        if (!oscodes::IsTaken(error)) break;
    }
    // What there is of the copy goes. A taken name is not ours, nor is one that we were refused.
    if (!oscodes::IsTaken(error) && error != ERROR_ACCESS_DENIED) RemoveCopy(copy);
    return error;
}

// The system's error code, 0 when it is done. Nobody sees half a file, and nothing is lost when it fails.
DWORD CopyWhole(const SWCharString& from, const SWCharString& to, bool overwrite) {
    SWCharString copy;
    DWORD error = CopyBeside(from, to, copy);
    if (error != ERROR_SUCCESS) return error;
    error = overwrite ? MoveInPlaceOf(to, copy) : MoveToNewName(copy, to);
    if (error != ERROR_SUCCESS) RemoveCopy(copy);
    return error;
}

// Devices have nothing beside them, and nothing that could be lost.
DWORD CopyToDevice(const SWCharString& from, const SWCharString& to) {
    return osfiles::Copy(from.getString(), to.getString(), true) ? ERROR_SUCCESS : GetLastError();
}

bool IsDevice(const SWCharString& path) {
    return std::wcsncmp(path.getString(), L"\\\\.\\", 4) == 0;
}

// Why what stands at the target may not be replaced; 0 when it may. Asked first, because not every system
// refuses to rename over it.
DWORD RefusalToReplace(const SWCharString& target, bool overwrite) {
    if (IsDevice(target)) return ERROR_SUCCESS;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(target.getString(), data)) {
        const DWORD error = GetLastError();
        return FileSysFailure::reasonOf(error) == Exception::reasonNotFound ? ERROR_SUCCESS : error;
    }
    if (!overwrite) return ERROR_FILE_EXISTS;
    constexpr DWORD kFixed = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
    return (data.dwFileAttributes & kFixed) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

}  // namespace

void SFileSys::copyFile(const SAnsiString& from, const SAnsiString& to, bool overwrite) {
    const SWCharString target = LongSystemPath(to);
    DWORD error = RefusalToReplace(target, overwrite);
    const SWCharString source = LongSystemPath(from);
    if (error == ERROR_SUCCESS)
        error = IsDevice(target) ? CopyToDevice(source, target) : CopyWhole(source, target, overwrite);
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsCopyFailed, error, from, to);
}

void SFileSys::replaceFile(const SAnsiString& from, const SAnsiString& to) {
    const SWCharString target = LongSystemPath(to);
    DWORD error = RefusalToReplace(target, true);
    if (error == ERROR_SUCCESS) error = MoveInPlaceOf(target, LongSystemPath(from));
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsRenameFailed, error, from, to);
}

void SFileSys::renameFile(const SAnsiString& from, const SAnsiString& to) {
    const SWCharString source = LongSystemPath(from);
    const SWCharString target = LongSystemPath(to);
    if (osfiles::Move(source.getString(), target.getString(), MOVEFILE_COPY_ALLOWED)) return;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsRenameFailed, error, from, to);
}

}  // namespace TarnLibA500
