#pragma once

#include "strings/base/bytesearch.h"
#include "strings/characters/mbchar.h"
#include "strings/words/characterset.h"
#include "tarnlib/sstring.h"

/// Looking at configuration text in place.
namespace TarnLibA500::configtext {

/// The first place of a range where a character of ASCII stands; the range's end when there is none. In a
/// double-byte code page trail bytes may look like it, in UTF-8 they do not.
inline const char* Find(const mbchar::CodePage& page, const char* at, const char* end, char wanted) {
    if (page.isFoundByBytes()) return FindByte(at, end, wanted);
    while (at < end && *at != wanted) at += CharacterBytes(page, at);
    return at < end ? at : end;
}

inline bool IsPlain(char byte) {
    return static_cast<unsigned char>(byte) > ' ' && static_cast<unsigned char>(byte) < 0x80;
}

inline bool IsAsciiSpace(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// Drops white space from both ends of a range, as SAnsiString::trim does.
inline void Trim(const char*& first, const char*& last) {
    while (first < last && IsAsciiSpace(*first)) ++first;
    while (first < last && IsAsciiSpace(last[-1])) --last;
    const bool isDone = first == last || (IsPlain(*first) && IsPlain(last[-1]) &&
                                          (last - first == 1 || static_cast<signed char>(last[-2]) >= 0));
    if (isDone) return;
    // White space may be beyond ASCII, and a last byte the second one of it.
    SAnsiString text(first, static_cast<std::uint32_t>(last - first));
    text.trimLeft();
    first = last - text.getLength();
    text.trimRight();
    last = first + text.getLength();
}

}  // namespace TarnLibA500::configtext
