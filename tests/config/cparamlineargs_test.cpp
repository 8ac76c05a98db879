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
    for (const auto& fields : tarntest::ReadCases("config/options_lines.txt")) {
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
    SIArray<SAnsiString> words, quoted;
    args.GetArgs(words);
    args.GetArgsWithQuote(quoted);
    EXPECT_EQ(Joined(words), "[a prog][-a][x y][-b]");
    EXPECT_EQ(Joined(quoted), "[\"a prog\"][-a][\"x y\"][-b]");
    tarntest::AssertRecorder recorder;
    args.GetArgs(words);  // to what is there
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "args.GetSize() == 0"));
    EXPECT_EQ(Joined(words), "[a prog][-a][x y][-b][a prog][-a][x y][-b]");
    char* nothing[] = {nullptr};
    CParamLineArgs emptied(args);
    emptied.SetArgs(1, nothing);
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "!m_programName.isEmpty()"));
    emptied.SetArgs(0, nullptr);
    emptied.SetArg("a", "1");
    EXPECT_EQ(emptied.GetCmdLine(), " -a 1");
    EXPECT_TRUE(recorder.sawLast("cparamlineargs", "!m_programName.isEmpty()"));
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
}

TEST(CommandLines, NumbersAreWholeAndWithinTheirLimits) {
    for (const auto& c : tarntest::ReadCases("config/options_numbers.txt")) {
        CParamLineArgs args;
        args.SetArg("Days", c[0].c_str());
        int number = 77;
        EXPECT_EQ(args.LookupNumber("days", number, -5, 100), c[1] != "-") << c[0];
        EXPECT_EQ(number, c[1] == "-" ? 77 : std::stoi(c[1])) << c[0];
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
    // A hundred names in several spellings; the first five marks are of letters and digits.
    static const char* const marks[] = {"", "a", "A", "ss", "9", "-", "_", "\xE4", "\xC4", "\xDF"};
    using Case = std::pair<const char*, unsigned>;
    std::mt19937 random(7);
    for (const auto& [locale, kinds] : {Case("C", 10), Case(tarntest::kLocale1252, 10), Case("C", 5),
                                        Case(tarntest::kLocale1252, 5), Case("Danish_Denmark.1252", 5)}) {
        CParamLineArgs args;
        std::vector<std::pair<SAnsiString, SAnsiString>> model;
        for (int step = 0; step < 2000; ++step) {
            // The order that was kept does not hold under another locale.
            const tarntest::LocaleScope scope(step / 50 % 4 == 3 ? "C" : locale);
            const unsigned pick = random() % 200;
            const SAnsiString name =
                SAnsiString(marks[pick / 10 % kinds]) + (pick < 100 ? "n" : "N") + marks[pick % kinds];
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

TEST(CommandLines, PropertiesAreReadLineByLine) {
    for (const auto& c : tarntest::ReadCases("config/options_properties.txt")) {
        std::istringstream in(c[0]);
        CParamLineArgs args;
        args.ReadArgsAsProperties(in, std::stoul(c[1]));
        EXPECT_EQ(Listed(args), c[2]) << c[0];
    }
}
