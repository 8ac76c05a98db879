#include "strings/characters/codepagetext.h"

#include <algorithm>

#include "strings/characters/utf.h"
#include "strings/characters/utf8text.h"

namespace TarnLibA500::mbchar {
namespace {

// The bytes of a unit, "?" when it has none.
std::uint32_t FromWideOrReplace(const CodePage& page, char* bytes, wchar_t unit) noexcept {
    const int count = page.fromWide(bytes, unit);
    if (count > 0) return static_cast<std::uint32_t>(count);
    bytes[0] = kReplacement;
    return 1;
}

}  // namespace

std::uint32_t CountUnits(const CodePage& page, const char* text, const char* end) noexcept {
    if (page.isSingleByte()) return static_cast<std::uint32_t>(end - text);
    if (page.isUtf8()) return utf8text::CountUnits(text, end);
    std::uint32_t count = 0;
    for (; text < end; ++count) text += page.characterAt(text, end).bytes;
    return count;
}

std::uint32_t Decode(const CodePage& page, const char*& text, const char* end, wchar_t* out,
                     std::uint32_t room) noexcept {
    if (page.isUtf8()) return utf8text::Decode(text, end, out, room);
    const char* at = text;
    wchar_t* unit = out;
    // A room may be given that leads beyond the address space; there are never more units than bytes.
    const auto most = static_cast<std::uint32_t>(end - text);
    for (wchar_t* const last = out + std::min(room, most); at < end && unit < last; ++unit) {
        const Character character = page.characterAt(at, end);
        *unit = static_cast<wchar_t>(character.isValid() ? character.code : char32_t{kReplacement});
        at += character.bytes;
    }
    text = at;
    return static_cast<std::uint32_t>(unit - out);
}

std::uint32_t CountBytes(const CodePage& page, const wchar_t* text, const wchar_t* end) noexcept {
    if (page.isUtf8()) return utf::BytesWithReplacements(text, static_cast<std::uint32_t>(end - text));
    char bytes[kMaxCharacterBytes];
    std::uint32_t needed = 0;
    for (; text < end; ++text) needed += FromWideOrReplace(page, bytes, *text);
    return needed;
}

std::uint32_t Encode(const CodePage& page, const wchar_t*& text, const wchar_t* end, char* out,
                     std::uint32_t room) noexcept {
    if (page.isUtf8()) return utf8text::Encode(text, end, out, room);
    std::uint32_t used = 0;
    for (; text < end; ++text) {
        char bytes[kMaxCharacterBytes];
        const std::uint32_t count = FromWideOrReplace(page, bytes, *text);
        if (count > room - used) break;
        out[used++] = bytes[0];
        if (count == 2) out[used++] = bytes[1];
    }
    return used;
}

}  // namespace TarnLibA500::mbchar
