#include "tarnlib/neutralstr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>

#include "support/assert_recorder.h"
#include "support/locale_scope.h"

using namespace TarnLibA500;

TEST(NeutralString, ReadsRealsInAnyLocale) {
    const tarntest::LocaleScope german("German_Germany.1252");
    using Case = std::pair<const char*, double>;
    const Case usual[] = {{" 1.5e3 ", 1500}, {"\t- 5", -5},    {"+ 1 e - 2", 0.01}, {"1\te5", 1e5},
                          {"1E+5", 1e5},     {"12abc", 12},    {"0x10", 0},         {"1.", 1},
                          {"1.e2", 100},     {".5", 0.5},      {"007.25", 7.25},    {"1,5", 1},
                          {"1 2", 1},        {"1e308", 1e308}, {"10e307", 1e308},   {"0e9999", 0},
                          {"1e-400", 0},     {"-1e-9999", 0},  {"5e-324", 5e-324},  {"1e-328", 0}};
    // Of the mantissa 20 digits are kept, and they are looked at down to 10^-328.
    const Case longer[] = {{"12345678901234567891e-328", 12345678901234567891e-328},
                           {"12345678901234567891e-329", 0},
                           {"0.0000000000000000000000000000000000000001", 1e-40},
                           {"9391993E22", 9391993E22},  // one unit less when it is rounded twice
                           {"000.00000009391993E36", 9391993E22},
                           {" 93919930000.E18", 9391993E22},
                           {"-8388609e28", -8388609e28},
                           {"10000000000000000000000000000", 1e28},
                           {"9007199254740993.0001", 9007199254740994.0},
                           {"9007199254740993.00001", 9007199254740992.0},
                           {"900719925474099300000.1e-5", 9007199254740992.0}};
    const auto expect = [](const Case& c) {
        double number = 7;
        EXPECT_TRUE(NeutralString::ToNumber(c.first, number) && number == c.second) << c.first;
    };
    std::for_each(std::begin(usual), std::end(usual), expect);
    std::for_each(std::begin(longer), std::end(longer), expect);
    for (const char* text : {"", ".", "-.e5", "1e", "1 e +", "--5", "inf", "nan", "-inf", "x", "10e308",
                             "1e400", "1.8e308", "1e99999999999"}) {
        double number = 7;
        EXPECT_TRUE(!NeutralString::ToNumber(text, number) && number == 0) << text;
    }
}

TEST(NeutralString, ReadsFloatsInTheirRange) {
    float number = 7;
    EXPECT_TRUE(NeutralString::ToNumber("3.4028235e38", number) && number == FLT_MAX);
    EXPECT_TRUE(!NeutralString::ToNumber("3.5e38", number) && number == 0);
    EXPECT_TRUE(NeutralString::ToNumber("1e-60", number) && number == 0);
    // Just above the middle of two floats; as a double it would be the middle itself.
    EXPECT_TRUE(NeutralString::ToNumber("1.0000000596046447755", number) && number == 1 + FLT_EPSILON);
}

// By the C library, which rounds once.
TEST(NeutralString, ReadsRealsAsTheCLibraryDoes) {
    std::mt19937 random(3);
    for (int i = 0; i < 200'000; ++i) {
        std::string text;
        for (unsigned digits = 1 + random() % 20; digits > 0; --digits)
            text += static_cast<char>('0' + random() % 10);
        if (random() % 2) text.insert(random() % (text.size() + 1), ".");
        const int exponents[] = {static_cast<int>(random() % 560) - 300, static_cast<int>(random() % 25)};
        if (random() % 4) text += "e" + std::to_string(exponents[random() % 2]);
        double number;
        double again;
        const double expected = std::strtod(text.c_str(), nullptr);
        const bool inRange = expected <= DBL_MAX;
        EXPECT_EQ(NeutralString::ToNumber(text.c_str(), number), inRange) << text;
        EXPECT_EQ(number, inRange ? expected : 0) << text;
        // The same with blanks takes the other way through the reader.
        EXPECT_EQ(NeutralString::ToNumber(("  +" + text + " ").c_str(), again), inRange) << text;
        EXPECT_EQ(again, number) << text;
    }
}

TEST(NeutralString, WritesTheShortestTextThatReadsBack) {
    std::mt19937_64 random(4);
    for (int i = 0; i < 50'000; ++i) {
        const std::uint64_t bits = random();
        // Any bit pattern, decimals as people write them, whole numbers.
        const double kinds[] = {std::bit_cast<double>(bits), static_cast<double>(bits % 10'000'000'000) / 1e7,
                                static_cast<double>(bits % 1'000'000'000'000'000) / 1e6,
                                static_cast<double>(bits >> (bits % 64))};
        const double number = kinds[i % 4];
        if (!std::isfinite(number)) continue;
        const std::string text = NeutralString::FromNumber(number).getString();
        double again;
        EXPECT_TRUE(NeutralString::ToNumber(text.c_str(), again) && again == number) << text;
        const double magnitude = std::fabs(number);
        const bool plain = magnitude >= 1e-5 && magnitude < 1e17;
        if (plain && magnitude > 9e15) continue;  // the standard library writes more digits
        const auto format = plain || number == 0 ? std::chars_format::fixed : std::chars_format::scientific;
        char digits[40];
        std::string expected(digits, std::to_chars(digits, digits + 40, number, format).ptr);
        if (const auto mark = expected.find('e'); mark != expected.npos)
            expected.replace(mark, expected.npos, "E" + std::to_string(std::stoi(expected.substr(mark + 1))));
        EXPECT_EQ(text, expected);
    }
}

TEST(NeutralString, ChoosesTheNotation) {
    const std::pair<double, const char*> cases[] = {{-0.0, "0"},
                                                    {1e-5, "0.00001"},
                                                    {9.9e-6, "9.9E-6"},
                                                    {1e16, "10000000000000000"},
                                                    {99999999999999984.0, "99999999999999980"},
                                                    {1e17, "1E17"},
                                                    {9007199254740993.0, "9007199254740992"}};
    const tarntest::LocaleScope german("German_Germany.1252");
    for (const auto& c : cases) EXPECT_STREQ(NeutralString::FromNumberToAscii(c.first).getString(), c.second);
}

TEST(NeutralString, RoundsToDecimals) {
    const struct {
        double number;
        int precision;
        std::string text;
    } cases[] = {{2.675, 2, "2.68"},
                 {1.005, 2, "1.01"},
                 {9.995, 2, "10.00"},
                 {0.5, 0, "1"},
                 {0.04, 1, "0.0"},
                 {-0.001, 2, "0.00"},
                 {1.0 / 3, 20, "0.33333333333333300000"},
                 {123456789012345678.0, 1, "123456789012346000.0"},
                 {DBL_MAX, 400, "179769313486232" + std::string(294, '0') + "." + std::string(400, '0')},
                 {5e-324, 345, "0." + std::string(323, '0') + "494065645841247" + std::string(7, '0')}};
    for (const auto& c : cases)
        EXPECT_EQ(NeutralString::FromNumber(c.number, c.precision).getString(), c.text);
    EXPECT_STREQ(NeutralString::FromNumber(0.1f, 9).getString(), "0.100000001");
}

TEST(NeutralString, RoundsDecimalNumbersHalfUp) {
    std::mt19937_64 random(5);
    std::uint64_t unit = 1;
    for (int precision = 8; precision >= 0; --precision, unit *= 10) {
        for (int i = 0; i < 3000; ++i) {
            // Up to 15 digits, so the double stands for exactly this number of 10^-8; every other a tie.
            std::uint64_t number = random() % (std::uint64_t{1} << (random() % 49));
            if (i % 2) number += unit / 2 - number % unit;
            std::string text = std::to_string((number + unit / 2) / unit);
            const auto decimals = static_cast<std::size_t>(precision);
            if (text.size() <= decimals) text.insert(0, decimals + 1 - text.size(), '0');
            if (decimals != 0) text.insert(text.size() - decimals, ".");
            const auto real = static_cast<double>(number) / 1e8;
            EXPECT_EQ(NeutralString::FromNumber(real, precision).getString(), text);
        }
    }
}

TEST(NeutralString, ReportsWhatHasNoText) {
    tarntest::AssertRecorder recorder;
    EXPECT_STREQ(NeutralString::FromNumber(-HUGE_VAL).getString(), "");
    EXPECT_STREQ(NeutralString::FromNumber(std::nan(""), 2).getString(), "");
    EXPECT_STREQ(NeutralString::FromNumber(1.5, -1).getString(), "2");
    EXPECT_EQ(recorder.count(), 3u);
    EXPECT_TRUE(recorder.sawLast("neutralstr", "temp"));
}

TEST(NeutralString, WritesAndReadsIntegers) {
    EXPECT_STREQ(NeutralString::FromNumber(static_cast<signed char>(-128)).getString(), "-128");
    long number = 1;
    EXPECT_TRUE(!NeutralString::ToNumber("2147483648", number) && number == 0);
    const SAsciiString text("port=-8080;");
    const auto at = [&](unsigned index) { return text.getCursor(index); };
    EXPECT_TRUE(NeutralString::ToNumber(at(5), at(10), number) && number == -8080);
    EXPECT_TRUE(NeutralString::ToNumber(at(10), at(5), number) && number == 0);
    EXPECT_FALSE(NeutralString::ToNumber(text, number));
}

TEST(NeutralString, ReadsWholeTextsStrictly) {
    const struct {
        const char* text;
        const char* number;  // null: refused
        const char* real;
    } cases[] = {{"7", "7", "7"},
                 {"-3", "-3", "-3"},
                 {"007", "7", "7"},
                 {"", nullptr, nullptr},
                 {"7.5", nullptr, "7.5"},
                 {"7 ", nullptr, nullptr},
                 {" 7", nullptr, nullptr},
                 {"-", nullptr, nullptr},
                 {"+7", nullptr, "7"},
                 {"1e3", nullptr, "1000"},
                 {"1e", nullptr, nullptr},
                 {".", nullptr, nullptr},
                 {".5", nullptr, "0.5"},
                 {"5.", nullptr, "5"},
                 {"1e+2", nullptr, "100"},
                 {"1.5e3x", nullptr, nullptr},
                 {"--1", nullptr, nullptr},
                 {"x", nullptr, nullptr},
                 {"1e999", nullptr, nullptr},
                 {"2147483648", nullptr, "2147483648"}};
    for (const auto& c : cases) {
        int number = 9;
        double real = 9;
        const SAsciiString ascii(c.text);
        EXPECT_EQ(NeutralString::ToNumberStrict(ascii, number), c.number != nullptr) << c.text;
        EXPECT_EQ(NeutralString::FromNumber(number), c.number != nullptr ? c.number : "0") << c.text;
        EXPECT_EQ(NeutralString::ToNumberStrict(ascii.begin(), ascii.end(), real), c.real != nullptr)
            << c.text;
        EXPECT_EQ(NeutralString::FromNumber(real), c.real != nullptr ? c.real : "0") << c.text;
    }
    unsigned char byte = 9;
    EXPECT_FALSE(NeutralString::ToNumberStrict("-1", byte) || NeutralString::ToNumberStrict("256", byte) ||
                 NeutralString::ToNumberStrict(SAnsiString("1\0", 2), byte) || byte != 0);
    EXPECT_STREQ(NeutralString::FromNumber(5, 2).getString(), "5.00");
    EXPECT_STREQ(NeutralString::FromNumber(-9223372036854775807LL, 1).getString(), "-9223372036854775807.0");
    const int& digits = NeutralString::kPrecisionDigits;  // a client may take a reference
    EXPECT_EQ(digits, 15);
}

TEST(NeutralString, AddsOneInTheLastPlace) {
    char digits[] = "18.9";
    EXPECT_TRUE(NeutralString::RoundUpHelper(digits, 3));
    EXPECT_FALSE(NeutralString::RoundUpHelper(digits + 1, 0));
    EXPECT_STREQ(digits, "10.0");
}
