#pragma once

#include <gtest/gtest.h>

#include <new>

#include "seam/osmemory.h"

/// Counting and failing allocations, for the test programs that hold the library's sources. Counted are the
/// strings' and byte blocks' requests (a move of a block is one) and operator new, each thread for itself.
///
///     tarntest::AllocationCount count;
///     SAnsiString copy = text;
///     EXPECT_EQ(0u, count.Taken());
///
///     tarntest::FailAllocation(1);
///     bool thrown = Throws([&] { copy.concat("x"); });
///     tarntest::FailAllocation(0);  // before the next EXPECT, which may allocate itself
namespace tarntest {

using Allocations = osmemory::Calls;

/// Allocations that this thread has made.
constexpr auto AllocationsSoFar = &Allocations::SoFar;

/// Makes this thread's nth allocation from now fail, once: 1 is the next one, 0 none.
inline void FailAllocation(unsigned long nth) {
    Allocations::Fail(nth, 1);
}

/// True when the failure that was last asked for on this thread has happened.
constexpr auto FailureHappened = &Allocations::HasFailed;

/// Blocks that are allocated at present, by all threads.
constexpr auto LiveBlocks = &Allocations::OpenNow;

/// Copies the first bytes of a block at the moment when the library frees it.
void CopyWhenFreed(const void* block, void* copy, unsigned long bytes);

/// Allocations of this thread since the object was made.
class AllocationCount {
  public:
    AllocationCount() : before_(AllocationsSoFar()) {}
    unsigned long Taken() const { return AllocationsSoFar() - before_; }

  private:
    unsigned long before_;
};

/// Makes the nth allocation of the work fail; false when the work has fewer.
template <class Work>
bool FailsAt(unsigned long nth, Work work) {
    FailAllocation(nth);
    try {
        work();
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
    const bool failed = FailureHappened();
    FailAllocation(0);
    return failed;
}

/// False when an allocation fails under way.
template <class Action>
bool Succeeds(Action action) {
    try {
        action();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace tarntest
