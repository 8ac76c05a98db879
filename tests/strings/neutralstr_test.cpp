#include "tarnlib/neutralstr.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>

#include "support/assert_recorder.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"

using namespace TarnLibA500;

TEST(NeutralNumbers, ReadReals) {
    struct Case {
        const char* text;
        bool good;
        double value;
    };
    const Case cases[] = {
        {" 1.5e3 ", true, 1500},
        {"\t- 5", true, -5},
        {"1 e 5", true, 1e5},
        {"+ .5", true, 0.5},
        {"5.", true, 5},
        {"12abc", true, 12},
        {"0x10", true, 0},
        {"1,5", true, 1},
        {"1e", false, 0},
        {"1e+", false, 0},
        {".", false, 0},
        {"", false, 0},
        {"-", false, 0},
        {"+-1", false, 0},
        {"e5", false, 0},
        {"1e308", true, 1e308},
        {"10e307", true, 1e308},
        {"10e308", false, 0},
        {"1e400", false, 0},
        {"2e308", false, 0},
        {"1e-400", true, 0},
        {"5e-324", true, 5e-324},
        {"1e-324", true, 0},
        {"-1e-999999999999", true, 0},
        {"1e999999999999", false, 0},
        {"0e400", true, 0},
        {"000012.500", true, 12.5},
        {"0.000001e6", true, 1},
        {"123456789012345678901234567890", true, 123456789012345678900000000000.0},
        {"0.1000000000000000055511151231257827021181583404541015625", true, 0.1},
        {"1.7976931348623157e308", true, std::numeric_limits<double>::max()},
    };
    for (const Case& c : cases) {
        double value = 77;
        EXPECT_EQ(NeutralString::ToNumber(c.text, value), c.good) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
    }
    float small = 1;
    EXPECT_FALSE(NeutralString::ToNumber("1e39", small));
    EXPECT_TRUE(NeutralString::ToNumber("16777217", small));
    EXPECT_EQ(small, 16777216);
    const SAsciiString list("10;20.5");
    unsigned short whole = 0;
    EXPECT_TRUE(NeutralString::ToNumber(list.begin(), list.find(';'), whole));
    EXPECT_TRUE(NeutralString::ToNumber(++list.find(';'), list.end(), small));
    EXPECT_EQ(whole + small, 30.5F);
    EXPECT_FALSE(NeutralString::ToNumber("70000", whole));
}

TEST(NeutralNumbers, WriteTheShortestText) {
    struct Case {
        double value;
        const char* text;
    };
    for (const Case& c : {Case{0.1, "0.1"},
                          {-0.0, "0"},
                          {1e-5, "0.00001"},
                          {9.5e-6, "9.5E-6"},
                          {1e17, "1E17"},
                          {99999999999999984.0, "99999999999999980"},
                          {123456.75, "123456.75"},
                          {1e16, "10000000000000000"},
                          {-2.5e-300, "-2.5E-300"},
                          {1.7976931348623157e308, "1.7976931348623157E308"},
                          {1e22, "1E22"}}) {
        EXPECT_EQ(NeutralString::FromNumber(c.value), c.text);
    }
    EXPECT_EQ(NeutralString::FromNumber(static_cast<signed char>(-128)), "-128");
    EXPECT_EQ(NeutralString::FromNumberToAscii(18446744073709551615ULL), "18446744073709551615");
    tarntest::AssertRecorder asserts;
    EXPECT_EQ(NeutralString::FromNumber(std::nan("")), "");
    EXPECT_TRUE(asserts.sawLast("neutralstr", "temp"));
    EXPECT_EQ(NeutralString::FromNumber(HUGE_VAL, 2), "");
    EXPECT_TRUE(asserts.sawLast("neutralstr", "temp"));
}

TEST(NeutralNumbers, WriteAPrecision) {
    struct Case {
        double value;
        int precision;
        const char* text;
    };
    for (const Case& c : {Case{2.675, 2, "2.68"},
                          {2.5, 0, "3"},
                          {-2.5, 0, "-3"},
                          {0.5, 0, "1"},
                          {0.49, 0, "0"},
                          {-0.004, 2, "0.00"},
                          {999.999, 2, "1000.00"},
                          {9.5, 0, "10"},
                          {0.05, 1, "0.1"},
                          {1e-20, 2, "0.00"},
                          {0.1, 20, "0.10000000000000000000"},
                          {1e21, 1, "1000000000000000000000.0"},
                          {0.0, 3, "0.000"},
                          {123456789012345678.0, 0, "123456789012346000"},
                          {1.0 / 3, 4, "0.3333"},
                          {0.0099, 2, "0.01"}}) {
        EXPECT_EQ(NeutralString::FromNumber(c.value, c.precision), c.text) << c.value;
    }
    EXPECT_EQ(NeutralString::FromNumber(0.25F, 1), "0.3");
    char digits[] = "19.99";
    EXPECT_TRUE(NeutralString::RoundUpHelper(digits, 4));
    EXPECT_STREQ(digits, "20.00");
    char nines[] = "9.9";
    EXPECT_FALSE(NeutralString::RoundUpHelper(nines, 2));
    EXPECT_STREQ(nines, "0.0");
}

// Bit by bit, in a locale with a decimal comma; and what another writer wrote reads as the standard library
// reads it.
TEST(NeutralNumbers, ComeBackExactly) {
    const tarntest::LocaleScope german("German_Germany.1252");
    std::mt19937_64 random(88);
    for (int i = 0; i < 60'000; ++i) {
        double value = std::bit_cast<double>(random());
        if (i % 3 == 0)
            value = static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 60)) / 1000;
        if (!std::isfinite(value)) continue;
        double back = 0;
        ASSERT_TRUE(NeutralString::ToNumber(NeutralString::FromNumber(value), back));
        ASSERT_EQ(back, value);
        char text[64];
        const auto end = std::to_chars(text, text + 63, value, std::chars_format::scientific, 18).ptr;
        *end = '\0';
        ASSERT_TRUE(NeutralString::ToNumber(text, back)) << text;
        ASSERT_EQ(back, value) << text;
    }
}
