#include "files/filesysfailure.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "tarnlib/sfilesys.h"

#include <cstdio>

// Copying and renaming.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr int kAttempts = 100;

// A name beside a file, in its directory.
SWCharString NameBeside(const SWCharString& file) {
    wchar_t name[32];
    std::swprintf(name, std::size(name), L"~%08X.tmp", static_cast<unsigned>(NextUniqueNumber()));
    const SWCharString::iterator slash = file.findLast(L'\\');
    const SWCharString directory = slash != file.end() ? file.left(slash) : SWCharString();
    return LongForm(JoinSystemPath(directory, name));
}

// Copies the file to a name beside its target; false with the system's error.
bool CopyBeside(const SWCharString& from, const SWCharString& to, SWCharString& copy) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        copy = NameBeside(to);
        if (osfiles::Copy(from.getString(), copy.getString(), false)) return true;
        if (GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    return false;
}

// The system's error code, 0 when it is done. Nobody sees half a file, and nothing is lost when it fails.
DWORD CopyWhole(const SWCharString& from, const SWCharString& to, bool overwrite) {
    SWCharString copy;
    if (CopyBeside(from, to, copy) &&
        osfiles::Move(copy.getString(), to.getString(), overwrite ? MOVEFILE_REPLACE_EXISTING : 0))
        return ERROR_SUCCESS;
    const DWORD error = GetLastError();
    osfiles::SetAttributes(copy.getString(), FILE_ATTRIBUTE_NORMAL);  // it may be read-only, as its source
    osfiles::Remove(copy.getString());
    return error;
}

// Why what stands at the target may not be replaced; 0 when it may. Asked first, because not every system
// refuses to rename over it.
DWORD RefusalToReplace(const SWCharString& target, bool overwrite) {
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
    if (error == ERROR_SUCCESS) error = CopyWhole(LongSystemPath(from), target, overwrite);
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsCopyFailed, error, from, to);
}

void SFileSys::renameFile(const SAnsiString& from, const SAnsiString& to) {
    if (!osfiles::Move(LongSystemPath(from).getString(), LongSystemPath(to).getString(),
                       MOVEFILE_COPY_ALLOWED))
        ThrowFileSys(Exception::fsRenameFailed, GetLastError(), from, to);
}

}  // namespace TarnLibA500
