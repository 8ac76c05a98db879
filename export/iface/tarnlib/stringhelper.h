#pragma once

#include <cstdint>

#include "tarnlib/siarray.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/siset.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Cutting texts into words, trimming and replacing in them, joining them, and bytes as printable text.
///
/// Everything works in multi-byte characters of the process's code page: a separator, quote or marker is
/// compared as a whole character and never matches a byte inside another one. Arguments may be the same
/// object or parts of each other. The functions keep no state and may be called from any thread; nothing is
/// owned across calls.
///
///     SIArray<SAnsiString> words;
///     SStringHelper::makeWords("copy \"my file.txt\" backup", words, " ", true, false);
///     // words: copy | my file.txt | backup
///     SAnsiString list = SStringHelper::convertArrayToString(words);    // "copy,my file.txt,backup"
///     SStringHelper::replaceSubString(list, ",", "; ");                 // "copy; my file.txt; backup"
///
///     SAnsiString key = SStringHelper::toString(bytes, 16);             // 22 printable symbols
///     SSimpleBuffer back;
///     if (!SStringHelper::fromString(key, back)) ...                    // not such a text
namespace TarnLibA500 {

/// The helpers; all members are static.
class TARN_API SStringHelper {
  public:
    /// A character of the process's code page.
    using Char = SChar_t<char, 0>;

    /// Splits a text at the characters of a set; the words replace those in the array, whose memory is used
    /// again: who splits many texts keeps one array. (SWordCursor makes no strings at all.) Runs of
    /// separators make no empty words. With "quoted", a word that begins with a double quote runs to the next
    /// one, or to the end of the text: it may hold separators, may be empty, and comes without its quotes; a
    /// quote inside any other word ends that word. With "keepSeparators" every separator outside quotes is a
    /// word of its own.
    static void makeWords(const SAnsiString& text, SIArray<SAnsiString>& words, const SAnsiString& separators,
                          bool quoted, bool keepSeparators);
    /// The same with another quote character. When the quote also stands among the separators, it quotes.
    static void makeWords(const SAnsiString& text, SIArray<SAnsiString>& words, const Char& quote,
                          const SAnsiString& separators, bool quoted, bool keepSeparators);

    /// Removes the leading characters that belong to the set.
    static void trimLeft(SAnsiString& text, const SAnsiString& characters);
    /// Removes the trailing characters that belong to the set.
    static void trimRight(SAnsiString& text, const SAnsiString& characters);
    /// Removes the leading and then the trailing characters that belong to the set.
    static void trim(SAnsiString& text, const SAnsiString& characters);

    /// Removes, in every line, what stands between the marker and the line's end (CR or LF, which stays). A
    /// marker between double quotes is text; an unclosed quote counts up to the end of its line. An empty
    /// marker does nothing.
    static void removeComments(SAnsiString& text, const SAnsiString& marker);

    /// Replaces every occurrence, from left to right; what was put in is not searched again. An empty "what"
    /// does nothing, and neither does one that find never finds.
    static void replaceSubString(SAnsiString& text, const SAnsiString& what, const SAnsiString& by);
    /// Replaces a text at the start; true when it was there. An empty "what" does nothing.
    static bool replaceSubStringAtStart(SAnsiString& text, const SAnsiString& what, const SAnsiString& by);
    /// Replaces a text at the end; true when it was there. An empty "what" does nothing.
    static bool replaceSubStringAtEnd(SAnsiString& text, const SAnsiString& what, const SAnsiString& by);

    /// Writes the text with a backslash before each delimiter and each backslash.
    static void escapeDelimiters(const SAnsiString& text, SAnsiString& result, const Char& delimiter);

    /// Joins the members with "," between them, in their order. They are not quoted or escaped.
    static SAnsiString convertArrayToString(const SIArray<SAnsiString>& strings);
    /// The same for a set.
    static SAnsiString convertSetToString(const SISet<SAnsiString>& strings);

    /// Resolves a path against a base directory by its text alone: no file system is asked. An absolute path
    /// stands for itself, whatever the base. "." and ".." are folded, runs of slashes reduced, and slashes
    /// made the kind that comes first. False, with the result unchanged, for an empty base, a path with a
    /// drive but no root ("C:x"), and a path that climbs above its root, which for "\\server\share" is the
    /// share.
    static bool getAbsolutePath(const SAnsiString& base, const SAnsiString& relative, SAnsiString& result);

    /// Bytes as text: groups of three bytes make four symbols of A-Z a-z 0-9 "_" ".", high bits first; one or
    /// two bytes that are left over make two or three symbols. No padding. (Base64's grouping, but neither of
    /// its usual alphabets.)
    static SAnsiString toString(const unsigned char* bytes, std::uint32_t count);
    /// The same for a buffer's used bytes.
    static SAnsiString toString(const SSimpleBuffer& buffer);
    /// The way back; unused low bits of a last short group are ignored. False, with an empty buffer, for a
    /// symbol outside the alphabet and for a length that leaves a single symbol over.
    static bool fromString(const SAnsiString& text, SSimpleBuffer& buffer);
    /// The same into memory of the caller; also false when it is too small, in bytes. After false the count
    /// is 0 and nothing has been written.
    static bool fromString(const SAnsiString& text, unsigned char* bytes, std::uint32_t capacity,
                           std::uint32_t& count);
};

}  // namespace TarnLibA500
