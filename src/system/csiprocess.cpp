#include "tarnlib/csiprocess.h"

#include <algorithm>

#include "seam/osclock.h"

namespace TarnLibA500 {

// In pieces: the system counts milliseconds, in 32 bits of which the last number means for ever.
void CSIProcess::SecSleep(unsigned seconds) {
    constexpr unsigned kMillisecondsPerSecond = 1000;
    constexpr unsigned kMostSeconds = 1'000'000;
    do {
        const unsigned now = std::min(seconds, kMostSeconds);
        osclock::Sleep(now * kMillisecondsPerSecond);
        seconds -= now;
    } while (seconds != 0);
}

}  // namespace TarnLibA500
