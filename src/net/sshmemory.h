#pragma once

#include <cstddef>

/// Memory for the SSH library, which is overwritten when it is freed: passwords and keys go through it.
namespace TarnLibA500::sshmemory {

void* Allocate(std::size_t count, void** session) noexcept;
void* Reallocate(void* block, std::size_t count, void** session) noexcept;
void Free(void* block, void** session) noexcept;

}  // namespace TarnLibA500::sshmemory
