#include "tarnlib/sstringconv.h"

#include <array>
#include <cstdlib>

#include "diag/assert/require.h"
#include "strings/base/intconv.h"
#include "strings/base/integertypes.h"
#include "strings/text/realtext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sstringconv";
constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;
constexpr std::uint32_t kAddressDigits = 2 * sizeof(void*);
constexpr int kKeptNumbers = 100;
constexpr int kOneDigitNumbers = 10;

bool IsRadix(int radix) {
    return Require(radix >= 2 && radix <= 36, kUnit, "radix >= 2 && radix <= 36");
}

template <class String, class unit, class T>
String IntegerText(T number, int radix) {
    if (!IsRadix(radix)) return String();
    unit text[kIntegerTextUnits];
    return String(text, StringConvFromInteger(text, number, radix));
}

// Upper-case hexadecimal digits, zeros in front.
template <class String, class unit>
String AddressText(const void* address) {
    unit digits[kIntegerTextUnits];
    const std::uint32_t length =
        StringConvFromInteger(digits, reinterpret_cast<std::uintptr_t>(address), kHexadecimal);
    String text;
    for (std::uint32_t i = length; i < kAddressDigits; ++i) text += unit('0');
    text.concat(digits, length);
    return text;
}

template <class T, class String>
bool ReadInteger(const String& text, T& number, int radix) {
    number = 0;
    if (!IsRadix(radix)) return false;
    return StringConvToInteger(text, number, std::type_identity<IntegerMagnitude<T>>(), kIntegerMaximum<T>,
                               IntegerThreshold<T>(radix), radix, std::is_signed_v<T>);
}

template <class T>
bool ReadReal(const SAnsiString& text, T& number, T (*read)(const char*, char**)) {
    char* end = nullptr;
    number = read(text.getString(), &end);
    const bool whole = !text.isEmpty() && end == text.end().getPtr();
    if (!whole) number = 0;
    return whole;
}

// The texts of 0 to 99. Made once and never destroyed: strings of other modules may outlive every destructor
// here.
template <class String, class unit>
const String* KeptTexts() {
    static const String* const kept = [] {
        auto* texts = new std::array<String, kKeptNumbers>;
        for (int i = 0; i < kKeptNumbers; ++i)
            (*texts)[static_cast<std::size_t>(i)] = IntegerText<String, unit>(i, kDecimal);
        return texts->data();
    }();
    return kept;
}

template <class String, class unit>
String SmallNumber(int number) {
    const bool isKept = number >= 0 && number < kKeptNumbers;
    return isKept ? KeptTexts<String, unit>()[number] : IntegerText<String, unit>(number, kDecimal);
}

template <class String, class unit>
String TwoDigits(int number) {
    if (number < 0 || number >= kOneDigitNumbers) return SmallNumber<String, unit>(number);
    static const String* const kept = [] {
        auto* texts = new std::array<String, kOneDigitNumbers>;
        for (unsigned i = 0; i < kOneDigitNumbers; ++i) {
            const unit digits[] = {unit('0'), static_cast<unit>('0' + i)};
            (*texts)[i] = String(digits, 2);
        }
        return texts->data();
    }();
    return kept[number];
}

}  // namespace

// -------------------------------------------------------------------------------------------- code-page text

SAnsiString SAnsiStringConv::ToString(double number, int precision) {
    SAnsiString text;
    WithRealText(number, precision,
                 [&](const char* digits, std::uint32_t length) { text.concat(digits, length); });
    return text;
}

SAnsiString SAnsiStringConv::ToString(const void* address) {
    return AddressText<SAnsiString, char>(address);
}

template <TextInteger T>
bool SAnsiStringConv::FromString(const SAnsiString& text, T& number, int radix) {
    return ReadInteger(text, number, radix);
}

bool SAnsiStringConv::FromString(const SAnsiString& text, double& number) {
    return ReadReal(text, number, &std::strtod);
}
bool SAnsiStringConv::FromString(const SAnsiString& text, float& number) {
    return ReadReal(text, number, &std::strtof);
}

bool SAnsiStringConv::FromString(const SAnsiString& text, void*& address) {
    std::uintptr_t value = 0;
    const bool read = !text.isEmpty() && FromString(text, value, kHexadecimal);
    address = reinterpret_cast<void*>(value);
    return read;
}

SAnsiString SAnsiStringConv::StringFrom100Number(int number) {
    return SmallNumber<SAnsiString, char>(number);
}
SAnsiString SAnsiStringConv::StringFrom10Number2Digits(int number) {
    return TwoDigits<SAnsiString, char>(number);
}

// ----------------------------------------------------------------------------------------------- UTF-16 text

// Declared once more, so that the DLL has it for clients that take its address or a reference.
constexpr std::uint32_t SWCharStringConv::kArrayUnits;

SWCharString SWCharStringConv::ToString(double number, int precision) {
    SWCharString text;
    WithRealText(number, precision, [&](const char* digits, std::uint32_t length) {
        text.concatFromAsciiCharacters(digits, length);
    });
    return text;
}

SWCharString SWCharStringConv::ToString(const void* address) {
    return AddressText<SWCharString, wchar_t>(address);
}

template <TextInteger T>
void SWCharStringConv::ToString(T number, SWCharString& out, int radix) {
    out = IntegerText<SWCharString, wchar_t>(number, radix);
}

template <TextInteger T>
void SWCharStringConv::ToString(T number, wchar_t (&out)[kArrayUnits], int radix) {
    if (radix == kDecimal) {
        StringConvFromDecimal(out, number);
        return;
    }
    out[0] = L'\0';
    const bool highestBit = (static_cast<std::uint64_t>(number) >> (kArrayUnits - 1)) != 0;
    const bool fits = radix != 2 || sizeof number < sizeof(std::uint64_t) || !highestBit;
    if (!IsRadix(radix) || !Require(fits, kUnit, "length < 64")) return;
    StringConvFromInteger(out, number, radix);
}

template <TextInteger T>
bool SWCharStringConv::FromString(const SWCharString& text, T& number, int radix) {
    return ReadInteger(text, number, radix);
}

SWCharString SWCharStringConv::StringFrom100Number(int number) {
    return SmallNumber<SWCharString, wchar_t>(number);
}
SWCharString SWCharStringConv::StringFrom10Number2Digits(int number) {
    return TwoDigits<SWCharString, wchar_t>(number);
}

SAsciiString SAsciiStringConv::StringFrom100Number(int number) {
    return SmallNumber<SAsciiString, char>(number);
}
SAsciiString SAsciiStringConv::StringFrom10Number2Digits(int number) {
    return TwoDigits<SAsciiString, char>(number);
}

// ------------------------------------------------------------------------------ overloads for each integer type

#define TARN_INTEGER_TO_STRING(T)                                  \
    SAnsiString SAnsiStringConv::ToString(T number, int radix) {   \
        return IntegerText<SAnsiString, char>(number, radix);      \
    }                                                              \
    SWCharString SWCharStringConv::ToString(T number, int radix) { \
        return IntegerText<SWCharString, wchar_t>(number, radix);  \
    }
TARN_FOR_EACH_INTEGER(TARN_INTEGER_TO_STRING)

// ---------------------------------------------------------------------------------------- exported instances

#define TARN_INTEGER_CONVERSIONS(T)                                                    \
    template TARN_API bool SAnsiStringConv::FromString(const SAnsiString&, T&, int);   \
    template TARN_API bool SWCharStringConv::FromString(const SWCharString&, T&, int); \
    template TARN_API void SWCharStringConv::ToString(T, SWCharString&, int);          \
    template TARN_API void SWCharStringConv::ToString(T, wchar_t(&)[kArrayUnits], int);

TARN_FOR_EACH_INTEGER_OR_BYTE(TARN_INTEGER_CONVERSIONS)

}  // namespace TarnLibA500
