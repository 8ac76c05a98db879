#include <mutex>

#include "jtc/jtc.h"
#include "jtc/waiting.h"

using Guard = std::lock_guard<jtc::Lock>;

struct JTCMonitor::State {
    jtc::Lock mutex;  ///< guards the rest
    jtc::Condition freed;
    jtc::Condition notified;
    DWORD holder = 0;  ///< a thread's number
    int depth = 0;     ///< how often the holder has taken the lock

    void take(int times) {
        while (depth != 0) freed.wait(mutex);
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

const char* JTCIllegalMonitorState::what() const noexcept {
    return "the monitor's lock is not held";
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

void JTCMonitor::wait() {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    const int times = state_->giveUp();
    state_->notified.wait(state_->mutex);
    state_->take(times);
}

void JTCMonitor::wait(long milliseconds) {
    const Guard guard(state_->mutex);
    state_->requireHolder();
    if (milliseconds <= 0) return;
    const ULONGLONG deadline = jtc::DeadlineIn(milliseconds);
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
