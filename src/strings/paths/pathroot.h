#pragma once

#include "strings/words/characterset.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

constexpr const char* kSlashes = "/\\";
constexpr std::uint32_t kDriveBytes = 2;

/// For the first byte of a character only: a trail byte may look like a slash.
inline bool IsSlash(char byte) {
    return byte == '/' || byte == '\\';
}

/// True when the path begins with one character and a colon.
inline bool HasDrive(const SAnsiString& path) {
    const char* const text = path.getString();
    return path.getLength() >= kDriveBytes && !IsSlash(text[0]) && text[1] == ':';
}

}  // namespace TarnLibA500
