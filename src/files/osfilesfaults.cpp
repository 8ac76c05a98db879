#ifdef TARN_TEST_SEAMS
#include <atomic>
#include <cwchar>

#include "files/osfiles.h"

namespace TarnLibA500::osfiles {
namespace {

std::atomic<unsigned long> calls{0};
std::atomic<unsigned long> failing{0};  // the number of the call
std::atomic<bool> alsoLater{false};
std::atomic<DWORD> errorToSet{0};
std::atomic<unsigned long> emptyReads{0};
std::atomic<long> openHandles{0};
std::atomic<unsigned long> disturbed{0};  // the number of the call
std::atomic<void (*)()> disturbance{nullptr};
std::atomic<unsigned long> halfReplacements{0};
std::atomic<const wchar_t*> linkPath{nullptr};
std::atomic<unsigned long> sleeps{0};
std::atomic<void (*)(DWORD)> sleepReplacement{nullptr};

}  // namespace

bool MustFail() {
    const unsigned long call = ++calls;
    if (call == disturbed) disturbance.load()();
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

void DoBeforeCall(unsigned long nth, void (*action)()) {
    disturbance = action;
    disturbed = nth != 0 ? calls + nth : 0;
}

unsigned long CallsSoFar() {
    return calls;
}

void ReplaceHalfway(unsigned long times) {
    halfReplacements = times;
}

bool FailsHalfway() {
    if (halfReplacements == 0) return false;
    --halfReplacements;
    return true;
}

void CallLink(const wchar_t* path) {
    linkPath = path;
}

DWORD SeenAttributes(const wchar_t* path, DWORD attributes) {
    const wchar_t* const link = linkPath;
    return link != nullptr && std::wcscmp(path, link) == 0 ? attributes | FILE_ATTRIBUTE_REPARSE_POINT
                                                           : attributes;
}

void ReadNothing(unsigned long times) {
    emptyReads = times;
}

bool MustReadNothing() {
    if (emptyReads == 0) return false;
    ++calls;
    --emptyReads;
    return true;
}

HANDLE Opened(HANDLE handle) {
    if (handle != INVALID_HANDLE_VALUE && handle != nullptr) ++openHandles;
    return handle;
}

void Closed() {
    --openHandles;
}

long OpenHandles() {
    return openHandles;
}

void Sleep(DWORD milliseconds) {
    ++sleeps;
    void (*const replacement)(DWORD) = sleepReplacement;
    replacement != nullptr ? replacement(milliseconds) : ::Sleep(milliseconds);
}

void ReplaceSleep(void (*replacement)(DWORD milliseconds)) {
    sleepReplacement = replacement;
}

unsigned long SleepsSoFar() {
    return sleeps;
}

}  // namespace TarnLibA500::osfiles
#endif
