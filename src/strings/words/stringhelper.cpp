#include "tarnlib/stringhelper.h"

#include <cstring>

#include "strings/base/asciichar.h"
#include "strings/characters/flavour.h"
#include "strings/words/characterset.h"

namespace TarnLibA500 {
namespace {

using Char = SStringHelper::Char;

constexpr const char* kListSeparator = ",";
constexpr char kEscape = '\\';

// A text with a broken character in it matches nowhere, as with find.
bool IsSearchable(const SAnsiString& what) {
    return !what.isEmpty() && Flavour<char, 0>::isSearchable(what.getString(), what.getLength());
}

// From the start of a character in a text, which what follows decodes from: equal bytes are equal characters.
bool HasAt(const char* at, const char* end, const SAnsiString& what) {
    return static_cast<std::size_t>(end - at) >= what.getLength() &&
           std::memcmp(at, what.getString(), what.getLength()) == 0;
}

// Steps over the text that stays: up to the marker outside quotes, the line's end, or the end.
const char* FindCommentOrLineEnd(const mbchar::CodePage& page, const char* at, const char* end,
                                 const SAnsiString& marker) {
    bool inQuotes = false;
    while (at < end && !IsLineEnd(*at)) {
        if (!inQuotes && HasAt(at, end, marker)) break;
        if (*at == '"') inQuotes = !inQuotes;
        at += CharacterBytes(page, at);
    }
    return at;
}

const char* FindLineEnd(const mbchar::CodePage& page, const char* at, const char* end) {
    while (at < end && !IsLineEnd(*at)) at += CharacterBytes(page, at);
    return at;
}

void TrimLeft(const CharacterSet& set, SAnsiString& text) {
    const char* const kept = set.skipMembers(text.getString(), text.end().getPtr());
    if (kept != text.getString()) text = text.right(SAnsiString::iterator(kept));
}

void TrimRight(const CharacterSet& set, SAnsiString& text) {
    const char* const kept = set.stripMembers(text.getString(), text.end().getPtr());
    if (kept != text.end().getPtr()) text = text.left(SAnsiString::iterator(kept));
}

std::uint32_t Distance(const char* from, const char* to) {
    return static_cast<std::uint32_t>(to - from);
}

template <class Strings>
SAnsiString Join(const Strings& strings) {
    SAnsiString joined;
    bool first = true;
    for (const SAnsiString& string : strings) {
        if (!first) joined.concat(kListSeparator);
        first = false;
        joined.concat(string);
    }
    return joined;
}

}  // namespace

void SStringHelper::trimLeft(SAnsiString& text, const SAnsiString& characters) {
    TrimLeft(CharacterSet(mbchar::CodePage::Current(), characters), text);
}

void SStringHelper::trimRight(SAnsiString& text, const SAnsiString& characters) {
    TrimRight(CharacterSet(mbchar::CodePage::Current(), characters), text);
}

void SStringHelper::trim(SAnsiString& text, const SAnsiString& characters) {
    const CharacterSet set(mbchar::CodePage::Current(), characters);
    TrimLeft(set, text);
    TrimRight(set, text);
}

void SStringHelper::removeComments(SAnsiString& text, const SAnsiString& marker) {
    if (!IsSearchable(marker)) return;
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const char* const end = text.end().getPtr();
    SAnsiString kept;
    for (const char* at = text.getString(); at < end;) {
        const char* const comment = FindCommentOrLineEnd(page, at, end, marker);
        kept.concat(at, Distance(at, comment));
        at = FindLineEnd(page, comment, end);
        for (; at < end && IsLineEnd(*at); ++at) kept.concat(*at);
    }
    if (kept.getLength() != text.getLength()) text = kept;
}

void SStringHelper::replaceSubString(SAnsiString& text, const SAnsiString& what, const SAnsiString& by) {
    if (what.isEmpty()) return;
    SAnsiString::iterator from = text.begin();
    SAnsiString::iterator match = text.find(what, from);
    if (match == text.end()) return;
    SAnsiString replaced;
    for (; match != text.end(); match = text.find(what, from)) {
        replaced.concat(from.getPtr(), Distance(from.getPtr(), match.getPtr()));
        replaced.concat(by);
        from = SAnsiString::iterator(match.getPtr() + what.getLength());
    }
    replaced.concat(from.getPtr(), Distance(from.getPtr(), text.end().getPtr()));
    text = replaced;
}

bool SStringHelper::replaceSubStringAtStart(SAnsiString& text, const SAnsiString& what,
                                            const SAnsiString& by) {
    if (what.isEmpty() || !text.startsWith(what)) return false;
    SAnsiString replaced(by);
    replaced.concat(text.getString() + what.getLength(), text.getLength() - what.getLength());
    text = replaced;
    return true;
}

bool SStringHelper::replaceSubStringAtEnd(SAnsiString& text, const SAnsiString& what, const SAnsiString& by) {
    if (what.isEmpty() || !text.endsWith(what)) return false;
    SAnsiString replaced(text.getString(), text.getLength() - what.getLength());
    replaced.concat(by);
    text = replaced;
    return true;
}

void SStringHelper::escapeDelimiters(const SAnsiString& text, SAnsiString& result, const Char& delimiter) {
    CharacterSet special(mbchar::CodePage::Current());
    special.add(delimiter);
    special.add(Char(kEscape));
    const char* const end = text.end().getPtr();
    SAnsiString escaped;
    for (const char* at = text.getString(); at < end;) {
        const char* const stop = special.findMember(at, end);
        escaped.concat(at, Distance(at, stop));
        if (stop == end) break;
        const unsigned bytes = CharacterBytes(special.page(), stop);
        escaped.concat(kEscape);
        escaped.concat(stop, bytes);
        at = stop + bytes;
    }
    result = escaped;
}

SAnsiString SStringHelper::convertArrayToString(const SIArray<SAnsiString>& strings) {
    return Join(strings);
}

SAnsiString SStringHelper::convertSetToString(const SISet<SAnsiString>& strings) {
    return Join(strings);
}

}  // namespace TarnLibA500
