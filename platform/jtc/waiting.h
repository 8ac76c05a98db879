#pragma once

#include <windows.h>

/// A lock and a condition of the system. The C++ library's timed waits are not used: a program with a 64-bit
/// time_t, as ours are, hands the threads library a time of another layout than it expects, and its waits end
/// at once.
namespace jtc {

class Lock {
  public:
    void lock() { AcquireSRWLockExclusive(&lock_); }
    void unlock() { ReleaseSRWLockExclusive(&lock_); }

  private:
    friend class Condition;
    SRWLOCK lock_ = SRWLOCK_INIT;
};

class Condition {
  public:
    /// One wait, which may end without a reason. The lock is held.
    void wait(Lock& lock) { SleepConditionVariableSRW(&condition_, &lock.lock_, INFINITE, 0); }
    /// The same, but no longer than the deadline in system ticks; false when that has passed.
    bool waitUntil(Lock& lock, ULONGLONG deadline) {
        const ULONGLONG now = GetTickCount64();
        if (now >= deadline) return false;
        constexpr ULONGLONG kLongest = INFINITE - 1;
        const ULONGLONG left = deadline - now;
        SleepConditionVariableSRW(&condition_, &lock.lock_,
                                  static_cast<DWORD>(left < kLongest ? left : kLongest), 0);
        return true;
    }
    void notifyOne() { WakeConditionVariable(&condition_); }
    void notifyAll() { WakeAllConditionVariable(&condition_); }

  private:
    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

/// The tick so many milliseconds from now; now for a number that is not positive.
inline ULONGLONG DeadlineIn(long milliseconds) {
    return GetTickCount64() + static_cast<ULONGLONG>(milliseconds > 0 ? milliseconds : 0);
}

}  // namespace jtc
