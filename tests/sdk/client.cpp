// A program built with the installed SDK alone: that linking the library leaves the C++ library's waits as they are, and
// brings what the library needs. Ends with 0 when everything holds.
#include <cfloat>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>

#include "tarnlib/sfile.h"
#include "tarnlib/tarnversion.h"

#if defined(__MINGW_USE_VC2005_COMPAT) || defined(_FILE_OFFSET_BITS)
#error "the library's target changes the system's types for its users"
#endif
static_assert(__cplusplus >= 202002L, "the library's target asks for C++20");
static_assert(TARN_VERSION == TARN_MAKE_VERSION(TARN_VERSION_MAJOR, TARN_VERSION_MINOR, TARN_VERSION_PATCH));
static_assert(FLT_EVAL_METHOD == 0, "the library's target asks for SSE");

namespace {

using namespace TarnLibA500;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kWait = 60ms;
constexpr auto kTick = 20ms;  // the system's clock may step by this

int failures = 0;

void Expect(bool holds, const char* what) {
    if (holds) return;
    std::printf("FAILED: %s\n", what);
    ++failures;
}

template <class Wait>
bool TakesItsTime(Wait wait) {
    const Clock::time_point began = Clock::now();
    wait();
    return Clock::now() - began >= kWait - kTick;
}

void TestWaits() {
    Expect(TakesItsTime([] { std::this_thread::sleep_for(kWait); }), "sleep_for waits");
    std::mutex mutex;
    std::unique_lock<std::mutex> lock(mutex);
    std::condition_variable woken;
    // Without a predicate a wait may end early; with one that never holds it may not.
    Expect(TakesItsTime([&] { woken.wait_for(lock, kWait, [] { return false; }); }), "wait_for waits");
}

void TestExceptions() {
    try {
        SFile file("no such directory/no such file", SFile::readOnly, SFile::readWriteMask,
                   SFile::denyNothing);
        Expect(false, "a missing file throws");
    } catch (const SFileException& failure) {
        Expect(!failure.toString().isEmpty(), "an exception of the DLL is caught by its type");
    }
}

}  // namespace

int main() {
    TestWaits();
    TestExceptions();
    Expect(TarnVersion() == TARN_VERSION && std::strcmp(TarnVersionText(), TARN_VERSION_TEXT) == 0,
           "headers and DLL have one version");
    std::printf("%d failures\n", failures);
    return failures == 0 ? 0 : 1;
}
