#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

/// Integers as text and back, for every character type and integer type, without strings or memory.
namespace TarnLibA500 {

/// Room for any integer in any radix: 64 binary digits, a sign and the terminator.
constexpr std::uint32_t kIntegerTextUnits = 66;

/// The unsigned type in which the numbers of a type are worked on: 64-bit arithmetic is slow here, and only
/// 64-bit types need it.
template <class T>
using IntegerMagnitude = std::conditional_t<sizeof(T) <= 4, std::uint32_t, std::uint64_t>;

namespace intconv {

constexpr std::uint32_t kDecimal = 10;
constexpr std::uint32_t kTwoDigits = 100;
constexpr std::uint32_t kNineDigits = 1'000'000'000;

/// "00" to "99", one after the other.
template <class C>
constexpr std::array<C, 200> MakeDigitPairs() {
    std::array<C, 200> pairs{};
    for (unsigned i = 0; i < kTwoDigits; ++i) {
        pairs[2 * i] = static_cast<C>('0' + i / kDecimal);
        pairs[2 * i + 1] = static_cast<C>('0' + i % kDecimal);
    }
    return pairs;
}
template <class C>
inline constexpr auto kDigitPairs = MakeDigitPairs<C>();

// memcpy, so that both digits are one store.
template <class C>
void PutPair(C* out, std::uint32_t pair) {
    std::memcpy(out, &kDigitPairs<C>[2 * pair], 2 * sizeof(C));
}

/// At each index n the smallest number with more than n digits. 32 bits hold 10 digits at most.
inline constexpr std::array<std::uint32_t, 10> kPowersOfTen{
    0, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

/// How many decimal digits a number has. Without a branch, because a processor cannot predict the lengths of
/// numbers. 1233 / 4096 is the logarithm of 2 to the base 10, near enough for 32 bits.
constexpr std::uint32_t DecimalDigits(std::uint32_t value) {
    const auto bits = static_cast<std::uint32_t>(std::bit_width(value | 1));
    const std::uint32_t digits = bits * 1233 / 4096;
    return digits + (value >= kPowersOfTen[digits] ? 1 : 0);
}

/// Writes the value into exactly "places" places, zeros in front.
template <class C>
void PutDecimal(C* out, std::uint32_t value, std::uint32_t places) {
    while (places >= 2) {
        places -= 2;
        PutPair(out + places, value % kTwoDigits);
        value /= kTwoDigits;
    }
    if (places == 1) out[0] = static_cast<C>('0' + value % kDecimal);
}

// Writes a number without a terminator and returns its digits. Inlined by force: a call would cost as much
// as the work.
template <class C>
[[gnu::always_inline]] inline std::uint32_t FromDecimal(C* out, std::uint32_t value) {
    const std::uint32_t digits = DecimalDigits(value);
    C* at = out + digits;
    for (; value >= kTwoDigits; value /= kTwoDigits) PutPair(at -= 2, value % kTwoDigits);
    if (value >= kDecimal) {
        PutPair(at - 2, value);
    } else {
        at[-1] = static_cast<C>('0' + value);
    }
    return digits;
}

/// The same in pieces of nine digits: a 64-bit division costs many times a 32-bit one here.
template <class C>
std::uint32_t FromDecimal(C* out, std::uint64_t value) {
    if (value <= std::numeric_limits<std::uint32_t>::max())
        return FromDecimal(out, static_cast<std::uint32_t>(value));
    const std::uint32_t length = FromDecimal(out, value / kNineDigits);
    PutDecimal(out + length, static_cast<std::uint32_t>(value % kNineDigits), 9);
    return length + 9;
}

/// The digits of all radixes.
inline constexpr char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// Without a division: a digit is four bits.
template <class C, class Unsigned>
std::uint32_t FromHexadecimal(C* out, Unsigned value) {
    const auto digits = static_cast<std::uint32_t>(std::bit_width(static_cast<Unsigned>(value | 1)) + 3) / 4;
    for (C* at = out + digits; at != out; value >>= 4) *--at = static_cast<C>(kDigits[value & 15]);
    return digits;
}

template <class C, class Unsigned>
std::uint32_t FromUnsigned(C* out, Unsigned value, std::uint32_t radix) {
    if (radix == 16) return FromHexadecimal(out, value);
    C reversed[kIntegerTextUnits];
    std::uint32_t length = 0;
    do {
        reversed[length++] = static_cast<C>(kDigits[value % radix]);
        value = static_cast<Unsigned>(value / radix);
    } while (value != 0);
    for (std::uint32_t i = 0; i < length; ++i) out[i] = reversed[length - 1 - i];
    return length;
}

/// The value of a digit or letter, or a value that no radix has.
template <class C>
constexpr std::uint32_t DigitValue(C character) {
    const auto code = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<C>>(character));
    if (code - '0' < kDecimal) return code - '0';
    const std::uint32_t letter = (code | 0x20) - 'a';
    return code < 0x80 && letter < 26 ? letter + kDecimal : std::numeric_limits<std::uint32_t>::max();
}

/// What a character of a number's text means.
enum class TextStep { Digit, Skip, End, Bad };

template <class C>
constexpr TextStep Classify(C character, std::uint32_t radix, std::uint32_t& digit) {
    digit = DigitValue(character);
    if (digit < radix) return TextStep::Digit;
    if (character == C('.') || character == C(' ')) return TextStep::End;
    const bool isHexMark = radix == 16 && (character == C('x') || character == C('X'));
    return isHexMark ? TextStep::Skip : TextStep::Bad;
}

/// The largest magnitude of a number, and the largest that may still be followed by a digit.
template <class Magnitude>
struct Limits {
    Magnitude maximum;
    Magnitude threshold;
};

/// Appends a digit to a magnitude. False when the result would be above the limit.
template <class Magnitude>
constexpr bool AppendDigit(Magnitude& value, std::uint32_t digit, std::uint32_t radix,
                           const Limits<Magnitude>& limits) {
    if (value > limits.threshold) return false;
    const auto shifted = static_cast<Magnitude>(value * radix);
    if (shifted > limits.maximum || digit > limits.maximum - shifted) return false;
    value = shifted + digit;
    return true;
}

/// Reads up to nine decimal digits, which always fit, and returns how many there were.
template <class C>
[[gnu::always_inline]] inline std::uint32_t ReadNineDigits(const C*& at, const C* end, std::uint32_t& value) {
    std::uint32_t left = 9;
    for (value = 0; at != end && left != 0; ++at, --left) {
        const std::uint32_t digit = static_cast<std::uint32_t>(*at) - '0';
        if (digit >= kDecimal) break;
        value = value * kDecimal + digit;
    }
    return 9 - left;
}

/// Reads only as many decimal digits as fit without a check, whatever digits they are; most numbers end
/// there.
template <class Magnitude, class C>
[[gnu::always_inline]] inline Magnitude ReadSafeDigits(const C*& at, const C* end) {
    std::uint32_t head;
    std::uint32_t tail;
    const bool more = ReadNineDigits(at, end, head) == 9;
    if (sizeof(Magnitude) == sizeof head || !more) return head;
    const std::uint32_t digits = ReadNineDigits(at, end, tail);
    return digits == 0 ? head : static_cast<Magnitude>(head) * kPowersOfTen[digits] + tail;
}

/// Reads on to the end of the number. False for a bad character or a value above the limit.
template <class C, class Magnitude>
bool ReadDigits(const C* at, const C* end, std::uint32_t radix, const Limits<Magnitude>& limits,
                Magnitude& value) {
    for (std::uint32_t digit = 0; at != end; ++at) {
        const TextStep step = Classify(*at, radix, digit);
        if (step == TextStep::End) break;
        if (step == TextStep::Skip) continue;
        if (step == TextStep::Bad || !AppendDigit(value, digit, radix, limits)) return false;
    }
    return true;
}

}  // namespace intconv

/// StringConvFromInteger in radix 10, for callers to whom the call matters.
template <class C, class T>
[[gnu::always_inline]] inline std::uint32_t StringConvFromDecimal(C* out, T value) {
    C* at = out;
    auto magnitude = static_cast<IntegerMagnitude<T>>(+value);  // promoted first: a small type keeps its sign
    if (std::is_signed_v<T> && value < 0) {
        *at++ = static_cast<C>('-');
        magnitude = 0 - magnitude;
    }
    at += intconv::FromDecimal(at, magnitude);
    *at = C();
    return static_cast<std::uint32_t>(at - out);
}

/// Writes an integer with a terminator and returns the characters before it. Radix 2 to 36, digits above 9 in
/// upper case. A negative number has a sign in radix 10 only; in every other radix it is written as the
/// unsigned value of its own width, deliberately.
template <class C, class T>
std::uint32_t StringConvFromInteger(C* out, T value, int radix) {
    if (radix == 10) return StringConvFromDecimal(out, value);
    const auto bits = static_cast<IntegerMagnitude<T>>(static_cast<std::make_unsigned_t<T>>(value));
    const std::uint32_t length = intconv::FromUnsigned(out, bits, static_cast<std::uint32_t>(radix));
    out[length] = C();
    return length;
}

/// The largest number of a type.
template <class T>
inline constexpr auto kIntegerMaximum = static_cast<IntegerMagnitude<T>>(std::numeric_limits<T>::max());

/// The largest number of a type divided by the radix; radix 10 costs no division.
template <class T>
constexpr IntegerMagnitude<T> IntegerThreshold(int radix) {
    return radix == 10 ? kIntegerMaximum<T> / 10 : kIntegerMaximum<T> / static_cast<std::uint32_t>(radix);
}

/// Reads an integer from a range of characters, radix 2 to 36. A "-" is taken where a sign is allowed, a "+"
/// and leading blanks never. A "." or a space ends the number and what follows is ignored, so "12.5" reads
/// 12, and " 5", "" and "-" read 0. In radix 16 an "x" is skipped wherever it stands, deliberately: "0x1F"
/// reads 31. False, with 0, for any other character, and for a value above the maximum, or above the maximum
/// and one with a sign. The tag says what the digits are collected in, the threshold is maximum / radix.
template <class C, class T, class Magnitude>
bool StringConvToIntegerIterator(const C* first, const C* last, T& out, std::type_identity<Magnitude> /*tag*/,
                                 Magnitude maximum, Magnitude threshold, int radix, bool signAllowed) {
    out = 0;
    const bool negative = signAllowed && first != last && *first == C('-');
    // A threshold one too high is harmless: AppendDigit compares the product with the maximum, too.
    const Magnitude excess = negative ? 1 : 0;
    const intconv::Limits<Magnitude> limits{maximum + excess, threshold + excess};
    const C* at = negative ? first + 1 : first;
    Magnitude value = radix == 10 ? intconv::ReadSafeDigits<Magnitude>(at, last) : 0;
    const auto base = static_cast<std::uint32_t>(radix);
    if (at != last && !intconv::ReadDigits(at, last, base, limits, value)) return false;
    if (value > limits.maximum) return false;
    out = static_cast<T>(negative ? 0 - value : value);
    return true;
}

/// The same for a whole string.
template <class String, class T, class Magnitude>
bool StringConvToInteger(const String& text, T& out, std::type_identity<Magnitude> tag, Magnitude maximum,
                         Magnitude threshold, int radix, bool signAllowed) {
    return StringConvToIntegerIterator(text.getString(), text.end().getPtr(), out, tag, maximum, threshold,
                                       radix, signAllowed);
}

}  // namespace TarnLibA500
