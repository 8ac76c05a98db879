#include "tarnlib/schar.h"

#include <cstring>
#include <cwctype>
#include <type_traits>

#include "strings/characters/mbchar.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr wchar_t kAsciiEnd = 0x80;
constexpr wchar_t kTwoByteEnd = 0x800;  // from here on UTF-8 takes three bytes

bool IsAscii(wchar_t code) {
    return code < kAsciiEnd;
}

std::uint32_t UnitsAtStart(const char* text, std::integral_constant<int, 0>) {
    return CodePage::Current().step(text);
}
template <class unit>
std::uint32_t UnitsAtStart(const unit* text, std::integral_constant<int, 1>) {
    return *text != unit() ? 1 : 0;
}

// The UTF-16 unit of a character; false, and 0, when it has none. Both at once: the process may set another
// code page between two questions.
bool ToCode(const SChar_t<char, 0>& character, wchar_t& code) {
    code = L'\0';
    const int bytes = CodePage::Current().toWide(code, character.getUnits());
    return bytes > 0 && static_cast<std::uint32_t>(bytes) == character.getLength();
}
bool ToCode(const SChar_t<char, 1>& character, wchar_t& code) {
    code = static_cast<unsigned char>(*character.getUnits());
    return character.getLength() != 0 && IsAscii(code);
}
bool ToCode(const SChar_t<wchar_t, 1>& character, wchar_t& code) {
    code = *character.getUnits();
    return character.getLength() != 0;
}

// The code units of a UTF-16 unit's character, written where they belong; -1 when the flavour has none.
int FromCode(wchar_t code, char* units, std::integral_constant<int, 0>) {
    return CodePage::Current().fromWide(units, code);
}
int FromCode(wchar_t code, char* units, std::integral_constant<int, 1>) {
    *units = static_cast<char>(code);
    return IsAscii(code) ? 1 : -1;
}
int FromCode(wchar_t code, wchar_t* units, std::integral_constant<int, 1>) {
    *units = code;
    return 1;
}

// The bytes of a UTF-16 unit in the process's code page; 0 when it has none there.
std::uint32_t MBCSFromCode(wchar_t code, char (&bytes)[mbchar::kMaxCharacterBytes]) {
    const int count = CodePage::Current().fromWide(bytes, code);
    return count > 0 ? static_cast<std::uint32_t>(count) : 0;
}

template <class unit>
int Write(unit* out, std::uint32_t nBytesInBuffer, const unit* units, std::uint32_t count) {
    if (out == nullptr || count * sizeof(unit) > nBytesInBuffer) return -1;
    std::memcpy(out, units, count * sizeof(unit));
    return static_cast<int>(count);
}

}  // namespace

template <class unit, int flavour>
SChar_t<unit, flavour>::SChar_t(const unit* oneChar) {
    if (oneChar == nullptr) return;
    data_.length = UnitsAtStart(oneChar, std::integral_constant<int, flavour>());
    std::memcpy(data_.units, oneChar, data_.length * sizeof(unit));
}

template <class unit, int flavour>
wchar_t SChar_t<unit, flavour>::toUChar() const {
    wchar_t code = 0;
    return ToCode(*this, code) ? code : L'\0';
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::fromUChar(wchar_t code) {
    CharData found;
    const int count = FromCode(code, found.units, std::integral_constant<int, flavour>());
    if (count < 0) return false;
    found.length = code != L'\0' ? static_cast<std::uint32_t>(count) : 0;
    data_ = found;
    return true;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isUnicode() const {
    wchar_t code = 0;
    return ToCode(*this, code);
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isAlpha() const {
    return std::iswalpha(toUChar()) != 0;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isDigit() const {
    return std::iswdigit(toUChar()) != 0;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isLower() const {
    return std::iswlower(toUChar()) != 0;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isUpper() const {
    return is_upper(toUChar());
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isBlank() const {
    const wchar_t code = toUChar();
    return code == L' ' || code == L'\t';
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isWhiteSpace() const {
    return is_space(toUChar());
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isAsciiChar() const {
    wchar_t code = 0;
    return ToCode(*this, code) && IsAscii(code);
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isMBCSChar() const {
    return getNBytesForMBCS() != 0;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isOCAChar() const {
    return isUnicode();
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isWideChar() const {
    return isUnicode();
}

template <class unit, int flavour>
SChar_t<unit, flavour> SChar_t<unit, flavour>::toLower() const {
    SChar_t mapped(*this);
    wchar_t code = 0;
    if (ToCode(*this, code)) mapped.fromUChar(static_cast<wchar_t>(std::towlower(code)));
    return mapped;
}

template <class unit, int flavour>
SChar_t<unit, flavour> SChar_t<unit, flavour>::toUpper() const {
    SChar_t mapped(*this);
    wchar_t code = 0;
    if (ToCode(*this, code)) mapped.fromUChar(static_cast<wchar_t>(std::towupper(code)));
    return mapped;
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toAsciiChar(char* out, std::uint32_t nBytesInBuffer) const {
    wchar_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    if (!ToCode(*this, code) || !IsAscii(code)) return -1;
    const char byte = static_cast<char>(code);
    return Write(out, nBytesInBuffer, &byte, 1);
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toMBCSChar(char* out, std::uint32_t nBytesInBuffer) const {
    wchar_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    char bytes[mbchar::kMaxCharacterBytes];
    const std::uint32_t count = ToCode(*this, code) ? MBCSFromCode(code, bytes) : 0;
    return count != 0 ? Write(out, nBytesInBuffer, bytes, count) : -1;
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toOCAChar(wchar_t* out, std::uint32_t nBytesInBuffer) const {
    wchar_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    return ToCode(*this, code) ? Write(out, nBytesInBuffer, &code, 1) : -1;
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toWideChar(wchar_t* out, std::uint32_t nBytesInBuffer) const {
    return toOCAChar(out, nBytesInBuffer);
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForAscii() const {
    return isAsciiChar() ? 1 : 0;
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForMBCS() const {
    wchar_t code = 0;
    char bytes[mbchar::kMaxCharacterBytes];
    return ToCode(*this, code) ? MBCSFromCode(code, bytes) : 0;
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForOCA() const {
    return isUnicode() ? sizeof(wchar_t) : 0;
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForWChar() const {
    return getNBytesForOCA();
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForUChar() const {
    return getNBytesForOCA();
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForUTF8() const {
    wchar_t code = 0;
    if (!ToCode(*this, code)) return 0;
    if (IsAscii(code)) return 1;
    return code < kTwoByteEnd ? 2 : 3;
}

template class SChar_t<char, 0>;
template class SChar_t<char, 1>;
template class SChar_t<wchar_t, 1>;

}  // namespace TarnLibA500
