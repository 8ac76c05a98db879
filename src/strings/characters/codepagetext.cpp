#include "strings/characters/codepagetext.h"

#include <algorithm>
#include <bit>

#include "strings/characters/asciiblocks.h"
#include "strings/characters/utf.h"
#include "strings/characters/utf8text.h"

namespace TarnLibA500::mbchar {
namespace {

using asciiblocks::kBlock;
using asciiblocks::OthersIn;

// Characters of ASCII at a place before which sixteen can be looked at.
template <class unit>
std::ptrdiff_t AsciiInFront(const unit* at) {
    const unsigned others = OthersIn(at);
    return others == 0 ? kBlock : std::countr_zero(others);
}

bool IsAscii(wchar_t unit) {
    return unit < 0x80;
}

void Widen(const char* bytes, wchar_t* units) {
    asciiblocks::StoreWide(units, asciiblocks::Load<__m128i>(bytes));
}

// --- pages in which every byte is a character ---

void DecodeSingles(const CodePage& page, const char* at, const char* end, wchar_t* out) {
    if (page.hasAscii()) {
        for (; end - at >= kBlock; at += kBlock, out += kBlock) {
            Widen(at, out);
            for (unsigned others = OthersIn(at); others != 0; others &= others - 1) {
                const int place = std::countr_zero(others);
                out[place] = page.unitOf(at[place]);
            }
        }
    }
    while (at < end) *out++ = page.unitOf(*at++);
}

// The one byte of a unit, "?" when it has none.
char SingleOf(const CodePage& page, wchar_t unit) {
    const std::uint16_t byte = page.bytesOf(unit);
    return byte != 0 || unit == 0 ? static_cast<char>(byte) : kReplacement;
}

void EncodeSingles(const CodePage& page, const wchar_t* at, const wchar_t* end, char* out) {
    if (page.hasAscii()) {
        for (; end - at >= kBlock; at += kBlock, out += kBlock) {
            asciiblocks::StoreNarrow(out, at);
            for (unsigned others = OthersIn(at); others != 0; others &= others - 1) {
                const int place = std::countr_zero(others);
                out[place] = SingleOf(page, at[place]);
            }
        }
    }
    while (at < end) *out++ = SingleOf(page, *at++);
}

// --- pages with trail bytes ---

// The bytes of a character that begins with a lead byte, or of that alone.
[[gnu::always_inline]] inline unsigned StepPair(const CodePage& page, const char* at, const char* end) {
    return end - at > 1 ? page.stepPair(at) : 1;
}

std::uint32_t CountPairedUnits(const CodePage& page, const char* at, const char* end) {
    std::uint32_t count = 0;
    while (at < end) {
        if (!page.isAlone(*at)) {
            at += StepPair(page, at, end);
            ++count;
            continue;
        }
        const std::ptrdiff_t ascii = page.hasAscii() && end - at >= kBlock ? AsciiInFront(at) : 0;
        const std::ptrdiff_t alone = std::max<std::ptrdiff_t>(ascii, 1);
        at += alone;
        count += static_cast<std::uint32_t>(alone);
    }
    return count;
}

// The characters of two bytes at a place, up to the first other one.
[[gnu::always_inline]] inline wchar_t* DecodePairs(const CodePage& page, const char*& at, const char* end,
                                                   wchar_t* out, const wchar_t* last) {
    for (auto most = std::min((end - at) / 2, last - out); most > 0 && !page.isAlone(*at); --most) {
        const wchar_t unit = page.unitOfPair(at);
        if (unit == 0) break;
        *out++ = unit;
        at += 2;
    }
    return out;
}

wchar_t* DecodePaired(const CodePage& page, const char*& text, const char* end, wchar_t* out,
                      const wchar_t* last) {
    const char* at = text;
    while (at < end && out < last) {
        if (!page.isAlone(*at)) {
            wchar_t* const before = out;
            out = DecodePairs(page, at, end, out, last);
            if (out != before) continue;
            *out++ = kReplacement;
            ++at;
            continue;
        }
        if (page.hasAscii() && end - at >= kBlock && last - out >= kBlock && AsciiInFront(at) == kBlock) {
            Widen(at, out);
            at += kBlock;
            out += kBlock;
            continue;
        }
        *out++ = page.unitOf(*at++);
    }
    text = at;
    return out;
}

// The bytes of a unit, the first one high when there are two; "?" when it has none.
std::uint16_t BytesOrReplacement(const CodePage& page, wchar_t unit) {
    const std::uint16_t bytes = page.bytesOf(unit);
    return bytes != 0 || unit == 0 ? bytes : static_cast<std::uint16_t>(kReplacement);
}

std::uint32_t CountPairedBytes(const CodePage& page, const wchar_t* at, const wchar_t* end) {
    auto count = static_cast<std::uint32_t>(end - at);
    while (at < end) {
        const bool areAscii =
            IsAscii(*at) && page.hasAscii() && end - at >= kBlock && AsciiInFront(at) == kBlock;
        if (!areAscii && BytesOrReplacement(page, *at) > 0xFF) ++count;
        at += areAscii ? kBlock : 1;
    }
    return count;
}

char* EncodePaired(const CodePage& page, const wchar_t*& text, const wchar_t* end, char* out,
                   const char* last) {
    const wchar_t* at = text;
    while (at < end && out < last) {
        if (IsAscii(*at) && page.hasAscii() && end - at >= kBlock && last - out >= kBlock &&
            AsciiInFront(at) == kBlock) {
            asciiblocks::StoreNarrow(out, at);
            at += kBlock;
            out += kBlock;
            continue;
        }
        const std::uint16_t bytes = BytesOrReplacement(page, *at);
        if (bytes > 0xFF) {
            if (last - out < 2) break;
            *out++ = static_cast<char>(bytes >> 8);
        }
        *out++ = static_cast<char>(bytes & 0xFF);
        ++at;
    }
    text = at;
    return out;
}

}  // namespace

std::uint32_t CountUnits(const CodePage& page, const char* text, const char* end) noexcept {
    if (page.isSingleByte()) return static_cast<std::uint32_t>(end - text);
    return page.isUtf8() ? utf8text::CountUnits(text, end) : CountPairedUnits(page, text, end);
}

std::uint32_t Decode(const CodePage& page, const char*& text, const char* end, wchar_t* out,
                     std::uint32_t room) noexcept {
    if (page.isUtf8()) return utf8text::Decode(text, end, out, room);
    // A room may be given that leads beyond the address space; there are never more units than bytes.
    const std::uint32_t most = std::min(room, static_cast<std::uint32_t>(end - text));
    if (!page.isSingleByte())
        return static_cast<std::uint32_t>(DecodePaired(page, text, end, out, out + most) - out);
    DecodeSingles(page, text, text + most, out);
    text += most;
    return most;
}

std::uint32_t CountBytes(const CodePage& page, const wchar_t* text, const wchar_t* end) noexcept {
    const auto units = static_cast<std::uint32_t>(end - text);
    if (page.isSingleByte()) return units;
    return page.isUtf8() ? utf::BytesWithReplacements(text, units) : CountPairedBytes(page, text, end);
}

std::uint32_t Encode(const CodePage& page, const wchar_t*& text, const wchar_t* end, char* out,
                     std::uint32_t room) noexcept {
    if (page.isUtf8()) return utf8text::Encode(text, end, out, room);
    const auto units = static_cast<std::uint32_t>(end - text);
    if (page.isSingleByte()) {
        const std::uint32_t most = std::min(room, units);
        EncodeSingles(page, text, text + most, out);
        text += most;
        return most;
    }
    // As in Decode; a unit has two bytes at most.
    const std::uint32_t most = units < room / 2 ? 2 * units : room;
    return static_cast<std::uint32_t>(EncodePaired(page, text, end, out, out + most) - out);
}

}  // namespace TarnLibA500::mbchar
