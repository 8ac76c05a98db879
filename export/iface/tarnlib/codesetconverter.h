#pragma once

#include <cstdint>

#include "tarnlib/tarnapi.h"

/// Text of the process's multi-byte code page (the C locale's, or UTF-8: snarrowtext.h) and UCS-2, the 16-bit
/// wchar_t, into each other.
///
/// In UTF-8 a character beyond U+FFFF is two units, a surrogate pair; functions for one unit have none for it.
/// Sources are zero-terminated. Counts of wide text are code units, of code-page text bytes. What does not
/// convert becomes "?"; a near likeness that the system offers counts as converted. Null outputs ask for the
/// room that is needed. The code page is asked for at each call: where another thread may set the locale, the
/// room that one call tells may be too small for the next, and what is written then ends there. All members
/// are static and may be called from any thread.
///
///     wchar_t wide[80];
///     int units = CodesetConverter::mbstoucs2(wide, text, 80);
///     char bytes[16];
///     int used = CodesetConverter::ucs2tombs(bytes, L"caf\x00E9", 16);
namespace TarnLibA500 {

/// Conversions between the process's code page and UCS-2; all members are static.
class TARN_API CodesetConverter {
  public:
    /// At most "maxUnits" units; terminated when there is room. An invalid byte becomes "?". Returns the units
    /// without the terminator; with a null output, the units that the input becomes: one a character, two beyond
    /// U+FFFF. A pair that does not fit ends the text before it.
    static int mbstoucs2(wchar_t* out, const char* in, std::uint32_t maxUnits);
    /// One character. Returns its bytes, 0 for the terminator, -1 when it is invalid or takes two units.
    static int mbtoucs2(wchar_t* out, const char* in);
    /// At most "nBytes" bytes; terminated when there is room. When a character does not fit any more, the
    /// rest is filled with "?" and the conversion ends. Returns the bytes without the terminator; with a null
    /// output, those needed.
    static int ucs2tombs(char* out, const wchar_t* in, std::uint32_t nBytes);
    /// One unit. Returns its bytes, or -1 when it does not exist in the code page, is half a surrogate pair, or
    /// does not fit.
    static int ucs2tomb(char* out, std::uint32_t nBytes, wchar_t in);

    /// One unit, for UCS-2 and wchar_t are the same here; the result is 1.
    static int ucs2towc(wchar_t* out, wchar_t in);
    /// The same.
    static int wctoucs2(wchar_t* out, wchar_t in);
    /// Copies at most "maxUnits" units; terminated when there is room. Returns the units copied, or, with a
    /// null output, those needed.
    static int ucs2towcs(wchar_t* out, const wchar_t* in, std::uint32_t maxUnits);
    /// The same.
    static int wcstoucs2(wchar_t* out, const wchar_t* in, std::uint32_t maxUnits);
};

}  // namespace TarnLibA500
