#include "tarnlib/sstringconv.h"

#include <gtest/gtest.h>

#include <charconv>
#include <limits>
#include <random>
#include <string>
#include <tuple>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"

using namespace TarnLibA500;
using Conv = SAnsiStringConv;

namespace {

using Integers = std::tuple<short, unsigned short, int, unsigned, long, long long, unsigned long long>;

// What a text must read as: the number's part alone, read by the standard library to its last character.
template <class T>
bool Expected(const std::string& text, int radix, T& number) {
    number = 0;
    std::string digits = text.substr(0, text.find_first_of(". "));
    const std::string sign = std::is_signed_v<T> && digits.starts_with('-') ? "-" : "";
    digits.erase(0, sign.size());
    if (radix == 16) std::erase_if(digits, [](char c) { return c == 'x' || c == 'X'; });
    if (digits.empty() || digits.starts_with('-')) return digits.empty();
    const std::string whole = sign + digits;
    const char* const end = whole.data() + whole.size();
    const auto result = std::from_chars(whole.data(), end, number, radix);
    const bool read = result.ptr == end && result.ec == std::errc();
    if (!read) number = 0;
    return read;
}

template <class T>
void ExpectReads(const std::string& text, int radix) {
    T expected;
    T number = 7;
    const bool isNumber = Expected(text, radix, expected);
    EXPECT_EQ(Conv::FromString(text.c_str(), number, radix), isNumber) << text << " radix " << radix;
    EXPECT_EQ(number, expected) << text << " radix " << radix;
}

template <class T>
void ExpectWrites(T number, int radix) {
    char digits[80];
    const auto bits = static_cast<std::make_unsigned_t<T>>(number);  // no sign in a radix other than 10
    const auto end = radix == 10 ? std::to_chars(digits, digits + 80, number)
                                 : std::to_chars(digits, digits + 80, bits, radix);
    std::string expected(digits, end.ptr);
    for (char& c : expected) c = c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    EXPECT_EQ(Conv::ToString(number, radix).getString(), expected) << radix;
    const std::wstring wide(expected.begin(), expected.end());
    EXPECT_EQ(SWCharStringConv::ToString(number, radix).getString(), wide) << radix;
}

template <class T>
void ExpectWritesIntegers() {
    std::mt19937_64 random(1);
    for (int radix = 2; radix <= 36; ++radix) {
        ExpectWrites(std::numeric_limits<T>::min(), radix);
        ExpectWrites(std::numeric_limits<T>::max(), radix);
        for (unsigned bits = 0; bits <= sizeof(T) * 8; ++bits)
            ExpectWrites(static_cast<T>(random() >> (64 - bits) % 64), radix);
    }
    for (std::uint64_t power = 1; power < 1'000'000'000'000'000'000; power *= 10) {
        ExpectWrites(static_cast<T>(power), 10);
        ExpectWrites(static_cast<T>(power - 1), 10);
    }
}

void ExpectReadsInEveryType(const std::string& text, int radix) {
    const auto expect = [&]<class... T>(std::tuple<T...>*) { (ExpectReads<T>(text, radix), ...); };
    expect(static_cast<Integers*>(nullptr));
}

}  // namespace

TEST(StringConv, WritesIntegersOfEveryTypeRadixAndLength) {
    const auto expect = []<class... T>(std::tuple<T...>*) { (ExpectWritesIntegers<T>(), ...); };
    expect(static_cast<Integers*>(nullptr));
}

TEST(StringConv, ReadsIntegers) {
    for (const auto& c : tarntest::ReadCases("strings/integer_reads.txt")) {
        int number = 1;
        EXPECT_EQ(Conv::FromString(c[0].c_str(), number, std::stoi(c[1])), c[2] != "no") << c[0];
        EXPECT_EQ(number, c[2] == "no" ? 0 : std::stoi(c[2])) << c[0];
    }
    int number = 1;
    EXPECT_FALSE(SWCharStringConv::FromString(L"\x0131", number));  // its low byte is the digit 1
    signed char byte;
    EXPECT_TRUE(Conv::FromString("-128", byte) && byte == -128 && !Conv::FromString("128", byte));
    EXPECT_TRUE(SWCharStringConv::FromString(L"-0x1F", number, 16) && number == -31);
}

TEST(StringConv, ReadsAsTheStandardLibraryDoes) {
    std::mt19937 random(2);
    const std::string alphabet = "0123456789abfFzZxX-+. ";
    for (int i = 0; i < 20'000; ++i) {
        const int radixes[] = {10, 16, 2 + static_cast<int>(random() % 35)};
        std::string text = random() % 2 ? "-" : "";
        const std::size_t kinds = i % 4 == 0 ? alphabet.size() : 10;  // mostly digits
        for (std::size_t length = random() % 24; length > 0; --length) text += alphabet[random() % kinds];
        ExpectReadsInEveryType(text, radixes[i % 3]);
    }
    // The ends of the range of every type.
    for (unsigned bits : {7u, 8u, 15u, 16u, 31u, 32u, 63u, 64u}) {
        const std::uint64_t first = bits == 64 ? 0 : std::uint64_t{1} << bits;
        for (int step = -3 * 35; step < 3 * 35; ++step) {
            const int radix = 2 + (step + 3 * 35) % 35;
            const std::string text = Conv::ToString(first + step / 35, radix).getString();
            for (const std::string& variant : {text, "-" + text, text + "0"})
                ExpectReadsInEveryType(variant, radix);
        }
    }
}

TEST(StringConv, ReportsWhatItCannotWriteOrRead) {
    tarntest::AssertRecorder recorder;
    wchar_t array[SWCharStringConv::kArrayUnits] = L"old";
    SWCharStringConv::ToString(1, array);
    EXPECT_STREQ(array, L"1");
    SWCharStringConv::ToString(-1LL, array, 2);
    EXPECT_STREQ(array, L"");
    EXPECT_TRUE(recorder.sawLast("sstringconv", "length < 64"));
    int number = 1;
    EXPECT_STREQ(Conv::ToString(5, 37).getString(), "");
    EXPECT_FALSE(Conv::FromString("1", number, 0) || Conv::FromString("1", number, 1));
    EXPECT_EQ(recorder.count(), 3u);
    EXPECT_TRUE(recorder.sawLast("sstringconv", "radix >= 2 && radix <= 36"));
}

TEST(StringConv, WritesAndReadsRealsInTheLocale) {
    EXPECT_STREQ(Conv::ToString(2.0, 0).getString(), "2.");
    EXPECT_EQ(Conv::ToString(1e30).getLength(), 38u);
    EXPECT_EQ(SWCharStringConv::ToString(1e308, 200).getLength(), 510u);
    const tarntest::LocaleScope german("German_Germany.1252");
    EXPECT_STREQ(SWCharStringConv::ToString(3.5, 2).getString(), L"3,50");
    double number;
    float small;
    EXPECT_TRUE(Conv::FromString(" 3,5e1", number) && number == 35);
    EXPECT_TRUE(Conv::FromString("0,1", small) && small == 0.1f);
    for (const char* text : {"", "x", "3.5", "3 "})
        EXPECT_TRUE(!Conv::FromString(text, number) && number == 0) << text;
}

TEST(StringConv, WritesAndReadsAddresses) {
    void* const address = reinterpret_cast<void*>(0xA1F);
    void* read = nullptr;
    EXPECT_STREQ(SWCharStringConv::ToString(address).getString(), L"00000A1F");
    EXPECT_TRUE(Conv::FromString(Conv::ToString(address), read) && read == address);
}

TEST(StringConv, KeepsSmallNumbers) {
    for (int number = -1; number <= 101; ++number) {
        const std::string zero = number >= 0 && number < 10 ? "0" : "", text = std::to_string(number);
        EXPECT_EQ(Conv::StringFrom100Number(number).getString(), text);
        EXPECT_EQ(SAsciiStringConv::StringFrom10Number2Digits(number).getString(), zero + text);
    }
    EXPECT_EQ(Conv::StringFrom100Number(42).getString(), Conv::StringFrom100Number(42).getString());
}
