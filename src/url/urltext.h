#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

/// Parts of a text, by whole characters of the process's code page. A zero byte ends nothing.
namespace TarnLibA500 {

/// A part of a string.
struct TextPart {
    const char* begin;
    const char* end;

    TextPart(const char* from, const char* to) noexcept : begin(from), end(to) {}
    explicit TextPart(const SAnsiString& text) noexcept
        : TextPart(text.getString(), text.getString() + text.getLength()) {}
    std::uint32_t length() const noexcept { return static_cast<std::uint32_t>(end - begin); }
    bool isEmpty() const noexcept { return begin == end; }
    SAnsiString toString() const { return {begin, length()}; }
};

/// The first place of an ASCII text in a part; the part's end when there is none.
const char* FindText(const TextPart& part, const char* what);
inline bool Holds(const TextPart& part, const char* what) {
    return FindText(part, what) != part.end;
}
/// Cuts off what stands before an ASCII text, which is dropped; false, and nothing changed, when there is none.
bool CutAt(TextPart& rest, const char* what, TextPart& before);
/// Cuts off and returns what stands before an ASCII text, which is dropped; all that is left when there is none.
TextPart CutBefore(TextPart& rest, const char* what);

}  // namespace TarnLibA500
