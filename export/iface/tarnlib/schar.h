#pragma once

#include <cstdint>

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

/// How one character of a flavour is stored: one code unit, or the bytes of one multi-byte character.
template <class unit, int flavour>
struct SCharData {
    static constexpr std::uint32_t capacity = 1;
    unit units[2] = {};        ///< followed by a zero unit
    std::uint32_t length = 0;  ///< code units in use; 0 for the null character
};
template <>
struct SCharData<char, 0> {
    static constexpr std::uint32_t capacity = 6;
    char units[7] = {};
    std::uint32_t length = 0;
};

template <class unit, int flavour>
class SChar_t {
  public:
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

    /// The code units, followed by a zero unit.
    TARN_MEM const unit* getUnits() const noexcept { return data_.units; }
    /// How many code units there are: 0 for the null character.
    TARN_MEM std::uint32_t getLength() const noexcept { return data_.length; }
    /// The first code unit, 0 for the null character. Comparing with == looks at the whole character instead.
    TARN_MEM operator unit() const noexcept { return data_.units[0]; }

    /// Classes of characters, by the C library's wide-character classes in the current locale. False for the
    /// null character and for one that has no Unicode value.
    bool isAlpha() const;
    bool isDigit() const;
    bool isLower() const;
    bool isUpper() const;
    /// True for a space or a tab.
    bool isBlank() const;
    /// True for white space in the sense of is_space.
    bool isWhiteSpace() const;
    /// True when the character exists in the representation: 7-bit ASCII, the process's code page, UTF-16.
    bool isAsciiChar() const;
    bool isMBCSChar() const;
    bool isOCAChar() const;
    bool isWideChar() const;
    /// True when the character has a Unicode value, which a broken multi-byte character has not.
    bool isUnicode() const;

    /// The character in the other case, or itself when it has none there.
    SChar_t toLower() const;
    SChar_t toUpper() const;

    /// Write the one character without a terminator; sizes are in bytes. The result is the code units
    /// written, 0 for the null character, or -1 when the room is too small, the output is null or the
    /// character does not exist there.
    int toAsciiChar(char* out, std::uint32_t nBytesInBuffer) const;
    int toMBCSChar(char* out, std::uint32_t nBytesInBuffer) const;
    int toOCAChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
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

    /// Bytes of the one character in the representation, without a terminator; 0 when it does not exist
    /// there.
    std::uint32_t getNBytesForAscii() const;
    std::uint32_t getNBytesForMBCS() const;
    std::uint32_t getNBytesForOCA() const;
    std::uint32_t getNBytesForWChar() const;
    std::uint32_t getNBytesForUTF8() const;
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
