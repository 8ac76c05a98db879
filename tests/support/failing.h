#pragma once

#include <gtest/gtest.h>

namespace tarntest {

/// Makes the nth call of a kind (its seam::Calls) fail while the work is done; false when the work makes fewer calls. Either
/// way nothing may stay open.
template <class Calls, class Work>
bool FailsAt(unsigned long nth, unsigned long error, Work work) {
    const long open = Calls::OpenNow();
    Calls::Fail(nth, error);
    work();
    Calls::Fail(0, 0);
    EXPECT_EQ(Calls::OpenNow(), open) << nth;
    return Calls::HasFailed();
}

}  // namespace tarntest
