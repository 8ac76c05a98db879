#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "strings/base/bytesearch.h"
#include "strings/characters/mbchar.h"
#include "tarnlib/schar.h"

/// What the three string flavours do differently: how one steps over characters, what white space is, and how
/// text is searched.
namespace TarnLibA500 {

/// Flavours whose characters are single code units.
template <class unit>
struct UnitFlavour {
    static const unit* next(const unit* at) noexcept { return at + 1; }
    static const unit* advance(const unit* at, std::uint32_t characters) noexcept {
        for (; characters != 0 && *at != unit(); --characters) ++at;
        return at;
    }
    /// The same inside a string, whose end is known and which may hold zero units.
    static const unit* advanceWithin(const unit* at, const unit* end, std::uint32_t characters) noexcept {
        return at + std::min<std::size_t>(characters, static_cast<std::size_t>(end - at));
    }
    /// The character behind so many others of a string.
    static SChar_t<unit, 1> characterAt(const unit* text, const unit* end, std::uint32_t position) noexcept {
        return *advanceWithin(text, end, position);
    }
    static std::uint32_t count(const unit* from, const unit* end) noexcept {
        return static_cast<std::uint32_t>(end - from);
    }
    static bool isSearchable(const unit*, std::uint32_t) noexcept { return true; }
    static bool beginsCharacter(const unit*, const unit*) noexcept { return true; }

  protected:
    /// Where a text begins and ends without what a test says is white space.
    template <class IsSpace>
    static const unit* skipSpace(const unit* at, const unit* end, IsSpace isSpace) {
        while (at < end && isSpace(*at)) ++at;
        return at;
    }
    template <class IsSpace>
    static const unit* endWithoutSpace(const unit* first, const unit* end, IsSpace isSpace) {
        while (end > first && isSpace(end[-1])) --end;
        return end;
    }
};

template <class unit, int flavour>
struct Flavour;

template <>
struct Flavour<char, 1> : UnitFlavour<char> {
    static bool isSpace(char byte) noexcept { return std::isspace(static_cast<unsigned char>(byte)) != 0; }
    static const char* skipSpace(const char* at, const char* end) {
        return UnitFlavour::skipSpace(at, end, isSpace);
    }
    static const char* endWithoutSpace(const char* first, const char* end) {
        return UnitFlavour::endWithoutSpace(first, end, isSpace);
    }
    static const char* find(const char* from, const char* end, const char* what, std::uint32_t n) noexcept {
        return FindBytes(from, static_cast<std::size_t>(end - from), what, n);
    }
};

template <>
struct Flavour<wchar_t, 1> : UnitFlavour<wchar_t> {
    static const wchar_t* skipSpace(const wchar_t* at, const wchar_t* end) {
        return UnitFlavour::skipSpace(at, end, is_space);
    }
    static const wchar_t* endWithoutSpace(const wchar_t* first, const wchar_t* end) {
        return UnitFlavour::endWithoutSpace(first, end, is_space);
    }
    static const wchar_t* find(const wchar_t* from, const wchar_t* end, const wchar_t* what,
                               std::uint32_t n) noexcept {
        const std::wstring_view text(from, static_cast<std::size_t>(end - from));
        const std::size_t place = text.find(what, 0, n);
        return place != std::wstring_view::npos ? from + place : nullptr;
    }
};

template <>
struct Flavour<char, 0> {
    static const char* next(const char* at) { return at + mbchar::CodePage::Current().step(at); }
    static const char* advance(const char* at, std::uint32_t characters) {
        return mbchar::Advance(mbchar::CodePage::Current(), at, characters);
    }
    static const char* advanceWithin(const char* at, const char* end, std::uint32_t characters) {
        return mbchar::Advance(mbchar::CodePage::Current(), at, end, characters);
    }
    static std::uint32_t count(const char* from, const char* end) {
        return mbchar::CountCharacters(mbchar::CodePage::Current(), from, end);
    }
    /// The character behind so many others of a string. The page is asked for once.
    static SChar_t<char, 0> characterAt(const char* text, const char* end, std::uint32_t position) {
        const mbchar::CodePage& page = mbchar::CodePage::Current();
        const char* const at = mbchar::Advance(page, text, end, position);
        return page.step(at) > 1 ? SChar_t<char, 0>(at) : SChar_t<char, 0>(*at);
    }
    static const char* skipSpace(const char* at, const char* end);
    static const char* endWithoutSpace(const char* first, const char* end);
    /// False when a character of the text is invalid, or when it begins with a zero byte, which ends every text
    /// that is searched: such a text is never found.
    static bool isSearchable(const char* text, std::uint32_t length) {
        if (length != 0 && *text == '\0') return false;
        const mbchar::CodePage& page = mbchar::CodePage::Current();
        if (page.isSingleByte()) return true;
        for (const char* const end = text + length; text < end;) {
            const unsigned bytes = std::max(page.step(text), 1U);
            if (bytes == 1 && !page.isAlone(*text)) return false;
            text += bytes;
        }
        return true;
    }
    static const char* find(const char* from, const char* end, const char* what, std::uint32_t n);
    /// True when one of the characters of a text, which begins at "first", begins at the place.
    static bool beginsCharacter(const char* first, const char* place);
};

}  // namespace TarnLibA500
