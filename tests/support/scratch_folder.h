#pragma once

#include <filesystem>
#include <string>

#include <windows.h>

namespace tarntest {

/// An empty folder for a test of this process; several test programs may run at once.
inline std::filesystem::path MakeScratchFolder(const std::string& name) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         ("tarnlib-" + name + "-" + std::to_string(GetCurrentProcessId()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

}  // namespace tarntest
