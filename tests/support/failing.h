#pragma once

#include <gtest/gtest.h>

#include "seam/seam.h"

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

/// A function in the place of one of the system's, as long as the object lives.
template <class Function>
class Instead {
  public:
    Instead(seam::Replaceable<Function>& place, Function* function) : place_(place) { place_ = function; }
    ~Instead() { place_ = nullptr; }
    Instead(const Instead&) = delete;
    Instead& operator=(const Instead&) = delete;

  private:
    seam::Replaceable<Function>& place_;
};

}  // namespace tarntest
