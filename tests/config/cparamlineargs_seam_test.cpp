#include "tarnlib/cparamlineargs.h"

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>

#include "support/alloc_hooks.h"

using namespace TarnLibA500;

namespace {

std::string Listed(const CParamLineArgs& args) {
    std::string text = args.GetProgramName().getString();
    for (std::uint32_t i = 0; i < args.GetCount(); ++i)
        text += std::string(" ") + args.GetName(i).getString() + "=" + args.GetValue(i).getString();
    return text;
}

}  // namespace

TEST(OptionLookups, AllocateNothing) {
    const CParamLineArgs args("prog -first 1 -second 2");
    const SAnsiString name("SECOND");
    SAnsiString value;
    const tarntest::AllocationCount count;
    const bool isFound = args.Lookup(name, value);
    const unsigned long taken = count.Taken();
    EXPECT_TRUE(isFound);
    EXPECT_EQ(taken, 0U);
}

TEST(OptionChanges, HappenWholeOrNotAtAll) {
    CParamLineArgs many("other -x 1 -y 2 -z 3");
    for (int i = 0; i < 40; ++i) many.SetArg(std::to_string(i).c_str(), "value");
    const std::string whole = Listed(many);
    char program[] = "p", name[] = "-n", value[] = "v";
    char* words[] = {program, name, value, nullptr};
    std::string longName(600, 'n');
    longName += "-\xE4";
    const SAnsiString large(longName.c_str());
    void (*const changes[])(CParamLineArgs&, CParamLineArgs&, const SAnsiString&, char**) = {
        [](CParamLineArgs& args, CParamLineArgs&, const SAnsiString&, char**) { args.SetArg("Y", "4"); },
        [](CParamLineArgs& args, CParamLineArgs&, const SAnsiString& text, char**) {
            args.SetArg(text, text);
        },
        [](CParamLineArgs& args, CParamLineArgs&, const SAnsiString&, char**) { args.SetArgs("a -b c -d"); },
        [](CParamLineArgs& args, CParamLineArgs&, const SAnsiString&, char** all) { args.SetArgs(0, all); },
        [](CParamLineArgs& args, CParamLineArgs& other, const SAnsiString&, char**) {
            args.MergeArgs(other);
        },
        [](CParamLineArgs& args, CParamLineArgs& other, const SAnsiString&, char**) { args = other; },
        [](CParamLineArgs& args, CParamLineArgs&, const SAnsiString&, char**) {
            std::istringstream in("y=5\nnew=6\n");
            args.ReadArgsAsProperties(in, 80);
        },
    };
    int change = 0;
    for (const auto& use : changes) {
        ++change;
        for (const std::uint32_t start : {2U, many.GetCount()}) {
            bool isHit = true;
            for (unsigned long nth = 1; isHit; ++nth) {
                CParamLineArgs args(many), other("q -y 7 -w 8");
                while (args.GetCount() > start) args.RemoveArg(args.GetName(args.GetCount() - 1));
                const std::string before = Listed(args);
                bool isThrown = false;
                tarntest::FailAllocation(nth);
                try {
                    use(args, other, large, words);
                } catch (const std::bad_alloc&) {
                    isThrown = true;
                }
                isHit = tarntest::FailureHappened();
                tarntest::FailAllocation(0);
                EXPECT_EQ(isThrown, isHit) << change << " " << nth;
                EXPECT_EQ(Listed(args) == before, isThrown) << change << " " << nth;
                args.SetArg("last", "9");  // names and values are of one length
                EXPECT_EQ(args.GetValue(args.GetCount() - 1), "9") << change << " " << nth;
            }
        }
    }
    EXPECT_EQ(Listed(many), whole);
}
