#pragma once

#include <cstddef>
#include <cstdint>

#include "tarnlib/tarnapi.h"

/// Characters of a multi-byte code page: how long one is, what it is in UTF-16, and back.
///
/// Everything in the library that steps over or converts code-page text comes here, because the C runtime's
/// own functions step over terminators, accept broken pairs and map lead bytes. The rules:
/// - a character is one byte, or a lead byte with a trail byte that the code page defines for it;
/// - a lead byte without such a trail byte is invalid; an invalid byte is stepped over as one character;
/// - nothing is ever read beyond a zero byte.
/// Tables are filled from the system's conversion on first use, a row of 256 entries at a time, and live for
/// ever.
namespace TarnLibA500::mbchar {

/// Room for any one character, in bytes, and how far a character is looked at.
constexpr std::size_t kMaxCharacterBytes = 6;
/// What stands for a character that the other side does not have.
constexpr char kReplacement = '?';

class CodePage {
  public:
    /// The table of a code page by its number (0 is the C locale: bytes 0 to 255 are U+0000 to U+00FF). A
    /// code page that the system does not have, or whose characters take more than two bytes, behaves like
    /// the C locale. Throws BadAllocation when a table that is new to the process cannot be made.
    static const CodePage& Of(unsigned number);
    /// The code page of the C locale's LC_CTYPE category, which the process may change at any time: an
    /// operation asks once and hands the answer down, so that sizes and what is written agree.
    static const CodePage& Current();

    unsigned number() const noexcept { return number_; }
    /// True when every byte is a character.
    bool isSingleByte() const noexcept { return singleByte_; }
    bool isLeadByte(char byte) const noexcept { return lead_[static_cast<unsigned char>(byte)]; }

    /// Bytes of the character at the text: 0 on the terminator, otherwise 1 or 2; an invalid byte counts 1.
    unsigned step(const char* text) const noexcept {
        if (*text == '\0') return 0;
        return isLeadByte(*text) && decodePair(text) != kNoCharacter ? 2 : 1;
    }
    /// Converts the character at the text. Returns its bytes, 0 on the terminator (and stores 0), -1 when it
    /// is invalid (and stores nothing).
    int toWide(wchar_t& out, const char* text) const noexcept;
    /// Converts the character at a place before the end of a text, beyond which nothing is read; a zero byte is
    /// a character here. Returns its bytes, 1 or 2; an invalid byte becomes the replacement and counts 1.
    unsigned toWideOrReplace(wchar_t& out, const char* text, const char* end) const noexcept {
        if (!isLeadByte(*text)) {
            out = static_cast<wchar_t>(single_.entry[static_cast<unsigned char>(*text)]);
            return 1;
        }
        const std::uint16_t unit = end - text > 1 ? decodePair(text) : kNoCharacter;
        out = static_cast<wchar_t>(unit != kNoCharacter ? unit : std::uint16_t{kReplacement});
        return unit != kNoCharacter ? 2 : 1;
    }
    /// Converts one UTF-16 unit into at most two bytes. Returns the bytes, or -1 when the code page has no
    /// character for it; a near likeness that the system offers ("best fit") counts as a character. U+0000
    /// gives one zero byte.
    int fromWide(char* out, wchar_t unit) const noexcept;
    /// Lower case of one byte for comparisons without regard to case; lead bytes and bytes without case stay.
    unsigned char foldByte(char byte) const noexcept { return fold_[static_cast<unsigned char>(byte)]; }

  private:
    static constexpr std::uint16_t kNoCharacter = 0;

    struct Row {
        std::uint16_t entry[256];
    };

    CodePage() = default;
    static CodePage* Create(unsigned number);
    static const CodePage& FindOrCreate(unsigned number);

    void fillSingles();
    void fillFolds();
    void fillPairRow(unsigned char lead) const noexcept;
    void fillEncodeRow(unsigned high) const noexcept;
    std::uint16_t encodeOne(wchar_t unit) const noexcept;
    std::uint16_t decodePair(const char* text) const noexcept;

    unsigned number_;
    unsigned systemNumber_;  // what the system's conversion is asked for; 0: not at all
    bool singleByte_;
    bool lead_[256];
    unsigned char fold_[256];
    Row single_;
    mutable volatile long pairReady_[256];
    mutable volatile long encodeReady_[256];
    mutable Row pairs_[256];
    mutable Row encode_[256];
    CodePage* next_;
};

/// Characters up to the terminator, an invalid byte counting as one.
std::uint32_t CountCharacters(const CodePage& page, const char* text) noexcept;
/// The text advanced by a number of characters, stopping at the terminator.
const char* Advance(const CodePage& page, const char* text, std::uint32_t characters) noexcept;

}  // namespace TarnLibA500::mbchar
