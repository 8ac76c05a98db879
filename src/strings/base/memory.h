#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "seam/osmemory.h"

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

}  // namespace memory
}  // namespace TarnLibA500
