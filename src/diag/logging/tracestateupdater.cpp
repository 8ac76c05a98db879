#include "diag/logging/tracestateupdater.h"

#include <exception>
#include <utility>

#include "tracelog/tracelog.h"

namespace TarnLibA500 {
namespace {

constexpr long kTickMilliseconds = 200;
constexpr int kTicksBetweenRefreshes = 25;  // 5 s

}  // namespace

TraceStateUpdaterThread::TraceStateUpdaterThread(std::function<void()> refresh)
    : JTCThread("trace state updater"), refresh_(std::move(refresh)) {}

void TraceStateUpdaterThread::run() {
    for (int tick = 1; waitForTick(); ++tick) {
        TraceLog400::State::tick();
        if (tick % kTicksBetweenRefreshes == 0) refresh();
    }
}

// The thread must go on, because waiting lines depend on it: without memory now, perhaps with some the next
// time.
void TraceStateUpdaterThread::refresh() {
    try {
        refresh_();
    } catch (const std::exception&) {
        return;
    }
}

bool TraceStateUpdaterThread::waitForTick() {
    const JTCSynchronized lock(*this);
    if (!stopping_) wait(kTickMilliseconds);
    return !stopping_;
}

void TraceStateUpdaterThread::stop() {
    const JTCSynchronized lock(*this);
    stopping_ = true;
    notifyAll();
}

}  // namespace TarnLibA500
