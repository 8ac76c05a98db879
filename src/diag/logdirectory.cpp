#include "diag/logdirectory.h"

#include "system/systemtext.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/registry.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kSettingsRoot = "SOFTWARE\\velmora\\Logging";
constexpr const char* kDirectoryInTemp = "velmora\\logging";

SAnsiString TempDirectory() {
    wchar_t path[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, path);
    return length == 0 || length > MAX_PATH ? SAnsiString(".") : FromSystem(path);
}

bool IsDirectory(const SWCharString& path) {
    const DWORD attributes = GetFileAttributesW(path.getString());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

SAnsiString DefaultLogDirectory() {
    const SAnsiString configured =
        Registry(kSettingsRoot, "Logging", HKEY_LOCAL_MACHINE, false).ReadValue("loggingPath");
    return configured.isEmpty() ? MakePath(TempDirectory(), kDirectoryInTemp) : configured;
}

bool MakeLogDirectory(const SAnsiString& directory) {
    const SWCharString path = ToSystem(directory);
    if (path.isEmpty()) return false;
    if (IsDirectory(path) || CreateDirectoryW(path.getString(), nullptr)) return true;
    const SAnsiString parent = GetParentLevelDir(UnifyAllSlashes(directory), '\\');
    if (parent.isEmpty() || parent == directory || !MakeLogDirectory(parent)) return false;
    return CreateDirectoryW(path.getString(), nullptr) != 0 ||
           IsDirectory(path);  // or another process was faster
}

SAnsiString LogDirectoryFailure(const SAnsiString& directory) {
    return "The internal logger count not create the required directories\n"
           "The specified path is not accessible or does not exist: " +
           directory;
}

}  // namespace TarnLibA500
