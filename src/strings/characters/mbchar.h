#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "tarnlib/tarnapi.h"

/// Characters of the process's narrow text: how long one is, what it is in Unicode, and back.
///
/// Everything in the library that steps over or converts narrow text comes here, because the C runtime's
/// own functions step over terminators, accept broken pairs and map lead bytes. The rules:
/// - a character of a code page is one byte, or a lead byte with a trail byte that the code page defines for it;
/// - a character of UTF-8 is a well-formed sequence of one to four bytes;
/// - every other byte is invalid; an invalid byte is stepped over as one character;
/// - nothing is ever read beyond a zero byte.
/// Tables are filled from the system's conversion on first use, a row of 256 entries at a time, and live for
/// ever. UTF-8 needs none: its characters are computed.
namespace TarnLibA500::mbchar {

/// Room for any one character, in bytes.
constexpr std::size_t kMaxCharacterBytes = 6;
/// The longest character that there is, in bytes.
constexpr std::size_t kLongestCharacter = 4;
/// What stands for a character that the other side does not have.
constexpr char kReplacement = '?';

/// A character of a text.
struct Character {
    static constexpr char32_t kInvalid = 0xFFFFFFFF;

    unsigned bytes;  ///< how long it is
    char32_t code;   ///< its code point; kInvalid for an invalid byte

    bool isValid() const noexcept { return code != kInvalid; }
    /// False also for a character of two UTF-16 units.
    bool isOneUnit() const noexcept { return code <= 0xFFFF; }
};

class CodePage {
  public:
    /// The table of a code page by its number (0 is the C locale: bytes 0 to 255 are U+0000 to U+00FF). A
    /// code page that the system does not have, or whose characters take more than two bytes, behaves like
    /// the C locale. Throws BadAllocation when a table that is new to the process cannot be made.
    static const CodePage& Of(unsigned number);
    /// UTF-8, which a process chooses: the C locale cannot be set to it. Throws as Of does.
    static const CodePage& Utf8();
    /// The page of the process's narrow text: the one that was chosen, else the code page of the C locale's
    /// LC_CTYPE category, which the process may change at any time: an operation asks once and hands the answer
    /// down, so that sizes and what is written agree.
    static const CodePage& Current();
    /// From now on Current is UTF-8, whatever the locale. Throws as Of does.
    static void UseUtf8();
    /// From now on Current is what the locale says.
    static void FollowLocale() noexcept;
    /// True after UseUtf8.
    static bool CurrentIsUtf8() noexcept;

    unsigned number() const noexcept { return number_; }
    bool isUtf8() const noexcept { return isUtf8_; }
    /// True when every byte is a character.
    bool isSingleByte() const noexcept { return singleByte_; }
    /// True when the bytes of a valid character are found nowhere but where such a character begins. In a page
    /// with trail bytes they may also stand across two others, or inside one.
    bool isFoundByBytes() const noexcept { return singleByte_ || isUtf8_; }
    /// True when the byte is a character by itself, whatever stands around it. Other bytes are part of a longer
    /// character, or invalid.
    bool isAlone(char byte) const noexcept { return !partial_[static_cast<unsigned char>(byte)]; }

    /// For all bytes, whether isAlone is false.
    const bool (&partials() const noexcept)[256] { return partial_; }

    /// True when the bytes below 128 are the characters of ASCII, as they are in all pages but a few old ones.
    bool hasAscii() const noexcept { return hasAscii_; }
    /// True when the byte is white space (is_space) by itself.
    bool isSpaceAlone(char byte) const noexcept { return space_[static_cast<unsigned char>(byte)]; }

    /// Bytes of the character at the text: 0 on the terminator, otherwise 1 to 4; an invalid byte counts 1.
    unsigned step(const char* text) const noexcept {
        if (*text == '\0') return 0;
        if (isAlone(*text)) return 1;
        return isUtf8_ ? stepInUtf8(text) : stepPair(text);
    }
    /// The same at a lead byte of a page with such.
    [[gnu::always_inline]] unsigned stepPair(const char* text) const noexcept {
        // A branch that nearly always goes one way: the place of the next character is guessed then, and need not
        // wait for the table, which would take four times as long.
        if (__builtin_expect_with_probability(unitOfPair(text) != 0, true, 0.999)) return 2;
        return 1;
    }
    /// The character at a place before the end of a text, beyond which nothing is read; a zero byte is a
    /// character here.
    Character characterAt(const char* text, const char* end) const noexcept {
        if (isAlone(*text)) return {1, single_.entry[static_cast<unsigned char>(*text)]};
        return partialAt(text, end);
    }
    /// The character at the text, which a zero byte ends: that has 0 bytes and the code 0.
    Character characterAt(const char* text) const noexcept {
        if (*text == '\0') return {0, 0};
        if (isAlone(*text)) return {1, single_.entry[static_cast<unsigned char>(*text)]};
        return partialAt(text);
    }
    /// Converts the character at the text into one UTF-16 unit. Returns its bytes, 0 on the terminator (and
    /// stores 0), -1 when it is invalid or takes two units (and stores nothing).
    int toWide(wchar_t& out, const char* text) const noexcept;
    /// Converts one UTF-16 unit into at most three bytes. Returns the bytes, or -1 when the page has no
    /// character for it, which in UTF-8 only half a surrogate pair is; a near likeness that the system offers
    /// ("best fit") counts as a character. U+0000 gives one zero byte.
    int fromWide(char* out, wchar_t unit) const noexcept;
    /// The same for a code point, into at most four bytes.
    int fromCode(char* out, char32_t code) const noexcept;
    /// What a byte is that is a character by itself.
    wchar_t unitOf(char byte) const noexcept {
        return static_cast<wchar_t>(single_.entry[static_cast<unsigned char>(byte)]);
    }
    /// What a lead byte and the byte behind it are, in a page with such; 0 when they are no character.
    wchar_t unitOfPair(const char* text) const noexcept {
        const auto lead = static_cast<unsigned char>(text[0]);
        if (!pairReady_[lead].load(std::memory_order_acquire)) [[unlikely]]
            fillPairRow(lead);
        return static_cast<wchar_t>(pairs_[lead].entry[static_cast<unsigned char>(text[1])]);
    }
    /// The bytes of a unit, not in UTF-8: one as it is, or two with the first one high. 0 when there are none, and
    /// for U+0000.
    std::uint16_t bytesOf(wchar_t unit) const noexcept {
        const unsigned high = unit >> 8;
        if (!encodeReady_[high].load(std::memory_order_acquire)) [[unlikely]]
            fillEncodeRow(high);
        return encode_[high].entry[unit & 0xFF];
    }
    /// Lower case of one byte for comparisons without regard to case; bytes that are part of longer characters
    /// and bytes without case stay.
    unsigned char foldByte(char byte) const noexcept { return fold_[static_cast<unsigned char>(byte)]; }

  private:
    static constexpr std::uint16_t kNoCharacter = 0;

    struct Row {
        std::uint16_t entry[256];
    };

    CodePage() = default;
    static CodePage* Create(unsigned number, bool isUtf8);
    static const CodePage& FindOrCreate(unsigned number, bool isUtf8);
    static const CodePage& FollowLocale(const CodePage* before);

    void findPartials() noexcept;
    void fillSingles() noexcept;
    void fillSpaces() noexcept;
    void fillFolds() noexcept;
    [[gnu::cold]] void fillPairRow(unsigned char lead) const noexcept;
    [[gnu::cold]] void fillEncodeRow(unsigned high) const noexcept;
    std::uint16_t encodeOne(wchar_t unit) const noexcept;
    static unsigned stepInUtf8(const char* text) noexcept;
    Character partialAt(const char* text) const noexcept;
    Character partialAt(const char* text, const char* end) const noexcept;

    unsigned number_ = 0;
    unsigned systemNumber_ = 0;  // what the system's conversion is asked for; 0: not at all
    bool isUtf8_ = false;
    bool singleByte_ = true;
    bool hasAscii_ = true;
    bool partial_[256] = {};
    bool space_[256] = {};
    unsigned char fold_[256] = {};
    Row single_ = {};
    mutable std::atomic<bool> pairReady_[256] = {};
    mutable std::atomic<bool> encodeReady_[256] = {};
    // Not initialised: rows that are not filled are not touched either, and cost no memory.
    mutable Row pairs_[256];
    mutable Row encode_[256];
    CodePage* next_ = nullptr;
};

/// Characters up to the terminator, an invalid byte counting as one.
std::uint32_t CountCharacters(const CodePage& page, const char* text) noexcept;
/// The same up to the end of a text, or its first zero byte.
std::uint32_t CountCharacters(const CodePage& page, const char* text, const char* end) noexcept;
/// The text advanced by a number of characters, stopping at the terminator.
const char* Advance(const CodePage& page, const char* text, std::uint32_t characters) noexcept;
/// The same, stopping at the end of a text, too.
const char* Advance(const CodePage& page, const char* text, const char* end,
                    std::uint32_t characters) noexcept;

}  // namespace TarnLibA500::mbchar
