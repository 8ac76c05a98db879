#include <gtest/gtest.h>

#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "tarnlib/strtok.h"

using namespace TarnLibA500;

TEST(StrTokSeam, ReportsFailingMemoryAndLosesNothing) {
    RSStrTok tokenizer("name=value");
    tokenizer.SetToken("=");
    tarntest::AssertRecorder recorder;
    tarntest::FailAllocation(1);
    const SAnsiString piece = tokenizer.Next();
    tarntest::FailAllocation(0);
    EXPECT_TRUE(recorder.sawLast("nvpairs", "FALSE"));
    EXPECT_EQ(piece, "");
    EXPECT_EQ(tokenizer.Next(), "name");
    EXPECT_EQ(tokenizer.rest(), "value");
}
