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
    bool converted = true;
    EXPECT_TRUE(tarntest::FailsAt(1, [&] { converted = CUTFConverter::UTF8ToUTF16("text", wide); }));
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
        failed = tarntest::FailsAt(nth, [&] {
            SWCharString wide;
            CUTFConverter::UTF8Buffer utf8;
            const SSimpleBuffer bytes =
                MBCSCodesetConverter::TToExplicitCodeset(text, MBCSCodesetConverter::Windows932);
            wide.fromMBCS("text");
            CUTFConverter::UTF16ToUTF8(SOCAString(wide.getString()), utf8);
        });
        EXPECT_EQ(tarntest::LiveBlocks(), before) << nth;
    }
    EXPECT_FALSE(failed);
}
