#include <algorithm>
#include <cwchar>

#include "files/directoryreader.h"
#include "files/filesysfailure.h"
#include "files/namepattern.h"
#include "files/osfiles.h"
#include "files/patience.h"
#include "files/removal.h"
#include "files/systempath.h"
#include "files/treewalk.h"
#include "oscodes/oscodes.h"
#include "tarnlib/sfilesys.h"

// Removing, which goes on after a failure and throws the first one at the end.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

DWORD RemoveOnce(const SWCharString& path, DWORD attributes) {
    const bool isRemoved = IsDirectory(attributes) ? osfiles::RemoveEmptyDirectory(path.getString())
                                                   : osfiles::Remove(path.getString());
    return isRemoved ? ERROR_SUCCESS : GetLastError();
}

Exception::ErrorCodes RemovalFailure(DWORD attributes) {
    return IsDirectory(attributes) ? Exception::fsRemoveDirFailed : Exception::fsRemoveFailed;
}

DWORD RemoveIn(HANDLE directory, const wchar_t* name, DWORD attributes) {
    const ULONG kind = IsDirectory(attributes) ? FILE_DIRECTORY_FILE : FILE_NON_DIRECTORY_FILE;
    const osfiles::File file = osfiles::OpenIn(directory, name, DELETE, oscodes::kEveryShare, kind);
    return file && osfiles::RemoveOnClose(file.get()) ? ERROR_SUCCESS : GetLastError();
}

// One removal of many things: it has one patience, and goes on after a failure.
class Removal {
  public:
    // Where the walk stands.
    void removeAt(const TreeWalk& walk, DWORD attributes) {
        const auto remove = [&] { return RemoveIn(walk.holder(), walk.name(), attributes); };
        const DWORD error = retry(remove, walk.path(), attributes);
        if (error != ERROR_SUCCESS) note(RemovalFailure(attributes), error, walk.path());
    }
    // All that is below: what a directory has, those below it, and then itself.
    void removeBelow(const SWCharString& root, TreeWalk::Care care) {
        TreeWalk walk(root, care);
        for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
            if (step == TreeWalk::Step::Failed) {
                note(Exception::fsRemoveDirFailed, walk.error(), walk.path());
            } else if (step == TreeWalk::Step::Left) {
                removeAt(walk, FILE_ATTRIBUTE_DIRECTORY);
            } else if (!IsOwnDirectory(walk.entry())) {
                removeAt(walk, walk.entry().dwFileAttributes);
            }
        }
    }
    // What all that was below. Its failure has the name that the caller gave it.
    void removeRoot(const SWCharString& root, DWORD attributes, const SAnsiString& name) {
        const DWORD error = retry([&] { return RemoveOnce(root, attributes); }, root, attributes);
        if (error != ERROR_SUCCESS) failure_.note(RemovalFailure(attributes), error, name);
    }
    void note(Exception::ErrorCodes code, DWORD error, const SWCharString& path) {
        lastFailed_ = ExactForm(path);
        failure_.note(code, error, ShownPath(path));
    }
    FileSysFailure& failure() noexcept { return failure_; }

    template <class Action>
    DWORD retry(Action remove, const SWCharString& path, DWORD attributes) {
        // What is deleted and still open somewhere keeps its directory from being empty.
        return patience_.retryRemoval(remove, [&](DWORD error) {
            return error == ERROR_DIR_NOT_EMPTY && IsDirectory(attributes) && !hasFailedIn(path);
        });
    }

  private:
    // What is below a directory comes right before it, so the last failure tells.
    bool hasFailedIn(const SWCharString& directory) const {
        const SWCharString inside = JoinSystemPath(ExactForm(directory), L"");
        return std::wcsncmp(JoinSystemPath(lastFailed_, L"").getString(), inside.getString(),
                            inside.getLength()) == 0;
    }

    FileSysFailure failure_;
    SWCharString lastFailed_;
    Patience patience_;
};

DWORD AttributesToRemove(const SWCharString& path, const SAnsiString& name) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (osfiles::Attributes(path.getString(), data)) return data.dwFileAttributes;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsRemoveFailed, error, name);
}

}  // namespace

void RemoveSystemPath(const SWCharString& path, const SAnsiString& name) {
    const DWORD attributes = AttributesToRemove(path, name);
    const DWORD error = Patience().retryRemoval([&] { return RemoveOnce(path, attributes); });
    if (error != ERROR_SUCCESS) ThrowFileSys(RemovalFailure(attributes), error, name);
}

void SFileSys::remove(const SAnsiString& path) {
    RemoveSystemPath(LongSystemPath(path), path);
}

void SFileSys::rremove(const SAnsiString& path) {
    const SWCharString target = LongSystemPath(path);
    const DWORD attributes = AttributesToRemove(target, path);
    Removal removal;
    if (IsDirectory(attributes)) removal.removeBelow(target, TreeWalk::Care::All);
    removal.removeRoot(target, attributes, path);
    removal.failure().throwIfHappened();
}

void SFileSys::rremoveContent(const SAnsiString& path) {
    Removal removal;
    removal.removeBelow(LongSystemPath(path), TreeWalk::Care::BelowRoot);
    removal.failure().throwIfHappened();
}

void SFileSys::removeContentEx(const SAnsiString& path, const SAnsiString& pattern,
                               unsigned long long& freed) {
    freed = 0;
    const SWCharString directory = LongSystemPath(path);
    const NamePattern names(pattern);
    const osfiles::File held = HoldDirectory(directory);
    if (!held) ThrowFileSys(Exception::fsRemoveFailed, GetLastError(), path);
    Removal removal;
    DirectoryReader reader;
    reader.open(directory);
    while (reader.next()) {
        const WIN32_FIND_DATAW& entry = reader.entry();
        if (IsDirectory(entry.dwFileAttributes) || !names.matches(entry.cFileName)) continue;
        const DWORD error =
            removal.retry([&] { return RemoveIn(held.get(), entry.cFileName, entry.dwFileAttributes); },
                          directory, entry.dwFileAttributes);
        if (error == ERROR_SUCCESS)
            freed += SizeOf(entry);
        else
            removal.note(Exception::fsRemoveFailed, error,
                         JoinSystemPath(ExactForm(directory), entry.cFileName));
    }
    FileSysFailure& failure = removal.failure();
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
