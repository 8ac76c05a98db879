#pragma once

#include <atomic>

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

class Lock {
  public:
    /// Waits until it is free. False, and not taken, when an ended thread holds it.
    [[nodiscard]] bool take() {
        if (takeIfFree()) return true;
        if (ProcessIsEnding()) return false;
        if (takeSoon()) return true;
        AcquireSRWLockExclusive(&lock_);
        mark(true);
        return true;
    }
    /// Does not wait; false when it is not free.
    [[nodiscard]] bool takeIfFree() {
        const bool isTaken = TryAcquireSRWLockExclusive(&lock_) != FALSE;
        if (!isTaken && !(ProcessIsEnding() && !isHeld_.load(std::memory_order_relaxed))) return false;
        mark(true);
        return true;
    }
    // The system would look for waiting threads, whose stacks are gone when the process ends.
    void giveBack() {
        mark(false);
        if (!ProcessIsEnding()) ReleaseSRWLockExclusive(&lock_);
    }

  private:
    friend class Condition;

    // Most locks are held for less time than it takes to fall asleep and be woken, and as long as one thread
    // sleeps, each that gives the lock back has to ask the system to wake it. Only the mark is watched: asking
    // for the lock itself would take its memory from the processor that holds it.
    bool takeSoon() {
        constexpr int kLooks = 100;
        constexpr int kTurns = 10;  // given to others, in case the holder has no processor
        for (int turn = 0; turn < kTurns; ++turn) {
            for (int look = 0; look < kLooks && isHeld_.load(std::memory_order_relaxed); ++look)
                YieldProcessor();
            if (takeIfFree()) return true;
            SwitchToThread();
        }
        return false;
    }

    // What the lock guards is not touched before it is marked, nor after the mark is taken away.
    void mark(bool isHeld) {
        std::atomic_signal_fence(std::memory_order_seq_cst);
        isHeld_.store(isHeld, std::memory_order_release);
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }

    SRWLOCK lock_ = SRWLOCK_INIT;
    std::atomic<bool> isHeld_{false};  ///< what counts while the process ends
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
    void notifyOne() {
        if (!ProcessIsEnding()) WakeConditionVariable(&condition_);
    }
    void notifyAll() {
        if (!ProcessIsEnding()) WakeAllConditionVariable(&condition_);
    }

  private:
    void sleep(Lock& lock, DWORD milliseconds) {
        lock.mark(false);
        SleepConditionVariableSRW(&condition_, &lock.lock_, milliseconds, 0);
        lock.mark(true);
    }

    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

/// The system's tick "milliseconds" from now; now for a number that is not positive.
inline ULONGLONG DeadlineIn(long milliseconds) {
    return osclock::Tick() + static_cast<ULONGLONG>(milliseconds > 0 ? milliseconds : 0);
}

}  // namespace waiting
