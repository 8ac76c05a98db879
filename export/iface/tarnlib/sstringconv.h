#pragma once

#include <concepts>
#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Numbers as text in a chosen radix, and reals as the C library writes and reads them in its current locale.
///
/// All members are static and may be called from any thread. Data that outlives the process, or goes to
/// another one, is written and read with NeutralString instead: reals here follow the locale's decimal point.
///
///     SAnsiString hex = SAnsiStringConv::ToString(255, 16);         // "FF"
///     SAnsiString price = SAnsiStringConv::ToString(3.5, 2);        // "3.50", or "3,50"
///     int port = 0;
///     if (!SAnsiStringConv::FromString(text, port)) ...             // no number; port is 0
///     unsigned long long mask = 0;
///     SAnsiStringConv::FromString("0x1F", mask, 16);                // 31
namespace TarnLibA500 {

/// Integers that have a text form: every width, signed and unsigned, but no characters and no bool.
template <class T>
concept TextInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t>;

/// Numbers in code-page text.
class TARN_API SAnsiStringConv {
  public:
    /// An integer in a radix from 2 to 36, digits above 9 in upper case. A negative number has a "-" in radix
    /// 10 only; in every other radix it is the unsigned value of its own width, deliberately: -1 as a short
    /// in radix 16 is "FFFF".
    static SAnsiString ToString(short number, int radix = 10);
    /// The same.
    static SAnsiString ToString(unsigned short number, int radix = 10);
    /// The same.
    static SAnsiString ToString(int number, int radix = 10);
    /// The same.
    static SAnsiString ToString(unsigned int number, int radix = 10);
    /// The same.
    static SAnsiString ToString(long number, int radix = 10);
    /// The same.
    static SAnsiString ToString(unsigned long number, int radix = 10);
    /// The same.
    static SAnsiString ToString(long long number, int radix = 10);
    /// The same.
    static SAnsiString ToString(unsigned long long number, int radix = 10);
    /// Fixed notation with "precision" decimals; the decimal point is always there (2.0 with none is "2.").
    static SAnsiString ToString(double number, int precision = 6);
    /// An address as 8 upper-case hexadecimal digits.
    static SAnsiString ToString(const void* address);
    /// Refused: it would write the address of a text.
    static SAnsiString ToString(const char*) = delete;

    /// Reads an integer. A "-" is taken for signed types, a "+" and leading blanks are not. A "." or a space
    /// ends the number and what follows is ignored: "12.5" reads 12, and " 5", "" and "-" read 0, all with
    /// success. In radix 16 an "x" is skipped wherever it stands, deliberately. False, with 0, for any other
    /// character and for a value that does not fit.
    template <TextInteger T>
    TARN_API static bool FromString(const SAnsiString& text, T& number, int radix = 10);
    /// Reads a real as the C library's strtod does, over the whole text; false, with 0, for anything else and
    /// for no text.
    static bool FromString(const SAnsiString& text, double& number);
    /// The same as strtof does.
    static bool FromString(const SAnsiString& text, float& number);
    /// Reads an address that ToString wrote.
    static bool FromString(const SAnsiString& text, void*& address);

    /// A number in radix 10; 0 to 99 are kept and shared.
    static SAnsiString StringFrom100Number(int number);
    /// The same with two digits for 0 to 9: "07".
    static SAnsiString StringFrom10Number2Digits(int number);
};

/// Numbers in UTF-16 text; the rules are those of SAnsiStringConv.
class TARN_API SWCharStringConv {
  public:
    /// Code units of the fixed array forms, the terminator included.
    static constexpr std::uint32_t kArrayUnits = 64;

    /// An integer in a radix from 2 to 36.
    static SWCharString ToString(short number, int radix = 10);
    /// The same.
    static SWCharString ToString(unsigned short number, int radix = 10);
    /// The same.
    static SWCharString ToString(int number, int radix = 10);
    /// The same.
    static SWCharString ToString(unsigned int number, int radix = 10);
    /// The same.
    static SWCharString ToString(long number, int radix = 10);
    /// The same.
    static SWCharString ToString(unsigned long number, int radix = 10);
    /// The same.
    static SWCharString ToString(long long number, int radix = 10);
    /// The same.
    static SWCharString ToString(unsigned long long number, int radix = 10);
    /// Fixed notation with "precision" decimals.
    static SWCharString ToString(double number, int precision = 6);
    /// An address as 8 upper-case hexadecimal digits.
    static SWCharString ToString(const void* address);
    /// Refused: it would write the address of a text.
    static SWCharString ToString(const wchar_t*) = delete;
    /// Into a string of the caller.
    template <TextInteger T>
    TARN_API static void ToString(T number, SWCharString& out, int radix = 10);
    /// Into an array of the caller. Only 64 binary digits do not fit: reported by assertion, and the array is
    /// empty.
    template <TextInteger T>
    TARN_API static void ToString(T number, wchar_t (&out)[kArrayUnits], int radix = 10);

    /// Reads an integer.
    template <TextInteger T>
    TARN_API static bool FromString(const SWCharString& text, T& number, int radix = 10);

    /// A number in radix 10; 0 to 99 are kept and shared.
    static SWCharString StringFrom100Number(int number);
    /// The same with two digits for 0 to 9: "07".
    static SWCharString StringFrom10Number2Digits(int number);
};

/// Small numbers in ASCII text; the rules are those of SAnsiStringConv.
class TARN_API SAsciiStringConv {
  public:
    /// A number in radix 10; 0 to 99 are kept and shared.
    static SAsciiString StringFrom100Number(int number);
    /// The same with two digits for 0 to 9: "07".
    static SAsciiString StringFrom10Number2Digits(int number);
};

/// The usual name of the conversions of texts in the process's code page.
using SStringConv = SAnsiStringConv;

}  // namespace TarnLibA500
