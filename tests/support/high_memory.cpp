// With TARN_HIGH_MEMORY in the environment every block of the tests lies above 2 GiB, where addresses are negative numbers:
// what lies below is reserved, and what the heap has there is used up. Only programs that are large-address-aware have
// addresses there, on a 64-bit system.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include <windows.h>

namespace {

constexpr std::uintptr_t kBoundary = 0x8000'0000;
constexpr std::uintptr_t kGranularity = 64 * 1024;

std::uintptr_t Address(const void* of) {
    return reinterpret_cast<std::uintptr_t>(of);
}

void ReserveLowMemory() {
    MEMORY_BASIC_INFORMATION region;
    for (std::uintptr_t at = 0; at < kBoundary; at = Address(region.BaseAddress) + region.RegionSize) {
        if (VirtualQuery(reinterpret_cast<void*>(at), &region, sizeof region) == 0) return;
        const std::uintptr_t start = (at + kGranularity - 1) / kGranularity * kGranularity;
        const std::uintptr_t end = std::min<std::uintptr_t>(at + region.RegionSize, kBoundary);
        if (region.State == MEM_FREE && start < end)
            VirtualAlloc(reinterpret_cast<void*>(start), end - start, MEM_RESERVE, PAGE_NOACCESS);
    }
}

// Until some blocks in a row lie above. They are kept for good.
void UseUpLow(std::size_t bytes) {
    constexpr std::size_t kInARow = 64 * 1024;
    for (std::size_t high = 0; high <= kInARow; high += bytes) {
        const void* volatile block = std::malloc(bytes);
        if (block == nullptr) return;
        if (Address(block) < kBoundary) high = 0;
    }
}

class HighMemory : public testing::Environment {
  public:
    void SetUp() override {
        if (std::getenv("TARN_HIGH_MEMORY") == nullptr) return;
        ReserveLowMemory();
        for (std::size_t bytes = 512 * 1024; bytes >= 8; bytes -= std::max<std::size_t>(bytes / 8, 4))
            UseUpLow(bytes);
        ASSERT_GE(Address(std::malloc(100)), kBoundary) << "the system gives this process no such addresses";
    }
};

[[maybe_unused]] testing::Environment* const highMemory = testing::AddGlobalTestEnvironment(new HighMemory);

}  // namespace
