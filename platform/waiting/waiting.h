#pragma once

#include <atomic>
#include <cstdint>

#include "seam/osclock.h"

#include <windows.h>

extern "C" BOOLEAN NTAPI RtlDllShutdownInProgress();

/// Locks and conditions for code that may still run while the process ends. Header only; for the library and
/// for the modules below it.
///
/// ExitProcess first ends all threads but its own, wherever they are, and then runs the entry points and
/// static destructors of the DLLs on the one that is left. What an ended thread held is never given back, and
/// nobody is left to notify: whoever waited then would wait for ever. So nothing here blocks any more once
/// that has begun. A thread that waits when it begins is one of those that are ended, and never comes back.
///
/// The C++ library's locks and timed waits are not used. Its locks cannot be asked such a thing, and where
/// a program is compiled with a 64-bit time_t, timed waits hand the threads library a time of another layout than
/// it expects and end at once.
namespace waiting {

/// True from the moment when the other threads are gone. This relies on the order that the system documents
/// for ExitProcess, and on a function of ntdll that it documents without giving it a header. The entry
/// point's own notice comes too late to be of use: DLLs that use this module are told before it is.
inline bool ProcessIsEnding() {
    return RtlDllShutdownInProgress() != FALSE;
}

/// A lock that costs an atomic operation to take and one to give back while nobody sleeps for it, and a few calls
/// of the system otherwise. Not fair: whoever is awake takes it first. Whoever has it may destroy it once it is
/// given back and nobody else asks for it: giving back touches nothing after that.
///
/// Not a CRITICAL_SECTION: Windows ends a process that is ending at once, without the rest of its end, when somebody
/// enters one that an ended thread holds. Not an SRWLOCK alone: it cannot be asked whether anybody holds it, and
/// waits without end then.
class Lock {
  public:
    /// Waits until it is free. False, and not taken, when an ended thread holds it.
    [[nodiscard]] bool take() {
        if (takeIfFree()) return true;
        if (ProcessIsEnding()) return false;
        if (!takeSoon()) sleepUntilTaken();
        return true;
    }
    /// Does not wait; false when it is not free.
    [[nodiscard]] bool takeIfFree() {
        std::uint32_t seen = 0;
        do {
            if (state_.compare_exchange_weak(seen, seen | kHeld, std::memory_order_acquire,
                                             std::memory_order_relaxed))
                return true;
        } while ((seen & kHeld) == 0);
        return false;
    }
    void giveBack() {
        std::uint32_t seen = kHeld;
        do {
            if (mustWake(seen)) return giveBackAndWake();
        } while (!state_.compare_exchange_weak(seen, seen & ~kHeld, std::memory_order_release,
                                               std::memory_order_relaxed));
    }

  private:
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kWoken = 2;    ///< a thread was woken and has not looked yet
    static constexpr std::uint32_t kSleeper = 4;  ///< one of those that sleep, or are about to

    // While the process ends the gate may be held for ever, and nobody sleeps.
    static bool mustWake(std::uint32_t seen) {
        return seen >= kSleeper && (seen & kWoken) == 0 && !ProcessIsEnding();
    }

    // Most locks are held for less time than it takes to fall asleep and be woken. The state is only looked at:
    // asking for the lock itself would take its memory from the processor that holds it.
    bool takeSoon() {
        constexpr int kLooks = 100;
        constexpr int kTurns = 10;  // given to others, in case the holder has no processor
        for (int turn = 0; turn < kTurns; ++turn) {
            for (int look = 0; look < kLooks && (state_.load(std::memory_order_relaxed) & kHeld) != 0; ++look)
                YieldProcessor();
            if (takeIfFree()) return true;
            SwitchToThread();
        }
        return false;
    }

    // Sleepers come and go behind the gate, so one that has not seen the lock free is asleep before it is woken.
    void sleepUntilTaken() {
        AcquireSRWLockExclusive(&gate_);
        state_.fetch_add(kSleeper, std::memory_order_relaxed);
        while (!takeAsSleeper()) SleepConditionVariableSRW(&freed_, &gate_, INFINITE, 0);
        ReleaseSRWLockExclusive(&gate_);
    }
    bool takeAsSleeper() {
        std::uint32_t seen = state_.load(std::memory_order_relaxed);
        std::uint32_t next = 0;
        do {
            next = (seen & kHeld) != 0 ? seen & ~kWoken : ((seen | kHeld) & ~kWoken) - kSleeper;
        } while (
            !state_.compare_exchange_weak(seen, next, std::memory_order_acquire, std::memory_order_relaxed));
        return (seen & kHeld) == 0;
    }
    // The gate is taken first: a sleeper has to pass it before it can take the lock and destroy it.
    void giveBackAndWake() {
        AcquireSRWLockExclusive(&gate_);
        state_.fetch_add(kWoken - kHeld, std::memory_order_release);
        WakeConditionVariable(&freed_);
        ReleaseSRWLockExclusive(&gate_);
    }

    std::atomic<std::uint32_t> state_{0};
    SRWLOCK gate_ = SRWLOCK_INIT;  ///< of those that sleep and those that wake them
    CONDITION_VARIABLE freed_ = CONDITION_VARIABLE_INIT;
};

/// Holds a lock as long as it lives.
class Guard {
  public:
    explicit Guard(Lock& lock) : lock_(lock), holds_(lock.take()) {}
    ~Guard() {
        if (holds_) lock_.giveBack();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    /// False when an ended thread holds the lock: no other thread is there then, but what the lock guards may
    /// be half changed.
    bool holds() const { return holds_; }

  private:
    Lock& lock_;
    bool holds_;
};

/// A place to wait for a change of what a lock guards. Who makes the change notifies with the lock held, or after it.
class Condition {
  public:
    /// One wait, which may end without a reason. The lock is held, and the process does not end.
    void wait(Lock& lock) { sleep(lock, INFINITE); }
    /// The same, but no longer than the deadline in system ticks; false when that has passed.
    bool waitUntil(Lock& lock, ULONGLONG deadline) {
        const ULONGLONG now = osclock::Tick();
        if (now >= deadline) return false;
        constexpr ULONGLONG kLongest = INFINITE - 1;
        const ULONGLONG left = deadline - now;
        sleep(lock, static_cast<DWORD>(left < kLongest ? left : kLongest));
        return true;
    }
    /// Wakes one that waits.
    void notifyOne() { notify(&WakeConditionVariable); }
    /// Wakes all that wait.
    void notifyAll() { notify(&WakeAllConditionVariable); }

  private:
    // Whoever begins to wait holds the lock, so a change after that finds it counted; and the gate, so it is
    // asleep before it is woken.
    void sleep(Lock& lock, DWORD milliseconds) {
        waiting_.fetch_add(1, std::memory_order_relaxed);
        AcquireSRWLockExclusive(&gate_);
        lock.giveBack();
        SleepConditionVariableSRW(&notified_, &gate_, milliseconds, 0);
        ReleaseSRWLockExclusive(&gate_);
        waiting_.fetch_sub(1, std::memory_order_relaxed);
        static_cast<void>(lock.take());  // the process does not end while another thread is here
    }
    void notify(decltype(WakeConditionVariable)* wake) {
        if (waiting_.load(std::memory_order_relaxed) == 0 || ProcessIsEnding()) return;
        AcquireSRWLockExclusive(&gate_);
        wake(&notified_);
        ReleaseSRWLockExclusive(&gate_);
    }

    std::atomic<unsigned> waiting_{0};
    SRWLOCK gate_ = SRWLOCK_INIT;
    CONDITION_VARIABLE notified_ = CONDITION_VARIABLE_INIT;
};

/// The system's tick "milliseconds" from now; now for a number that is not positive.
inline ULONGLONG DeadlineIn(long milliseconds) {
    return osclock::Tick() + static_cast<ULONGLONG>(milliseconds > 0 ? milliseconds : 0);
}

}  // namespace waiting
