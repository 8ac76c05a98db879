// A monitor against what else a program would lock with, by one thread and by four that meet. The rivals do not answer while
// the process ends: a CRITICAL_SECTION of an ended thread ends the process, std::mutex waits for ever.

#include <mutex>

#include "jtc/jtc.h"
#include "sharedrows.h"

#include <windows.h>

namespace {

struct CriticalSection {
    CriticalSection() { InitializeCriticalSection(&section); }
    ~CriticalSection() { DeleteCriticalSection(&section); }
    void lock() { EnterCriticalSection(&section); }
    void unlock() { LeaveCriticalSection(&section); }
    CRITICAL_SECTION section;
};

const bool added = [] {
    bench::AddLock<JTCMonitor>("ours");
    bench::AddLock<CriticalSection>("CRITICAL_SECTION");
    bench::AddLock<std::recursive_mutex>("std::recursive_mutex");
    return true;
}();

}  // namespace
