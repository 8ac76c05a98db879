#include "strings/text/casemap.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "diag/assert/require.h"
#include "strings/characters/asciiblocks.h"
#include "strings/characters/mbchar.h"
#include "strings/characters/unicodecase.h"
#include "strings/characters/utf8form.h"
#include "strings/characters/utf8text.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sstring";
constexpr std::uint32_t kOwnLength = 0xFFFFFFFF;

struct MapTexts {
    const char* notWide;
    const char* notBack;
};
constexpr MapTexts kLowerTexts{"MakeLowerCaseChar: Fail to convert to wchar_t",
                               "MakeLowerCaseChar: Fail to convert back to MBCS"};
constexpr MapTexts kUpperTexts{"MakeUpperCaseChar: Fail to convert to wchar_t",
                               "MakeUpperCaseChar: Fail to convert back to MBCS"};

wchar_t MapWide(wchar_t unit, LetterCase to) {
    return static_cast<wchar_t>(to == LetterCase::Lower ? std::towlower(unit) : std::towupper(unit));
}

// In every page such a byte is a character where one begins. Not so a zero byte, where texts end.
bool IsAscii(char byte) {
    return static_cast<signed char>(byte) > 0;
}

char MapAscii(char byte, LetterCase to) {
    const char first = to == LetterCase::Lower ? 'A' : 'a';
    const bool maps = byte >= first && byte < first + 26;
    return maps ? static_cast<char>(byte ^ ('a' ^ 'A')) : byte;
}

char32_t MapUnicode(char32_t code, LetterCase to) {
    return to == LetterCase::Lower ? unicodecase::Lower(code) : unicodecase::Upper(code);
}

char32_t MapCode(const mbchar::CodePage& page, char32_t code, LetterCase to) {
    return page.isUtf8() ? MapUnicode(code, to) : MapWide(static_cast<wchar_t>(code), to);
}

__m128i MapAsciiBlock(__m128i bytes, LetterCase to) {
    return asciiblocks::FlipLetters(bytes, to == LetterCase::Lower ? 'A' : 'a');
}

// Maps characters up to the first that is not ASCII, or to a zero byte; returns how many. The text may be moved to lower
// addresses on the way.
std::uint32_t MapAsciiRun(char* out, const char* in, std::uint32_t most, LetterCase to) {
    constexpr std::uint32_t kBlock = asciiblocks::kBlock;
    std::uint32_t done = 0;
    for (; most - done >= kBlock && asciiblocks::OthersIn(in + done) == 0; done += kBlock) {
        const auto bytes = asciiblocks::Load<__m128i>(in + done);
        if (asciiblocks::PlacesOf(bytes, '\0') != 0) break;
        asciiblocks::Store(out + done, MapAsciiBlock(bytes, to));
    }
    for (; done < most && IsAscii(in[done]); ++done) out[done] = MapAscii(in[done], to);
    return done;
}

bool MapOne(const mbchar::CodePage& page, char* position, std::uint32_t room, std::uint32_t& nBytes,
            LetterCase to) {
    nBytes = 0;
    const MapTexts& texts = to == LetterCase::Lower ? kLowerTexts : kUpperTexts;
    if (!Require(position != nullptr, kUnit, "inBuffer != 0")) return false;
    const mbchar::Character character = page.characterAt(position);
    if (!Require(character.isValid(), kUnit, texts.notWide)) return false;
    char mapped[mbchar::kMaxCharacterBytes];
    const int bytes = page.fromCode(mapped, MapCode(page, character.code, to));
    const bool fits = bytes > 0 && static_cast<std::uint32_t>(bytes) <= room;
    if (!Require(fits, kUnit, texts.notBack)) return false;
    nBytes = static_cast<std::uint32_t>(bytes);
    std::memcpy(position, mapped, nBytes);
    return true;
}

// Hands on the mapped code points of UTF-8, up to where mapping ends; returns that place.
template <class Take>
const char* ForEachMapped(const char* text, const char* end, LetterCase to, Take take) {
    while (text < end && *text != '\0') {
        if (IsAscii(*text)) {
            take(static_cast<unsigned char>(MapAscii(*text++, to)));
            continue;
        }
        const mbchar::Character character = utf8text::CharacterAt(text, end);
        if (!character.isValid()) break;
        take(MapUnicode(character.code, to));
        text += character.bytes;
    }
    return text;
}

bool Grows(const mbchar::CodePage& page, const char* position, LetterCase to) {
    if (!page.isUtf8()) return false;
    const unsigned bytes = page.step(position);
    return CountMapped(position, bytes, to) > bytes;
}

void MapZeroTerminated(char* text, std::uint32_t size, LetterCase to) {
    if (!Require(text != nullptr, kUnit, "inBuffer != 0")) return;
    const auto length = static_cast<std::uint32_t>(std::strlen(text));
    text[MapCase(text, length, size == kOwnLength ? length : size, to)] = '\0';
}

void MapZeroTerminated(wchar_t* text, std::uint32_t size, LetterCase to) {
    if (!Require(text != nullptr, kUnit, "inBuffer != 0")) return;
    MapCase(text, static_cast<std::uint32_t>(wcsnlen(text, size)), to);
}

}  // namespace

// Done in place: the bytes written never pass the bytes read, since a character that would get longer stays
// as it is. In UTF-8 some do, which is no fault; elsewhere it is reported.
std::uint32_t MapCase(char* text, std::uint32_t length, std::uint32_t limit, LetterCase to) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    std::uint32_t read = 0;
    std::uint32_t written = 0;
    while (read < length) {
        const std::uint32_t ascii =
            MapAsciiRun(text + written, text + read, std::min(length - read, limit - written), to);
        read += ascii;
        written += ascii;
        if (read == length) break;
        const unsigned bytes = page.step(text + read);
        const bool invalid = bytes == 1 && !page.isAlone(text[read]);
        if (bytes == 0 || invalid || written + bytes > limit) break;
        std::uint32_t mapped = bytes;
        std::memmove(text + written, text + read, bytes);
        if (Grows(page, text + written, to) || !MapOne(page, text + written, bytes, mapped, to)) {
            mapped = bytes;
        }
        read += bytes;
        written += mapped;
    }
    std::memmove(text + written, text + read, length - read);
    return written + (length - read);
}

std::uint32_t CountMapped(const char* text, std::uint32_t length, LetterCase to) {
    std::uint32_t mapped = 0;
    const char* const end = text + length;
    const char* const rest = ForEachMapped(
        text, end, to, [&](char32_t code) { mapped += static_cast<std::uint32_t>(utf::BytesOfCode(code)); });
    return mapped + static_cast<std::uint32_t>(end - rest);
}

void WriteMapped(const char* text, std::uint32_t length, char* out, LetterCase to) {
    const char* const end = text + length;
    const char* const rest =
        ForEachMapped(text, end, to, [&](char32_t code) { out += utf8text::FromCode(out, code); });
    std::memcpy(out, rest, static_cast<std::size_t>(end - rest));
}

void MapCase(wchar_t* text, std::uint32_t length, LetterCase to) {
    for (std::uint32_t i = 0; i < length; ++i) text[i] = MapWide(text[i], to);
}

void MapAsciiCase(char* text, std::uint32_t length, LetterCase to) {
    std::uint32_t i = 0;
    for (; length - i >= asciiblocks::kBlock; i += asciiblocks::kBlock)
        asciiblocks::Store(text + i, MapAsciiBlock(asciiblocks::Load<__m128i>(text + i), to));
    for (; i < length; ++i) text[i] = MapAscii(text[i], to);
}

void MakeLowerCase(char* text, std::uint32_t size) {
    MapZeroTerminated(text, size, LetterCase::Lower);
}
void MakeLowerCase(wchar_t* text, std::uint32_t size) {
    MapZeroTerminated(text, size, LetterCase::Lower);
}
void MakeUpperCase(char* text, std::uint32_t size) {
    MapZeroTerminated(text, size, LetterCase::Upper);
}
void MakeUpperCase(wchar_t* text, std::uint32_t size) {
    MapZeroTerminated(text, size, LetterCase::Upper);
}

bool MakeLowerCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes) {
    return MapOne(mbchar::CodePage::Current(), position, room, nBytes, LetterCase::Lower);
}
bool MakeUpperCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes) {
    return MapOne(mbchar::CodePage::Current(), position, room, nBytes, LetterCase::Upper);
}

}  // namespace TarnLibA500
