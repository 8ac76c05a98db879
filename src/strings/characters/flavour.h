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

/// A character as trimming sees it.
struct TrimStep {
    unsigned units;  ///< code units of the character; 0 on the terminator
    bool isSpace;
};

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
    static std::uint32_t count(const unit* from, const unit* end) noexcept {
        return static_cast<std::uint32_t>(end - from);
    }
    static bool isSearchable(const unit*, std::uint32_t) noexcept { return true; }
    static bool beginsCharacter(const unit*, const unit*) noexcept { return true; }
};

template <class unit, int flavour>
struct Flavour;

template <>
struct Flavour<char, 1> : UnitFlavour<char> {
    static TrimStep trimStep(const char* at) noexcept {
        return {*at != '\0', std::isspace(static_cast<unsigned char>(*at)) != 0};
    }
    static const char* find(const char* from, const char* end, const char* what, std::uint32_t n) noexcept {
        return FindBytes(from, static_cast<std::size_t>(end - from), what, n);
    }
};

template <>
struct Flavour<wchar_t, 1> : UnitFlavour<wchar_t> {
    static TrimStep trimStep(const wchar_t* at) { return {*at != L'\0', is_space(*at)}; }
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
    static TrimStep trimStep(const char* at) {
        const mbchar::Character character = mbchar::CodePage::Current().characterAt(at);
        const bool isSpace = character.isOneUnit() && is_space(static_cast<wchar_t>(character.code));
        return {character.bytes, isSpace};
    }
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
