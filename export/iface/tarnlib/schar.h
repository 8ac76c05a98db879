#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "tarnlib/tarnapi.h"

/// One character of a string flavour, as the per-character operations of the strings take and return it.
///
/// Flavours: <char, 0> one character of the process's narrow text (one or two bytes of a code page, one to four
/// of UTF-8), <char, 1> one ASCII byte, <wchar_t, 1> one UTF-16 code unit. A character is a plain value; the null
/// character stands for "none".
///
///     SAnsiString path("C:\\logs");
///     if (path.getAt(path.getNChars() - 1) != '\\') path.concat("\\");   // a trail byte 5C is no backslash
///     SChar_t<char, 0> first = path.getAt(0);
///     if (first.isLower()) path.setAt(0, first.toUpper());
namespace TarnLibA500 {

/// True for white space: below 128 what the C library's isspace says, from there on the Unicode property
/// White_Space.
TARN_API bool is_space(wchar_t unit);
/// True for upper case: below 128 what the C library's isupper says, from there on the Unicode property
/// Uppercase.
TARN_API bool is_upper(wchar_t unit);

/// Numbers that are no code unit of a text. Strings refuse them, because `text += 65` hardly ever means the
/// letter: operator<< appends numbers. An ASCII letter may stand for its UTF-16 unit.
template <class T, class unit>
concept SForeignNumber = (std::is_arithmetic_v<T> || std::is_enum_v<T>)&&!std::same_as<T, unit> &&
                         !(std::same_as<T, char> && sizeof(unit) > sizeof(char));

/// What a refused number becomes where null pointers, which are numbers too, are taken.
template <class unit>
struct SRefusedNumber {
    /// Takes any such number.
    template <SForeignNumber<unit> T>
    SRefusedNumber(T) {}
};

/// How one character of a flavour is stored: one code unit.
template <class unit, int flavour>
struct SCharData {
    static constexpr std::uint32_t capacity = 1;  ///< code units that fit
    unit units[2] = {};                           ///< followed by a zero unit
    std::uint32_t length = 0;                     ///< code units in use; 0 for the null character
};
/// How one character of narrow text is stored: its bytes.
template <>
struct SCharData<char, 0> {
    static constexpr std::uint32_t capacity = 6;  ///< bytes that fit
    char units[7] = {};                           ///< followed by a zero byte
    std::uint32_t length = 0;                     ///< bytes in use; 0 for the null character
};

/// One character: a value that can be copied, compared and asked what it is.
template <class unit, int flavour>
class SChar_t {
  public:
    /// How it is stored.
    using CharData = SCharData<unit, flavour>;

    /// The null character.
    TARN_MEM SChar_t() noexcept = default;
    /// One code unit. A zero unit is the null character; a byte that is only a part of a longer character is
    /// kept as it is.
    TARN_MEM SChar_t(unit single) noexcept {
        data_.units[0] = single;
        data_.length = single != unit() ? 1 : 0;
    }
    /// The first character of a zero-terminated text; the null character for an empty or a null text.
    explicit SChar_t(const unit* oneChar);
    /// A copy.
    TARN_MEM SChar_t(const SChar_t&) noexcept = default;
    /// Replaces the character. Not for temporary ones: `text[0] = 'x'` would change a copy; setAt replaces.
    TARN_MEM SChar_t& operator=(const SChar_t&) & noexcept = default;

    /// The code units, followed by a zero unit.
    TARN_MEM const unit* getUnits() const noexcept { return data_.units; }
    /// How many code units there are: 0 for the null character.
    TARN_MEM std::uint32_t getLength() const noexcept { return data_.length; }
    /// The first code unit, 0 for the null character. Comparing with == looks at the whole character instead.
    TARN_MEM operator unit() const noexcept { return data_.units[0]; }

    // --- classes of characters; false for the null character, for one that has no Unicode value, and for one
    // beyond U+FFFF ---

    /// True for a letter by the C library's wide-character classes in the current locale.
    bool isAlpha() const;
    /// True for a decimal digit by the C library's wide-character classes.
    bool isDigit() const;
    /// True for a lower-case letter by the C library's wide-character classes in the current locale.
    bool isLower() const;
    /// True for upper case in the sense of is_upper.
    bool isUpper() const;
    /// True for a space or a tab.
    bool isBlank() const;
    /// True for white space in the sense of is_space.
    bool isWhiteSpace() const;
    /// True when the character exists in 7-bit ASCII.
    bool isAsciiChar() const;
    /// True when the character exists in the process's narrow text.
    bool isMBCSChar() const;
    /// True when the character exists in UTF-16, in one unit or two.
    bool isOCAChar() const;
    /// True when the character exists in UTF-16, in one unit or two.
    bool isWideChar() const;
    /// True when the character has a Unicode value, which a broken multi-byte character has not.
    bool isUnicode() const;

    /// The character in lower case, or itself when it has none. In narrow text that is UTF-8 by the system's map of
    /// the whole of Unicode, otherwise by the C library's in the current locale.
    SChar_t toLower() const;
    /// The character in upper case, or itself when it has none. In narrow text that is UTF-8 by the system's map of
    /// the whole of Unicode, otherwise by the C library's in the current locale.
    SChar_t toUpper() const;

    // --- conversion: the one character without a terminator; sizes are in bytes ---
    // The result is the code units written, 0 for the null character, or -1 when the room is too small, the
    // output is null or the character does not exist there.

    /// Into 7-bit ASCII.
    int toAsciiChar(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into the process's narrow text.
    int toMBCSChar(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16: one unit, two for a character beyond U+FFFF.
    int toOCAChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16: one unit, two for a character beyond U+FFFF.
    int toWideChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// The UTF-16 unit of the character; 0 for the null character, for one without a Unicode value, and for one
    /// that takes two units.
    wchar_t toUChar() const;
    /// Takes the character with this UTF-16 unit. False, and unchanged, when the flavour has no such character,
    /// as narrow text that is UTF-8 has none for half a surrogate pair.
    bool fromUChar(wchar_t code);
    /// The code point of the character; 0 for the null character and for one without a Unicode value.
    std::uint32_t toUCS4() const;
    /// Takes the character with this code point. False, and unchanged, when the flavour has no such character: a
    /// UTF-16 unit holds none beyond U+FFFF.
    bool fromUCS4(std::uint32_t code);
    /// Takes a character of another flavour, through its code point; false, and unchanged, when that is
    /// impossible.
    template <class otherUnit, int otherFlavour>
    bool fromSChar(const SChar_t<otherUnit, otherFlavour>& other) {
        return other.isUnicode() && fromUCS4(other.toUCS4());
    }

    // --- bytes of the one character, without a terminator; 0 when it does not exist there ---

    /// In 7-bit ASCII.
    std::uint32_t getNBytesForAscii() const;
    /// In the process's narrow text.
    std::uint32_t getNBytesForMBCS() const;
    /// In UTF-16.
    std::uint32_t getNBytesForOCA() const;
    /// In UTF-16.
    std::uint32_t getNBytesForWChar() const;
    /// In UTF-8.
    std::uint32_t getNBytesForUTF8() const;
    /// In UTF-16.
    std::uint32_t getNBytesForUChar() const;

    /// True when all code units are the same.
    friend bool operator==(const SChar_t& left, const SChar_t& right) noexcept {
        if (left.data_.length != right.data_.length) return false;
        for (std::uint32_t i = 0; i < left.data_.length; ++i) {
            if (left.data_.units[i] != right.data_.units[i]) return false;
        }
        return true;
    }
    /// True when the character is this one code unit and nothing else.
    friend bool operator==(const SChar_t& left, unit right) noexcept { return left == SChar_t(right); }
    /// The same for the code unit as a number.
    friend bool operator==(const SChar_t& left, int right) noexcept {
        return left == SChar_t(static_cast<unit>(right));
    }

  private:
    CharData data_;
};

extern template class TARN_API SChar_t<char, 0>;
extern template class TARN_API SChar_t<char, 1>;
extern template class TARN_API SChar_t<wchar_t, 1>;

}  // namespace TarnLibA500
