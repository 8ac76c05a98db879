#include "strings/numbers/neutralreal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>

#include "strings/base/asciichar.h"
#include "strings/base/intconv.h"

namespace TarnLibA500 {
namespace {

constexpr int kKeptDigits = 20;
constexpr int kLargestExponent = 308;
// Below 10^-308 a number is still looked at while its digits stand at most this much lower; beyond, it is 0.
constexpr int kBelowSmallest = 21;
constexpr int kUsualExponentUnits = 5;  // "e-123"

// The standard library multiplies few digits by their power of ten in a register of 64 bits and rounds the
// product twice, which is exact only as long as that holds every bit of it. It never multiplies digits above
// 2^53, which 17 of them are, and never by more than 10^22.
constexpr double kProductsAreExact = 18446744073709551616.0;  // 2^64
constexpr double kLargestProduct = 1e38;
constexpr int kUnmultipliedDigits = 17;
constexpr int kAbsurdExponent = 100'000;

/// The significant digits of a number without leading and trailing zeros, and the power of ten of the last of
/// them.
struct Decimal {
    char digits[kKeptDigits];
    int count = 0;
    int exponent = 0;
};

bool IsBlank(char character) {
    return character == ' ' || character == '\t';
}
bool IsExponentMark(char character) {
    return character == 'e' || character == 'E';
}

class Reader {
  public:
    Reader(const char* first, const char* last) : at_(first), end_(last) {}

    // True for a minus; a plus is stepped over, and so are blanks.
    bool readSign() {
        skipBlanks();
        const bool negative = take('-');
        if (!negative) take('+');
        skipBlanks();
        return negative;
    }
    bool readMagnitude(Decimal& number) { return readMantissa(number) && readExponent(number); }
    const char* at() const { return at_; }

  private:
    bool isDigit() const { return at_ != end_ && IsDigit(*at_); }
    bool take(char wanted) {
        const bool there = at_ != end_ && *at_ == wanted;
        if (there) ++at_;
        return there;
    }
    void skipBlanks() {
        while (at_ != end_ && IsBlank(*at_)) ++at_;
    }
    // A kept digit behind the point lowers the exponent of the last digit; one before it that is not kept
    // raises it.
    static void keep(Decimal& number, char digit, bool behindPoint) {
        const bool leadingZero = digit == '0' && number.count == 0;
        const bool kept = !leadingZero && number.count < kKeptDigits;
        if (kept) number.digits[number.count++] = digit;
        if (behindPoint && (kept || leadingZero)) --number.exponent;
        if (!behindPoint && !kept && !leadingZero) ++number.exponent;
    }

    bool readMantissa(Decimal& number) {
        const char* const start = at_;
        for (; isDigit(); ++at_) keep(number, *at_, false);
        const bool hasWhole = at_ != start;
        if (take('.')) {
            if (!hasWhole && !isDigit()) return false;
            for (; isDigit(); ++at_) keep(number, *at_, true);
        } else if (!hasWhole) {
            return false;
        }
        while (number.count > 0 && number.digits[number.count - 1] == '0') {
            --number.count;
            ++number.exponent;
        }
        return true;
    }

    bool readExponent(Decimal& number) {
        skipBlanks();
        if (!take('e') && !take('E')) return true;
        const bool negative = readSign();
        if (!isDigit()) return false;
        int exponent = 0;
        for (; isDigit(); ++at_) {
            if (exponent < kAbsurdExponent) exponent = exponent * 10 + (*at_ - '0');
        }
        number.exponent += negative ? -exponent : exponent;
        return true;
    }

    const char* at_;
    const char* end_;
};

// Correctly rounded by the standard library, which is locale-free here: zeros at the end make the digits too
// many for its short way. False when the number is too large for the type.
template <class T>
bool RoundedValue(const Decimal& number, T& value) {
    constexpr std::uint32_t kExponentRoom = 8;
    char text[kKeptDigits + kExponentRoom];
    char* at = text;
    for (int i = 0; i < number.count; ++i) *at++ = number.digits[i];
    int exponent = number.exponent;
    for (int i = number.count; i < kUnmultipliedDigits; ++i, --exponent) *at++ = '0';
    *at++ = 'e';
    at += StringConvFromInteger(at, exponent, 10);
    value = 0;
    const bool inRange = std::from_chars(text, at, value).ec == std::errc();
    const bool tooLarge = !inRange && number.count + number.exponent > 0;
    if (!inRange) value = 0;
    return !tooLarge;
}

template <class T>
bool ValueOf(const Decimal& number, T& value) {
    value = 0;
    if (number.count == 0) return true;
    if (number.exponent > kLargestExponent) return false;
    if (-number.exponent - kLargestExponent >= kBelowSmallest) return true;
    return RoundedValue(number, value);
}

int SignificantDigits(const char* at, const char* last) {
    int count = 0;
    for (; at != last && !IsExponentMark(*at); ++at) {
        const bool leadingZero = *at == '0' && count == 0;
        if (*at != '.' && !leadingZero) ++count;
    }
    return count;
}

// What a type holds exactly: as many digits as a whole number, and powers of ten up to this one.
template <class T>
constexpr int kExactDigits = std::numeric_limits<T>::digits10;
template <class T>
constexpr int kLargestExactPower = sizeof(T) == sizeof(double) ? 22 : 10;

template <class T>
constexpr auto kExactPowers = [] {
    std::array<T, kLargestExactPower<T> + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();

/// A short number as a reader meets it: its digits, nine of them in the head, and where the point stands.
struct ShortDigits {
    std::uint32_t head = 0;
    std::uint32_t tail = 0;
    int count = 0;
    int beforePoint = -1;  // no point

    int exponent() const { return beforePoint < 0 ? 0 : beforePoint - count; }
};

constexpr int kHeadDigits = 9;

// False when there are more digits than "most".
bool TakeDigits(const char*& at, const char* last, int most, ShortDigits& digits) {
    for (; at != last; ++at) {
        const std::uint32_t digit = static_cast<std::uint32_t>(*at) - '0';
        if (digit >= 10) {
            if (*at != '.' || digits.beforePoint >= 0) return true;
            digits.beforePoint = digits.count;
            continue;
        }
        if (digits.count == most) return false;
        std::uint32_t& part = digits.count < kHeadDigits ? digits.head : digits.tail;
        part = part * 10 + digit;
        ++digits.count;
    }
    return true;
}

// An exponent of one or two digits behind its mark, added to that of the digits.
bool TakeExponent(const char* at, const char* last, int& exponent) {
    const bool negative = at != last && *at == '-';
    if (negative || (at != last && *at == '+')) ++at;
    if (at == last || last - at > 2) return false;
    int written = 0;
    for (; at != last; ++at) {
        if (!IsDigit(*at)) return false;
        written = written * 10 + (*at - '0');
    }
    exponent += negative ? -written : written;
    return true;
}

// A text that is too long for few digits and a short exponent is not read in vain.
bool MayBeShort(const char* at, const char* last, int mostDigits) {
    constexpr int kExponentUnits = 4;  // "e-22"
    const std::ptrdiff_t beyond = last - at - (mostDigits + 1);
    if (beyond <= 0) return true;
    return beyond <= kExponentUnits &&
           (IsExponentMark(last[-4]) || IsExponentMark(last[-3]) || IsExponentMark(last[-2]));
}

// Few digits and a small power of ten are exact, so that one operation gives the number, rounded once. False, with
// nothing done, for all other numbers, and where the text goes on.
template <class T>
bool ReadShort(const char* at, const char* last, T& value) {
    if (at == last || !IsDigit(*at) || !MayBeShort(at, last, kExactDigits<T>)) return false;
    ShortDigits digits;
    if (!TakeDigits(at, last, kExactDigits<T>, digits)) return false;
    int exponent = digits.exponent();
    if (at != last && !(IsExponentMark(*at) && TakeExponent(at + 1, last, exponent))) return false;
    const int size = exponent < 0 ? -exponent : exponent;
    if (size > kLargestExactPower<T>) return false;
    T whole = static_cast<T>(static_cast<std::int32_t>(digits.head));
    if (digits.count > kHeadDigits) {
        whole = whole * kExactPowers<T>[digits.count - kHeadDigits] +
                static_cast<T>(static_cast<std::int32_t>(digits.tail));
    }
    value = exponent < 0 ? whole / kExactPowers<T>[size] : whole * kExactPowers<T>[size];
    return true;
}

// Numbers as they are usually written, straight by the standard library. False, with anything in the value,
// where its reading and ours may part: at blanks, in more digits than are kept, near the ends of the range, and
// where it rounds twice.
template <class T>
bool ReadUsual(const char* first, const char* last, T& value) {
    if (first == last || !(IsDigit(*first) || *first == '.')) return false;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || value < std::numeric_limits<T>::min()) return false;
    const bool mayBeRoundedTwice = value >= kProductsAreExact && value < kLargestProduct;
    if (mayBeRoundedTwice && SignificantDigits(first, end) < kUnmultipliedDigits) return false;
    if (end != last && (IsBlank(*end) || IsExponentMark(*end))) return false;
    if (end - first <= kKeptDigits) return true;
    while (*first == '0' || *first == '.') ++first;  // the number is not 0
    if (end - first <= kKeptDigits) return true;
    const char* const exponent = std::find_if(end - kUsualExponentUnits, end, IsExponentMark);
    return exponent != end && exponent - first <= kKeptDigits;
}

template <class T>
bool ReadAnyhow(Reader& reader, T& value) {
    Decimal number;
    value = 0;
    return reader.readMagnitude(number) && ValueOf(number, value);
}

}  // namespace

// Most numbers begin with a digit, or with a minus and a digit.
template <class T>
bool NeutralStringToRealIterator(const char* first, const char* last, T& out) {
    bool negative = first != last && *first == '-';
    const char* const digits = negative ? first + 1 : first;
    if (!ReadShort(digits, last, out) && !ReadUsual(digits, last, out)) {
        Reader reader(first, last);
        negative = reader.readSign();
        const bool begins = reader.at() != digits && ReadUsual(reader.at(), last, out);
        if (!begins && !ReadAnyhow(reader, out)) return false;
    }
    if (negative) out = -out;
    return true;
}

template bool NeutralStringToRealIterator(const char*, const char*, double&);
template bool NeutralStringToRealIterator(const char*, const char*, float&);

}  // namespace TarnLibA500
