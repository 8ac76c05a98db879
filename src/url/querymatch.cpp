// Sequences match as many characters as they have, so that the first place where one matches is as good as any:
// nothing is ever tried again.
#include <algorithm>

#include "diag/assert/require.h"
#include "strings/characters/flavour.h"
#include "tarnlib/squerystring.h"
#include "url/characters.h"

namespace TarnLibA500 {

bool SQueryString::like(const SAnsiString& text) {
    if (state_ == kNotParsed) parse();
    const char* const begin = text.getString();
    return state_ == kGood &&
           doMatch(sequences_, Place{mbchar::CodePage::Current(), begin, begin + text.getLength()});
}

bool SQueryString::doMatch(const SIArray<QueryPatternOps>& sequences, Place text) {
    const std::uint32_t last = sequences.GetSize() - 1;
    for (std::uint32_t i = 0; i <= last; ++i) {
        const QueryPatternOps& sequence = sequences[i];
        if (!Require(!sequence.hasEmptyClass, "squerystring", "checkInRange || checkOneOf")) return false;
        const bool floats = i != 0 && i != last;
        if (i != 0 && i == last && !goToEnd(sequence, text)) return false;
        if (!(floats ? findSequence(sequence, text) : matchSequence(sequence, text))) return false;
    }
    return text.at == text.end;
}

bool SQueryString::goToEnd(const QueryPatternOps& sequence, Place& text) {
    const char* ahead = text.at;
    for (std::uint32_t i = 0; i < sequence.nChars; ++i) {
        if (ahead == text.end) return false;
        ahead += BytesAt(text.page, ahead, text.end);
    }
    if (text.page.isSingleByte() || sequence.nChars == 0) {
        text.at += text.end - ahead;
        return true;
    }
    for (; ahead < text.end; ahead += BytesAt(text.page, ahead, text.end))
        text.at += BytesAt(text.page, text.at, text.end);
    return true;
}

bool SQueryString::matchSequence(const QueryPatternOps& sequence, Place& text) {
    Place place(text);
    for (const QueryPattern& piece : sequence.pieces) {
        if (!piece.isClass) {
            if (!matchSubString(piece.text, place)) return false;
        } else {
            if (place.at == place.end || !isAMatch(piece, place)) return false;
            place.at += BytesAt(place.page, place.at, place.end);
        }
    }
    text.at = place.at;
    return true;
}

bool SQueryString::findSequence(const QueryPatternOps& sequence, Place& text) {
    const SAnsiString& start = sequence.start;
    Place place(text);
    while (true) {
        if (!start.isEmpty()) {
            place.at = Flavour<char, 0>::find(place.at, place.end, start.getString(), start.getLength());
            if (place.at == nullptr) return false;
        }
        if (sequence.isPlain) {
            text.at = place.at + start.getLength();
            return true;
        }
        if (matchSequence(sequence, place)) break;
        if (place.at == place.end) return false;
        place.at += BytesAt(place.page, place.at, place.end);
    }
    text.at = place.at;
    return true;
}

bool SQueryString::matchSubString(const SAnsiString& piece, Place& text) {
    const char* at = text.at;
    const char* const end = piece.getString() + piece.getLength();
    for (const char* wanted = piece.getString(); wanted < end;) {
        if (at == text.end) return false;
        const unsigned bytes = BytesAt(text.page, at, text.end);
        const unsigned wantedBytes = BytesAt(text.page, wanted, end);
        if (*wanted != '_' && !IsSameCharacter(at, bytes, wanted, wantedBytes)) return false;
        at += bytes;
        wanted += wantedBytes;
    }
    text.at = at;
    return true;
}

bool SQueryString::isAMatch(const QueryPattern& piece, const Place& text) {
    const std::uint32_t character = NumberOf(text.at, BytesAt(text.page, text.at, text.end));
    return (matchInRange(piece, character) || matchOneOf(piece, text)) != piece.isNegated;
}

bool SQueryString::matchInRange(const QueryPattern& piece, std::uint32_t character) {
    return std::any_of(piece.ranges.begin(), piece.ranges.end(),
                       [character](const QueryPattern::Range& range) {
                           const auto [low, high] = std::minmax(range.first, range.last);
                           return low <= character && character <= high;
                       });
}

bool SQueryString::matchOneOf(const QueryPattern& piece, const Place& text) {
    const unsigned bytes = BytesAt(text.page, text.at, text.end);
    const char* const end = piece.text.getString() + piece.text.getLength();
    for (const char* one = piece.text.getString(); one < end;) {
        const unsigned oneBytes = BytesAt(text.page, one, end);
        if (IsSameCharacter(text.at, bytes, one, oneBytes)) return true;
        one += oneBytes;
    }
    return false;
}

}  // namespace TarnLibA500
