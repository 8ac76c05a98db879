#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

/// The one way in which strings and byte blocks get memory. Test builds put their own functions behind it
/// (TARN_TEST_SEAMS), to count, to fail the n-th request and to guard both ends; otherwise these are direct
/// calls.
namespace TarnLibA500 {

/// The allocation failure of the library: caught as std::bad_alloc, with the text "bad allocation".
class BadAllocation : public std::bad_alloc {
  public:
    const char* what() const noexcept override { return "bad allocation"; }
};

namespace memory {

#ifdef TARN_TEST_SEAMS
void* HookAllocate(std::size_t bytes) noexcept;
void* HookReallocate(void* block, std::size_t bytes) noexcept;
void HookFree(void* block) noexcept;
#else
inline void* HookAllocate(std::size_t bytes) noexcept {
    return std::malloc(bytes);
}
inline void* HookReallocate(void* block, std::size_t bytes) noexcept {
    return std::realloc(block, bytes);
}
inline void HookFree(void* block) noexcept {
    std::free(block);
}
#endif

/// Sizes come in 64 bits, because "header + units x size" of a caller can pass 4 GiB.
inline std::size_t CheckedSize(std::uint64_t bytes) {
    if (bytes > SIZE_MAX) throw BadAllocation();
    return static_cast<std::size_t>(bytes);
}

/// Throws BadAllocation on failure.
inline void* Allocate(std::uint64_t bytes) {
    void* block = HookAllocate(CheckedSize(bytes));
    if (block == nullptr) throw BadAllocation();
    return block;
}

/// Throws BadAllocation on failure; the old block is then untouched and still the caller's.
inline void* Reallocate(void* block, std::uint64_t bytes) {
    void* moved = HookReallocate(block, CheckedSize(bytes));
    if (moved == nullptr) throw BadAllocation();
    return moved;
}

inline void Free(void* block) noexcept {
    HookFree(block);
}

}  // namespace memory
}  // namespace TarnLibA500
