#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "strings/characters/mbchar.h"
#include "strings/text/stringbuilder.h"
#include "url/urlencode.h"
#include "url/urltext.h"

/// Texts in which some characters are replaced: measured in one walk, written in another.
namespace TarnLibA500 {

/// What comes in place of so many bytes of a text.
struct Replacement {
    std::string_view text;
    unsigned taken;
};

/// The bytes at which a character may have to be replaced: a few ASCII ones, and perhaps all others beyond.
struct SpecialBytes {
    static constexpr unsigned kMost = 6;
    static constexpr unsigned kBlock = 16;

    alignas(kBlock) char blocks[kMost][kBlock] =
        {};  ///< each ASCII one as a block; the first one in the places left
    bool isSpecial[256] = {};
    bool allBeyondAscii;

    constexpr explicit SpecialBytes(std::string_view ascii, bool beyondAscii = false)
        : allBeyondAscii(beyondAscii) {
        for (unsigned i = 0; i < kMost; ++i)
            for (char& byte : blocks[i]) byte = ascii[i < ascii.size() ? i : 0];
        for (const char byte : ascii) isSpecial[static_cast<unsigned char>(byte)] = true;
        for (unsigned byte = 0x80; byte < sizeof isSpecial; ++byte) isSpecial[byte] = beyondAscii;
    }
    bool has(char byte) const noexcept { return isSpecial[static_cast<unsigned char>(byte)]; }
};

/// The first character that begins with a special byte; the end when there is none.
const char* FindSpecial(const mbchar::CodePage& page, const SpecialBytes& special, const char* at,
                        const char* end) noexcept;

struct CountedText {
    std::uint64_t length = 0;
    bool isChanged = false;
    void add(const char*, std::size_t count) { length += count; }
    void replace(const char* place, std::string_view by) {
        isChanged |= by.data() != place;
        length += by.size();
    }
};

struct WrittenText {
    char* out;
    // Pieces are short: a call of the runtime's memcpy takes longer than most of them.
    void add(const char* text, std::size_t count) {
        constexpr std::size_t kBlock = SpecialBytes::kBlock;
        for (; count >= kBlock; count -= kBlock, text += kBlock, out += kBlock)
            std::memcpy(out, text, kBlock);
        while (count-- != 0) *out++ = *text++;
    }
    void replace(const char*, std::string_view by) { add(by.data(), by.size()); }
};

/// A rule is called with the page, a special place and the end of the text, in order, and may remember the
/// places that it has seen; each walk has a rule of its own. A character that is to stay may come back as it
/// stands.
template <class Rule, class Out>
void Walk(const mbchar::CodePage& page, const SpecialBytes& special, TextPart text, Rule rule, Out& out) {
    while (!text.isEmpty()) {
        const char* const stop = FindSpecial(page, special, text.begin, text.end);
        out.add(text.begin, static_cast<std::size_t>(stop - text.begin));
        if (stop == text.end) return;
        const Replacement replacement = rule(page, stop, text.end);
        out.replace(stop, replacement.text);
        text.begin = stop + replacement.taken;
    }
}

/// The text with replacements, between two others; the text itself, shared, when that changes nothing.
template <class Rule>
SAnsiString ReplaceSpecial(const SAnsiString& text, const SpecialBytes& special, const Rule& rule,
                           std::string_view before = {}, std::string_view behind = {}) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    CountedText counted;
    counted.length = before.size() + behind.size();
    Walk(page, special, TextPart(text), rule, counted);
    if (!counted.isChanged && before.empty() && behind.empty()) return text;
    StringBuilder<char, 0> replaced(StringUnits(counted.length));
    WrittenText written{replaced.units()};
    written.add(before.data(), before.size());
    Walk(page, special, TextPart(text), rule, written);
    written.add(behind.data(), behind.size());
    return replaced;
}

}  // namespace TarnLibA500
