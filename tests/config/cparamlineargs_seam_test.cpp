#include "tarnlib/cparamlineargs.h"

#include <gtest/gtest.h>

#include "support/alloc_hooks.h"

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
