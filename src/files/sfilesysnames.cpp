#include "diag/assert/require.h"
#include "files/filesysfailure.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "oscodes/oscodes.h"
#include "strings/text/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/sstringconv.h"

#include <new>

// Names for files that nobody has yet.
namespace TarnLibA500 {
namespace {

using Exception = SFileSysException;

constexpr const char* kUnit = "sfilesys";
constexpr const char* kTempOperation = "getTempFilename";
constexpr DWORD kUsualTempChars = 256;
constexpr int kAttempts = 10'000;
constexpr std::uint32_t kDigits = 8;

// COM4 stands here twice, as it always did; the list is known by its length.
constexpr const char* kDevices[] = {"CON.",  "PRN.",  "AUX.",  "NUL.",  "COM1.", "COM2.", "COM3.", "COM4.",
                                    "COM4.", "COM5.", "COM6.", "COM7.", "COM8.", "COM9.", "LPT1.", "LPT2.",
                                    "LPT3.", "LPT4.", "LPT5.", "LPT6.", "LPT7.", "LPT8.", "LPT9.", "CLOCK$."};
static_assert(std::size(kDevices) == 24);

bool BeginsWithDevice(const SAnsiString& name) {
    for (const char* device : kDevices) {
        const auto length = static_cast<std::uint32_t>(std::char_traits<char>::length(device));
        if (name.getNChars() >= length && name.left(length).compareNoCase(device) == 0) return true;
    }
    return false;
}

bool RemoveDeviceName(SAnsiString& name) {
    if (!BeginsWithDevice(name)) return false;
    name.setAt(name.getCharIndex(name.find('.')), 'x');
    return true;
}

SAnsiString UniqueDigits() {
    const SAnsiString digits = SStringConv::ToString(NextUniqueNumber(), 16);
    SAnsiString padded;
    for (std::uint32_t i = digits.getLength(); i < kDigits; ++i) padded.concat('0');
    return padded.concat(digits);
}

[[noreturn]] void ThrowNoTempDirectory(Exception::ErrorCodes code, Exception::ErrorReasons reason,
                                       const SAnsiString& reasonText) {
    ThrowTraced(SFileSysException(code, reason, reasonText, SAnsiString(), SAnsiString(), kTempOperation));
}

// In the code page; by its short name when that does not have every character of the directory.
SAnsiString TempDirectoryText(const wchar_t* directory) {
    SAnsiString text;
    wchar_t shortName[MAX_PATH];
    if (FromSystemExactly(directory, text)) return text;
    const DWORD length = osfiles::ShortPath(directory, MAX_PATH, shortName);
    SAnsiString shortText;
    return length != 0 && length < MAX_PATH && FromSystemExactly(shortName, shortText) ? shortText : text;
}

SAnsiString LongTempDirectory(DWORD length) try {
    StringBuilder<wchar_t, 1> room(length);
    const DWORD second = osfiles::TempPath(length, room.units());
    if (second == 0 || second >= length)
        ThrowNoTempDirectory(Exception::fsUniqueNameFailed, Exception::reasonTempDir,
                             "the directory for temporary files changes its length");
    return TempDirectoryText(room.units());
} catch (const std::bad_alloc&) {
    Require(false, kUnit, "tempDir");
    ThrowNoTempDirectory(Exception::fsOutOfMemory, Exception::reasonTempDir, SAnsiString());
}

// Makes the file or the directory, or looks whether the name is free.
bool Take(const SWCharString& path, bool create, bool isDirectory) {
    if (!create) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!osfiles::Attributes(path.getString(), data)) return GetLastError() == ERROR_FILE_NOT_FOUND;
        SetLastError(ERROR_FILE_EXISTS);
        return false;
    }
    if (isDirectory) return osfiles::MakeDirectory(path.getString());
    return static_cast<bool>(
        osfiles::Open(path.getString(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL));
}

// A directory at the name of a new file is "access denied".
bool IsTaken(const SWCharString& path, DWORD error) {
    if (oscodes::IsTaken(error) || osfiles::WasBeingDeleted()) return true;
    WIN32_FILE_ATTRIBUTE_DATA data;
    return error == ERROR_ACCESS_DENIED && osfiles::Attributes(path.getString(), data);
}

}  // namespace

bool SFileSys::checkAndRemoveReservedDeviceName(SAnsiString& name) {
    return RemoveDeviceName(name);
}

SAnsiString SFileSys::getTempDirname() {
    wchar_t usual[kUsualTempChars];
    const DWORD length = osfiles::TempPath(kUsualTempChars, usual);
    if (length == 0) {
        const DWORD error = GetLastError();
        ThrowNoTempDirectory(Exception::fsUniqueNameFailed, FileSysFailure::reasonOf(error),
                             SFileException::GetSystemMessage(error));
    }
    if (Require(length <= kUsualTempChars, kUnit, "Length of temp dir returned is bigger than _MAX_DIR"))
        return TempDirectoryText(usual);
    return LongTempDirectory(length);
}

SAnsiString SFileSys::getTempFilename(const SAnsiString& prefix) {
    return getUniqueFilename(getTempDirname(), prefix, SAnsiString(), true, SFile::defaultPermissions);
}

SAnsiString SFileSys::getUniqueFilename(const SAnsiString& directory, const SAnsiString& prefix,
                                        const SAnsiString& suffix, bool create, int permissions) {
    return getUniqueFilenameHelper(directory, prefix, suffix, create, permissions, false);
}

SAnsiString SFileSys::getUniqueDirname(const SAnsiString& directory, const SAnsiString& prefix, bool create,
                                       int permissions) {
    return getUniqueFilenameHelper(directory, prefix, SAnsiString(), create, permissions, true);
}

SAnsiString SFileSys::getUniqueFilenameHelper(const SAnsiString& directory, const SAnsiString& prefix,
                                              const SAnsiString& suffix, bool create, int /*permissions*/,
                                              bool isDirectory) {
    return TakeUniquePath(directory, prefix, suffix, create, isDirectory).path;
}

UniquePath TakeUniquePath(const SAnsiString& directory, const SAnsiString& prefix, const SAnsiString& suffix,
                          bool create, bool isDirectory) {
    DWORD error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        SAnsiString name = prefix + UniqueDigits() + suffix;
        RemoveDeviceName(name);
        UniquePath unique{JoinPath(directory, name), SWCharString()};
        unique.systemPath = LongSystemPath(unique.path, isDirectory ? kShortDirectoryEnd : kShortPathEnd);
        if (Take(unique.systemPath, create, isDirectory)) return unique;
        error = GetLastError();
        if (!IsTaken(unique.systemPath, error)) break;
    }
    ThrowFileSys(Exception::fsUniqueNameFailed, error, directory);
}

}  // namespace TarnLibA500
