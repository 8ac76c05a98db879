#pragma once

#include <cstddef>
#include <cstdlib>

#include "seam/seam.h"

/// The one way to memory that is asked for by its size. (operator new is another.)
namespace osmemory {

/// What is open is blocks.
struct Kind {};
using Calls = seam::Calls<Kind, seam::Scope::Thread>;

#ifdef TARN_TEST_SEAMS
// The test program's: operator new shares them, and there may be guards around the blocks.
void* Allocate(std::size_t bytes) noexcept;
void* Reallocate(void* block, std::size_t bytes) noexcept;
void Free(void* block) noexcept;
#else
inline void* Allocate(std::size_t bytes) noexcept {
    return std::malloc(bytes);
}
inline void* Reallocate(void* block, std::size_t bytes) noexcept {
    return std::realloc(block, bytes);
}
inline void Free(void* block) noexcept {
    std::free(block);
}
#endif

}  // namespace osmemory
