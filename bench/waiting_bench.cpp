// A monitor against what else a program would lock with, by one thread and by four that meet. The rivals do not answer while
// the process ends: a CRITICAL_SECTION of an ended thread ends the process, std::mutex waits for ever.

#include <benchmark/benchmark.h>

#include <mutex>

#include "jtc/jtc.h"

#include <windows.h>

namespace {

struct CriticalSection {
    CriticalSection() { InitializeCriticalSection(&section); }
    ~CriticalSection() { DeleteCriticalSection(&section); }
    void lock() { EnterCriticalSection(&section); }
    void unlock() { LeaveCriticalSection(&section); }
    CRITICAL_SECTION section;
};

template <class Lock>
void LockAndUnlock(benchmark::State& state) {
    static Lock lock;
    static int guarded = 0;
    for (auto _ : state) {
        lock.lock();
        benchmark::DoNotOptimize(++guarded);
        lock.unlock();
    }
}

template <class Lock>
void Add(const char* name) {
    benchmark::RegisterBenchmark(name, LockAndUnlock<Lock>)->Threads(1)->Threads(4)->UseRealTime();
}

const bool isAdded = [] {
    Add<JTCMonitor>("BM_Monitor/ours");
    Add<CriticalSection>("BM_Monitor/CRITICAL_SECTION");
    Add<std::recursive_mutex>("BM_Monitor/std::recursive_mutex");
    return true;
}();

}  // namespace
