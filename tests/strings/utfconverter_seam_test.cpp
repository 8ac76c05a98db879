// Conversions that run out of memory.

#include <gtest/gtest.h>

#include <new>

#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/mbcscodesetconverter.h"

using namespace TarnLibA500;

TEST(ConversionTorture, OnlyUTF8ToUTF16CatchesFailingMemory) {
    tarntest::AssertRecorder asserts;
    SOCAString wide(L"old");
    tarntest::FailAllocation(1);
    const bool converted = CUTFConverter::UTF8ToUTF16("text", wide);
    tarntest::FailAllocation(0);
    EXPECT_FALSE(converted);
    EXPECT_TRUE(wide.isEmpty());
    EXPECT_TRUE(asserts.sawLast("UTFConverter", "targetStart"));
    tarntest::FailAllocation(1);
    EXPECT_THROW(wide.fromUTF8("text"), std::bad_alloc);
    tarntest::FailAllocation(0);
}

TEST(ConversionTorture, NothingLeaks) {
    const SAnsiString text("text");
    const long before = tarntest::LiveBlocks();
    bool failed = true;
    for (unsigned long nth = 1; failed && nth < 50; ++nth) {
        tarntest::FailAllocation(nth);
        try {
            SWCharString wide;
            CUTFConverter::UTF8Buffer utf8;
            const SSimpleBuffer bytes =
                MBCSCodesetConverter::TToExplicitCodeset(text, MBCSCodesetConverter::Windows932);
            wide.fromMBCS("text");
            CUTFConverter::UTF16ToUTF8(SOCAString(wide.getString()), utf8);
        } catch (const std::bad_alloc&) {
        }
        failed = tarntest::FailureHappened();
        tarntest::FailAllocation(0);
        EXPECT_EQ(tarntest::LiveBlocks(), before) << nth;
    }
    EXPECT_FALSE(failed);
}
