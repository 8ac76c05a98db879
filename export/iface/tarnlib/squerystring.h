#pragma once

#include <cstdint>

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Patterns as LIKE of SQL has them, and texts made safe for a query.
///
///     %        any number of characters, none too
///     _        one character
///     [abc]    one of these characters; % and _ are themselves here, and the first ] ends the class
///     [a-z]    one character of a range, whose ends may stand in either order; a - at an end is itself
///     [^a-z]   one character that is not in the class; a ^ alone is itself
///
/// Characters are those of the process's code page and compare by their bytes, with regard to case; in ranges a
/// character of several bytes is one number, its first byte the highest. A match takes time in proportion to
/// text times pattern at most, and no memory. An object is used by one thread at a time.
///
///     SQueryString pattern("%order%[0-9]%");
///     if (!pattern.parse()) ...                                       // a "[" without its "]"
///     if (pattern.like("the order of 1999 was shipped")) ...          // the whole text matches
///     SQueryString plain("%" + SQueryString::WrapWildCardCharsFromString("100%") + "%");
///     SInfoQueryString::ValidateAStringValue(name);                   // O'Hara becomes O''Hara
namespace TarnLibA500 {

namespace mbchar {
class CodePage;
}

/// A pattern, parsed once and matched against many texts.
class TARN_API SQueryString {
  public:
    /// A piece of a pattern: a text in which "_" stands for any character, or a class of characters.
    struct QueryPattern {
        /// The first and the last character of a range, as numbers, in either order.
        struct Range {
            std::uint32_t first;  ///< one end
            std::uint32_t last;   ///< the other one
        };

        bool isClass = false;    ///< a class; otherwise a text
        bool isNegated = false;  ///< the class is of the characters that are not in it
        SAnsiString text;        ///< the text, or the single characters of the class
        SIArray<Range> ranges;   ///< the ranges of the class
    };
    /// What stands between two "%": its pieces, in order.
    struct QueryPatternOps {
        SIArray<QueryPattern> pieces;  ///< the pieces
        SAnsiString start;             ///< the characters, before any "_" or class, that a match begins with
        std::uint32_t nChars = 0;      ///< the characters that it matches, neither more nor fewer
        bool isPlain = false;          ///< the start is all there is
        bool hasEmptyClass = false;    ///< a class with nothing in it, so that nothing matches
    };

    /// The empty pattern, which the empty text matches.
    SQueryString();
    /// A pattern, not yet parsed.
    SQueryString(const SAnsiString& pattern);
    /// The same from a zero-terminated text; null is an empty one.
    SQueryString(const char* pattern);
    /// A copy, as far parsed.
    SQueryString(const SQueryString& other);
    /// Takes on a copy.
    SQueryString& operator=(const SQueryString& other);
    /// Lets go of the pattern.
    ~SQueryString();

    /// Parses the pattern, by the code page of now. False when a "[" has no "]": reported by assertion
    /// ("closeIter"), and traced.
    bool parse();
    /// True when the whole text matches. Parses the pattern where that was not done; false when it cannot be
    /// parsed.
    bool like(const SAnsiString& text);
    /// The pattern.
    const SAnsiString& GetPattern() const { return pattern_; }
    /// After parse has said false: how many characters stand before the "[" that has no "]".
    std::uint32_t GetFaultPosition() const { return fault_; }

    /// True when one of the first n bytes is "%", "_", "[" or "]", where n is the number of characters: in a
    /// text with longer characters, deliberately, the end is not looked at.
    static bool ContainsWildcards(const SAnsiString& text);
    /// A pattern that the text matches, and no other, but that "*" becomes "%": what people type. "%", "_" and
    /// "[" are put into brackets. In a text that is broken, a byte that is no character may take the "[" behind
    /// it for its other half.
    static SAnsiString WrapWildCardCharsFromString(const SAnsiString& text);

  protected:
    /// A place in the text that is matched, and its end.
    struct Place {
        const mbchar::CodePage& page;  ///< of both, text and pattern
        const char* at;                ///< where a character begins
        const char* end;               ///< behind the last one
    };

    /// The first sequence of a pattern, up to the first "%" outside brackets; false when a bracket is not
    /// closed. The place is moved behind it.
    static bool getFirstSequencePattern(Place& pattern, QueryPatternOps& sequence);
    /// All further sequences; the place stands on the "%" before them.
    static bool getRestPatterns(Place& pattern, SIArray<QueryPatternOps>& sequences);
    /// Parses one sequence.
    static bool parse_sequence(Place& pattern, QueryPatternOps& sequence);
    /// Takes the text up to the next "%" or "[".
    static SAnsiString get_exact_patternstr(Place& pattern);
    /// Takes the class at the place and gives what stands in its brackets; false when it is not closed.
    static bool get_partial_patternstr(Place& pattern, SAnsiString& inside);
    /// Parses what stands in the brackets of a class.
    static QueryPattern parse_partial_pattern(const SAnsiString& inside);

    /// Matches the whole text. A sequence with an empty class is reported by assertion ("checkInRange ||
    /// checkOneOf").
    static bool doMatch(const SIArray<QueryPatternOps>& sequences, Place text);
    /// Moves the place to where as many characters are left as the sequence matches; false when there are fewer.
    static bool goToEnd(const QueryPatternOps& sequence, Place& text);
    /// Matches the pieces of a sequence at the place, which is moved behind them; false, and not moved, when
    /// they do not match.
    static bool matchSequence(const QueryPatternOps& sequence, Place& text);
    /// Moves the place behind the first match of a sequence; false when there is none.
    static bool findSequence(const QueryPatternOps& sequence, Place& text);
    /// Matches a piece that is a text.
    static bool matchSubString(const SAnsiString& piece, Place& text);
    /// Matches the character at the place against a class, which has something in it.
    static bool isAMatch(const QueryPattern& piece, const Place& text);
    /// True when the number of a character is in one of the ranges.
    static bool matchInRange(const QueryPattern& piece, std::uint32_t character);
    /// True when the character at the place is one of the single ones.
    static bool matchOneOf(const QueryPattern& piece, const Place& text);

  private:
    SAnsiString pattern_;
    SIArray<QueryPatternOps> sequences_;  // one more than there are "%" outside brackets
    enum { kNotParsed, kGood, kBad } state_ = kNotParsed;
    std::uint32_t fault_ = 0;
};

/// Texts for queries; all members are static and may be called from any thread.
class TARN_API SInfoQueryString {
  public:
    /// Doubles every apostrophe, so that the text may stand between two of them; always true.
    static bool ValidateAStringValue(SAnsiString& text);
};

}  // namespace TarnLibA500
