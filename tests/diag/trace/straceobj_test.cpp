#include "tarnlib/straceobj.h"

#include <gtest/gtest.h>

#include <string>

#include "support/assert_recorder.h"
#include "support/print_strings.h"
#include "tarnlib/sdatetime.h"
#include "tarnlib/sscopetrace.h"
#include "tarnlib/stimezone.h"

using namespace TarnLibA500;

namespace {

// "(12 us)" is as long as it took.
std::string WithoutTimes(std::string text) {
    for (std::size_t at = 0; (at = text.find(" (", at)) != text.npos;)
        text.erase(at, text.find(')', at) + 1 - at);
    return text;
}

}  // namespace

TEST(TraceTexts, PlacesAreFilledOnceAndNeverRescanned) {
    EXPECT_EQ(STraceHelper("%1-%2-%1", 7, "x"), "7-x-7");
    EXPECT_EQ(STraceHelper("%s %d %u %ld %lu %x %c", 1, 2, 3, 4, 5, 6, 7), "1 2 3 4 5 6 7");
    EXPECT_EQ(STraceHelper("%1 of %2 bytes, %s %3 %d %9", 12, 80, "a", "b"), "12 of 80 bytes, a a b %9");
    EXPECT_EQ(STraceHelper("%12%1%10%11", 1, 2, 3, 4, 5, 6, 7, 8, 9, "ten", "eleven", "twelve"),
              "twelve1teneleven");
    EXPECT_EQ(STraceHelper("%13", 1, 2, 3), "13");   // %1 and a 3
    EXPECT_EQ(STraceHelper("%12 %2", 1), "%12 %2");  // no such arguments
    EXPECT_EQ(STraceHelper("%0 %l %q %", 1), "%0 %l %q %");
    EXPECT_EQ(STraceHelper("100%% of %1", 3), "100% of 3");
    EXPECT_EQ(STraceHelper("%1 %2", "%2 %s %n", "safe"), "%2 %s %n safe");
    EXPECT_EQ(STraceHelper("nothing"), "nothing");
    EXPECT_EQ(STraceHelper(L"wide %1 \x00E9 \x4E00", L"\x00E9\x4E00"), "wide \xE9? \xE9 ?");
    EXPECT_EQ(STraceHelper(static_cast<const char*>(nullptr), 1), "");
}

TEST(TraceTexts, ArgumentsOfEveryType) {
    enum class Color : unsigned char { Red = 200 };
    enum Plain : long long { kLarge = 1LL << 40 };
    const SChar_t<wchar_t, 1> wideCharacter(L'\x00E9');
    const STimeSpan day(1, 2, 3, 4, 5);
    constexpr const char* kAll = "%1|%2|%3|%4|%5|%6|%7|%8|%9|%10|%11|%12";
    EXPECT_EQ(
        STraceHelper(kAll, 'x', L'\x00E9', L'\x4E00', static_cast<unsigned char>(120), SChar_t<char, 0>('c'),
                     SChar_t<char, 1>('d'), wideCharacter, SAnsiString("ansi"), SAnsiStringCI("ci"),
                     SAsciiString("ascii"), SOCAString(L"oca"), SWCharStringCI(L"wci")),
        "x|\xE9|?|120|c|d|\xE9|ansi|ci|ascii|oca|wci");
    EXPECT_EQ(
        STraceHelper(
            kAll, SWCharString(L"t\x00E9\x4E00"), SDateTime(2024, 2, 29, 23, 59, 58, 7, STimeZone::TZ_UTC()),
            SDateTime(), SDate(2024, 2, 29), SDate(), STime(23, 59, 58, 7, STimeZone::TZ_UTC()), STime(),
            STimeSpan(), day, STimeSpan() - day, STimeSpan::FromMilliseconds(-9223372036854775807LL - 1), -1),
        "t\xE9?|2024-02-29@23:59:58.007|invalid-date-time|2024-02-29|invalid-date|23:59:58.007|invalid-time|"
        "00:00:00.000|1d 02:03:04.005|-1d 02:03:04.005|-106751991167d 07:12:55.808|-1");
    EXPECT_EQ(
        STraceHelper(kAll, 4294967295U, -2L, 3UL, -9223372036854775807LL - 1, 18446744073709551615ULL,
                     Color::Red, kLarge, 1.5, static_cast<const char*>(nullptr),
                     static_cast<const wchar_t*>(nullptr), nullptr, reinterpret_cast<const void*>(0xABC)),
        "4294967295|-2|3|-9223372036854775808|18446744073709551615|200|1099511627776|1.500000|(null)|(null)|"
        "(null)|0x00000ABC");
    EXPECT_EQ(STraceHelper("%1%2", true, false), "truefalse");
}

TEST(TracePoints, EvaluateTheirArgumentsOnlyWhenSwitchedOn) {
    int evaluated = 0;
    TARN_TRACE(0, "%1", ++evaluated);  // no sink: off
    EXPECT_EQ(evaluated, 0);
    tarntest::AssertRecorder recorder(tarntest::kTracesToo, 5);
    TARN_TRACE_AT(5, "unit", "n=%1", ++evaluated);
    TARN_TRACE_AT(6, "unit", "n=%1", ++evaluated);
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(recorder.take(), "5 unit: n=1\n");
}

TEST(TracePoints, LoseNothingBehindAZeroByteAndDropLineEnds) {
    tarntest::AssertRecorder recorder(tarntest::kTracesToo, 5);
    const SAnsiString zeros("a\0b\0", 4);
    const std::string filling(600, 'x');  // more than has room without memory
    TARN_TRACE_AT(5, "unit", "%1|%2", zeros, "Access denied.\r\n");
    TARN_TRACE_AT(5, "unit", "%1%2|%3", filling.c_str(), SWCharString(L"a\0b\0", 4), "end\n");
    EXPECT_EQ(recorder.take(),
              "5 unit: a\\x00b\\x00|Access denied.\n5 unit: " + filling + "a\\x00b\\x00|end\n");
}

TEST(TracePoints, ScopesHaveABeginningAndAnEndInOrder) {
    tarntest::AssertRecorder recorder(tarntest::kTracesToo, 6);
    {
        const WorkflowScopeTrace root(true, "order", nullptr, "42");
        const InstrumentScopeTrace inner("file.cpp", "Load");
        const SScopeTrace off(false, 0, "file.cpp", 1, "never");
        const InstrumentScopeTrace tooDetailed(7, "file.cpp", "never", 3);
        EXPECT_EQ(off.GetMicroseconds(), 0U);
    }
    { const WorkflowScopeTrace step(false, "pay", "", nullptr); }
    EXPECT_EQ(WithoutTimes(recorder.take()),
              "6 : -> Root: order 42\n5 file.cpp:   -> Load\n5 file.cpp:   <- Load\n6 : <- Root: order 42\n"
              "6 : -> Step: pay\n6 : <- Step: pay\n");
}
