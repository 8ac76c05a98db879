#include "files/uniquename.h"

#include <atomic>

#include "seam/osclock.h"

namespace TarnLibA500 {
namespace {

std::uint32_t FirstUniqueNumber() noexcept {
    return static_cast<std::uint32_t>(osclock::Counter()) ^ GetCurrentProcessId() << 16 ^
           static_cast<std::uint32_t>(osclock::Tick());
}

}  // namespace

std::uint32_t NextUniqueNumber() noexcept {
    constexpr std::uint32_t kOddStep = 0x9E3779B1;  // far from one to the next, and through all numbers
    static std::atomic<std::uint32_t> last{FirstUniqueNumber()};
    return last.fetch_add(kOddStep, std::memory_order_relaxed);
}

}  // namespace TarnLibA500
