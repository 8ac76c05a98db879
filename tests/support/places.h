#pragma once

#include <cstdlib>
#include <filesystem>

namespace tarntest {

/// Where something that the tests need is: beside the program, where a package of the tests has it, or otherwise where the
/// build has it.
inline std::filesystem::path Beside(const char* name, const char* inBuild = "") {
    const std::filesystem::path beside = std::filesystem::path(_pgmptr).parent_path() / name;
    return std::filesystem::exists(beside) ? beside : std::filesystem::path(inBuild);
}

}  // namespace tarntest
