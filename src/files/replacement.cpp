#include "files/replacement.h"

#include <cstdio>
#include <iterator>

#include "diag/assert/levels.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "oscodes/oscodes.h"
#include "seam/osclock.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilesys";

/// Scanners and indexers open a file that has just been written, for some milliseconds.
bool IsInUse(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
           error == ERROR_UNABLE_TO_REMOVE_REPLACED || error == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
           error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2;
}

/// Tries something that returns an error code until the file is not in use any more, for 100 ms.
template <class Action>
DWORD TryForAMoment(Action action) {
    constexpr int kPauses = 10;
    constexpr DWORD kPauseMilliseconds = 10;
    DWORD error = action();
    for (int pause = 0; pause < kPauses && IsInUse(error); ++pause) {
        osclock::Sleep(kPauseMilliseconds);
        error = action();
    }
    return error;
}

DWORD Move(const SWCharString& from, const SWCharString& to, DWORD flags) {
    return osfiles::Move(from.getString(), to.getString(), flags) ? ERROR_SUCCESS : GetLastError();
}

/// File systems that cannot exchange two files have no rights either that could get lost.
bool CannotReplace(DWORD error) {
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED ||
           error == ERROR_CALL_NOT_IMPLEMENTED;
}

/// The system renames the old file to the backup, and the new one after it. It may fail in between.
void GiveNameBack(const SWCharString& backup, const SWCharString& target) {
    const DWORD error = TryForAMoment([&] { return Move(backup, target, 0); });
    if (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) return;
    TARN_TRACE_AT(levels::kLoss, kUnit, "the old %1 is %2 now: error %3", ShownPath(target),
                  ShownPath(backup), error);
}

void RemoveBackup(const SWCharString& backup) {
    const DWORD error = TryForAMoment(
        [&] { return osfiles::Remove(backup.getString()) ? DWORD{ERROR_SUCCESS} : GetLastError(); });
    if (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) return;
    TARN_TRACE_AT(levels::kLoss, kUnit, "%1, which was replaced, is left behind: error %2", ShownPath(backup),
                  error);
}

DWORD ReplaceOnce(const SWCharString& target, const SWCharString& file) {
    const DWORD error = Move(file, target, 0);
    if (!oscodes::IsTaken(error)) return error;
    // Without a backup the old file would be gone when the second of the system's steps fails.
    const SWCharString backup = NameBeside(target);
    if (osfiles::Replace(target.getString(), file.getString(), backup.getString())) {
        RemoveBackup(backup);
        return ERROR_SUCCESS;
    }
    const DWORD failure = GetLastError();
    if (CannotReplace(failure)) return Move(file, target, MOVEFILE_REPLACE_EXISTING);
    GiveNameBack(backup, target);
    return failure != ERROR_FILE_NOT_FOUND ? failure
                                           : Move(file, target, 0);  // somebody has removed the old one
}

}  // namespace

SWCharString NameBeside(const SWCharString& file) {
    wchar_t name[32];
    std::swprintf(name, std::size(name), L"~%08X.tmp", static_cast<unsigned>(NextUniqueNumber()));
    const SWCharString::iterator slash = file.findLast(L'\\');
    const SWCharString directory = slash != file.end() ? file.left(slash) : SWCharString();
    return LongForm(JoinSystemPath(directory, name));
}

DWORD MoveToNewName(const SWCharString& file, const SWCharString& target) {
    return TryForAMoment([&] { return Move(file, target, 0); });
}

DWORD MoveInPlaceOf(const SWCharString& target, const SWCharString& file) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(file.getString(), data)) return GetLastError();
    const DWORD attributes = data.dwFileAttributes;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ERROR_ACCESS_DENIED;
    // The system writes to the new file while it replaces, and gives it the old one's attributes.
    const bool isFixed = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isFixed && !osfiles::SetAttributes(file.getString(), FILE_ATTRIBUTE_NORMAL)) return GetLastError();
    const DWORD error = TryForAMoment([&] { return ReplaceOnce(target, file); });
    const SWCharString& now = error == ERROR_SUCCESS ? target : file;
    if ((isFixed || error == ERROR_SUCCESS) && !osfiles::SetAttributes(now.getString(), attributes))
        TARN_TRACE_AT(levels::kLoss, kUnit, "%1 lost its attributes: error %2", ShownPath(now),
                      GetLastError());
    return error;
}

}  // namespace TarnLibA500
