#include "strings/characters/codepagetext.h"

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

std::uint32_t CountCharacters(const CodePage& page, const char* text, const char* end) noexcept {
    if (page.isSingleByte()) return static_cast<std::uint32_t>(end - text);
    std::uint32_t count = 0;
    wchar_t unit;
    for (; text < end; ++count) text += page.toWideOrReplace(unit, text, end);
    return count;
}

std::uint32_t Decode(const CodePage& page, const char*& text, const char* end, wchar_t* out,
                     std::uint32_t room) noexcept {
    const char* at = text;
    std::uint32_t units = 0;
    for (; at < end && units < room; ++units) at += page.toWideOrReplace(out[units], at, end);
    text = at;
    return units;
}

std::uint32_t CountBytes(const CodePage& page, const wchar_t* text, const wchar_t* end) noexcept {
    char bytes[kMaxCharacterBytes];
    std::uint32_t needed = 0;
    for (; text < end; ++text) needed += FromWideOrReplace(page, bytes, *text);
    return needed;
}

std::uint32_t Encode(const CodePage& page, const wchar_t*& text, const wchar_t* end, char* out,
                     std::uint32_t room) noexcept {
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
