// What the byte buffers allocate, and that a failed allocation leaves them as they were.

#include <gtest/gtest.h>

#include <functional>

#include "support/alloc_hooks.h"
#include "tarnlib/simmutablebuffer.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;

namespace {

constexpr unsigned char kBytes[] = "bytes";

}  // namespace

TEST(BufferTorture, AFailedAllocationLeavesTheBytesAsTheyWere) {
    auto* adopted = SSimpleBuffer::alloc(4);
    using Operation = std::function<void(SSimpleBuffer&)>;
    const std::pair<unsigned long, Operation> operations[] = {
        // with the allocations that they make
        {0, [](SSimpleBuffer& b) { SSimpleBuffer copy(b), other = copy; }},
        {2, [](SSimpleBuffer& b) { b.append(b, b.getNBytes(), 9); }},
        {2, [](SSimpleBuffer& b) { b.getBuffer(); }},
        {2, [](SSimpleBuffer& b) { b.releaseBuffer(1); }},
        {2, [](SSimpleBuffer& b) { b = SSimpleBuffer("fresh", 5, false); }},
        {2, [](SSimpleBuffer& b) { SSimpleBuffer::dealloc(SSimpleBuffer(b).detach()); }},
        {1, [=](SSimpleBuffer& b) { b = SSimpleBuffer(adopted, 4, true); }},
        {2, [](SSimpleBuffer& b) { SImmutableBuffer(b, 5, CopyData); }},
    };
    const long before = tarntest::LiveBlocks();
    for (const auto& [allocations, run] : operations) {
        unsigned long failures = 0;
        for (bool failed = true; failed; failures += failed) {
            const SSimpleBuffer sharer(kBytes, 5, false);
            SSimpleBuffer buffer(sharer);
            failed = tarntest::FailsAt(failures + 1, [&, &work = run] { work(buffer); });
            EXPECT_TRUE(sharer == kBytes && (!failed || buffer == sharer));
        }
        EXPECT_EQ(failures, allocations);
    }
    EXPECT_EQ(tarntest::LiveBlocks(), before - 1);  // all but the block that was adopted in the end
}
