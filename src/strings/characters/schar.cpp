#include "tarnlib/schar.h"

#include <cstring>
#include <cwctype>
#include <type_traits>

#include "strings/characters/mbchar.h"
#include "strings/characters/surrogates.h"
#include "strings/characters/unicodecase.h"
#include "strings/characters/utf8form.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr char32_t kAsciiEnd = 0x80;
constexpr char32_t kOneUnitEnd = 0x10000;

bool IsAscii(char32_t code) {
    return code < kAsciiEnd;
}

std::uint32_t UnitsAtStart(const char* text, std::integral_constant<int, 0>) {
    return CodePage::Current().step(text);
}
template <class unit>
std::uint32_t UnitsAtStart(const unit* text, std::integral_constant<int, 1>) {
    return *text != unit() ? 1 : 0;
}

// The code point of a character; false, and 0, when it has none. Both at once: the process may set another
// code page between two questions.
bool ToCode(const SChar_t<char, 0>& character, char32_t& code) {
    const mbchar::Character found = CodePage::Current().characterAt(character.getUnits());
    const bool isWhole = found.bytes != 0 && found.isValid() && found.bytes == character.getLength();
    code = isWhole ? found.code : 0;
    return isWhole;
}
bool ToCode(const SChar_t<char, 1>& character, char32_t& code) {
    code = static_cast<unsigned char>(*character.getUnits());
    return character.getLength() != 0 && IsAscii(code);
}
bool ToCode(const SChar_t<wchar_t, 1>& character, char32_t& code) {
    code = *character.getUnits();
    return character.getLength() != 0;
}

// The code units of a code point's character, written where they belong; -1 when the flavour has none.
int FromCode(char32_t code, char* units, std::integral_constant<int, 0>) {
    return CodePage::Current().fromCode(units, code);
}
int FromCode(char32_t code, char* units, std::integral_constant<int, 1>) {
    *units = static_cast<char>(code);
    return IsAscii(code) ? 1 : -1;
}
int FromCode(char32_t code, wchar_t* units, std::integral_constant<int, 1>) {
    *units = static_cast<wchar_t>(code);
    return code < kOneUnitEnd ? 1 : -1;
}

// The bytes of a code point in the process's narrow text; 0 when it has none there.
std::uint32_t MBCSFromCode(char32_t code, char (&bytes)[mbchar::kMaxCharacterBytes]) {
    const int count = CodePage::Current().fromCode(bytes, code);
    return count > 0 ? static_cast<std::uint32_t>(count) : 0;
}

// Only narrow text that is UTF-8 has characters that the C runtime's maps do not reach.
template <int flavour>
bool HasAllOfUnicode() {
    return flavour == 0 && CodePage::CurrentIsUtf8();
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
    for (std::uint32_t i = 0; i < data_.length; ++i) data_.units[i] = oneChar[i];
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::toUCS4() const {
    char32_t code = 0;
    return ToCode(*this, code) ? code : 0;
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::fromUCS4(std::uint32_t code) {
    CharData found;
    const int count = FromCode(code, found.units, std::integral_constant<int, flavour>());
    if (count < 0) return false;
    found.length = code != 0 ? static_cast<std::uint32_t>(count) : 0;
    data_ = found;
    return true;
}

template <class unit, int flavour>
wchar_t SChar_t<unit, flavour>::toUChar() const {
    const char32_t code = toUCS4();
    return static_cast<wchar_t>(code < kOneUnitEnd ? code : 0);
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::fromUChar(wchar_t code) {
    return fromUCS4(code);
}

template <class unit, int flavour>
bool SChar_t<unit, flavour>::isUnicode() const {
    char32_t code = 0;
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
    char32_t code = 0;
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
    char32_t code = 0;
    if (!ToCode(*this, code)) return mapped;
    mapped.fromUCS4(HasAllOfUnicode<flavour>() ? unicodecase::Lower(code)
                                               : std::towlower(static_cast<wchar_t>(code)));
    return mapped;
}

template <class unit, int flavour>
SChar_t<unit, flavour> SChar_t<unit, flavour>::toUpper() const {
    SChar_t mapped(*this);
    char32_t code = 0;
    if (!ToCode(*this, code)) return mapped;
    mapped.fromUCS4(HasAllOfUnicode<flavour>() ? unicodecase::Upper(code)
                                               : std::towupper(static_cast<wchar_t>(code)));
    return mapped;
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toAsciiChar(char* out, std::uint32_t nBytesInBuffer) const {
    char32_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    if (!ToCode(*this, code) || !IsAscii(code)) return -1;
    const char byte = static_cast<char>(code);
    return Write(out, nBytesInBuffer, &byte, 1);
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toMBCSChar(char* out, std::uint32_t nBytesInBuffer) const {
    char32_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    char bytes[mbchar::kMaxCharacterBytes];
    const std::uint32_t count = ToCode(*this, code) ? MBCSFromCode(code, bytes) : 0;
    return count != 0 ? Write(out, nBytesInBuffer, bytes, count) : -1;
}

template <class unit, int flavour>
int SChar_t<unit, flavour>::toOCAChar(wchar_t* out, std::uint32_t nBytesInBuffer) const {
    char32_t code = 0;
    if (data_.length == 0) return Write(out, nBytesInBuffer, out, 0);
    if (!ToCode(*this, code)) return -1;
    wchar_t units[2];
    const std::uint32_t count = utf::WriteUnits(code, units);
    return Write(out, nBytesInBuffer, units, count);
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
    char32_t code = 0;
    char bytes[mbchar::kMaxCharacterBytes];
    return ToCode(*this, code) ? MBCSFromCode(code, bytes) : 0;
}

template <class unit, int flavour>
std::uint32_t SChar_t<unit, flavour>::getNBytesForOCA() const {
    char32_t code = 0;
    if (!ToCode(*this, code)) return 0;
    return code < kOneUnitEnd ? sizeof(wchar_t) : 2 * sizeof(wchar_t);
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
    char32_t code = 0;
    return ToCode(*this, code) ? static_cast<std::uint32_t>(utf::BytesOfCode(code)) : 0;
}

template class SChar_t<char, 0>;
template class SChar_t<char, 1>;
template class SChar_t<wchar_t, 1>;

}  // namespace TarnLibA500
