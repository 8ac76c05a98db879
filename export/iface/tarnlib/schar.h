#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "tarnlib/tarnapi.h"

/// One character of a string flavour, as the per-character operations of the strings take and return it.
///
/// Flavours: <char, 0> one character of the process's multi-byte code page (one or two bytes), <char, 1> one
/// ASCII byte, <wchar_t, 1> one UTF-16 code unit. A character is a plain value; the null character stands for
/// "none".
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
/// How one multi-byte character is stored: its bytes.
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
    /// One code unit. A zero unit is the null character; in a multi-byte code page a lone lead byte is kept
    /// as it is.
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

    // --- classes of characters; false for the null character and for one that has no Unicode value ---

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
    /// True when the character exists in the process's code page.
    bool isMBCSChar() const;
    /// True when the character exists in UTF-16.
    bool isOCAChar() const;
    /// True when the character exists in UTF-16.
    bool isWideChar() const;
    /// True when the character has a Unicode value, which a broken multi-byte character has not.
    bool isUnicode() const;

    /// The character in lower case, or itself when it has none.
    SChar_t toLower() const;
    /// The character in upper case, or itself when it has none.
    SChar_t toUpper() const;

    // --- conversion: the one character without a terminator; sizes are in bytes ---
    // The result is the code units written, 0 for the null character, or -1 when the room is too small, the
    // output is null or the character does not exist there.

    /// Into 7-bit ASCII.
    int toAsciiChar(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into the process's code page.
    int toMBCSChar(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16.
    int toOCAChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16.
    int toWideChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// The UTF-16 unit of the character; 0 for the null character and for one without a Unicode value.
    wchar_t toUChar() const;
    /// Takes the character with this UTF-16 unit. False, and unchanged, when the flavour has no such
    /// character.
    bool fromUChar(wchar_t code);
    /// Takes a character of another flavour, through its UTF-16 unit; false, and unchanged, when that is
    /// impossible.
    template <class otherUnit, int otherFlavour>
    bool fromSChar(const SChar_t<otherUnit, otherFlavour>& other) {
        return other.isUnicode() && fromUChar(other.toUChar());
    }

    // --- bytes of the one character, without a terminator; 0 when it does not exist there ---

    /// In 7-bit ASCII.
    std::uint32_t getNBytesForAscii() const;
    /// In the process's code page.
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
