#pragma once

#include <concepts>
#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/tarnapi.h"

/// Numbers as text that does not depend on a locale: radix 10, "." as the decimal point. What configuration
/// files, URLs, registry values and other lasting data use.
///
/// All members are static and may be called from any thread. A double that is written without a precision and
/// read again is the same number (a negative zero comes back as zero).
///
///     SAnsiString text = NeutralString::FromNumber(0.1);            // "0.1"
///     text = NeutralString::FromNumber(2.675, 2);                   // "2.68"
///     double number = 0;
///     if (!NeutralString::ToNumber(" 1.5e3 ", number)) ...   // 1500
///     unsigned short port = 0;
///     if (!NeutralString::ToNumber("70000", port)) ...       // does not fit: false, 0
///     int days = 0;
///     NeutralString::ToNumber("", days);                     // true, and 0
///     if (!NeutralString::ToNumberStrict(option, days)) ...  // for what users type: "" and "7.5" are refused
namespace TarnLibA500 {

/// Reals that have a text form.
template <class T>
concept TextReal = std::same_as<T, float> || std::same_as<T, double>;
/// Numbers that have a text form.
template <class T>
concept TextNumber = TextInteger<T> || TextReal<T>;

/// Locale-neutral numbers; all members are static.
class TARN_API NeutralString {
  public:
    /// Significant decimal digits that the form with a precision keeps.
    static constexpr int kPrecisionDigits = 15;

    /// An integer in radix 10.
    template <TextInteger T>
    TARN_API static SAnsiString FromNumber(T number);
    /// The same as ASCII text.
    template <TextInteger T>
    TARN_API static SAsciiString FromNumberToAscii(T number);
    /// The shortest text that reads back as the same number: plain notation from 1e-5 up to below 1e17,
    /// otherwise digits with an exponent ("1.5E-7"). Whole numbers have no point; -0 is "0". A number that is
    /// not finite is reported by assertion and gives no text.
    static SAnsiString FromNumber(double number);
    /// The same as ASCII text.
    static SAsciiString FromNumberToAscii(double number);
    /// With "precision" decimals. The number is first taken to 15 significant decimal digits and those are
    /// rounded half up, away from 0, so 2.675 with 2 is "2.68"; digits beyond are "0". Without decimals there
    /// is no point; there is no "-0.00". A negative precision is reported by assertion and counts as none.
    static SAnsiString FromNumber(double number, int precision);
    /// The same for a float, as the double that it is.
    static SAnsiString FromNumber(float number, int precision);
    /// The same for an integer, whose digits are all kept: 5 with 2 is "5.00".
    template <TextInteger T>
    TARN_API static SAnsiString FromNumber(T number, int precision);
    /// The same for a double as ASCII text.
    static SAsciiString FromNumberToAscii(double number, int precision);

    /// Reads a number from the start of a text. Integers follow the rules of SAnsiStringConv::FromString.
    /// Reals skip blanks and tabs before the number and between its parts, take a "+", an exponent after "e"
    /// or "E", and ignore what follows; they are rounded correctly from the first 20 significant digits.
    /// False, with 0, when there is no number and when it does not fit the type; a real that is too small is
    /// 0, with success.
    template <TextNumber T>
    TARN_API static bool ToNumber(const SAnsiString& text, T& number);
    /// The same from ASCII text.
    template <TextNumber T>
    TARN_API static bool ToNumber(const SAsciiString& text, T& number);
    /// The same from a zero-terminated text; null is an empty one.
    template <TextNumber T>
    static bool ToNumber(const char* text, T& number) {
        return ToNumber(SAnsiString(text), number);
    }
    /// The same from the text between two positions.
    template <TextNumber T>
    TARN_API static bool ToNumber(const SAsciiString::iterator& first, const SAsciiString::iterator& last,
                                  T& number);

    /// Reads a number that is the whole text: for what people type, where a slip must not read as 0. At least one
    /// digit, no blanks, nothing behind the number, and for integers no "." either; "-" for signed types and
    /// reals, "+" for reals. False, with 0, for everything else and for what does not fit the type; a real that
    /// is too small is 0, with success.
    template <TextNumber T>
    TARN_API static bool ToNumberStrict(const SAnsiString& text, T& number);
    /// The same from ASCII text.
    template <TextNumber T>
    TARN_API static bool ToNumberStrict(const SAsciiString& text, T& number);
    /// The same from a zero-terminated text; null is an empty one.
    template <TextNumber T>
    static bool ToNumberStrict(const char* text, T& number) {
        return ToNumberStrict(SAnsiString(text), number);
    }
    /// The same from the text between two positions.
    template <TextNumber T>
    TARN_API static bool ToNumberStrict(const SAsciiString::iterator& first,
                                        const SAsciiString::iterator& last, T& number);

    /// Adds one in the last place of a decimal number's digits, which end at an index; a "." is stepped over.
    /// False when the carry runs off the front: the digits are all "0" then, and a "1" belongs before them.
    static bool RoundUpHelper(char* digits, int lastIndex);
    /// Writes a whole number of at most 64 bits in radix 10 with a terminator; returns the digits. 21 bytes
    /// always do.
    static std::uint32_t ToStringFrom64(char* out, unsigned long long part);
};

}  // namespace TarnLibA500
