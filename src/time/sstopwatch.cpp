#include "tarnlib/sstopwatch.h"

#include "tarnlib/smonotonicclock.h"

namespace TarnLibA500 {

void SStopWatch::Start() noexcept {
    if (running_) return;
    startedAt_ = SMonotonicClock::GetMilliseconds();
    running_ = true;
}

void SStopWatch::Stop() noexcept {
    collected_ = GetElapsedMilliseconds();
    running_ = false;
}

void SStopWatch::Reset() noexcept {
    collected_ = 0;
    if (running_) startedAt_ = SMonotonicClock::GetMilliseconds();
}

unsigned long long SStopWatch::GetElapsedMilliseconds() const noexcept {
    return running_ ? collected_ + (SMonotonicClock::GetMilliseconds() - startedAt_) : collected_;
}

}  // namespace TarnLibA500
