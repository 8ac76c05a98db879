#include <algorithm>

#include "files/directoryreader.h"
#include "files/filesysfailure.h"
#include "files/namepattern.h"
#include "files/osfiles.h"
#include "files/removal.h"
#include "files/systempath.h"
#include "files/treewalk.h"
#include "oscodes/oscodes.h"
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

bool RemoveIn(HANDLE directory, const wchar_t* name, DWORD attributes) {
    const ULONG kind = IsDirectory(attributes) ? FILE_DIRECTORY_FILE : FILE_NON_DIRECTORY_FILE;
    const osfiles::File file = osfiles::OpenIn(directory, name, DELETE, oscodes::kEveryShare, kind);
    return file && osfiles::RemoveOnClose(file.get());
}

// Where the walk stands.
void RemoveNoting(const TreeWalk& walk, DWORD attributes, FileSysFailure& failure) {
    if (RemoveIn(walk.holder(), walk.name(), attributes)) return;
    const DWORD error = GetLastError();
    failure.note(RemovalFailure(attributes), error, ShownPath(walk.path()));
}

// All that is below: what a directory has, those below it, and then itself.
void RemoveBelow(const SWCharString& root, TreeWalk::Care care, FileSysFailure& failure) {
    TreeWalk walk(root, care);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        if (step == TreeWalk::Step::Failed) {
            failure.note(Exception::fsRemoveDirFailed, walk.error(), ShownPath(walk.path()));
        } else if (step == TreeWalk::Step::Left) {
            RemoveNoting(walk, FILE_ATTRIBUTE_DIRECTORY, failure);
        } else if (!IsOwnDirectory(walk.entry())) {
            RemoveNoting(walk, walk.entry().dwFileAttributes, failure);
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
    if (IsDirectory(attributes)) RemoveBelow(target, TreeWalk::Care::All, failure);
    if (!RemoveOne(target, attributes)) {
        const DWORD error = GetLastError();
        failure.note(RemovalFailure(attributes), error, path);
    }
    failure.throwIfHappened();
}

void SFileSys::rremoveContent(const SAnsiString& path) {
    FileSysFailure failure;
    RemoveBelow(LongSystemPath(path), TreeWalk::Care::BelowRoot, failure);
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
        if (RemoveIn(held.get(), entry.cFileName, entry.dwFileAttributes)) {
            freed += SizeOf(entry);
        } else {
            const DWORD error = GetLastError();
            failure.note(Exception::fsRemoveFailed, error,
                         ShownPath(JoinSystemPath(ExactForm(directory), entry.cFileName)));
        }
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
