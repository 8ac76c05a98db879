#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

/// Texts with their escapes undone: "+" is a space, "%XX" a byte (in a wide text the unit of that number),
/// "%uXXXX" the character of that UTF-16 unit. A "%" that begins neither is kept and called a fault.
namespace TarnLibA500 {

/// The first "+" or "%"; the end when there is none.
const char* FindEscape(const char* at, const char* end) noexcept;
const wchar_t* FindEscape(const wchar_t* at, const wchar_t* end) noexcept;

/// The decoded text; the first fault is reported by assertion. Halves of a surrogate pair that follow each other
/// as "%uXXXX" are one character; a lone half is U+FFFD in UTF-8. One allocation.
SAnsiString DecodeLeniently(const char* at, const char* end);
SWCharString DecodeLeniently(const wchar_t* at, const wchar_t* end);
/// False, and the output as it was, when there is a fault.
bool DecodeStrictly(const char* at, const char* end, SAnsiString& out);

/// The first "%uXXXX" of a text; the end when there is none.
const char* FindUnitEscape(const char* at, const char* end) noexcept;
/// The first place that is no "%uXXXX".
const char* SkipUnitEscapes(const char* at, const char* end) noexcept;

}  // namespace TarnLibA500
