#pragma once

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// A clock that only goes forward, whatever happens to the system's time.
///
/// It counts milliseconds since the system was started, in the system's steps of 10 to 16 ms. It may be
/// called from any thread.
///
///     unsigned long long deadline = SMonotonicClock::GetMilliseconds() + 5000;
///     while (!Ready()) {
///         if (SMonotonicClock::GetMilliseconds() > deadline) return false;
///         Sleep(20);
///     }
class SMonotonicClock {
  public:
    /// Milliseconds since the system was started.
    TARN_API static unsigned long long GetMilliseconds() noexcept;
};

}  // namespace TarnLibA500
