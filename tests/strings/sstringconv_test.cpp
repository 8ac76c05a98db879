#include "tarnlib/sstringconv.h"

#include <gtest/gtest.h>

#include <charconv>
#include <limits>
#include <random>
#include <string>

#include "support/assert_recorder.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"

using namespace TarnLibA500;

namespace {

template <class T>
void ExpectRead(const char* text, int radix, bool good, T value) {
    T number = 99;
    EXPECT_EQ(SAnsiStringConv::FromString(text, number, radix), good) << text;
    EXPECT_EQ(number, value) << text;
}

// Random values of every magnitude and the edges, against the standard library.
template <class T>
void CompareWithTheStandardLibrary() {
    std::mt19937_64 random(501);
    constexpr T edges[] = {0, 1, std::numeric_limits<T>::max(), std::numeric_limits<T>::min(),
                           static_cast<T>(std::numeric_limits<T>::max() - 1)};
    for (int i = 0; i < 30'000; ++i) {
        const T value = i < 5 ? edges[i] : static_cast<T>(random() >> (random() % 64));
        const int radix = i % 4 == 0 ? static_cast<int>(2 + random() % 35) : 10;
        char expected[80];
        const auto magnitude = static_cast<std::make_unsigned_t<T>>(value);
        const auto end = radix == 10 ? std::to_chars(expected, expected + 80, value).ptr
                                     : std::to_chars(expected, expected + 80, magnitude, radix).ptr;
        *end = '\0';
        const SAnsiString ours = SAnsiStringConv::ToString(value, radix);
        ASSERT_EQ(SAnsiString(ours).toLower(), expected) << radix;
        T back = 0;
        const bool fits = radix == 10 || value >= 0;  // other radixes show the unsigned value
        ASSERT_EQ(SAnsiStringConv::FromString(ours, back, radix), fits) << expected << ' ' << radix;
        ASSERT_EQ(back, fits ? value : T{0}) << expected;
    }
}

}  // namespace

TEST(StringConv, IntegersAsText) {
    EXPECT_EQ(SAnsiStringConv::ToString(-1, 16), "FFFFFFFF");
    EXPECT_EQ(SAnsiStringConv::ToString(static_cast<short>(-1), 16), "FFFF");
    EXPECT_EQ(SAnsiStringConv::ToString(-1LL, 16), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(SAnsiStringConv::ToString(-1), "-1");
    EXPECT_EQ(SAnsiStringConv::ToString(std::numeric_limits<long long>::min()), "-9223372036854775808");
    EXPECT_EQ(SAnsiStringConv::ToString(35, 36), "Z");
    EXPECT_EQ(SAnsiStringConv::ToString(reinterpret_cast<void*>(0xAB)), "000000AB");
    EXPECT_EQ(SWCharStringConv::ToString(~0ULL, 2), std::wstring(64, L'1').c_str());
    tarntest::AssertRecorder asserts;
    wchar_t array[64] = L"old";
    SWCharStringConv::ToString(~0ULL, array, 2);
    EXPECT_STREQ(array, L"");
    EXPECT_EQ(asserts.count(), 1U);
    SWCharStringConv::ToString(-42, array);
    EXPECT_STREQ(array, L"-42");
    EXPECT_EQ(SAnsiStringConv::ToString(5, 1), "");
    EXPECT_TRUE(asserts.sawLast("sstringconv", "radix >= 2 && radix <= 36"));
    for (int n : {0, 7, 10, 99, 100, -3}) {
        EXPECT_EQ(SAnsiStringConv::StringFrom100Number(n), SAnsiStringConv::ToString(n));
        EXPECT_EQ(SAsciiStringConv::StringFrom10Number2Digits(n), n == 0   ? "00"
                                                                  : n == 7 ? "07"
                                                                           : std::to_string(n).c_str());
    }
    EXPECT_EQ(SWCharStringConv::StringFrom10Number2Digits(3), L"03");
    EXPECT_EQ(SAnsiStringConv::StringFrom100Number(42).getString(),
              SAnsiStringConv::StringFrom100Number(42).getString());
}

TEST(StringConv, TextAsIntegers) {
    for (const char* text : {"", "-", " 5", ".5", "x"}) ExpectRead(text, 16, true, 0);
    for (const char* text : {"+5", "12\t", "5a", "--5", "5-", "\xB2"}) ExpectRead(text, 10, false, 0);
    ExpectRead("12.5", 10, true, 12);
    ExpectRead("5 apples", 10, true, 5);
    ExpectRead("12abc", 10, false, 0);
    ExpectRead("12abc", 16, true, 76476);
    ExpectRead("0x1F", 16, true, 31);
    ExpectRead("1x2", 16, true, 18);
    ExpectRead("1x2", 8, false, 0);
    ExpectRead("-2147483648", 10, true, std::numeric_limits<int>::min());
    ExpectRead("2147483648", 10, false, 0);
    ExpectRead("-2147483649", 10, false, 0);
    ExpectRead("0000000000000000000002147483647", 10, true, 2147483647);
    ExpectRead("FFFFFFFF", 16, false, 0);
    ExpectRead("FFFFFFFF", 16, true, 0xFFFFFFFFU);
    ExpectRead("-1", 10, false, 0U);
    ExpectRead("-0", 10, false, 0U);
    ExpectRead<signed char>("-128", 10, true, -128);
    ExpectRead<unsigned char>("256", 10, false, 0);
    ExpectRead("18446744073709551616", 10, false, 0ULL);
    ExpectRead("99999999999999999999999999", 10, false, 0LL);
    int number = 7;
    EXPECT_FALSE(SAnsiStringConv::FromString(SAnsiString("1\0002", 3), number));
    EXPECT_TRUE(SWCharStringConv::FromString(L"7F", number, 16));
    EXPECT_EQ(number, 127);
    EXPECT_FALSE(SWCharStringConv::FromString(L"\xFF11", number));  // a full-width digit is none
    void* address = nullptr;
    EXPECT_TRUE(SAnsiStringConv::FromString("0012AB00", address));
    EXPECT_EQ(address, reinterpret_cast<void*>(0x12AB00));
}

TEST(StringConv, AgreesWithTheStandardLibrary) {
    CompareWithTheStandardLibrary<short>();
    CompareWithTheStandardLibrary<unsigned short>();
    CompareWithTheStandardLibrary<int>();
    CompareWithTheStandardLibrary<unsigned long>();
    CompareWithTheStandardLibrary<long long>();
    CompareWithTheStandardLibrary<unsigned long long>();
}

TEST(StringConv, RealsFollowTheLocale) {
    EXPECT_EQ(SAnsiStringConv::ToString(2.0, 0), "2.");
    EXPECT_EQ(SAnsiStringConv::ToString(1e30, 6),
              "1000000000000000019884624838656.000000");  // longer than the usual area
    EXPECT_EQ(SWCharStringConv::ToString(-0.5, 2), L"-0.50");
    double real = 9;
    for (const char* bad : {"", "x", "1.5x", "1.5 "}) {
        EXPECT_FALSE(SAnsiStringConv::FromString(bad, real)) << bad;
        EXPECT_EQ(real, 0);
    }
    float small = 0;
    EXPECT_TRUE(SAnsiStringConv::FromString("-2.5e1", small));
    EXPECT_EQ(small, -25);
    const tarntest::LocaleScope german("German_Germany.1252");
    EXPECT_EQ(SAnsiStringConv::ToString(3.25, 2), "3,25");
    EXPECT_TRUE(SAnsiStringConv::FromString("3,25", real));
    EXPECT_EQ(real, 3.25);
}
