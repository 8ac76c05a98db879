#include "tarnlib/cparamlineargs.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"

using namespace TarnLibA500;

namespace {

std::string Listed(const CParamLineArgs& args) {
    std::string text;
    for (std::uint32_t i = 0; i < args.GetCount(); ++i)
        text += std::string(args.GetName(i).getString()) + "=" + args.GetValue(i).getString() + ";";
    return text;
}

std::string Joined(const SIArray<SAnsiString>& words) {
    std::string text;
    for (const SAnsiString& word : words) text += std::string("[") + word.getString() + "]";
    return text;
}

}  // namespace

TEST(CommandLines, AreParsedAndRebuilt) {
    for (const auto& fields : tarntest::ReadCases("options_lines.txt")) {
        const CParamLineArgs args(fields[0].c_str());
        EXPECT_EQ(args.GetProgramName(), fields[1].c_str()) << fields[0];
        EXPECT_EQ(Listed(args), fields[2]) << fields[0];
        EXPECT_EQ(args.GetCmdLine(), fields[3].c_str()) << fields[0];
    }
}

TEST(CommandLines, AnArgumentVectorIsReadToItsNull) {
    char program[] = "a prog", a[] = "-a", value[] = "x y", stray[] = "s", b[] = "--b";
    char* arguments[] = {program, a, value, stray, b, nullptr};
    const CParamLineArgs args(1, arguments);
    EXPECT_EQ(Listed(args), "a=x y;b=;");
    SIArray<SAnsiString> plain, quoted;
    args.GetArgs(plain);
    args.GetArgsWithQuote(quoted);
    EXPECT_EQ(Joined(plain), "[a prog][-a][x y][-b]");
    EXPECT_EQ(Joined(quoted), "[\"a prog\"][-a][\"x y\"][-b]");
    char* nothing[] = {nullptr};
    CParamLineArgs emptied(args);
    tarntest::AssertRecorder recorder;
    emptied.SetArgs(1, nothing);
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "!m_programName.isEmpty()"));
    emptied.SetArgs(0, nullptr);
    EXPECT_EQ(Listed(emptied), "");
}

TEST(CommandLines, OptionsAreSetFoundMergedAndRemoved) {
    CParamLineArgs args("prog -a 1 -b 2");
    SAnsiString value("untouched");
    EXPECT_FALSE(args.Lookup("c", value));
    EXPECT_EQ(value, "untouched");
    args.SetArg("A", args.GetValue(1));
    EXPECT_EQ(Listed(args), "b=2;A=2;");
    args.SetArg(args.GetName(0), args.GetValue(0));  // its own texts
    EXPECT_EQ(Listed(args), "A=2;b=2;");
    CParamLineArgs other;
    other.SetArg("B", "3");
    other.SetArg("c", nullptr);
    args.MergeArgs(other);
    args.MergeArgs(args);
    EXPECT_EQ(args.GetCmdLine(), "prog -A 2 -B 3 -c");
    other.SetProgramName("other");
    args.MergeArgs(other);
    EXPECT_EQ(args.GetProgramName(), "other");
    EXPECT_TRUE(args.RemoveArg("b"));
    EXPECT_FALSE(args.RemoveArg("b"));
    args.SetArgs("");
    EXPECT_EQ(Listed(args), "A=2;c=;");
    args.SetArgs(" \t");
    EXPECT_EQ(Listed(args), "");
    EXPECT_EQ(args.GetProgramName(), "other");
    args.SetArgs("p 'q r' -a 'b c'", '\'');
    EXPECT_EQ(Listed(args), "a=b c;");
    const tarntest::LocaleScope german(tarntest::kLocale1252);
    args.SetArg("\xC4rger", "1");
    EXPECT_TRUE(args.Lookup("\xE4RGER", value));
}

TEST(CommandLines, NumbersAreWholeAndWithinTheirLimits) {
    const struct {
        const char* value;
        bool isTaken;
        int number;
    } cases[] = {
        {"0", true, 0},    {"-5", true, -5},    {"007", true, 7},         {"100", true, 100},
        {"101", false, 0}, {"-6", false, 0},    {"", false, 0},           {"-", false, 0},
        {"1.5", false, 0}, {"7x", false, 0},    {" 7", false, 0},         {"7 ", false, 0},
        {"0x7", false, 0}, {"1,000", false, 0}, {"4294967301", false, 0}, {"18446744073709551621", false, 0}};
    for (const auto& c : cases) {
        CParamLineArgs args("prog");
        args.SetArg("Days", c.value);
        int number = 77;
        EXPECT_EQ(args.LookupNumber("days", number, -5, 100), c.isTaken) << c.value;
        EXPECT_EQ(number, c.isTaken ? c.number : 77) << c.value;
    }
    const CParamLineArgs args("prog -days -3 -large 9223372036854775807 -byte 255");
    long long large = 0;
    unsigned char byte = 0;
    int days = 30;
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(args.LookupNumber("days", days, 1, 365) || args.LookupNumber("none", days, 1, 365));
    EXPECT_TRUE(args.LookupNumber("large", large, 0, LLONG_MAX));
    EXPECT_EQ(large, LLONG_MAX);
    EXPECT_TRUE(args.LookupNumber("byte", byte, 0, 255));
    EXPECT_EQ(byte, 255);
    EXPECT_EQ(recorder.count(), 0U);
    EXPECT_FALSE(args.LookupNumber("byte", days, 2, 1));
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "least <= most"));
    EXPECT_EQ(Joined(args.GetUnused()), "[3]");
}

TEST(CommandLines, OptionsThatNobodyAskedForAreKnown) {
    CParamLineArgs args("prog -a 1 -b 2 -c 3 -d");
    SAnsiString value;
    args.Lookup("B", value);
    args.Lookup("none", value);
    const CParamLineArgs copy(args);
    args.Lookup("d", value);
    args.RemoveArg("a");
    EXPECT_EQ(Joined(args.GetUnused()), "[c]");
    EXPECT_EQ(Joined(copy.GetUnused()), "[a][c][d]");
    args.SetArg("b", "4");
    EXPECT_EQ(Joined(args.GetUnused()), "[c][b]");
}

// Against a list that is searched from end to end, under locales that change.
TEST(CommandLines, ManyOptionsAreFoundAsFewAre) {
    const auto spelled = [](unsigned number) {  // a hundred names in several spellings
        static const char* const marks[] = {"", "-", "_", "\xE4", "\xC4", "a", "A", "\xDF", "ss", "9"};
        return std::string(marks[number / 10 % 10]) + (number >= 100 ? "N" : "n") + marks[number % 10];
    };
    std::mt19937 random(7);
    for (const char* locale : {"C", tarntest::kLocale1252}) {
        CParamLineArgs args;
        std::vector<std::pair<SAnsiString, SAnsiString>> model;
        for (int step = 0; step < 4000; ++step) {
            // The order that was kept does not hold under another locale.
            const tarntest::LocaleScope scope(step / 50 % 4 == 3 ? "C" : locale);
            const SAnsiString name(spelled(random() % 200).c_str());
            const SAnsiString number(std::to_string(step).c_str());
            auto found = model.begin();
            while (found != model.end() && found->first.compareNoCase(name) != 0) ++found;
            SAnsiString value("-");
            ASSERT_EQ(args.Lookup(name, value), found != model.end()) << step;
            ASSERT_EQ(value, found != model.end() ? found->second : "-") << step;
            if (found != model.end()) model.erase(found);
            if (random() % 3 == 0) {
                args.RemoveArg(name);
            } else {
                args.SetArg(name, number);
                model.emplace_back(name, number);
            }
            ASSERT_EQ(args.GetCount(), model.size()) << step;
        }
        for (std::uint32_t i = 0; i < args.GetCount(); ++i) EXPECT_EQ(args.GetName(i), model[i].first);
    }
}

TEST(CommandLines, MisuseIsReportedAndGoesOn) {
    tarntest::AssertRecorder recorder;
    CParamLineArgs args;
    args.SetArg("a", "1");
    EXPECT_EQ(args.GetCmdLine(), " -a 1");
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "!m_programName.isEmpty()"));
    args.SetProgramName("p");
    SIArray<SAnsiString> words;
    words.Add("there");
    args.GetArgs(words);
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "args.GetSize() == 0"));
    EXPECT_EQ(Joined(words), "[there][p][-a][1]");
}

TEST(CommandLines, PropertiesAreReadLineByLine) {
    const auto read = [](const char* text, unsigned longest) {
        std::istringstream in(text);
        CParamLineArgs args;
        args.ReadArgsAsProperties(in, longest);
        return Listed(args);
    };
    EXPECT_EQ(read("a = 1 \t\n b=x=y\r\n\nno\nA=2\nlast=3", 80), "a = 1; b=x=y;A=2;");
    EXPECT_EQ(read("12345\n", 5), "");
    EXPECT_EQ(read("1=345\n1=3456\nb=1\n", 5), "1=345;");
    EXPECT_EQ(read("=v\nc=\n", 5), "=v;c=;");
}
