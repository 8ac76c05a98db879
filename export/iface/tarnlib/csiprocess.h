#pragma once

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// What concerns the calling process and thread; all members are static.
///
///     while (!Ready()) CSIProcess::SecSleep(1);
class TARN_API CSIProcess {
  public:
    /// Lets the calling thread sleep for so many seconds; 0 gives up the rest of its time slice.
    static void SecSleep(unsigned seconds);
};

}  // namespace TarnLibA500
