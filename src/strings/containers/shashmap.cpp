#include "tarnlib/shashmap.h"

#include <cwctype>

#include "strings/characters/mbchar.h"
#include "strings/characters/unicodecase.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

// A byte that is no character is the same as itself only.
constexpr char32_t kBehindUnicode = 0x110000;

// The lower case of the character at the text, which is advanced.
char32_t NextFolded(const CodePage& page, const char*& text, const char* end) {
    if (page.isAlone(*text)) return page.unitOf(static_cast<char>(page.foldByte(*text++)));
    const mbchar::Character character = page.characterAt(text, end);
    const auto byte = static_cast<unsigned char>(*text);
    text += character.bytes;
    if (!character.isValid()) return kBehindUnicode + byte;
    if (page.isUtf8()) return unicodecase::Lower(character.code);
    return std::towlower(static_cast<wchar_t>(character.code));
}

bool AreSameBytes(const CodePage& page, const char* left, const char* right, std::uint32_t nBytes) {
    std::uint32_t i = 0;
    while (i < nBytes && page.foldByte(left[i]) == page.foldByte(right[i])) ++i;
    return i == nBytes;
}

}  // namespace

// Texts of ASCII alone need not have the hash that they would have here: no other is the same as one of them. A byte
// beyond ASCII has no lower case in it, and a longer character leaves too few characters for the length.
std::uint32_t SHashNoCaseBeyondAscii(const char* text, std::uint32_t nBytes) {
    const CodePage& page = CodePage::Current();
    const char* const end = text + nBytes;
    SHashSteps steps;
    while (text < end) steps.add(NextFolded(page, text, end));
    return steps.get();
}

bool SHashSameNoCaseBeyondAscii(const char* left, const char* right, std::uint32_t nBytes) {
    const CodePage& page = CodePage::Current();
    if (page.isSingleByte()) return AreSameBytes(page, left, right, nBytes);
    const char* const leftEnd = left + nBytes;
    const char* const rightEnd = right + nBytes;
    while (left < leftEnd && right < rightEnd) {
        if (NextFolded(page, left, leftEnd) != NextFolded(page, right, rightEnd)) return false;
    }
    return left == leftEnd && right == rightEnd;
}

}  // namespace TarnLibA500
