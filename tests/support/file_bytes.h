#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "support/scratch_folder.h"
#include "tarnlib/sfileexception.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/sstring.h"

/// Files of tests, written and read by the C++ library, so that the library under test does not judge itself.
namespace tarntest {

inline void WriteBytes(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

inline std::string ReadBytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

inline TarnLibA500::SAnsiString Text(const std::filesystem::path& path) {
    return path.string().c_str();
}

/// What an action throws: "stage detail number" of a file, "code reason" of the file system, or nothing.
template <class Action>
std::string Failure(Action action) {
    try {
        action();
    } catch (const TarnLibA500::SFileException& e) {
        return std::to_string(e.ErrCode()) + " " + std::to_string(e.DetailCode()) + " " +
               std::to_string(e.getErrno());
    } catch (const TarnLibA500::SFileSysException& e) {
        return std::to_string(e.ErrCode()) + " " + std::to_string(e.ErrReason());
    }
    return "";
}

inline std::string Bytes(const TarnLibA500::SAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

}  // namespace tarntest
