#include "tarnlib/neutralstr.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "diag/assert/require.h"
#include "strings/base/asciichar.h"
#include "strings/base/intconv.h"
#include "strings/base/integertypes.h"
#include "strings/numbers/neutralreal.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "neutralstr";
constexpr const char* kMisuse = "temp";
constexpr int kDecimal = 10;

constexpr int kLargestPlainExponent = 16;
constexpr int kSmallestPlainExponent = -5;
constexpr std::uint32_t kShortestRoom = 40;
constexpr int kMaxDigits = 17;

// Numbers below so much are looked at as whole numbers of millionths: 15 digits, which a double always tells
// apart.
constexpr double kShortDecimals = 1e9;
constexpr int kShortDecimalPlaces = 6;
constexpr std::uint32_t kMillionths = 1'000'000;
constexpr std::uint32_t kFewestPlainMillionths = 10;  // 0.00001; below there is an exponent
constexpr double kNoFractions = 4503599627370496.0;   // 2^52: doubles from here on are whole numbers
constexpr double kWholeNumbers = 9007199254740992.0;  // 2^53

// The smallest double ends within its 15 digits; further decimals are zeros.
constexpr int kMostDecimals = 340;
constexpr std::uint32_t kFixedRoom = 1 + 309 + 1 + kMostDecimals;

/// The digits of a positive number: d.ddd x 10^exponent.
struct Digits {
    char text[kMaxDigits + 1];
    int count = 0;
    int exponent = 0;
};

void DropTrailingZeros(Digits& digits) {
    while (digits.count > 1 && digits.text[digits.count - 1] == '0') --digits.count;
}

// From "d.ddde+xx".
Digits Split(const char* at, const char* end) {
    Digits digits;
    for (; *at != 'e'; ++at) {
        if (*at != '.') digits.text[digits.count++] = *at;
    }
    ++at;
    if (*at == '+') ++at;
    std::from_chars(at, end, digits.exponent);
    DropTrailingZeros(digits);
    return digits;
}

/// A positive number with few decimals.
struct ShortDecimal {
    std::uint32_t whole;
    std::uint32_t millionths;
};

// Most numbers that people write have few decimals, and then no search for the digits is needed: of the
// decimal numbers with up to 15 digits at most one reads back as a given double. False for all others.
bool ToShortDecimal(double magnitude, ShortDecimal& decimal) {
    if (!(magnitude < kShortDecimals)) return false;
    // The sum has no room for a fraction, so it is rounded to a whole number.
    const double millionths = magnitude * kMillionths + kNoFractions - kNoFractions;
    if (millionths / kMillionths != magnitude) return false;
    const auto whole = static_cast<std::int32_t>(magnitude);
    decimal.whole = static_cast<std::uint32_t>(whole);
    decimal.millionths = static_cast<std::uint32_t>(
        static_cast<std::int32_t>(millionths - static_cast<double>(whole) * kMillionths));
    return true;
}

bool WholeDigits(double magnitude, Digits& digits) {
    if (!(magnitude < kWholeNumbers) || magnitude != std::trunc(magnitude)) return false;
    const auto whole = static_cast<unsigned long long>(magnitude);
    digits.count = static_cast<int>(NeutralString::ToStringFrom64(digits.text, whole));
    digits.exponent = digits.count - 1;
    DropTrailingZeros(digits);
    return true;
}

Digits ShortestDigits(double magnitude) {
    Digits digits;
    if (WholeDigits(magnitude, digits)) return digits;
    char text[kShortestRoom];
    const auto end = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific).ptr;
    return Split(text, end);
}

Digits FifteenDigits(double magnitude) {
    char text[kShortestRoom];
    const auto end = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific,
                                   NeutralString::kPrecisionDigits - 1)
                         .ptr;
    return Split(text, end);
}

char* Put(char* out, const char* text, int count) {
    std::memcpy(out, text, static_cast<std::size_t>(count));
    return out + count;
}

char* PutZeros(char* out, int count) {
    std::memset(out, '0', static_cast<std::size_t>(count));
    return out + count;
}

char* PutPlain(char* out, const Digits& digits) {
    const int whole = digits.exponent + 1;  // digits before the point
    if (whole <= 0) {
        out = Put(out, "0.", 2);
        out = PutZeros(out, -whole);
        return Put(out, digits.text, digits.count);
    }
    if (digits.count <= whole) {
        out = Put(out, digits.text, digits.count);
        return PutZeros(out, whole - digits.count);
    }
    out = Put(out, digits.text, whole);
    *out++ = '.';
    return Put(out, digits.text + whole, digits.count - whole);
}

char* PutWithExponent(char* out, const Digits& digits) {
    out = Put(out, digits.text, 1);
    if (digits.count > 1) *out++ = '.';
    out = Put(out, digits.text + 1, digits.count - 1);
    *out++ = 'E';
    return out + StringConvFromInteger(out, digits.exponent, kDecimal);
}

char* PutPlain(char* out, const ShortDecimal& decimal) {
    out += intconv::FromDecimal(out, decimal.whole);
    if (decimal.millionths == 0) return out;
    *out++ = '.';
    intconv::PutDecimal(out, decimal.millionths, kShortDecimalPlaces);
    out += kShortDecimalPlaces;
    while (out[-1] == '0') --out;
    return out;
}

char* PutShortest(char* out, double magnitude) {
    ShortDecimal decimal;
    if (ToShortDecimal(magnitude, decimal)) {
        const bool isPlain = decimal.whole != 0 || decimal.millionths >= kFewestPlainMillionths;
        if (isPlain || decimal.millionths == 0) return PutPlain(out, decimal);
    }
    const Digits digits = ShortestDigits(magnitude);
    const bool plain = digits.exponent >= kSmallestPlainExponent && digits.exponent <= kLargestPlainExponent;
    return plain ? PutPlain(out, digits) : PutWithExponent(out, digits);
}

template <class String>
String ShortestText(double number) {
    if (!Require(std::isfinite(number), kUnit, kMisuse)) return String();
    char text[kShortestRoom];
    char* at = text;
    if (number < 0) *at++ = '-';
    at = PutShortest(at, std::fabs(number));
    return String(text, static_cast<std::uint32_t>(at - text));
}

// Cuts the digits to those that stand before and in the decimals, rounded half up; no digits are left of a
// number that rounds to 0.
void RoundToDecimals(Digits& digits, int decimals) {
    const std::int64_t wanted = std::int64_t{digits.exponent} + 1 + decimals;
    if (wanted >= digits.count) return;
    if (wanted < 0) {
        digits.count = 0;
        return;
    }
    const auto kept = static_cast<int>(wanted);
    const bool up = digits.text[kept] >= '5';
    digits.count = kept;
    if (!up || NeutralString::RoundUpHelper(digits.text, kept - 1)) return;
    std::memmove(digits.text + 1, digits.text, static_cast<std::size_t>(kept));
    digits.text[0] = '1';
    ++digits.count;
    ++digits.exponent;
}

// Digits of the powers of ten from one down to another; before and behind those of the number there are
// zeros.
char* PutPowers(char* out, const Digits& digits, int from, int to) {
    for (int power = from; power >= to; --power) {
        const int index = digits.exponent - power;
        *out++ = index >= 0 && index < digits.count ? digits.text[index] : '0';
    }
    return out;
}

// The same for a number with few decimals, of which so many are kept. Returns those as a whole number.
std::uint32_t RoundToDecimals(ShortDecimal& decimal, int decimals) {
    if (decimals == kShortDecimalPlaces) return decimal.millionths;
    const std::uint32_t unit =
        intconv::kPowersOfTen[static_cast<std::size_t>(kShortDecimalPlaces - decimals)];
    const std::uint32_t rounded = (decimal.millionths + unit / 2) / unit;
    if (rounded * unit != kMillionths) return rounded;
    ++decimal.whole;
    return 0;
}

// The sign stands in front of what does not round to 0.
char* PutSign(char* out, bool negative, bool isZero) {
    if (negative && !isZero) *out++ = '-';
    return out;
}

char* PutFixed(char* out, bool negative, ShortDecimal decimal, int decimals) {
    const int kept = std::min(decimals, kShortDecimalPlaces);
    const std::uint32_t rest = RoundToDecimals(decimal, kept);
    out = PutSign(out, negative, decimal.whole == 0 && rest == 0);
    out += intconv::FromDecimal(out, decimal.whole);
    if (decimals == 0) return out;
    *out++ = '.';
    intconv::PutDecimal(out, rest, static_cast<std::uint32_t>(kept));
    return PutZeros(out + kept, decimals - kept);
}

char* PutFixed(char* out, bool negative, Digits digits, int decimals) {
    RoundToDecimals(digits, decimals);
    out = PutSign(out, negative, digits.count == 0 || digits.text[0] == '0');
    out = PutPowers(out, digits, std::max(digits.exponent, 0), 0);
    if (decimals != 0) *out++ = '.';
    return PutPowers(out, digits, -1, -decimals);
}

template <class String>
String FixedText(double number, int precision) {
    if (!Require(std::isfinite(number), kUnit, kMisuse)) return String();
    const int decimals = Require(precision >= 0, kUnit, kMisuse) ? precision : 0;
    const int written = std::min(decimals, kMostDecimals);
    const double magnitude = std::fabs(number);
    char text[kFixedRoom];
    ShortDecimal decimal;
    char* const end = ToShortDecimal(magnitude, decimal)
                          ? PutFixed(text, number < 0, decimal, written)
                          : PutFixed(text, number < 0, FifteenDigits(magnitude), written);
    String result(text, static_cast<std::uint32_t>(end - text));
    for (int i = written; i < decimals; ++i) result += '0';
    return result;
}

template <class String, class T>
bool ReadText(const String& text, T& number) {
    if constexpr (TextReal<T>) {
        return NeutralStringToReal(text, number);
    } else {
        return StringConvToInteger(text, number, std::type_identity<IntegerMagnitude<T>>(),
                                   kIntegerMaximum<T>, IntegerThreshold<T>(kDecimal), kDecimal,
                                   std::is_signed_v<T>);
    }
}

template <class T>
bool ReadRange(const char* first, const char* last, T& number) {
    if constexpr (TextReal<T>) {
        return NeutralStringToRealIterator(first, last, number);
    } else {
        return StringConvToIntegerIterator(first, last, number, std::type_identity<IntegerMagnitude<T>>(),
                                           kIntegerMaximum<T>, IntegerThreshold<T>(kDecimal), kDecimal,
                                           std::is_signed_v<T>);
    }
}

const char* SkipDigits(const char* at, const char* last) {
    while (at != last && IsDigit(*at)) ++at;
    return at;
}

// What may follow the first digits of a real.
bool IsRestOfReal(bool hasDigits, const char* at, const char* last) {
    if (at != last && *at == '.') {
        const char* const decimals = at + 1;
        at = SkipDigits(decimals, last);
        hasDigits = hasDigits || at != decimals;
    }
    if (at != last && hasDigits && (*at == 'e' || *at == 'E')) {
        ++at;
        if (at != last && (*at == '-' || *at == '+')) ++at;
        const char* const exponent = at;
        at = SkipDigits(exponent, last);
        hasDigits = at != exponent;
    }
    return hasDigits && at == last;
}

template <class T>
bool IsNumberText(const char* at, const char* last) {
    const char sign = at != last ? *at : '\0';
    if ((sign == '-' && std::is_signed_v<T>) || (sign == '+' && TextReal<T>)) ++at;
    const char* const whole = SkipDigits(at, last);
    if constexpr (TextReal<T>) return IsRestOfReal(whole != at, whole, last);
    return whole != at && whole == last;
}

// Whether the text is a number from end to end is looked at before it is read: ToNumber takes more.
template <class T>
bool ReadStrictly(const char* first, const char* last, T& number) {
    number = 0;
    return IsNumberText<T>(first, last) && ReadRange(first, last, number);
}

template <class String, class T>
String IntegerText(T number) {
    char text[kIntegerTextUnits];
    return String(text, StringConvFromInteger(text, number, kDecimal));
}

}  // namespace

// Declared once more, so that the DLL has it for clients that take its address or a reference.
constexpr int NeutralString::kPrecisionDigits;

template <TextInteger T>
SAnsiString NeutralString::FromNumber(T number) {
    return IntegerText<SAnsiString>(number);
}

template <TextInteger T>
SAsciiString NeutralString::FromNumberToAscii(T number) {
    return IntegerText<SAsciiString>(number);
}

SAnsiString NeutralString::FromNumber(double number) {
    return ShortestText<SAnsiString>(number);
}
SAsciiString NeutralString::FromNumberToAscii(double number) {
    return ShortestText<SAsciiString>(number);
}
SAnsiString NeutralString::FromNumber(double number, int precision) {
    return FixedText<SAnsiString>(number, precision);
}
SAnsiString NeutralString::FromNumber(float number, int precision) {
    return FixedText<SAnsiString>(static_cast<double>(number), precision);
}
SAsciiString NeutralString::FromNumberToAscii(double number, int precision) {
    return FixedText<SAsciiString>(number, precision);
}

template <TextNumber T>
bool NeutralString::ToNumber(const SAnsiString& text, T& number) {
    return ReadText(text, number);
}

template <TextNumber T>
bool NeutralString::ToNumber(const SAsciiString& text, T& number) {
    return ReadText(text, number);
}

template <TextNumber T>
bool NeutralString::ToNumber(const SAsciiString::iterator& first, const SAsciiString::iterator& last,
                             T& number) {
    return ReadRange(first.getPtr(), std::max(first.getPtr(), last.getPtr()), number);
}

template <TextNumber T>
bool NeutralString::ToNumberStrict(const SAnsiString& text, T& number) {
    return ReadStrictly(text.getString(), text.end().getPtr(), number);
}

template <TextNumber T>
bool NeutralString::ToNumberStrict(const SAsciiString& text, T& number) {
    return ReadStrictly(text.getString(), text.end().getPtr(), number);
}

template <TextNumber T>
bool NeutralString::ToNumberStrict(const SAsciiString::iterator& first, const SAsciiString::iterator& last,
                                   T& number) {
    return ReadStrictly(first.getPtr(), std::max(first.getPtr(), last.getPtr()), number);
}

template <TextInteger T>
SAnsiString NeutralString::FromNumber(T number, int precision) {
    SAnsiString text = FromNumber(number);
    const int decimals = Require(precision >= 0, kUnit, kMisuse) ? precision : 0;
    if (decimals != 0) text += '.';
    for (int i = 0; i < decimals; ++i) text += '0';
    return text;
}

bool NeutralString::RoundUpHelper(char* digits, int lastIndex) {
    for (int i = lastIndex; i >= 0; --i) {
        if (digits[i] == '.') continue;
        if (digits[i] != '9') {
            ++digits[i];
            return true;
        }
        digits[i] = '0';
    }
    return false;
}

std::uint32_t NeutralString::ToStringFrom64(char* out, unsigned long long part) {
    return StringConvFromInteger(out, part, kDecimal);
}

// ---------------------------------------------------------------------------------------- exported instances

#define TARN_NEUTRAL_READING(T)                                                         \
    template TARN_API bool NeutralString::ToNumber(const SAnsiString&, T&);             \
    template TARN_API bool NeutralString::ToNumber(const SAsciiString&, T&);            \
    template TARN_API bool NeutralString::ToNumber(const SAsciiString::iterator&,       \
                                                   const SAsciiString::iterator&, T&);  \
    template TARN_API bool NeutralString::ToNumberStrict(const SAnsiString&, T&);       \
    template TARN_API bool NeutralString::ToNumberStrict(const SAsciiString&, T&);      \
    template TARN_API bool NeutralString::ToNumberStrict(const SAsciiString::iterator&, \
                                                         const SAsciiString::iterator&, T&);
#define TARN_NEUTRAL_INTEGER(T)                                      \
    TARN_NEUTRAL_READING(T)                                          \
    template TARN_API SAnsiString NeutralString::FromNumber(T);      \
    template TARN_API SAnsiString NeutralString::FromNumber(T, int); \
    template TARN_API SAsciiString NeutralString::FromNumberToAscii(T);

TARN_FOR_EACH_INTEGER_OR_BYTE(TARN_NEUTRAL_INTEGER)
TARN_NEUTRAL_READING(float)
TARN_NEUTRAL_READING(double)

}  // namespace TarnLibA500
