#pragma once

#include <cstdint>

#include "strings/base/memory.h"
#include "tarnlib/sstring.h"
#include "url/escapetable.h"

/// Texts with their bytes, or UTF-16 units, escaped as a table says.
namespace TarnLibA500 {

/// Room that WriteEscaped wants beyond what it writes.
inline constexpr std::uint32_t kEscapeSlack = EscapeTable::kMaxForm;

/// The first byte that is escaped; the end when there is none.
const char* FindEscaped(const EscapeTable& table, const char* at, const char* end) noexcept;
/// The bytes that a text takes when it is escaped.
std::uint64_t EscapedLength(const EscapeTable& table, const char* at, const char* end) noexcept;
inline std::uint64_t EscapedLength(const EscapeTable& table, const SAnsiString& text) noexcept {
    return EscapedLength(table, text.getString(), text.getString() + text.getLength());
}
/// Writes the escaped text and returns the place behind it.
char* WriteEscaped(const EscapeTable& table, const char* at, const char* end, char* out) noexcept;
inline char* WriteEscaped(const EscapeTable& table, const SAnsiString& text, char* out) noexcept {
    return WriteEscaped(table, text.getString(), text.getString() + text.getLength(), out);
}

/// The escaped text; the text itself, shared, when nothing in it is escaped.
SAnsiString EscapeText(const EscapeTable& table, const SAnsiString& text);
/// The escaped bytes as text.
SAnsiString EscapeBytes(const EscapeTable& table, const char* at, const char* end);

/// True when nothing in the text is escaped.
bool IsPlain(const EscapeTable& table, const SWCharString& text) noexcept;
/// The units of a text escaped: units below 256 as the table says, all others as "%uXXXX".
SAsciiString EscapeToAscii(const EscapeTable& table, const SWCharString& text);
SWCharString EscapeToWide(const EscapeTable& table, const SWCharString& text);

/// A length that was summed up in 64 bits as strings have it; throws BadAllocation when none is so long.
inline std::uint32_t StringUnits(std::uint64_t units) {
    return static_cast<std::uint32_t>(memory::CheckedSize(units));
}

}  // namespace TarnLibA500
