#include "url/urltext.h"

#include <cstring>

#include "strings/characters/flavour.h"

namespace TarnLibA500 {

const char* FindText(const TextPart& part, const char* what) {
    const auto length = static_cast<std::uint32_t>(std::strlen(what));
    const char* const place = Flavour<char, 0>::find(part.begin, part.end, what, length);
    return place != nullptr ? place : part.end;
}

bool CutAt(TextPart& rest, const char* what, TextPart& before) {
    const char* const place = FindText(rest, what);
    if (place == rest.end) return false;
    before = TextPart(rest.begin, place);
    rest.begin = place + std::strlen(what);
    return true;
}

TextPart CutBefore(TextPart& rest, const char* what) {
    TextPart before(rest);
    if (!CutAt(rest, what, before)) rest.begin = rest.end;
    return before;
}

}  // namespace TarnLibA500
