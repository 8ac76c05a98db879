#include "diag/logging/logdirectory.h"

#include <utility>

#include "files/directoryreader.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "tarnlib/registry.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kSettingsRoot = "SOFTWARE\\velmora\\Logging";
constexpr const char* kDirectoryInTemp = "velmora\\logging";

osfiles::File LookAt(HANDLE directory, const wchar_t* path) {
    constexpr DWORD kFlags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
    return directory != nullptr ? osfiles::OpenIn(directory, path, READ_CONTROL, oscodes::kEveryShare, 0)
                                : osfiles::Open(path, READ_CONTROL | FILE_READ_ATTRIBUTES,
                                                oscodes::kEveryShare, nullptr, OPEN_EXISTING, kFlags);
}

bool IsWellKnown(const osfiles::Owner& owner, WELL_KNOWN_SID_TYPE who) {
    alignas(DWORD) BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD bytes = sizeof sid;
    return CreateWellKnownSid(who, nullptr, sid, &bytes) && owner.is(sid);
}

bool IsOurs(const osfiles::Owner& owner) {
    osfiles::OwnSid user;
    osfiles::OwnSid heir;  // whose is what this process makes
    return (osfiles::ReadOwnSid(TokenUser, user) && owner.is(user.sid)) ||
           (osfiles::ReadOwnSid(TokenOwner, heir) && owner.is(heir.sid)) ||
           IsWellKnown(owner, WinBuiltinAdministratorsSid) || IsWellKnown(owner, WinLocalSystemSid);
}

// What is wrong with a directory; null for nothing. File systems without rights have no owners either.
const char* Flaw(HANDLE directory) {
    FILE_ATTRIBUTE_TAG_INFO info;
    if (!osfiles::AttributesAndTag(directory, info)) return "cannot be looked at";
    if ((info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLinkTag(info.ReparseTag))
        return "is a link";
    DWORD flags = 0;
    if (osfiles::VolumeFlags(directory, flags) && (flags & FILE_PERSISTENT_ACLS) == 0) return nullptr;
    osfiles::Owner owner;
    if (!osfiles::OwnerOf(directory, owner)) return "does not tell whose it is";
    return IsOurs(owner) ? nullptr : "belongs to somebody else";
}

SAnsiString RefusalText(const SWCharString& directory, const char* flaw) {
    return "The directory " + ShownPath(directory) + " " + flaw +
           ": nothing is logged into it. Name one by the option loggingPath.";
}

// Why the default directory, or the one above it, is not one to write to; empty when they are, or are missing.
SAnsiString Refusal(const SAnsiString& path) {
    const SWCharString lower = LongSystemPath(path);
    const SWCharString::iterator slash = lower.findLast(L'\\');
    const SWCharString upper = lower.left(slash);
    const SWCharString* level = &upper;
    osfiles::File held;
    for (const wchar_t* name : {upper.getString(), slash.getPtr() + 1}) {
        osfiles::File opened = LookAt(held ? held.get() : nullptr, name);
        if (!opened && oscodes::IsMissing(GetLastError())) return SAnsiString();
        const char* const flaw = opened ? Flaw(opened.get()) : "cannot be opened";
        if (flaw != nullptr) return RefusalText(*level, flaw);
        held = std::move(opened);
        level = &lower;
    }
    return SAnsiString();
}

SAnsiString TempDirectory() try { return SFileSys::getTempDirname(); } catch (const SFileSysException&) {
    return ".";
}

}  // namespace

SAnsiString AbsolutePath(const SAnsiString& path) try {
    return SFileSys::isFullPath(path) ? path : SFileSys::getFullPath(path);
} catch (const SFileSysException&) {
    return path;  // whoever opens it says what is wrong
}

LogDirectory FindLogDirectory(const SAnsiString& given) {
    SAnsiString path = given;
    if (path.isEmpty())
        path = Registry(kSettingsRoot, "Logging", HKEY_LOCAL_MACHINE, false).ReadValue("loggingPath");
    if (!path.isEmpty()) return {AbsolutePath(path), true};
    return {AbsolutePath(JoinPath(TempDirectory(), kDirectoryInTemp)), false};
}

bool MakeLogDirectory(const LogDirectory& directory, SAnsiString& refusal) try {
    // First, too, because nothing is to be made behind a link.
    refusal = directory.isConfigured ? SAnsiString() : Refusal(directory.path);
    if (!refusal.isEmpty()) return false;
    SFileSys::makeDirectories(directory.path, SFile::defaultPermissions);
    if (!directory.isConfigured) refusal = Refusal(directory.path);
    return refusal.isEmpty();
} catch (const SFileSysException&) {
    return false;
}

// In the directory for temporary files, since nothing that was refused is to be looked into.
SAnsiString NoLogDirectory() {
    return AbsolutePath(JoinPath(TempDirectory(), "velmora|refused"));
}

SAnsiString LogDirectoryFailure(const SAnsiString& directory) {
    return "The internal logger count not create the required directories\n"
           "The specified path is not accessible or does not exist: " +
           directory;
}

}  // namespace TarnLibA500
