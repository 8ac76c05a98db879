#include "tarnlib/simmutablebuffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "support/assert_recorder.h"
#include "support/thrown.h"

using namespace TarnLibA500;
using tarntest::WhatOf;

namespace {

SImmutableBuffer Of(const std::string& bytes) {
    return {reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
            CopyData};
}

}  // namespace

TEST(ImmutableBuffer, TakesItsBytesAsTheAdoptionTypeSays) {
    unsigned char foreign[2], *allocated = static_cast<unsigned char*>(std::malloc(2));
    unsigned char* const bytes[] = {foreign, new unsigned char[2], allocated, foreign};
    tarntest::AssertRecorder assertions;
    for (int type = CopyData; type < 4; ++type) {
        bytes[type][1] = 'b';
        const SImmutableBuffer buffer(bytes[type], 2, static_cast<AdoptionType>(type)), copy(buffer);
        bytes[type][1] = 'X';
        EXPECT_EQ(copy.at(1), type == CopyData ? 'b' : 'X');
        EXPECT_EQ(assertions.count(), 0U);
    }
    EXPECT_TRUE(assertions.sawLast("simmutablebuffer", "adoption type is known"));
    EXPECT_EQ(SImmutableBuffer(nullptr, 0, AdoptMalloc).size(), 0U);
    EXPECT_EQ(assertions.count(), 0U);
    EXPECT_EQ(SImmutableBuffer(nullptr, 5, CopyData).size(), 0U);
    EXPECT_TRUE(assertions.sawLast("simmutablebuffer", "ptr || sz==0"));
}

TEST(ImmutableBuffer, RangesShareAndAreChecked) {
    const SImmutableBuffer whole = Of("abcdef"), middle(whole, 1, 4), end(middle, 4, 0);
    SImmutableBuffer other = Of("z");
    other = SImmutableBuffer(middle, 1, 2);
    EXPECT_TRUE(other == Of("cd") && end == Of("") && other.at(1) == 'd');
    for (const auto& [offset, length] : {std::pair{0U, 5U}, {5U, 0U}, {0xFFFFFFFFU, 2U}, {2U, 0xFFFFFFFFU}}) {
        EXPECT_EQ(WhatOf<std::logic_error>([&] { SImmutableBuffer(middle, offset, length); }),
                  "SImmutableBuffer subset operation out of range");
    }
    EXPECT_EQ(WhatOf<std::logic_error>([&] { middle.at(4); }), "out-of-bounds SImmutableBuffer access");
    EXPECT_EQ((other = *&other, whole.refcount()), 4);
}

TEST(ImmutableBuffer, OrdersBySizeBeforeBytes) {
    EXPECT_TRUE(Of("b") < Of("aa") && !(Of("aa") < Of("b")) && Of("a\x7F") < Of("a\x80") && Of("") < Of("a"));
    EXPECT_FALSE(Of("ab") < Of("ab") || Of("ab") == Of("ax") || Of("a") == Of("ab"));
}
