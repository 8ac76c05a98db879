#include "files/uniquename.h"

#include <atomic>

#include <windows.h>

namespace TarnLibA500 {
namespace {

std::uint32_t FirstUniqueNumber() noexcept {
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return counter.LowPart ^ GetCurrentProcessId() << 16 ^ GetTickCount();
}

}  // namespace

std::uint32_t NextUniqueNumber() noexcept {
    constexpr std::uint32_t kOddStep = 0x9E3779B1;  // far from one to the next, and through all numbers
    static std::atomic<std::uint32_t> last{FirstUniqueNumber()};
    return last.fetch_add(kOddStep, std::memory_order_relaxed);
}

}  // namespace TarnLibA500
