#include "files/replacement.h"

#include <cstdio>
#include <iterator>

#include "diag/assert/levels.h"
#include "files/directoryreader.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "oscodes/oscodes.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilesys";

DWORD Move(const SWCharString& from, const SWCharString& to, DWORD flags) {
    return osfiles::Move(from.getString(), to.getString(), flags) ? ERROR_SUCCESS : GetLastError();
}

/// File systems that cannot exchange two files have no rights either that could get lost.
bool HasNoRights(DWORD error) {
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

/// The codes of an exchange that began and did not end say nothing of the reason. A file that may not be renamed, because
/// somebody has it open, is "access denied" to a renaming over it.
DWORD ReasonOf(DWORD error) {
    const bool hasBegun =
        error >= ERROR_UNABLE_TO_REMOVE_REPLACED && error <= ERROR_UNABLE_TO_MOVE_REPLACEMENT_2;
    return hasBegun ? ERROR_ACCESS_DENIED : error;
}

/// A file that gets the name of another.
class Exchange {
  public:
    Exchange(const SWCharString& target, const SWCharString& file, Patience& patience)
        : target_(target), file_(file), backup_(NameBeside(target)), patience_(patience) {}

    Placed run() {
        const DWORD error =
            patience_.retry([&] { return once(); },
                            [&](DWORD failure) { return isUndone_ && IsRenamingHindered(failure, target_); });
        return {error, isUndone_};
    }

  private:
    DWORD once() {
        const DWORD error = Move(file_, target_, 0);
        if (!oscodes::IsTaken(error)) return error;
        // Without a backup the old file would be gone when the second of the system's steps fails.
        if (osfiles::Replace(target_.getString(), file_.getString(), backup_.getString())) {
            removeBackup();
            return ERROR_SUCCESS;
        }
        const DWORD failure = GetLastError();
        if (HasNoRights(failure)) return Move(file_, target_, MOVEFILE_REPLACE_EXISTING);
        giveNameBack();
        return failure != ERROR_FILE_NOT_FOUND ? ReasonOf(failure)
                                               : Move(file_, target_, 0);  // somebody has removed the old one
    }

    /// The system renames the old file to the backup, and the new one after it. It may fail in between.
    void giveNameBack() {
        const DWORD error =
            patience_.retry([&] { return Move(backup_, target_, 0); },
                            [&](DWORD failure) { return IsRenamingHindered(failure, target_); });
        if (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) return;
        isUndone_ = false;
        TARN_TRACE_AT(levels::kLoss, kUnit, "the old %1 is %2 now, and the new one %3: error %4",
                      ShownPath(target_), ShownPath(backup_), ShownPath(file_), error);
    }

    void removeBackup() {
        const DWORD error = patience_.retryRemoval(
            [&] { return osfiles::Remove(backup_.getString()) ? DWORD{ERROR_SUCCESS} : GetLastError(); });
        if (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) return;
        TARN_TRACE_AT(levels::kLoss, kUnit, "%1, which was replaced, is left behind: error %2",
                      ShownPath(backup_), error);
    }

    const SWCharString& target_;
    const SWCharString& file_;
    const SWCharString backup_;
    Patience& patience_;
    bool isUndone_ = true;
};

/// The owner of a file, for the one that takes its place: the system hands the rights on, but not him.
class KeptOwner {
  public:
    explicit KeptOwner(const SWCharString& file) {
        const osfiles::File opened = Open(file, READ_CONTROL);
        isKnown_ = opened && osfiles::OwnerOf(opened.get(), owner_);
    }
    /// Where this process may.
    void giveTo(const SWCharString& file) const {
        osfiles::Owner now;
        const osfiles::File opened = isKnown_ ? Open(file, READ_CONTROL | WRITE_OWNER) : osfiles::File();
        if (!opened || !osfiles::OwnerOf(opened.get(), now) || now.is(owner_.sid())) return;
        if (!osfiles::SetOwner(opened.get(), owner_))
            TARN_TRACE_AT(levels::kDetail, kUnit, "%1 does not keep its owner: error %2", ShownPath(file),
                          GetLastError());
    }

  private:
    static osfiles::File Open(const SWCharString& file, DWORD access) {
        return osfiles::Open(file.getString(), access, oscodes::kEveryShare, nullptr, OPEN_EXISTING, 0);
    }

    osfiles::Owner owner_;
    bool isKnown_;
};

DWORD Flush(const SWCharString& file, Patience& patience) {
    const auto flush = [&] {
        const osfiles::File opened = osfiles::Open(file.getString(), GENERIC_WRITE, oscodes::kEveryShare,
                                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
        return opened && osfiles::Flush(opened.get()) ? DWORD{ERROR_SUCCESS} : GetLastError();
    };
    return patience.retry(flush, IsInUse);
}

/// Those of the old file; and a copy of what is read-only is read-only, and is to be saved by the next backup.
DWORD HandedOn(DWORD ofTarget, DWORD ofCopy) {
    constexpr DWORD kHandedOn =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    return (ofTarget & kHandedOn) | (ofCopy & FILE_ATTRIBUTE_READONLY) | FILE_ATTRIBUTE_ARCHIVE;
}

void GiveAttributes(const SWCharString& file, DWORD attributes) {
    if (osfiles::SetAttributes(file.getString(), attributes)) return;
    TARN_TRACE_AT(levels::kLoss, kUnit, "%1 lost its attributes: error %2", ShownPath(file), GetLastError());
}

/// For a file that can be written to, with the attributes that it is to have.
Placed Exchanged(const SWCharString& target, const SWCharString& file, DWORD attributes, Patience& patience) {
    const Placed placed = Exchange(target, file, patience).run();
    if (placed.error == ERROR_SUCCESS) GiveAttributes(target, attributes);
    return placed;
}

/// For a copy in the place of what is there.
Placed Inherited(const SWCharString& target, const SWCharString& copy, DWORD attributes, Patience& patience) {
    const DWORD error = Flush(copy, patience);
    if (error != ERROR_SUCCESS) return {error};
    const KeptOwner owner(target);
    const Placed placed = Exchanged(target, copy, attributes, patience);
    if (placed.error == ERROR_SUCCESS) owner.giveTo(target);
    return placed;
}

}  // namespace

SWCharString NameBeside(const SWCharString& file) {
    wchar_t name[32];
    std::swprintf(name, std::size(name), L"~%08X.tmp", static_cast<unsigned>(NextUniqueNumber()));
    const SWCharString::iterator slash = file.findLast(L'\\');
    const SWCharString directory = slash != file.end() ? file.left(slash) : SWCharString();
    return LongForm(JoinSystemPath(directory, name));
}

DWORD FollowLink(SWCharString& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    const bool isThere = osfiles::Attributes(path.getString(), data);
    if (!isThere || (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return ERROR_SUCCESS;
    WIN32_FIND_DATAW entry;
    if (osfiles::FindFirst(path.getString(), entry) && IsStoredOtherwise(entry)) return ERROR_SUCCESS;
    const osfiles::File end = osfiles::Open(path.getString(), FILE_READ_ATTRIBUTES, oscodes::kEveryShare,
                                            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!end) return GetLastError();
    constexpr DWORD kMostUnits = 32'768;
    StringBuilder<wchar_t, 1> room(kMostUnits);
    const DWORD units = osfiles::FinalPath(end.get(), room.units(), kMostUnits);
    if (units == 0) return GetLastError();
    room.cut(units < kMostUnits ? units : 0);
    path = room;
    return ERROR_SUCCESS;
}

DWORD MoveToNewName(const SWCharString& file, const SWCharString& target, Patience& patience) {
    return patience.retry([&] { return Move(file, target, 0); },
                          [&](DWORD error) { return IsRenamingHindered(error, target); });
}

Placed PutInPlaceOf(const SWCharString& target, const SWCharString& file, Heritage heritage,
                    Patience& patience) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    WIN32_FILE_ATTRIBUTE_DATA old;
    if (!osfiles::Attributes(file.getString(), data)) return {GetLastError()};
    const DWORD attributes = data.dwFileAttributes;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return {ERROR_ACCESS_DENIED};
    const bool isHeir = heritage == Heritage::All && osfiles::Attributes(target.getString(), old);
    // The system writes to the new file while it replaces, and gives it the old one's attributes.
    const bool isFixed = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isFixed && !osfiles::SetAttributes(file.getString(), FILE_ATTRIBUTE_NORMAL)) return {GetLastError()};
    const Placed placed = isHeir
                              ? Inherited(target, file, HandedOn(old.dwFileAttributes, attributes), patience)
                              : Exchanged(target, file, attributes, patience);
    if (placed.error != ERROR_SUCCESS) GiveAttributes(file, attributes);
    return placed;
}

}  // namespace TarnLibA500
