#include "tarnlib/neutralstr.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"

using namespace TarnLibA500;

namespace {

// By the C library, which rounds once.
double Real(const std::string& text) {
    const tarntest::LocaleScope locale("C");
    return std::strtod(text.c_str(), nullptr);
}

float Float(const std::string& text) {
    const tarntest::LocaleScope locale("C");
    return std::strtof(text.c_str(), nullptr);
}

template <class T>
void ExpectRead(bool read, const T& number, const std::vector<std::string>& c, std::size_t field) {
    EXPECT_EQ(read, c[field] != "no") << c[0] << " field " << field;
    EXPECT_EQ(number, c[field] == "no" ? 0 : Real(c[field])) << c[0] << " field " << field;
}

}  // namespace

TEST(NeutralString, ReadsNumbersInAnyLocale) {
    const tarntest::LocaleScope german("German_Germany.1252");
    for (const auto& c : tarntest::ReadCases("strings/number_reads.txt")) {
        const SAsciiString text(c[0].c_str());
        double real = 7, whole = 7;
        float single = 7;
        int integer = 7;
        ExpectRead(NeutralString::ToNumber(c[0].c_str(), real), real, c, 1);
        ExpectRead(NeutralString::ToNumberStrict(text.begin(), text.end(), whole), whole, c, 2);
        ExpectRead(NeutralString::ToNumberStrict(text, integer), integer, c, 3);
        const bool read = NeutralString::ToNumber(text, single);
        const float nearest = Float(c[1]);
        EXPECT_EQ(read, c[1] != "no" && nearest <= FLT_MAX && nearest >= -FLT_MAX) << c[0];
        EXPECT_EQ(single, read ? nearest : 0) << c[0];
    }
    unsigned char byte = 9;
    EXPECT_FALSE(NeutralString::ToNumberStrict("-1", byte) || NeutralString::ToNumberStrict("256", byte) ||
                 NeutralString::ToNumberStrict(SAnsiString("1\0", 2), byte) || byte != 0);
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
        double number, again;
        const double expected = std::strtod(text.c_str(), nullptr);
        const bool inRange = expected <= DBL_MAX;
        EXPECT_EQ(NeutralString::ToNumber(text.c_str(), number), inRange) << text;
        EXPECT_EQ(number, inRange ? expected : 0) << text;
        // The same with blanks takes the other way through the reader.
        EXPECT_EQ(NeutralString::ToNumber(("  +" + text + " ").c_str(), again), inRange) << text;
        EXPECT_EQ(again, number) << text;
        float single;
        const float nearest = std::strtof(text.c_str(), nullptr);
        NeutralString::ToNumber(text.c_str(), single);
        EXPECT_EQ(single, nearest <= FLT_MAX ? nearest : 0) << text;
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

TEST(NeutralString, WritesNumbersInAnyLocale) {
    const tarntest::LocaleScope german("German_Germany.1252");
    for (const auto& c : tarntest::ReadCases("strings/number_writes.txt")) {
        const std::string text = c[1].empty()
                                     ? NeutralString::FromNumberToAscii(Real(c[0])).getString()
                                     : NeutralString::FromNumber(Real(c[0]), std::stoi(c[1])).getString();
        EXPECT_EQ(text, c[2]) << c[0];
    }
    EXPECT_EQ(NeutralString::FromNumber(DBL_MAX, 400).getString(),
              "179769313486232" + std::string(294, '0') + "." + std::string(400, '0'));
    EXPECT_EQ(NeutralString::FromNumber(5e-324, 345).getString(),
              "0." + std::string(323, '0') + "494065645841247" + std::string(7, '0'));
    EXPECT_STREQ(NeutralString::FromNumber(0.1f, 9).getString(), "0.100000001");
    const int& digits = NeutralString::kPrecisionDigits;  // a client may take a reference
    EXPECT_EQ(digits, 15);
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
    EXPECT_STREQ(NeutralString::FromNumber(5, 2).getString(), "5.00");
    EXPECT_STREQ(NeutralString::FromNumber(-9223372036854775807LL, 1).getString(), "-9223372036854775807.0");
    long number = 1;
    EXPECT_TRUE(!NeutralString::ToNumber("2147483648", number) && number == 0);
    const SAsciiString text("port=-8080;");
    const auto at = [&](unsigned index) { return text.getCursor(index); };
    EXPECT_TRUE(NeutralString::ToNumber(at(5), at(10), number) && number == -8080);
    EXPECT_TRUE(NeutralString::ToNumber(at(10), at(5), number) && number == 0);
    EXPECT_FALSE(NeutralString::ToNumber(text, number));
}

TEST(NeutralString, AddsOneInTheLastPlace) {
    char digits[] = "18.9";
    EXPECT_TRUE(NeutralString::RoundUpHelper(digits, 3));
    EXPECT_FALSE(NeutralString::RoundUpHelper(digits + 1, 0));
    EXPECT_STREQ(digits, "10.0");
}
