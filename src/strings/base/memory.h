#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "seam/osmemory.h"
#include "strings/base/smallblocks.h"

/// The memory of strings and byte blocks.
namespace TarnLibA500 {

/// The allocation failure of the library: caught as std::bad_alloc, with the text "bad allocation".
class BadAllocation : public std::bad_alloc {
  public:
    const char* what() const noexcept override { return "bad allocation"; }
};

namespace memory {

/// Sizes come in 64 bits, because "header + units x size" of a caller can pass 4 GiB.
inline std::size_t CheckedSize(std::uint64_t bytes) {
    if (bytes > SIZE_MAX) throw BadAllocation();
    return static_cast<std::size_t>(bytes);
}

/// Throws BadAllocation on failure.
inline void* Allocate(std::uint64_t bytes) {
    void* block = osmemory::Allocate(CheckedSize(bytes));
    if (block == nullptr) throw BadAllocation();
    return block;
}

/// Throws BadAllocation on failure; the old block is then untouched and still the caller's.
inline void* Reallocate(void* block, std::uint64_t bytes) {
    void* moved = osmemory::Reallocate(block, CheckedSize(bytes));
    if (moved == nullptr) throw BadAllocation();
    return moved;
}

inline void Free(void* block) noexcept {
    osmemory::Free(block);
}

// Blocks whose owner tells at the end how many bytes it asked for. Small ones do not come from the C heap; which
// they are is told by these bytes alone. A test program counts all of them, makes them fail and guards them.

#ifdef TARN_TEST_SEAMS
inline bool IsSmall(std::size_t) noexcept {
    return false;
}
#else
inline bool IsSmall(std::size_t bytes) noexcept {
    return bytes <= blocksizes::kLargest;
}
#endif

/// Throws BadAllocation on failure.
inline void* AllocateSized(std::uint64_t bytes) {
    const std::size_t size = CheckedSize(bytes);
    if (!IsSmall(size)) return Allocate(size);
    void* const block = smallblocks::Take(size);
    if (block == nullptr) throw BadAllocation();
    return block;
}

inline void FreeSized(void* block, std::size_t bytes) noexcept {
    if (IsSmall(bytes)) {
        smallblocks::Give(block, bytes);
    } else {
        Free(block);
    }
}

/// Throws BadAllocation on failure; the old block is then untouched and still the caller's.
inline void* ReallocateSized(void* block, std::size_t oldBytes, std::uint64_t bytes) {
    const std::size_t size = CheckedSize(bytes);
    if (!IsSmall(oldBytes) && !IsSmall(size)) return Reallocate(block, size);
    if (IsSmall(oldBytes) && IsSmall(size) && blocksizes::NumberOf(oldBytes) == blocksizes::NumberOf(size))
        return block;
    void* const moved = AllocateSized(size);
    std::memcpy(moved, block, std::min(oldBytes, size));
    FreeSized(block, oldBytes);
    return moved;
}

}  // namespace memory
}  // namespace TarnLibA500
