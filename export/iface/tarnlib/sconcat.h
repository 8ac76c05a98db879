#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Texts and integers put together in one block, which is asked for once.
///
///     SAnsiString line = Concat(name, ": ", count, " of ", total, " files");
namespace TarnLibA500 {

/// One part of a text that Concat makes. It lives no longer than the call: it points at what it was made from.
template <class unit, int flavour>
class SConcatPart {
    using String = SString_t<unit, flavour>;

  public:
    /// A string.
    TARN_MEM SConcatPart(const String& text) noexcept : text_(text.getString()), length_(text.getLength()) {}
    /// A zero-terminated text; null is an empty one.
    TARN_MEM SConcatPart(const unit* text) noexcept
        : text_(text),
          length_(text != nullptr ? static_cast<std::uint32_t>(std::char_traits<unit>::length(text)) : 0) {}
    /// A character; empty for the null character.
    TARN_MEM SConcatPart(const typename String::Char& character) noexcept
        : text_(character.getUnits()), length_(character.getLength()) {}
    /// One code unit.
    TARN_MEM SConcatPart(unit single) noexcept : text_(digits_), length_(1) { digits_[0] = single; }
    /// An integer in decimal.
    SConcatPart(short number) noexcept;
    /// An integer in decimal.
    SConcatPart(unsigned short number) noexcept;
    /// An integer in decimal.
    SConcatPart(int number) noexcept;
    /// An integer in decimal.
    SConcatPart(unsigned int number) noexcept;
    /// An integer in decimal.
    SConcatPart(long number) noexcept;
    /// An integer in decimal.
    SConcatPart(unsigned long number) noexcept;
    /// An integer in decimal.
    SConcatPart(long long number) noexcept;
    /// An integer in decimal.
    SConcatPart(unsigned long long number) noexcept;
    /// Refused, because it has no one text: SStringConv::ToString writes it with as many decimals as are wanted.
    SConcatPart(double number) = delete;
    /// Refused: a character of the other kind would become a number.
    SConcatPart(std::conditional_t<sizeof(unit) == 1, wchar_t, char> character) = delete;
    /// Refused: a part is made where it is used.
    SConcatPart(const SConcatPart&) = delete;
    /// Refused as well.
    SConcatPart& operator=(const SConcatPart&) = delete;

    /// The parts as one text, in a block for its length and 32 units of slack. Throws std::bad_alloc with the text
    /// "bad allocation", and also when the length would pass 32 bits.
    static String Join(const SConcatPart* parts, std::size_t count);

  private:
    template <class Integer>
    void write(Integer number) noexcept;

    const unit* text_;
    std::uint32_t length_;
    unit digits_[24];
};

extern template class TARN_API SConcatPart<char, 0>;
extern template class TARN_API SConcatPart<char, 1>;
extern template class TARN_API SConcatPart<wchar_t, 1>;

/// True for what Concat takes as a part of such a text.
template <class Part, class unit, int flavour>
concept SConcatPartOf = std::is_convertible_v<const Part&, SConcatPart<unit, flavour>>;

/// Narrow text of several parts: strings, zero-terminated texts, characters and integers.
template <class... Parts>
requires(sizeof...(Parts) >= 2 && (SConcatPartOf<Parts, char, 0> && ...)) SAnsiString
    Concat(const Parts&... parts) {
    const SConcatPart<char, 0> all[] = {parts...};
    return SConcatPart<char, 0>::Join(all, sizeof...(parts));
}
/// UTF-16 text of several parts. One of them is a text, or it would be narrow.
template <class... Parts>
requires(sizeof...(Parts) >= 2 && (SConcatPartOf<Parts, wchar_t, 1> && ...) &&
         !(SConcatPartOf<Parts, char, 0> && ...)) SWCharString Concat(const Parts&... parts) {
    const SConcatPart<wchar_t, 1> all[] = {parts...};
    return SConcatPart<wchar_t, 1>::Join(all, sizeof...(parts));
}
/// ASCII text of several parts. One of them is an SAsciiString, or it would be in the process's code page.
template <class... Parts>
requires(sizeof...(Parts) >= 2 && (SConcatPartOf<Parts, char, 1> && ...) &&
         !(SConcatPartOf<Parts, char, 0> && ...)) SAsciiString Concat(const Parts&... parts) {
    const SConcatPart<char, 1> all[] = {parts...};
    return SConcatPart<char, 1>::Join(all, sizeof...(parts));
}

}  // namespace TarnLibA500
