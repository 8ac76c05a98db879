#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Arguments of trace texts, and the text made of a format and its arguments.
///
/// A format holds places for up to 12 arguments: %1 to %12 by number, and %s %d %u %ld %lu %x %c each for the
/// argument after the highest one used so far, whatever its type. %% is a percent sign. A place without an
/// argument stays as it stands, and what an argument brings in is never looked at again, so outside text may
/// be traced as an argument (and only so).
///
///     SAnsiString text = STraceHelper("%1 of %2 bytes, %s", 12, 80, "more to come");
///     // "12 of 80 bytes, more to come"
namespace TarnLibA500 {

class SDate;
class SDateTime;
class STime;
class STimeSpan;

/// One traced argument as text. Values are kept; texts are copied. Short ones need no memory of their own.
class TARN_API STraceParameter {
  public:
    /// One character: 'x' is "x".
    STraceParameter(char character);
    /// One UTF-16 unit, "?" when narrow text does not have it.
    STraceParameter(wchar_t character);
    /// One character of narrow text.
    STraceParameter(const SChar_t<char, 0>& character);
    /// One ASCII character.
    STraceParameter(const SChar_t<char, 1>& character);
    /// One UTF-16 unit, "?" when narrow text does not have it.
    STraceParameter(const SChar_t<wchar_t, 1>& character);
    /// A narrow text (SAnsiString, SAnsiStringCI), which is shared.
    STraceParameter(const SString_t<char, 0>& text);
    /// An ASCII text (SAsciiString).
    STraceParameter(const SString_t<char, 1>& text);
    /// A UTF-16 text (SWCharString, SOCAString, SWCharStringCI), with "?" for what narrow text does not have.
    STraceParameter(const SString_t<wchar_t, 1>& text);
    /// "2026-11-21@07:15:02.125" in UTC; "invalid-date-time" for an invalid value.
    STraceParameter(const SDateTime& dateTime);
    /// "2026-11-21"; "invalid-date" for an invalid value.
    STraceParameter(const SDate& date);
    /// "07:15:02.125" in UTC; "invalid-time" for an invalid value.
    STraceParameter(const STime& time);
    /// "07:15:02.125", hours and what is left over; "3d 07:15:02.125" from a day on, with "-" before it where it
    /// is negative.
    STraceParameter(const STimeSpan& span);
    /// In decimal.
    STraceParameter(int number);
    /// In decimal.
    STraceParameter(unsigned int number);
    /// In decimal.
    STraceParameter(long number);
    /// In decimal.
    STraceParameter(unsigned long number);
    /// In decimal.
    STraceParameter(long long number);
    /// In decimal.
    STraceParameter(unsigned long long number);
    /// Six decimals, with the decimal point of the C locale.
    STraceParameter(double number);
    /// A narrow text; null is "(null)".
    STraceParameter(const char* text);
    /// A UTF-16 text, with "?" for what narrow text does not have; null is "(null)".
    STraceParameter(const wchar_t* text);
    /// "0x" and 8 hexadecimal digits in upper case.
    STraceParameter(const void* address);
    /// "(null)".
    STraceParameter(std::nullptr_t);
    /// "true" or "false".
    STraceParameter(bool value);
    /// The number that stands for the enumerator.
    template <class Enumeration>
    requires std::is_enum_v<Enumeration> STraceParameter(Enumeration value)
        : STraceParameter(+static_cast<std::underlying_type_t<Enumeration>>(value)) {}

    /// The text.
    SAnsiString GetString() const;
    /// The text with a terminator, valid as long as the object.
    const char* GetText() const noexcept { return isShort_ ? short_ : long_.getString(); }
    /// The bytes of the text.
    std::uint32_t GetLength() const noexcept { return isShort_ ? length_ : long_.getLength(); }

  private:
    static constexpr std::uint32_t kShortBytes = 48;

    void take(const char* text, std::uint32_t bytes);
    template <class Integer>
    void takeInteger(Integer number);

    bool isShort_ = false;
    std::uint32_t length_ = 0;
    char short_[kShortBytes];
    SAnsiString long_;
};

/// The most arguments that a trace text takes.
inline constexpr unsigned kMaxTraceParameters = 12;

/// The format filled in; a null format is an empty text.
TARN_API SAnsiString FormatTrace(const char* format, const STraceParameter* parameters, unsigned count);
/// The same with a wide format, which is converted as a wide argument is.
TARN_API SAnsiString FormatTrace(const wchar_t* format, const STraceParameter* parameters, unsigned count);

/// Arguments that a trace text takes.
template <class... Parameters>
concept TraceParameters = sizeof...(Parameters) <= kMaxTraceParameters &&
                          (std::convertible_to<const Parameters&, STraceParameter> && ...);

/// The format (narrow or wide) filled in with 0 to 12 arguments; a null format is an empty text.
template <class unit, class... Parameters>
requires TraceParameters<Parameters...> SAnsiString STraceHelper(const unit* format,
                                                                 const Parameters&... parameters) {
    if constexpr (sizeof...(parameters) == 0) {
        return FormatTrace(format, nullptr, 0);
    } else {
        const STraceParameter all[] = {STraceParameter(parameters)...};
        return FormatTrace(format, all, sizeof...(parameters));
    }
}

}  // namespace TarnLibA500
