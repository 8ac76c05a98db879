#pragma once

#include "seam/seam.h"

#include <windows.h>

/// The one way to the system's code pages and to its texts for error codes.
///
/// With UTF-8 the system takes no default character, does not tell whether one was used, and knows no flag but the
/// one that refuses what is no character: whoever asks for more gets nothing at all. The ANSI code page is UTF-8
/// where the system or the program is set up so. Wine takes everything, so builds for tests refuse in its place.
namespace ostext {

inline constinit seam::Replaceable<decltype(GetACP)> ansiPage;
inline constinit seam::Replaceable<decltype(FormatMessageW)> formatMessage;

/// The number of the process's ANSI code page.
inline UINT AnsiPage() noexcept {
    return ansiPage.orElse(GetACP)();
}

#ifdef TARN_TEST_SEAMS
/// Whether the system would refuse such a call, whose error is set then. CP_ACP becomes the page it stands for.
inline bool Refuses(UINT& page, DWORD flags, DWORD takenFlags, bool asksForDefault) noexcept {
    if (page == CP_ACP) page = AnsiPage();
    if (page != CP_UTF8) return false;
    const bool isFlagUnknown = (flags & ~takenFlags) != 0;
    if (isFlagUnknown || asksForDefault)
        SetLastError(isFlagUnknown ? ERROR_INVALID_FLAGS : ERROR_INVALID_PARAMETER);
    return isFlagUnknown || asksForDefault;
}
#endif

/// As MultiByteToWideChar.
inline int ToWide(UINT page, DWORD flags, const char* text, int bytes, wchar_t* out, int units) noexcept {
#ifdef TARN_TEST_SEAMS
    if (Refuses(page, flags, MB_ERR_INVALID_CHARS, false)) return 0;
#endif
    return MultiByteToWideChar(page, flags, text, bytes, out, units);
}

/// As WideCharToMultiByte.
inline int FromWide(UINT page, DWORD flags, const wchar_t* text, int units, char* out, int bytes,
                    const char* replacement = nullptr, BOOL* isReplaced = nullptr) noexcept {
#ifdef TARN_TEST_SEAMS
    const bool asksForDefault = replacement != nullptr || isReplaced != nullptr;
    if (Refuses(page, flags, WC_ERR_INVALID_CHARS, asksForDefault)) return 0;
#endif
    return WideCharToMultiByte(page, flags, text, units, out, bytes, replacement, isReplaced);
}

/// The system's text for an error code in a language, 0 for the one that the system prefers. Its units without the
/// terminator; 0 when there is none.
inline DWORD ErrorText(DWORD code, DWORD language, wchar_t* out, DWORD units) noexcept {
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    return formatMessage.orElse(FormatMessageW)(kFlags, nullptr, code, language, out, units, nullptr);
}

}  // namespace ostext
