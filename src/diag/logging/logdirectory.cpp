#include "diag/logging/logdirectory.h"

#include "files/systempath.h"
#include "tarnlib/registry.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kSettingsRoot = "SOFTWARE\\velmora\\Logging";
constexpr const char* kDirectoryInTemp = "velmora\\logging";

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

bool MakeLogDirectory(const SAnsiString& directory) try {
    SFileSys::makeDirectories(directory, SFile::defaultPermissions);
    return true;
} catch (const SFileSysException&) {
    return false;
}

SAnsiString LogDirectoryFailure(const SAnsiString& directory) {
    return "The internal logger count not create the required directories\n"
           "The specified path is not accessible or does not exist: " +
           directory;
}

}  // namespace TarnLibA500
