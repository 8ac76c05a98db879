#include "jtc/jtc.h"
#include "seam/osclock.h"
#include "waiting/waiting.h"

using waiting::Guard;

struct JTCMonitor::State {
    waiting::Lock mutex;  ///< guards the rest
    waiting::Condition freed;
    waiting::Condition notified;
    DWORD holder = 0;  ///< a thread's number
    int depth = 0;     ///< how often the holder has taken the lock

    // While the process ends, any other holder is gone.
    void take(int times) {
        while (depth != 0 && !waiting::ProcessIsEnding()) freed.wait(mutex);
        holder = GetCurrentThreadId();
        depth = times;
    }
    int giveUp() {
        const int times = depth;
        depth = 0;
        holder = 0;
        freed.notifyOne();
        return times;
    }
    bool isHeldHere() const { return depth != 0 && holder == GetCurrentThreadId(); }
    void requireHolder() const {
        if (!isHeldHere()) throw JTCIllegalMonitorState();
    }
};

JTCIllegalMonitorState::JTCIllegalMonitorState(const char* text) noexcept : text_(text) {}

const char* JTCIllegalMonitorState::what() const noexcept {
    return text_;
}

JTCMonitor::JTCMonitor() : state_(new State) {}

JTCMonitor::~JTCMonitor() {
    delete state_;
}

void JTCMonitor::lock() const {
    const Guard guard(state_->mutex);
    if (state_->isHeldHere()) {
        ++state_->depth;
    } else {
        state_->take(1);
    }
}

void JTCMonitor::unlock() const {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    if (state_->depth == 1) {
        state_->giveUp();
    } else {
        --state_->depth;
    }
}

// To return at once would turn a loop around this into one without end.
void JTCMonitor::wait() {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    if (waiting::ProcessIsEnding())
        throw JTCIllegalMonitorState("the process ends, and no thread is left to notify this one");
    const int times = state_->giveUp();
    state_->notified.wait(state_->mutex);
    state_->take(times);
}

void JTCMonitor::wait(long milliseconds) {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    if (milliseconds <= 0) return;
    if (waiting::ProcessIsEnding()) return osclock::Sleep(static_cast<DWORD>(milliseconds));
    const ULONGLONG deadline = waiting::DeadlineIn(milliseconds);
    const int times = state_->giveUp();
    state_->notified.waitUntil(state_->mutex, deadline);
    state_->take(times);
}

void JTCMonitor::notify() {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    state_->notified.notifyOne();
}

void JTCMonitor::notifyAll() {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    state_->notified.notifyAll();
}

JTCSynchronized::JTCSynchronized(const JTCMonitor& monitor) : monitor_(monitor) {
    monitor_.lock();
}

JTCSynchronized::~JTCSynchronized() {
    monitor_.unlock();
}
