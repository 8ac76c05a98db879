#include "tarnlib/cparamlineargs.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

#include "support/alloc_hooks.h"
#include "support/print_strings.h"

using namespace TarnLibA500;

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
    const SAnsiString whole = many.GetCmdLine();
    char program[] = "p", name[] = "-n", value[] = "v";
    char* words[] = {program, name, value, nullptr};
    const SAnsiString large((std::string(600, 'n') + "-\xE4").c_str());
    const CParamLineArgs other("q -y 7 -w 8");
    const std::function<void(CParamLineArgs&)> changes[] = {
        [](CParamLineArgs& args) { args.SetArg("Y", "4"); },
        [&](CParamLineArgs& args) { args.SetArg(large, large); },
        [](CParamLineArgs& args) { args.SetArgs("a -b c -d"); },
        [&](CParamLineArgs& args) { args.SetArgs(0, words); },
        [&](CParamLineArgs& args) { args.MergeArgs(other); },
        [&](CParamLineArgs& args) { args = other; },
        [](CParamLineArgs& args) {
            std::istringstream in("y=5\nnew=6\n");
            args.ReadArgsAsProperties(in, 80);
        },
    };
    for (const auto& change : changes) {
        for (const std::uint32_t start : {2U, many.GetCount()}) {
            bool isHit = true;
            for (unsigned long nth = 1; isHit; ++nth) {
                CParamLineArgs args(many);
                while (args.GetCount() > start) args.RemoveArg(args.GetName(args.GetCount() - 1));
                const SAnsiString before = args.GetCmdLine();
                tarntest::FailAllocation(nth);
                const bool isDone = tarntest::Succeeds([&] { change(args); });
                isHit = tarntest::FailureHappened();
                tarntest::FailAllocation(0);
                EXPECT_EQ(isDone, !isHit) << &change - changes << " " << nth;
                EXPECT_EQ(args.GetCmdLine() != before, isDone) << &change - changes << " " << nth;
                args.SetArg("last", "9");  // names and values are of one length
                EXPECT_EQ(args.GetValue(args.GetCount() - 1), "9") << &change - changes << " " << nth;
            }
        }
    }
    EXPECT_EQ(many.GetCmdLine(), whole);
}
