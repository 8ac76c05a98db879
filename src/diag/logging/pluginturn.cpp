#include "diag/logging/pluginturn.h"

#include "seam/osclock.h"
#include "waiting/waiting.h"

namespace TarnLibA500 {

PluginTurns::Outcome PluginTurns::begin() {
    const DWORD self = GetCurrentThreadId();
    const JTCSynchronized lock(monitor_);
    if (holder_ == self) return Nested;
    while (holder_ != 0) {
        const std::uint64_t taken = osclock::Tick() - since_;
        if (taken >= longestCall_ || waiting::ProcessIsEnding()) return Stuck;
        monitor_.wait(static_cast<long>(longestCall_ - taken));
    }
    holder_ = self;
    since_ = osclock::Tick();
    isReported_ = false;
    return Mine;
}

void PluginTurns::end() noexcept {
    const JTCSynchronized lock(monitor_);
    holder_ = 0;
    monitor_.notify();
}

bool PluginTurns::isNews() {
    const JTCSynchronized lock(monitor_);
    const bool isNews = holder_ != 0 && !isReported_;
    isReported_ = true;
    return isNews;
}

}  // namespace TarnLibA500
