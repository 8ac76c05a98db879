#pragma once

#include <concepts>
#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Arguments of trace texts, and the text made of a format and its arguments.
///
/// A format holds places for up to 12 arguments: %1 to %12 by number, and %s %d %u %ld %lu %x %c each for the
/// next argument, whatever its type. %% is a percent sign. A place without an argument stays as it stands,
/// and what an argument brings in is never looked at again, so outside text may be traced as an argument (and
/// only so).
///
///     SAnsiString text = STraceHelper("%1 of %2 bytes, %s", 12, 80, "more to come");
///     // "12 of 80 bytes, 12": a place by letter counts from the first argument on
namespace TarnLibA500 {

class SDateTime;

/// One traced argument as text. Values are kept; texts are copied. Short ones need no memory of their own.
class TARN_API STraceParameter {
  public:
    STraceParameter(const SChar_t<char, 0>& character);
    /// Shares the text.
    STraceParameter(const SString_t<char, 0>& text);
    /// "2026-11-21@07:15:02.125" in UTC; "invalid-date-time" for an invalid value.
    STraceParameter(const SDateTime& dateTime);
    /// Integers in decimal.
    STraceParameter(int number);
    STraceParameter(unsigned int number);
    STraceParameter(long number);
    STraceParameter(unsigned long number);
    STraceParameter(long long number);
    STraceParameter(unsigned long long number);
    /// Six decimals, with the decimal point of the C locale.
    STraceParameter(double number);
    /// A null text is "(null)".
    STraceParameter(const char* text);
    /// In the process's code page, "?" for what it does not have; "(null)".
    STraceParameter(const wchar_t* text);
    /// "0x" and 8 hexadecimal digits in upper case.
    STraceParameter(const void* address);
    /// "true" or "false".
    STraceParameter(bool value);

    SAnsiString GetString() const;
    /// The same text, valid as long as the object, and its bytes.
    const char* GetText() const noexcept { return isShort_ ? short_ : long_.getString(); }
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

/// The format filled in; a null format is an empty text. A wide format is converted as a wide argument is.
TARN_API SAnsiString FormatTrace(const char* format, const STraceParameter* parameters, unsigned count);
TARN_API SAnsiString FormatTrace(const wchar_t* format, const STraceParameter* parameters, unsigned count);

template <class... Parameters>
concept TraceParameters = sizeof...(Parameters) <= kMaxTraceParameters &&
                          (std::convertible_to<const Parameters&, STraceParameter> && ...);

/// The format filled in with 0 to 12 arguments.
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
