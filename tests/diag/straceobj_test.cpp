#include "tarnlib/straceobj.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "support/print_strings.h"
#include "tarnlib/sdatetime.h"
#include "tarnlib/sscopetrace.h"
#include "tarnlib/stimezone.h"

using namespace TarnLibA500;

namespace {

using Texts = std::vector<std::string>;

Texts seen;

/// Takes the trace texts of the levels up to 6.
class TracePoints : public testing::Test {
  protected:
    void SetUp() override {
        seen.clear();
        sink_.shouldTraceAt = [](int level, const char*, int) { return level <= 6; };
        sink_.traceAt = [](int level, const char* file, int line, const char* text) {
            seen.push_back(std::to_string(level) + " " + (file != nullptr ? file : "-") +
                           (line != 0 ? ":line " : " ") + text);
        };
        before_ = InstallDiagnosticSink(&sink_);
    }
    void TearDown() override { InstallDiagnosticSink(before_); }

    SDiagnosticSink sink_;
    const SDiagnosticSink* before_ = nullptr;
};

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
    const SChar_t<wchar_t, 1> wide(L'\x00E9');
    EXPECT_EQ(STraceHelper("%1%2%3 %4%5%6", 'x', L'\x00E9', L'\x4E00', SChar_t<char, 0>('c'),
                           SChar_t<char, 1>('d'), wide),
              "x\xE9? cd\xE9");
    EXPECT_EQ(STraceHelper("%1 %2 %3", SAnsiString("ansi"), SAnsiStringCI("case"), SAsciiString("ascii")),
              "ansi case ascii");
    EXPECT_EQ(STraceHelper("%1 %2 %3", SWCharString(L"w\x00E9\x4E00"), SOCAString(L"o\x00E9"),
                           SWCharStringCI(L"case")),
              "w\xE9? o\xE9 case");
    EXPECT_EQ(STraceHelper("%1 %2 %3", SDateTime(2024, 2, 29, 23, 59, 58, 7, STimeZone::TZ_UTC()),
                           SDate(2024, 2, 29), STime(23, 59, 58, 7, STimeZone::TZ_UTC())),
              "2024-02-29@23:59:58.007 2024-02-29 23:59:58.007");
    EXPECT_EQ(STraceHelper("%1 %2 %3", SDateTime(), SDate(), STime()),
              "invalid-date-time invalid-date invalid-time");
    const STimeSpan day(1, 2, 3, 4, 5);
    EXPECT_EQ(STraceHelper("%1, %2, %3", STimeSpan(), day, STimeSpan() - day),
              "00:00:00.000, 1d 02:03:04.005, -1d 02:03:04.005");
    EXPECT_EQ(STraceHelper("%1", STimeSpan::FromMilliseconds(LLONG_MIN)), "-106751991167d 07:12:55.808");
    EXPECT_EQ(STraceHelper("%1 %2 %3 %4 %5", static_cast<unsigned char>(120), -1, 4294967295U, -2L, 3UL),
              "120 -1 4294967295 -2 3");
    EXPECT_EQ(STraceHelper("%1 %2", LLONG_MIN, ULLONG_MAX), "-9223372036854775808 18446744073709551615");
    EXPECT_EQ(STraceHelper("%1 %2 %3", Color::Red, kLarge, 1.5), "200 1099511627776 1.500000");
    EXPECT_EQ(STraceHelper("%1 %2 %3", static_cast<const char*>(nullptr),
                           static_cast<const wchar_t*>(nullptr), nullptr),
              "(null) (null) (null)");
    EXPECT_EQ(STraceHelper("%1 %2 %3", reinterpret_cast<const void*>(0xABC), true, false),
              "0x00000ABC true false");
}

TEST_F(TracePoints, EvaluateTheirArgumentsOnlyWhenSwitchedOn) {
    int evaluated = 0;
    TARN_TRACE_AT(6, "unit", "n=%1", ++evaluated);
    TARN_TRACE_AT(7, "unit", "n=%1", ++evaluated);
    InstallDiagnosticSink(nullptr);  // off
    TARN_TRACE(0, "%1", ++evaluated);
    EXPECT_EQ(seen, Texts{"6 unit:line n=1"});
    EXPECT_EQ(evaluated, 1);
}

TEST_F(TracePoints, LoseNothingBehindAZeroByteAndDropLineEnds) {
    const SAnsiString zeros("a\0b\0", 4);
    const std::string filling(600, 'x');  // more than has room without memory
    TARN_TRACE_AT(5, "unit", "%1|%2", zeros, "Access denied.\r\n");
    TARN_TRACE_AT(5, "unit", "%1%2|%3", filling.c_str(), SWCharString(L"a\0b\0", 4), "end\n");
    EXPECT_EQ(seen, (Texts{"5 unit:line a\\x00b\\x00|Access denied.",
                           "5 unit:line " + filling + "a\\x00b\\x00|end"}));
}

TEST_F(TracePoints, ScopesHaveABeginningAndAnEndInOrder) {
    {
        const WorkflowScopeTrace root(true, "order", nullptr, "42");
        const InstrumentScopeTrace inner("file.cpp", "Load");
        const SScopeTrace off(false, 0, "file.cpp", 1, "never");
        const InstrumentScopeTrace tooDetailed(7, "file.cpp", "never", 3);
        EXPECT_EQ(off.GetMicroseconds(), 0U);
    }
    { const WorkflowScopeTrace step(false, "pay", "", nullptr); }
    for (std::string& line : seen) {  // the times differ
        if (line.find(" (") != line.npos) line.replace(line.find(" ("), line.npos, " (us)");
    }
    EXPECT_EQ(seen, (Texts{"6 - -> Root: order 42", "5 file.cpp   -> Load", "5 file.cpp   <- Load (us)",
                           "6 - <- Root: order 42 (us)", "6 - -> Step: pay", "6 - <- Step: pay (us)"}));
}
