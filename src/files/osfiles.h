#pragma once

#include <utility>

#include "oscodes/oscodes.h"
#include "seam/osmodules.h"
#include "seam/seam.h"

#include <windows.h>
#include <winternl.h>

extern "C" LONG NTAPI RtlGetLastNtStatus();

/// The one way in which the library reaches files and directories. The calls fail as the system does: with
/// false or an invalid handle, and the code in GetLastError.

namespace TarnLibA500::osfiles {

/// Files and directories, and what else has a handle here. What is open is handles.
struct Kind {
    static void SetError(DWORD error) noexcept { SetLastError(error); }
};
using Calls = seam::Calls<Kind>;

inline constinit seam::Replaceable<decltype(ReadFile)> readFile;
inline constinit seam::Replaceable<decltype(GetFileAttributesExW)> getFileAttributes;
inline constinit seam::Replaceable<decltype(FindFirstFileExW)> findFirst;
inline constinit seam::Replaceable<decltype(ReplaceFileW)> replaceFile;
inline constinit seam::Replaceable<decltype(CreateFileW)> createFile;
inline constinit seam::Replaceable<decltype(MoveFileExW)> moveFile;
inline constinit seam::Replaceable<decltype(CopyFileW)> copyFile;
inline constinit seam::Replaceable<decltype(DeleteFileW)> deleteFile;
inline constinit seam::Replaceable<decltype(RemoveDirectoryW)> removeDirectory;
inline constinit seam::Replaceable<decltype(FlushFileBuffers)> flush;
inline constinit seam::Replaceable<decltype(SetFileInformationByHandle)> setInformation;
inline constinit seam::Replaceable<decltype(GetFileInformationByHandleEx)> getInformation;
inline constinit seam::Replaceable<decltype(GetKernelObjectSecurity)> getSecurity;
inline constinit seam::Replaceable<decltype(SetKernelObjectSecurity)> setSecurity;
inline constinit seam::Replaceable<decltype(GetVolumeInformationByHandleW)> volumeInformation;
inline constinit seam::Replaceable<decltype(ReadDirectoryChangesW)> readChanges;
inline constinit seam::Replaceable<decltype(RtlGetLastNtStatus)> lastStatus;
/// No documentation has it, and it may be missing. Looked up when the module is loaded: a look-up after a failure could
/// change what it tells.
inline const auto lastStatusOfSystem =
    osmodules::Found<decltype(RtlGetLastNtStatus)>(L"ntdll.dll", "RtlGetLastNtStatus");

/// Counts a handle that the system gave, if it did; passes it on.
inline HANDLE Opened(HANDLE handle) noexcept {
    if (handle != INVALID_HANDLE_VALUE && handle != nullptr) Calls::Opened();
    return handle;
}

/// Not a call that can be made to fail: nobody could do anything about it. The last error stays.
inline void Close(HANDLE file) noexcept {
    const DWORD error = GetLastError();
    CloseHandle(file);
    Calls::Closed();
    SetLastError(error);
}

/// The same for a search.
inline void CloseSearch(HANDLE search) noexcept {
    const DWORD error = GetLastError();
    FindClose(search);
    Calls::Closed();
    SetLastError(error);
}

/// Owns a handle from the line that opens it. Whichever value the system has for "none" is none here; the last
/// error stays when one is closed.
template <void (*CloseHandleOf)(HANDLE) noexcept>
class Owned {
  public:
    Owned() noexcept = default;
    explicit Owned(HANDLE handle) noexcept : handle_(handle != nullptr ? handle : INVALID_HANDLE_VALUE) {}
    Owned(Owned&& other) noexcept : handle_(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        Owned old(std::exchange(handle_, other.release()));
        return *this;
    }
    ~Owned() { close(); }

    explicit operator bool() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return handle_; }
    /// Hands the handle to somebody who closes it; INVALID_HANDLE_VALUE when there is none.
    HANDLE release() noexcept { return std::exchange(handle_, INVALID_HANDLE_VALUE); }
    void close() noexcept {
        if (*this) CloseHandleOf(release());
    }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// A file, a directory, a mapping, an event or a mutex.
using File = Owned<Close>;
/// The reading of a directory.
using Search = Owned<CloseSearch>;

/// Whoever made a pipe that is named as a file may see who opens it, and not act in his name.
inline File Open(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                 DWORD disposition, DWORD flags) {
    if (Calls::MustFail()) return File();
    return File(Opened(createFile.orElse(CreateFileW)(path, access, share, security, disposition,
                                                      flags | oscodes::kOnlyIdentify, nullptr)));
}

/// Opens what has a name in a directory that is open, whatever the directory's path leads to by now, and itself if
/// it is a link.
inline File OpenIn(HANDLE directory, const wchar_t* name, DWORD access, DWORD share, ULONG options) {
    if (Calls::MustFail()) return File();
    UNICODE_STRING text;
    RtlInitUnicodeString(&text, name);
    OBJECT_ATTRIBUTES attributes = {};
    attributes.Length = sizeof attributes;
    attributes.RootDirectory = directory;
    attributes.ObjectName = &text;
    SECURITY_QUALITY_OF_SERVICE quality = {sizeof quality, SecurityIdentification, FALSE, FALSE};
    attributes.SecurityQualityOfService = &quality;
    IO_STATUS_BLOCK result;
    HANDLE file = nullptr;
    constexpr DWORD kAlways = SYNCHRONIZE | FILE_READ_ATTRIBUTES;
    constexpr ULONG kOptions =
        FILE_OPEN_REPARSE_POINT | FILE_OPEN_FOR_BACKUP_INTENT | FILE_SYNCHRONOUS_IO_NONALERT;
    const NTSTATUS status =
        NtOpenFile(&file, access | kAlways, &attributes, &result, share, kOptions | options);
    if (status < 0) {
        SetLastError(RtlNtStatusToDosError(status));
        return File();
    }
    return File(Opened(file));
}

inline bool Read(HANDLE file, void* bytes, DWORD count, DWORD& done) {
    done = 0;
    return !Calls::MustFail() && readFile.orElse(ReadFile)(file, bytes, count, &done, nullptr) != 0;
}

inline bool Write(HANDLE file, const void* bytes, DWORD count, DWORD& done) {
    done = 0;
    return !Calls::MustFail() && WriteFile(file, bytes, count, &done, nullptr) != 0;
}

inline bool Flush(HANDLE file) {
    return !Calls::MustFail() && flush.orElse(FlushFileBuffers)(file) != 0;
}

inline bool Seek(HANDLE file, DWORD origin, long long offset, long long& position) {
    LARGE_INTEGER distance;
    LARGE_INTEGER reached;
    distance.QuadPart = offset;
    if (Calls::MustFail() || !SetFilePointerEx(file, distance, &reached, origin)) return false;
    position = reached.QuadPart;
    return true;
}

inline bool Size(HANDLE file, long long& bytes) {
    LARGE_INTEGER size;
    if (Calls::MustFail() || !GetFileSizeEx(file, &size)) return false;
    bytes = size.QuadPart;
    return true;
}

/// True when the last call failed because of a file that is deleted and still open somewhere: its name is
/// taken for as long. Its error code alone is that of a refused access.
inline bool WasBeingDeleted() {
    constexpr LONG kDeletePending = static_cast<LONG>(0xC0000056);
    auto* const status = lastStatus.orElse(lastStatusOfSystem);
    return GetLastError() == ERROR_ACCESS_DENIED && status != nullptr && status() == kDeletePending;
}

inline bool Attributes(const wchar_t* path, WIN32_FILE_ATTRIBUTE_DATA& data) {
    return !Calls::MustFail() &&
           getFileAttributes.orElse(GetFileAttributesExW)(path, GetFileExInfoStandard, &data) != 0;
}

/// The attributes of what is open, and its tag if it is a reparse point.
inline bool AttributesAndTag(HANDLE file, FILE_ATTRIBUTE_TAG_INFO& info) {
    return !Calls::MustFail() && getInformation.orElse(GetFileInformationByHandleEx)(
                                     file, FileAttributeTagInfo, &info, sizeof info) != 0;
}

/// Who owns something; it is asked of a handle with the READ_CONTROL right.
class Owner {
  public:
    PSECURITY_DESCRIPTOR descriptor() const noexcept { return const_cast<BYTE*>(bytes_); }
    /// Null for none.
    PSID sid() const noexcept {
        PSID sid = nullptr;
        BOOL isDefault = FALSE;
        return GetSecurityDescriptorOwner(descriptor(), &sid, &isDefault) ? sid : nullptr;
    }
    bool is(PSID other) const noexcept {
        return sid() != nullptr && other != nullptr && EqualSid(sid(), other) != 0;
    }
    static constexpr DWORD kBytes = sizeof(SECURITY_DESCRIPTOR_RELATIVE) + SECURITY_MAX_SID_SIZE;

  private:
    alignas(DWORD) BYTE bytes_[kBytes] = {};
};

inline bool OwnerOf(HANDLE file, Owner& owner) {
    DWORD needed = 0;
    return !Calls::MustFail() &&
           getSecurity.orElse(GetKernelObjectSecurity)(file, OWNER_SECURITY_INFORMATION, owner.descriptor(),
                                                       Owner::kBytes, &needed) != 0;
}

/// By a handle with the WRITE_OWNER right.
inline bool SetOwner(HANDLE file, const Owner& owner) {
    return !Calls::MustFail() && setSecurity.orElse(SetKernelObjectSecurity)(file, OWNER_SECURITY_INFORMATION,
                                                                             owner.descriptor()) != 0;
}

/// Who this process is, or whose it is what it makes.
struct OwnSid {
    PSID sid = nullptr;  ///< the system has it in front of what it means
    BYTE room[SECURITY_MAX_SID_SIZE + sizeof(DWORD)];
};

/// For TokenUser and TokenOwner.
inline bool ReadOwnSid(TOKEN_INFORMATION_CLASS which, OwnSid& own) {
    HANDLE token = nullptr;
    if (Calls::MustFail() || !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    const File held(Opened(token));
    DWORD needed = 0;
    return GetTokenInformation(token, which, &own, sizeof own, &needed) != 0;
}

/// What the file system that something is on can do: FILE_PERSISTENT_ACLS and others.
inline bool VolumeFlags(HANDLE file, DWORD& flags) {
    return !Calls::MustFail() && volumeInformation.orElse(GetVolumeInformationByHandleW)(
                                     file, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) != 0;
}

/// Where what is open is, behind all links; its length, as of those three below.
inline DWORD FinalPath(HANDLE file, wchar_t* path, DWORD units) {
    if (Calls::MustFail()) return 0;
    const DWORD length = GetFinalPathNameByHandleW(file, path, units, VOLUME_NAME_DOS);
    // A volume may have no letter.
    return length != 0 ? length : GetFinalPathNameByHandleW(file, path, units, VOLUME_NAME_GUID);
}

/// Its times stay.
inline bool SetAttributesOf(HANDLE file, DWORD attributes) {
    FILE_BASIC_INFO info = {};
    info.FileAttributes = attributes;
    return !Calls::MustFail() && SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info) != 0;
}

inline bool SetAttributes(const wchar_t* path, DWORD attributes) {
    return !Calls::MustFail() && SetFileAttributesW(path, attributes) != 0;
}

inline bool CreationTime(HANDLE file, FILETIME& time) {
    return !Calls::MustFail() && GetFileTime(file, &time, nullptr, nullptr) != 0;
}

/// Both, because some systems have one time for the two.
inline bool SetCreationTime(HANDLE file, const FILETIME& time) {
    return !Calls::MustFail() && SetFileTime(file, &time, nullptr, &time) != 0;
}

inline bool SetWriteTime(HANDLE file, const FILETIME& time) {
    return !Calls::MustFail() && SetFileTime(file, nullptr, nullptr, &time) != 0;
}

inline bool Remove(const wchar_t* path) {
    return !Calls::MustFail() && deleteFile.orElse(DeleteFileW)(path) != 0;
}

/// Removes the very file that a handle stands for; it needs the DELETE right. Windows 10 frees the name when
/// this handle is closed, others when the last one is.
inline bool RemoveOnClose(HANDLE file) {
    if (Calls::MustFail()) return false;
    // FileDispositionInfoEx with its flags for deletion and for the name, which our headers keep to
    // Windows 10.
    constexpr auto kDispositionEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
    DWORD flags = 0x1 | 0x2;
    const auto set = setInformation.orElse(SetFileInformationByHandle);
    if (set(file, kDispositionEx, &flags, sizeof flags)) return true;
    FILE_DISPOSITION_INFO disposition;
    disposition.DeleteFile = TRUE;
    return set(file, FileDispositionInfo, &disposition, sizeof disposition) != 0;
}

inline bool RemoveEmptyDirectory(const wchar_t* path) {
    return !Calls::MustFail() && removeDirectory.orElse(RemoveDirectoryW)(path) != 0;
}

inline bool MakeDirectory(const wchar_t* path) {
    return !Calls::MustFail() && CreateDirectoryW(path, nullptr) != 0;
}

inline bool Copy(const wchar_t* from, const wchar_t* to, bool overwrite) {
    return !Calls::MustFail() && copyFile.orElse(CopyFileW)(from, to, overwrite ? FALSE : TRUE) != 0;
}

inline bool Move(const wchar_t* from, const wchar_t* to, DWORD flags) {
    return !Calls::MustFail() && moveFile.orElse(MoveFileExW)(from, to, flags) != 0;
}

/// The file gets the name and the rights of the target, which gets the name of the backup.
inline bool Replace(const wchar_t* target, const wchar_t* file, const wchar_t* backup) {
    return !Calls::MustFail() &&
           replaceFile.orElse(ReplaceFileW)(target, file, backup, 0, nullptr, nullptr) != 0;
}

inline Search FindFirst(const wchar_t* pattern, WIN32_FIND_DATAW& entry) {
    if (Calls::MustFail()) return Search();
    // Without short names and with a large buffer: fewer calls below.
    return Search(Opened(findFirst.orElse(FindFirstFileExW)(
        pattern, FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH)));
}

inline bool FindNext(HANDLE search, WIN32_FIND_DATAW& entry) {
    return !Calls::MustFail() && FindNextFileW(search, &entry) != 0;
}

// Three that fill "path", which has room for "units", or say how many they need.

inline DWORD ShortPath(const wchar_t* of, DWORD units, wchar_t* path) {
    return Calls::MustFail() ? 0 : GetShortPathNameW(of, path, units);
}

inline DWORD CurrentDirectory(DWORD units, wchar_t* path) {
    return Calls::MustFail() ? 0 : GetCurrentDirectoryW(units, path);
}

/// The system's own services have a directory of their own, where Windows has one for them: in the other any user
/// may make what they will find.
inline DWORD TempPath(DWORD units, wchar_t* path) {
    if (Calls::MustFail()) return 0;
    const auto ofToday = osmodules::Found<decltype(GetTempPathW)>(L"kernel32.dll", "GetTempPath2W");
    return (ofToday != nullptr ? ofToday : GetTempPathW)(units, path);
}

inline bool SetCurrentDirectory(const wchar_t* path) {
    return !Calls::MustFail() && SetCurrentDirectoryW(path) != 0;
}

/// DRIVE_NO_ROOT_DIR or less when there is none.
inline UINT DriveType(const wchar_t* root) {
    return Calls::MustFail() ? DRIVE_UNKNOWN : GetDriveTypeW(root);
}

/// Bytes: what this user may still use, all, what is free.
inline bool DiskSpace(const wchar_t* directory, ULARGE_INTEGER& mine, ULARGE_INTEGER& all,
                      ULARGE_INTEGER& unused) {
    return !Calls::MustFail() && GetDiskFreeSpaceExW(directory, &mine, &all, &unused) != 0;
}

inline File MapFile(HANDLE file) {
    if (Calls::MustFail()) return File();
    return File(Opened(CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr)));
}

inline void* View(HANDLE mapping, DWORD access = FILE_MAP_READ) {
    void* const view = Calls::MustFail() ? nullptr : MapViewOfFile(mapping, access, 0, 0, 0);
    if (view != nullptr) Calls::Opened();
    return view;
}

inline void CloseView(const void* view) noexcept {
    UnmapViewOfFile(view);
    Calls::Closed();
}

/// Memory that processes share by a name, for as long as one of them has it open.
inline File NewMemory(const wchar_t* name, DWORD bytes, SECURITY_ATTRIBUTES* security) {
    if (Calls::MustFail()) return File();
    return File(Opened(CreateFileMappingW(INVALID_HANDLE_VALUE, security, PAGE_READWRITE, 0, bytes, name)));
}

inline File OpenMemory(const wchar_t* name) {
    if (Calls::MustFail()) return File();
    return File(Opened(OpenFileMappingW(FILE_MAP_READ, FALSE, name)));
}

/// A mutex that nobody owns. "isNew" says whether this is the first handle of that name.
inline File NewMutex(const wchar_t* name, bool& isNew) {
    if (Calls::MustFail()) return File();
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, name);
    isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    return File(Opened(mutex));
}

/// An event that stays set until it is reset.
inline File NewEvent() {
    if (Calls::MustFail()) return File();
    return File(Opened(CreateEventW(nullptr, TRUE, FALSE, nullptr)));
}

/// Asks for changes of a directory; the request's event is set when there are some.
inline bool RequestChanges(HANDLE directory, void* buffer, DWORD bytes, bool subtree, DWORD filter,
                           OVERLAPPED& request) {
    return !Calls::MustFail() &&
           readChanges.orElse(ReadDirectoryChangesW)(directory, buffer, bytes, subtree, filter, nullptr,
                                                     &request, nullptr) != 0;
}

/// Ends a request that may be under way, and waits for its end.
inline void CancelRequest(HANDLE directory, OVERLAPPED& request) noexcept {
    DWORD bytes = 0;
    CancelIoEx(directory, &request);
    GetOverlappedResult(directory, &request, &bytes, TRUE);
}

/// Waits for one of these; WAIT_FAILED on a failure.
inline DWORD WaitForOne(const HANDLE* events, DWORD count, DWORD milliseconds) {
    return Calls::MustFail() ? WAIT_FAILED : WaitForMultipleObjects(count, events, FALSE, milliseconds);
}

/// What became of a request that is complete.
inline bool RequestedChanges(HANDLE directory, OVERLAPPED& request, DWORD& bytes) {
    return !Calls::MustFail() && GetOverlappedResult(directory, &request, &bytes, FALSE) != 0;
}

}  // namespace TarnLibA500::osfiles
