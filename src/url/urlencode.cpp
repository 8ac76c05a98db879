#include "url/urlencode.h"

#include <algorithm>
#include <cstring>

#include "diag/assert/require.h"
#include "strings/text/stringbuilder.h"

namespace TarnLibA500 {
namespace {

constexpr std::uint32_t kUnitForm = 6;  // %uXXXX
constexpr unsigned kHexDigitBits = 4;
constexpr unsigned kUnitBits = 16;

unsigned char Byte(char c) {
    return static_cast<unsigned char>(c);
}

bool IsByte(wchar_t unit) {
    return unit < EscapeTable::kBytes;
}

std::uint64_t EscapedLength(const EscapeTable& table, const SWCharString& text) {
    std::uint64_t length = 0;
    for (const wchar_t *at = text.getString(), *const end = at + text.getLength(); at < end; ++at)
        length += IsByte(*at) ? table.length[*at] : kUnitForm;
    return length;
}

template <class unit>
unit* WriteEscapedUnit(const EscapeTable& table, wchar_t value, unit* out) {
    if (IsByte(value)) return std::copy_n(table.form[value], table.length[value], out);
    *out++ = '%';
    *out++ = 'u';
    for (unsigned shift = kUnitBits; shift != 0; shift -= kHexDigitBits)
        *out++ = static_cast<unit>(kUpperHexDigits[value >> (shift - kHexDigitBits) & 15]);
    return out;
}

template <class String, class unit>
String EscapeWide(const EscapeTable& table, const SWCharString& text) {
    if (text.isEmpty()) return String();
    StringBuilder<unit, 1> escaped(StringUnits(EscapedLength(table, text)));
    unit* out = escaped.units();
    for (const wchar_t *at = text.getString(), *const end = at + text.getLength(); at < end; ++at)
        out = WriteEscapedUnit(table, *at, out);
    Require(out == escaped.units() + escaped.room(), "nvpairs", "Error: wrong URLEncode");
    return escaped;
}

// What precedes the first escaped byte is copied in one piece; the place is between "from" and "to".
SAnsiString EscapeFrom(const EscapeTable& table, const char* from, const char* to, const char* end) {
    const auto plain = static_cast<std::uint32_t>(to - from);
    const std::uint32_t length = StringUnits(plain + EscapedLength(table, to, end) + kEscapeSlack);
    StringBuilder<char, 0> escaped(length);
    std::memcpy(escaped.units(), from, plain);
    char* const out = WriteEscaped(table, to, end, escaped.units() + plain);
    Require(out + kEscapeSlack == escaped.units() + length, "nvpairs", "Error: wrong URLEncode");
    escaped.cut(length - kEscapeSlack);
    return escaped;
}

}  // namespace

const char* FindEscaped(const EscapeTable& table, const char* at, const char* end) noexcept {
    while (at < end && !table.isEscaped[Byte(*at)]) ++at;
    return at;
}

std::uint64_t EscapedLength(const EscapeTable& table, const char* at, const char* end) noexcept {
    std::uint64_t length = 0;
    for (; at < end; ++at) length += table.length[Byte(*at)];
    return length;
}

// The whole entry is copied, whatever its length: four bytes in one go, and no branch.
char* WriteEscaped(const EscapeTable& table, const char* at, const char* end, char* out) noexcept {
    for (; at < end; ++at) {
        std::memcpy(out, table.form[Byte(*at)], sizeof table.form[0]);
        out += table.length[Byte(*at)];
    }
    return out;
}

SAnsiString EscapeText(const EscapeTable& table, const SAnsiString& text) {
    const char* const begin = text.getString();
    const char* const end = begin + text.getLength();
    const char* const first = FindEscaped(table, begin, end);
    return first != end ? EscapeFrom(table, begin, first, end) : text;
}

SAnsiString EscapeBytes(const EscapeTable& table, const char* at, const char* end) {
    return EscapeFrom(table, at, at, end);
}

bool IsPlain(const EscapeTable& table, const SWCharString& text) noexcept {
    const wchar_t* const begin = text.getString();
    return std::none_of(begin, begin + text.getLength(),
                        [&](wchar_t unit) { return !IsByte(unit) || table.isEscaped[unit]; });
}

SAsciiString EscapeToAscii(const EscapeTable& table, const SWCharString& text) {
    return EscapeWide<SAsciiString, char>(table, text);
}

SWCharString EscapeToWide(const EscapeTable& table, const SWCharString& text) {
    return EscapeWide<SWCharString, wchar_t>(table, text);
}

}  // namespace TarnLibA500
