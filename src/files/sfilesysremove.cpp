#include <algorithm>

#include "files/directoryreader.h"
#include "files/filesysfailure.h"
#include "files/namepattern.h"
#include "files/osfiles.h"
#include "files/removal.h"
#include "files/systempath.h"
#include "files/treewalk.h"
#include "tarnlib/sfilesys.h"

// Removing, which goes on after a failure and throws the first one at the end.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

bool RemoveOne(const SWCharString& path, DWORD attributes) {
    return IsDirectory(attributes) ? osfiles::RemoveEmptyDirectory(path.getString())
                                   : osfiles::Remove(path.getString());
}

Exception::ErrorCodes RemovalFailure(DWORD attributes) {
    return IsDirectory(attributes) ? Exception::fsRemoveDirFailed : Exception::fsRemoveFailed;
}

bool RemoveNoting(const SWCharString& path, DWORD attributes, FileSysFailure& failure) {
    if (RemoveOne(path, attributes)) return true;
    const DWORD error = GetLastError();
    failure.note(RemovalFailure(attributes), error, ShownPath(path));
    return false;
}

// All that is below: what a directory has, those below it, and then itself.
void RemoveBelow(const SWCharString& root, TreeWalk::Root kind, FileSysFailure& failure) {
    TreeWalk walk(root, kind);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        if (step == TreeWalk::Step::Failed) {
            failure.note(Exception::fsRemoveDirFailed, walk.error(), ShownPath(walk.path()));
        } else if (step == TreeWalk::Step::Left) {
            RemoveNoting(walk.path(), FILE_ATTRIBUTE_DIRECTORY, failure);
        } else if (!IsOwnDirectory(walk.entry())) {
            RemoveNoting(walk.path(), walk.entry().dwFileAttributes, failure);
        }
    }
}

DWORD AttributesToRemove(const SWCharString& path, const SAnsiString& name) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (osfiles::Attributes(path.getString(), data)) return data.dwFileAttributes;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsRemoveFailed, error, name);
}

}  // namespace

void RemoveSystemPath(const SWCharString& path, const SAnsiString& name) {
    const DWORD attributes = AttributesToRemove(path, name);
    if (RemoveOne(path, attributes)) return;
    const DWORD error = GetLastError();
    ThrowFileSys(RemovalFailure(attributes), error, name);
}

void SFileSys::remove(const SAnsiString& path) {
    RemoveSystemPath(LongSystemPath(path), path);
}

void SFileSys::rremove(const SAnsiString& path) {
    const SWCharString target = LongSystemPath(path);
    const DWORD attributes = AttributesToRemove(target, path);
    FileSysFailure failure;
    if (IsDirectory(attributes)) RemoveBelow(target, TreeWalk::Root::IsNoLink, failure);
    RemoveNoting(target, attributes, failure);
    failure.throwIfHappened();
}

void SFileSys::rremoveContent(const SAnsiString& path) {
    FileSysFailure failure;
    RemoveBelow(LongSystemPath(path), TreeWalk::Root::MayBeLink, failure);
    failure.throwIfHappened();
}

void SFileSys::removeContentEx(const SAnsiString& path, const SAnsiString& pattern,
                               unsigned long long& freed) {
    freed = 0;
    const SWCharString directory = LongSystemPath(path);
    const NamePattern names(pattern);
    const osfiles::File held = HoldDirectory(directory);
    if (!held) ThrowFileSys(Exception::fsRemoveFailed, GetLastError(), path);
    FileSysFailure failure;
    DirectoryReader reader;
    reader.open(directory);
    while (reader.next()) {
        const WIN32_FIND_DATAW& entry = reader.entry();
        if (IsDirectory(entry.dwFileAttributes) || !names.matches(entry.cFileName)) continue;
        const SWCharString file = JoinSystemPath(ExactForm(directory), entry.cFileName);
        if (RemoveNoting(file, entry.dwFileAttributes, failure)) freed += SizeOf(entry);
    }
    if (reader.error() != ERROR_SUCCESS) failure.note(Exception::fsRemoveFailed, reader.error(), path);
    failure.throwIfHappened();
}

void SFileSys::removeContent(const SAnsiString& path, const SAnsiString& pattern, std::uint32_t& freed) {
    constexpr unsigned long long kMost = 0xFFFFFFFF;
    unsigned long long bytes = 0;
    try {
        removeContentEx(path, pattern, bytes);
    } catch (const SFileSysException&) {
        freed = static_cast<std::uint32_t>(std::min(bytes, kMost));
        throw;
    }
    freed = static_cast<std::uint32_t>(std::min(bytes, kMost));
}

}  // namespace TarnLibA500
