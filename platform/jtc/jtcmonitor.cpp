#include <atomic>

#include "jtc/jtc.h"
#include "seam/osclock.h"
#include "waiting/waiting.h"

struct JTCMonitor::State {
    waiting::Lock lock;
    waiting::Condition notified;
    std::atomic<DWORD> holder{0};  ///< a thread's number; no thread has 0
    int depth = 0;                 ///< how often the holder has taken the lock

    bool isHeldHere() const { return holder.load(std::memory_order_relaxed) == GetCurrentThreadId(); }
    void requireHolder() const {
        if (!isHeldHere()) throw JTCIllegalMonitorState();
    }
    void setHolder(DWORD thread, int times) {
        holder.store(thread, std::memory_order_relaxed);
        depth = times;
    }
    // Somebody else notifies, or the time passes.
    template <class Wait>
    void giveUpDuring(Wait wait) {
        const int times = depth;
        setHolder(0, 0);
        wait();
        setHolder(GetCurrentThreadId(), times);
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
    if (state_->isHeldHere()) {
        ++state_->depth;
        return;
    }
    static_cast<void>(state_->lock.take());  // while the process ends, any other holder is gone
    state_->setHolder(GetCurrentThreadId(), 1);
}

void JTCMonitor::unlock() const {
    state_->requireHolder();
    if (--state_->depth != 0) return;
    state_->setHolder(0, 0);
    state_->lock.giveBack();
}

// To return at once would turn a loop around this into one without end.
void JTCMonitor::wait() {
    state_->requireHolder();
    if (waiting::ProcessIsEnding())
        throw JTCIllegalMonitorState("the process ends, and no thread is left to notify this one");
    state_->giveUpDuring([this] { state_->notified.wait(state_->lock); });
}

void JTCMonitor::wait(long milliseconds) {
    state_->requireHolder();
    if (milliseconds <= 0) return;
    if (waiting::ProcessIsEnding()) return osclock::Sleep(static_cast<DWORD>(milliseconds));
    const ULONGLONG deadline = waiting::DeadlineIn(milliseconds);
    state_->giveUpDuring([this, deadline] { state_->notified.waitUntil(state_->lock, deadline); });
}

void JTCMonitor::notify() {
    state_->requireHolder();
    state_->notified.notifyOne();
}

void JTCMonitor::notifyAll() {
    state_->requireHolder();
    state_->notified.notifyAll();
}

JTCSynchronized::JTCSynchronized(const JTCMonitor& monitor) : monitor_(monitor) {
    monitor_.lock();
}

JTCSynchronized::~JTCSynchronized() {
    monitor_.unlock();
}
