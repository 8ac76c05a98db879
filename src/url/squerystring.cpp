#include "tarnlib/squerystring.h"

#include <utility>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "strings/characters/flavour.h"
#include "tarnlib/straceobj.h"
#include "url/characters.h"
#include "url/replacement.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "squerystring";
constexpr SpecialBytes kWildcards("%_[]");
constexpr SpecialBytes kTypedWildcards("%_[*");
constexpr SpecialBytes kApostrophe("'");

Replacement Wrapped(const mbchar::CodePage&, const char* at, const char*) {
    switch (*at) {
        case '%':
            return {"[%]", 1};
        case '_':
            return {"[_]", 1};
        case '[':
            return {"[[]", 1};
        default:
            return {"%", 1};
    }
}

Replacement Doubled(const mbchar::CodePage&, const char*, const char*) {
    return {"''", 1};
}

std::uint32_t CountUpTo(const mbchar::CodePage& page, const char* at, const char* place, const char* end) {
    std::uint32_t count = 0;
    for (; at < place; at += BytesAt(page, at, end)) ++count;
    return count;
}

// What a match of the text begins with. Nothing, where it cannot be searched for.
SAnsiString StartOf(const SAnsiString& text) {
    const SAnsiString start = TextPart(text.getString(), FindText(TextPart(text), "_")).toString();
    return Flavour<char, 0>::isSearchable(start.getString(), start.getLength()) ? start : SAnsiString();
}

}  // namespace

SQueryString::SQueryString() = default;
SQueryString::SQueryString(const SAnsiString& pattern) : pattern_(pattern) {}
SQueryString::SQueryString(const char* pattern) : pattern_(pattern) {}
SQueryString::SQueryString(const SQueryString& other) = default;
SQueryString& SQueryString::operator=(const SQueryString& other) = default;
SQueryString::~SQueryString() = default;

bool SQueryString::parse() {
    const TextPart all(pattern_);
    Place rest{mbchar::CodePage::Current(), all.begin, all.end};
    SIArray<QueryPatternOps> sequences;
    QueryPatternOps first;
    bool isGood = getFirstSequencePattern(rest, first);
    if (isGood) {
        sequences.Add(first);
        isGood = getRestPatterns(rest, sequences);
    }
    state_ = isGood ? kGood : kBad;
    fault_ = isGood ? 0 : CountUpTo(rest.page, all.begin, rest.at, all.end);
    std::swap(sequences_, sequences);
    if (!isGood) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "the [ behind %1 characters of the pattern %2 has no ]",
                      fault_, pattern_);
    }
    return isGood;
}

bool SQueryString::getFirstSequencePattern(Place& pattern, QueryPatternOps& sequence) {
    return parse_sequence(pattern, sequence);
}

bool SQueryString::getRestPatterns(Place& pattern, SIArray<QueryPatternOps>& sequences) {
    while (pattern.at < pattern.end) {
        ++pattern.at;
        QueryPatternOps sequence;
        if (!parse_sequence(pattern, sequence)) return false;
        sequences.Add(sequence);
    }
    return true;
}

bool SQueryString::parse_sequence(Place& pattern, QueryPatternOps& sequence) {
    while (pattern.at < pattern.end && *pattern.at != '%') {
        QueryPattern piece;
        if (*pattern.at == '[') {
            SAnsiString inside;
            if (!get_partial_patternstr(pattern, inside)) return false;
            piece = parse_partial_pattern(inside);
            sequence.hasEmptyClass |= inside.isEmpty();
            ++sequence.nChars;
        } else {
            piece.text = get_exact_patternstr(pattern);
            const TextPart text(piece.text);
            sequence.nChars += CountUpTo(pattern.page, text.begin, text.end, text.end);
            if (sequence.pieces.GetSize() == 0) sequence.start = StartOf(piece.text);
        }
        sequence.pieces.Add(piece);
    }
    sequence.isPlain = !sequence.start.isEmpty() && sequence.pieces.GetSize() == 1 &&
                       sequence.start.getLength() == sequence.pieces[0].text.getLength();
    return true;
}

SAnsiString SQueryString::get_exact_patternstr(Place& pattern) {
    const char* const begin = pattern.at;
    while (pattern.at < pattern.end && *pattern.at != '%' && *pattern.at != '[')
        pattern.at += BytesAt(pattern.page, pattern.at, pattern.end);
    return TextPart(begin, pattern.at).toString();
}

bool SQueryString::get_partial_patternstr(Place& pattern, SAnsiString& inside) {
    TextPart rest(pattern.at + 1, pattern.end);
    TextPart part(rest);
    if (!Require(CutAt(rest, "]", part), kUnit, "closeIter")) return false;
    inside = part.toString();
    pattern.at = rest.begin;
    return true;
}

SQueryString::QueryPattern SQueryString::parse_partial_pattern(const SAnsiString& inside) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    TextPart part(inside);
    QueryPattern piece;
    piece.isClass = true;
    piece.isNegated = part.length() > 1 && *part.begin == '^';
    if (piece.isNegated) ++part.begin;
    std::uint32_t before = 0;  // the number of the character before
    for (const char* at = part.begin; at < part.end;) {
        const unsigned bytes = BytesAt(page, at, part.end);
        const char* const next = at + bytes;
        if (*at == '-' && at != part.begin && next != part.end) {
            piece.ranges.Add({before, NumberOf(next, BytesAt(page, next, part.end))});
        } else {
            piece.text.concat(at, bytes);
        }
        before = NumberOf(at, bytes);
        at = next;
    }
    return piece;
}

// By bytes as far as there are characters, which is how it has always been.
bool SQueryString::ContainsWildcards(const SAnsiString& text) {
    const char* const begin = text.getString();
    const char* const end = begin + text.getNChars();
    const char* at = begin;
    while (at < end && !kWildcards.has(*at)) ++at;
    return at < end;
}

SAnsiString SQueryString::WrapWildCardCharsFromString(const SAnsiString& text) {
    return ReplaceSpecial(text, kTypedWildcards, Wrapped);
}

bool SInfoQueryString::ValidateAStringValue(SAnsiString& text) {
    text = ReplaceSpecial(text, kApostrophe, Doubled);
    return true;
}

}  // namespace TarnLibA500
