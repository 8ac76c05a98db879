#include <cwchar>

#include "files/filesysfailure.h"
#include "files/osfiles.h"
#include "files/replacement.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/sfilesys.h"

// Copying, renaming and replacing.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr int kAttempts = 100;

// A copy of a file beside the one whose place it takes. It goes, unless it is kept.
class Copy {
  public:
    Copy(const SWCharString& from, const SWCharString& to, Patience& patience)
        : from_(from), to_(to), patience_(patience) {}
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        if (isThere_) remove();
    }

    // The system's error code, 0 when it is done.
    DWORD make() {
        const DWORD error = patience_.retry([&] { return makeOnce(); }, IsInUse);
        // What there is of the copy goes. A taken name is not ours, nor is one that we were refused.
        isThere_ = !oscodes::IsTaken(error) && error != ERROR_ACCESS_DENIED;
        return error;
    }
    const SWCharString& path() const noexcept { return path_; }
    void keep() noexcept { isThere_ = false; }

  private:
    DWORD makeOnce() {
        DWORD error = ERROR_SUCCESS;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            path_ = NameBeside(to_);
            if (osfiles::Copy(from_.getString(), path_.getString(), false)) return ERROR_SUCCESS;
            error = GetLastError();
            if (!oscodes::IsTaken(error)) break;
        }
        return error;
    }
    void remove() noexcept {
        osfiles::SetAttributes(path_.getString(),
                               FILE_ATTRIBUTE_NORMAL);  // it may be read-only, as its source
        patience_.retryRemoval(
            [&] { return osfiles::Remove(path_.getString()) ? DWORD{ERROR_SUCCESS} : GetLastError(); });
    }

    const SWCharString& from_;
    const SWCharString& to_;
    Patience& patience_;
    SWCharString path_;
    bool isThere_ = false;
};

// The system's error code, 0 when it is done. Nobody sees half a file, and nothing is lost when it fails.
DWORD CopyWhole(const SWCharString& from, const SWCharString& to, bool overwrite) {
    Patience patience;
    Copy copy(from, to, patience);
    const DWORD error = copy.make();
    if (error != ERROR_SUCCESS) return error;
    const Placed placed = overwrite ? PutInPlaceOf(to, copy.path(), Heritage::All, patience)
                                    : Placed{MoveToNewName(copy.path(), to, patience)};
    if (placed.error == ERROR_SUCCESS || !placed.isUndone) copy.keep();
    return placed.error;
}

// Devices have nothing beside them, and nothing that could be lost. Not the system's own way to copy: that would let
// a pipe's other end act in our name.
DWORD CopyToDevice(const SWCharString& from, const SWCharString& to) {
    constexpr DWORD kBlockBytes = 64 * 1024;
    const osfiles::File source = osfiles::Open(from.getString(), GENERIC_READ, oscodes::kEveryShare, nullptr,
                                               OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!source) return GetLastError();
    const osfiles::File device = osfiles::Open(to.getString(), GENERIC_WRITE, oscodes::kEveryShare, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (!device) return GetLastError();
    StringBuilder<char, 0> block(kBlockBytes);
    for (;;) {
        DWORD count = 0;
        if (!osfiles::Read(source.get(), block.units(), kBlockBytes, count)) return GetLastError();
        if (count == 0) return ERROR_SUCCESS;
        for (DWORD done = 0, written = 0; done < count; done += written) {
            if (!osfiles::Write(device.get(), block.units() + done, count - done, written))
                return GetLastError();
            if (written == 0) return ERROR_WRITE_FAULT;
        }
    }
}

bool IsDevice(const SWCharString& path) {
    return std::wcsncmp(path.getString(), L"\\\\.\\", 4) == 0;
}

// Why what stands at the target may not be replaced; 0 when it may. Asked first, because not every system
// refuses to rename over it. A target that is a link becomes what it leads to: that is replaced, and the link stays.
DWORD RefusalToReplace(SWCharString& target, bool overwrite) {
    if (IsDevice(target)) return ERROR_SUCCESS;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (overwrite) {
        const DWORD error = FollowLink(target);
        if (error != ERROR_SUCCESS) return error;
    }
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
    SWCharString target = LongSystemPath(to);
    DWORD error = RefusalToReplace(target, overwrite);
    const SWCharString source = LongSystemPath(from);
    if (error == ERROR_SUCCESS)
        error = IsDevice(target) ? CopyToDevice(source, target) : CopyWhole(source, target, overwrite);
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsCopyFailed, error, from, to);
}

void SFileSys::replaceFile(const SAnsiString& from, const SAnsiString& to) {
    SWCharString target = LongSystemPath(to);
    Patience patience;
    DWORD error = RefusalToReplace(target, true);
    if (error == ERROR_SUCCESS)
        error = PutInPlaceOf(target, LongSystemPath(from), Heritage::Rights, patience).error;
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsRenameFailed, error, from, to);
}

void SFileSys::renameFile(const SAnsiString& from, const SAnsiString& to) {
    const SWCharString source = LongSystemPath(from);
    const SWCharString target = LongSystemPath(to);
    Patience patience;
    const DWORD error = patience.retry(
        [&] {
            const bool isDone = osfiles::Move(source.getString(), target.getString(), MOVEFILE_COPY_ALLOWED);
            return isDone ? DWORD{ERROR_SUCCESS} : GetLastError();
        },
        [&](DWORD failure) { return IsRenamingHindered(failure, target); });
    if (error != ERROR_SUCCESS) ThrowFileSys(Exception::fsRenameFailed, error, from, to);
}

}  // namespace TarnLibA500
