#include "tarnlib/sfilesys.h"

#include <cstring>
#include <utility>

#include "files/directoryreader.h"
#include "files/failuretext.h"
#include "files/filesysfailure.h"
#include "files/filetimes.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "files/treewalk.h"
#include "oscodes/oscodes.h"
#include "seam/osclock.h"
#include "strings/paths/pathroot.h"
#include "strings/text/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/sfile.h"

namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr unsigned long long kMaxSize32 = 0xFFFFFFFF;

bool FindAttributes(const SAnsiString& path, WIN32_FILE_ATTRIBUTE_DATA& data) {
    return osfiles::Attributes(LongSystemPath(path).getString(), data);
}

WIN32_FILE_ATTRIBUTE_DATA AttributesOf(const SAnsiString& path, Exception::ErrorCodes failure) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    const SWCharString target = LongSystemPath(path);
    if (osfiles::Attributes(target.getString(), data)) return data;
    const DWORD error = GetLastError();
    ThrowFileSys(failure, error, path);
}

// --- absolute paths ---

bool IsNetworkPath(const char* path) {
    return IsSlash(path[0]) && IsSlash(path[1]);
}

SWCharString CurrentDirectory() {
    for (DWORD units = kShortPathEnd;;) {
        StringBuilder<wchar_t, 1> room(units);
        const DWORD needed = osfiles::CurrentDirectory(units, room.units());
        if (needed == 0) ThrowFileSys(Exception::fsStatFailed, GetLastError(), SAnsiString());
        if (needed < units) {
            room.cut(needed);
            return SWCharString(room);
        }
        units = needed + 1;
    }
}

void RequireDriveFor(const SAnsiString& path) {
    if (HasDrive(path) || IsNetworkPath(path.getString())) return;
    const SAnsiString current = FromSystem(CurrentDirectory().getString());
    if (HasDrive(current)) return;
    ThrowTraced(
        SFileSysException(Exception::fsStatFailed, Exception::reasonOther,
                          FillTemplate("No drive letter in current directory: %1", current, SAnsiString()),
                          path, SAnsiString(), SAnsiString()));
}

// A text with a zero byte inside is no path: the system would take what is before it for another.
bool HasZero(const SAnsiString& path) {
    return std::strlen(path.getString()) != path.getLength();
}

SWCharString FullPathOf(const SAnsiString& path) {
    // Of no path at all systems say different things, or nothing.
    if (HasZero(path) || path.isEmpty()) ThrowFileSys(Exception::fsStatFailed, ERROR_INVALID_NAME, path);
    RequireDriveFor(path);
    const SWCharString asGiven = ToSystem(path);
    SWCharString full;
    if (FullSystemPath(asGiven, full)) return full;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsStatFailed, error, path);
}

// --- making directories ---

bool IsDirectoryThere(const SWCharString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return osfiles::Attributes(path.getString(), data) && IsDirectory(data.dwFileAttributes);
}

// What stands before the last component; empty when there is nothing, or only the root.
SWCharString ParentOf(const SWCharString& path) {
    const SWCharString::iterator slash = path.findLast(L'\\');
    return slash != path.end() ? path.left(slash) : SWCharString();
}

SWCharString WithoutLastSlash(const SWCharString& path) {
    const std::uint32_t length = path.getLength();
    const wchar_t* const text = path.getString();
    const bool isRoot = length < 2 || text[length - 2] == L':';
    return isRoot || text[length - 1] != L'\\' ? path : SWCharString(text, length - 1);
}

// Makes a directory or finds it there. "hasChanged": others are making and removing the same, so that it is worth
// another try.
bool MakeLevel(const SWCharString& level, DWORD& error, bool& hasChanged) {
    if (osfiles::MakeDirectory(level.getString())) return true;
    error = GetLastError();
    hasChanged = osfiles::WasBeingDeleted() || oscodes::IsTaken(error);
    if (oscodes::IsMissing(error)) return false;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(level.getString(), data)) return false;
    hasChanged = false;
    return IsDirectory(data.dwFileAttributes);
}

// From the first missing level down. "error" is the system's when a level can be neither made nor found.
bool MakeLevels(const SWCharString& path, DWORD& error) {
    constexpr DWORD kPauseMilliseconds = 5;
    int triesLeft = 20;
    std::vector<SWCharString> missing{path};
    while (!missing.empty()) {
        bool hasChanged = false;
        if (MakeLevel(missing.back(), error, hasChanged)) {
            missing.pop_back();
            continue;
        }
        if (oscodes::IsMissing(error)) {
            const SWCharString parent = ParentOf(missing.back());
            if (parent.isEmpty() || missing.size() > path.getLength()) return false;
            hasChanged = IsDirectoryThere(parent);
            if (!hasChanged) missing.push_back(parent);
        } else if (!hasChanged) {
            return false;
        }
        if (!hasChanged) continue;
        if (triesLeft-- == 0) return false;
        osclock::Sleep(kPauseMilliseconds);
    }
    return true;
}

// --- rights ---

bool IsProgramName(const SWCharString& path) {
    constexpr std::uint32_t kExtensionUnits = 4;
    const SWCharString extension = path.right(kExtensionUnits);
    for (const wchar_t* program : {L".exe", L".com", L".bat", L".cmd"}) {
        if (extension.compareNoCase(program) == 0) return true;
    }
    return false;
}

// The attributes with or without the one for read-only, as the system wants to have them.
DWORD WithReadOnly(DWORD attributes, bool isReadOnly) {
    const DWORD wanted =
        isReadOnly ? attributes | FILE_ATTRIBUTE_READONLY : attributes & ~DWORD{FILE_ATTRIBUTE_READONLY};
    return wanted != 0 ? wanted : FILE_ATTRIBUTE_NORMAL;
}

bool IsReadOnly(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Where the walk stands.
bool MakeWritable(const TreeWalk& walk) {
    const DWORD attributes = walk.entry().dwFileAttributes;
    if (!IsReadOnly(attributes)) return true;
    const osfiles::File file =
        osfiles::OpenIn(walk.holder(), walk.name(), FILE_WRITE_ATTRIBUTES, oscodes::kEveryShare, 0);
    return file && osfiles::SetAttributesOf(file.get(), WithReadOnly(attributes, false));
}

void GiveAccessBelow(const SWCharString& root) {
    TreeWalk walk(root, TreeWalk::Care::BelowRoot);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        if (step == TreeWalk::Step::Failed)
            ThrowFileSys(Exception::fsGetAttributesFailed, walk.error(), ShownPath(walk.path()));
        if (step != TreeWalk::Step::Entry || MakeWritable(walk)) continue;
        const DWORD error = GetLastError();
        ThrowFileSys(Exception::fsSetAttributesFailed, error, ShownPath(walk.path()));
    }
}

std::uint32_t Size32(unsigned long long bytes, const SAnsiString& path) {
    if (bytes > kMaxSize32) ThrowFileSys(Exception::fsSizeFailed, ERROR_ARITHMETIC_OVERFLOW, path);
    return static_cast<std::uint32_t>(bytes);
}

}  // namespace

// ------------------------------------------------------------------------------------------ tests

bool SFileSys::exists(const SAnsiString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return FindAttributes(path, data);
}

bool SFileSys::isDir(const SAnsiString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return FindAttributes(path, data) && IsDirectory(data.dwFileAttributes);
}

bool SFileSys::isFile(const SAnsiString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return FindAttributes(path, data) && !IsDirectory(data.dwFileAttributes);
}

bool SFileSys::isDrive(const SAnsiString& path) {
    const char* const text = path.getString();
    const bool isRoot =
        !HasZero(path) && HasDrive(path) && (text[2] == '\0' || (IsSlash(text[2]) && text[3] == '\0'));
    if (!isRoot) return false;
    const SAnsiString root = path.left(kDriveBytes) + "\\";
    return osfiles::DriveType(ToSystem(root).getString()) > DRIVE_NO_ROOT_DIR;
}

bool SFileSys::isFullPath(const SAnsiString& path) noexcept {
    const char* const text = path.getString();
    return IsNetworkPath(text) || (HasDrive(path) && IsSlash(text[2]));
}

bool SFileSys::hasOwnerPermissionHelper(const SAnsiString& path, int mask) {
    const DWORD attributes = AttributesOf(path, Exception::fsStatFailed).dwFileAttributes;
    if (mask == SFile::ownerWMask) return !IsReadOnly(attributes);
    return IsDirectory(attributes) || IsProgramName(LongSystemPath(path));
}

bool SFileSys::HasOwnerExePermission(const SAnsiString& path) {
    return hasOwnerPermissionHelper(path, SFile::ownerXMask);
}

bool SFileSys::HasOwnerWritePermission(const SAnsiString& path) {
    return hasOwnerPermissionHelper(path, SFile::ownerWMask);
}

// ------------------------------------------------------------------------------------------ paths

SAnsiString SFileSys::getFullPath(const SAnsiString& path) {
    return FromSystem(FullPathOf(path).getString());
}

SAnsiString SFileSys::toLongPath(const SAnsiString& path) {
    const SWCharString full = FullPathOf(path);
    return FromSystem(LongPathsEnabled() ? full.getString() : LongForm(full).getString());
}

SAnsiString SFileSys::getCurrentDirectory() {
    return FromSystem(CurrentDirectory().getString());
}

void SFileSys::setCurrentDirectory(const SAnsiString& path) {
    const SWCharString target = ToSystem(path);
    if (!HasZero(path) && osfiles::SetCurrentDirectory(target.getString())) return;
    const DWORD error = HasZero(path) ? DWORD{ERROR_INVALID_NAME} : GetLastError();
    ThrowFileSys(Exception::fsSetCurrentDirFailed, error, path);
}

// ------------------------------------------------------------------------------------------ directories

void SFileSys::makeDirectory(const SAnsiString& path, int /*permissions*/) {
    const SWCharString target = LongSystemPath(path, kShortDirectoryEnd);
    if (osfiles::MakeDirectory(target.getString())) return;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsMakeDirFailed, error, path);
}

void SFileSys::makeDirectories(const SAnsiString& path, int /*permissions*/) {
    DWORD error = ERROR_SUCCESS;
    if (!MakeLevels(WithoutLastSlash(LongSystemPath(path, kShortDirectoryEnd)), error))
        ThrowFileSys(Exception::fsMakeDirFailed, error, path);
}

void SFileSys::listDirectory(const SAnsiString& path, SIArray<SAnsiString>& names) {
    SIArray<SAnsiString> found;  // the path may be one of the names
    DirectoryReader reader;
    reader.open(LongSystemPath(path));
    while (reader.next()) found.Add(FromSystem(reader.entry().cFileName));
    if (reader.error() != ERROR_SUCCESS) ThrowUnreadable(reader.error(), path);
    names = std::move(found);
}

void SFileSys::listing(const SAnsiString& path, const SAnsiString& pattern, SIArray<FileProp>& entries) {
    SIArray<FileProp> found;  // the path may be one of the entries' names
    SSFileSearch search;
    for (bool isFound = search.FindFirst(path, pattern); isFound; isFound = search.FindNext())
        found.Add(search.GetEntry());
    entries = std::move(found);
}

namespace {

unsigned CountEntries(const SAnsiString& path, bool directoriesToo) {
    DirectoryReader reader;
    reader.open(LongSystemPath(path));
    unsigned count = 0;
    while (reader.next()) {
        if (directoriesToo || !IsDirectory(reader.entry().dwFileAttributes)) ++count;
    }
    if (reader.error() != ERROR_SUCCESS) ThrowUnreadable(reader.error(), path);
    return count;
}

}  // namespace

unsigned SFileSys::countFiles(const SAnsiString& path) {
    return CountEntries(path, false);
}

unsigned SFileSys::countAll(const SAnsiString& path) {
    return CountEntries(path, true);
}

// ------------------------------------------------------------------------------------------ sizes

unsigned long long SFileSys::sizeEx(const SAnsiString& path) {
    const WIN32_FILE_ATTRIBUTE_DATA data = AttributesOf(path, Exception::fsSizeFailed);
    return static_cast<unsigned long long>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

std::uint32_t SFileSys::size(const SAnsiString& path) {
    return Size32(sizeEx(path), path);
}

unsigned long long SFileSys::rsizeEx(const SAnsiString& path) {
    const WIN32_FILE_ATTRIBUTE_DATA data = AttributesOf(path, Exception::fsSizeFailed);
    unsigned long long total = static_cast<unsigned long long>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    if (!IsDirectory(data.dwFileAttributes)) return total;
    total = 0;
    TreeWalk walk(LongSystemPath(path), TreeWalk::Care::None);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        if (step == TreeWalk::Step::Failed)
            ThrowFileSys(Exception::fsSizeFailed, walk.error(), ShownPath(walk.path()));
        if (step == TreeWalk::Step::Entry && !IsDirectory(walk.entry().dwFileAttributes))
            total += SizeOf(walk.entry());
    }
    return total;
}

std::uint32_t SFileSys::rsize(const SAnsiString& path) {
    return Size32(rsizeEx(path), path);
}

void SFileSys::diskUsageInfo(const SAnsiString& path, unsigned long long& total, unsigned long long& free,
                             unsigned long long& available) {
    ULARGE_INTEGER mine;
    ULARGE_INTEGER all;
    ULARGE_INTEGER unused;
    // With a slash at its end: the name of a share needs it.
    const SWCharString directory = JoinSystemPath(LongSystemPath(path), L"");
    if (!osfiles::DiskSpace(directory.getString(), mine, all, unused)) {
        const DWORD error = GetLastError();
        ThrowFileSys(Exception::fsDiskStatsFailed, error, path);
    }
    total = all.QuadPart;
    free = unused.QuadPart;
    available = mine.QuadPart;
}

// ---------------------------------------------------------------------------------------- times and rights

SDateTime SFileSys::getLastModifiedTime(const SAnsiString& path) {
    return DateTimeOf(AttributesOf(path, Exception::fsStatFailed).ftLastWriteTime);
}

void SFileSys::setLastModifiedTime(const SAnsiString& path, const SDateTime& time) {
    FILETIME written;
    if (!FileTimeOf(time, written))
        ThrowFileSys(Exception::fsSetAttributesFailed, ERROR_INVALID_PARAMETER, path);
    // The flag makes directories open, too.
    const SWCharString target = LongSystemPath(path);
    const osfiles::File file = osfiles::Open(target.getString(), FILE_WRITE_ATTRIBUTES, oscodes::kEveryShare,
                                             nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (file && osfiles::SetWriteTime(file.get(), written)) return;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsSetAttributesFailed, error, path);
}

void SFileSys::giveAccess(const SAnsiString& path, int mode) {
    const DWORD attributes = AttributesOf(path, Exception::fsGetAttributesFailed).dwFileAttributes;
    const bool isReadOnly = (mode & SFile::ownerWMask) == 0;
    if (IsReadOnly(attributes) == isReadOnly) return;
    const SWCharString target = LongSystemPath(path);
    if (osfiles::SetAttributes(target.getString(), WithReadOnly(attributes, isReadOnly))) return;
    const DWORD error = GetLastError();
    ThrowFileSys(Exception::fsSetAttributesFailed, error, path);
}

void SFileSys::giveAllAccess(const SAnsiString& path, bool recursive) {
    giveAccess(path, SFile::ownerWMask);
    if (recursive && isDir(path)) GiveAccessBelow(LongSystemPath(path));
}

void SFileSys::setFileOwner(const SAnsiString& /*path*/, const SAnsiString& /*owner*/) noexcept {}

}  // namespace TarnLibA500
