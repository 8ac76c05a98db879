#ifdef TARN_TEST_SEAMS
#include <atomic>

#include "tracelog/osfile.h"

namespace TraceLog400::osfile {
namespace {

std::atomic<unsigned long> calls{0};
std::atomic<unsigned long> failing{0};  // the number of the call
std::atomic<bool> alsoLater{false};
std::atomic<DWORD> errorToSet{0};
std::atomic<long> mostBytes{-1};
std::atomic<ULONGLONG> timePassed{0};

}  // namespace

bool MustFail() {
    const unsigned long call = ++calls;
    const unsigned long from = failing;
    if (from == 0 || (alsoLater ? call < from : call != from)) return false;
    SetLastError(errorToSet);
    return true;
}

void FailCall(unsigned long nth, DWORD error, bool onwards) {
    errorToSet = error;
    alsoLater = onwards;
    failing = nth != 0 ? calls + nth : 0;
}

unsigned long CallsSoFar() {
    return calls;
}

void ShortenWrites(long bytes) {
    mostBytes = bytes;
}

long MostBytesOfWrite() {
    return mostBytes;
}

void PassTime(ULONGLONG milliseconds) {
    timePassed += milliseconds;
}

ULONGLONG TimePassed() {
    return timePassed;
}

}  // namespace TraceLog400::osfile
#endif
