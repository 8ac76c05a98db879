#pragma once

#include <cstddef>
#include <cstdio>

#include "seam/osconsole.h"
#include "seam/ostext.h"

#include <io.h>
#include <windows.h>

/// Text for the standard streams. A console gets it as UTF-16, which it shows whatever its code page is: that is
/// its user's and stays. A file or a pipe gets the bytes as they are. Header only; needs no memory and never throws.
namespace console {

inline constexpr std::size_t kMostCharacterBytes = 4;

/// How many bytes of a text the character at its start has; what is no character has one or more, too.
inline std::size_t CharacterBytes(const char* text, std::size_t bytes, UINT page) noexcept {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) return 1;
    if (page == CP_ACP) page = ostext::AnsiPage();
    if (page != CP_UTF8) return IsDBCSLeadByteEx(page, first) && bytes > 1 && text[1] != '\0' ? 2 : 1;
    std::size_t count = 1;
    while (count < bytes && count < kMostCharacterBytes && (text[count] & 0xC0) == 0x80) ++count;
    return count;
}

/// The console that a stream of the C runtime leads to; null when it leads elsewhere or nowhere.
inline HANDLE Of(std::FILE* stream) noexcept {
    const int descriptor = _fileno(stream);
    if (descriptor < 0) return nullptr;  // a service has no standard streams
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    return handle != INVALID_HANDLE_VALUE && osconsole::IsConsole(handle) ? handle : nullptr;
}

inline bool WriteUnits(HANDLE console, const wchar_t* text, DWORD units) noexcept {
    while (units != 0) {
        DWORD done = 0;
        if (!osconsole::Write(console, text, units, done) || done == 0) return false;
        text += done;
        units -= done;
    }
    return true;
}

/// Writes text of a code page to a console, in pieces: a console takes only so much at a time. What is no character
/// is shown as the system shows it. False when not all of it was written.
inline bool WriteTo(HANDLE console, const char* text, std::size_t bytes, UINT page) noexcept {
    constexpr std::size_t kPieceBytes = 1024;
    while (bytes != 0) {
        std::size_t piece = 0;
        do {
            piece += CharacterBytes(text + piece, bytes - piece, page);
        } while (piece < bytes && piece < kPieceBytes - kMostCharacterBytes);
        wchar_t units[kPieceBytes];  // no character has more units than bytes
        const int count = ostext::ToWide(page, 0, text, static_cast<int>(piece), units, kPieceBytes);
        if (count <= 0 || !WriteUnits(console, units, static_cast<DWORD>(count))) return false;
        text += piece;
        bytes -= piece;
    }
    return true;
}

/// Writes text to a stream behind what it was given before. False when not all of it was written.
inline bool Write(std::FILE* stream, const char* text, std::size_t bytes, UINT page) noexcept {
    const HANDLE console = Of(stream);
    if (console == nullptr) return std::fwrite(text, 1, bytes, stream) == bytes;
    return std::fflush(stream) == 0 && WriteTo(console, text, bytes, page);
}

}  // namespace console
