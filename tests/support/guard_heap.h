#pragma once

#include <cstddef>

/// A heap for test programs, in which every block ends at a page that cannot be accessed and a freed block
/// cannot be accessed any more: reading or writing one byte beyond faults at the faulting line. Bytes before
/// a block are checked when it is freed; so are a second free and a free of anything else. What is found is
/// printed after "GUARD:" and ends the process.
///
/// A block ends exactly at the guard when its alignment allows it; the alignment is the lowest set bit of the
/// size, 16 at most. Freed addresses are used again when 1.5 GiB are spent. Above 24,000 live blocks, for blocks
/// of 32 MiB and more, and where no addresses are left the C heap serves: unguarded.
///
/// TARN_GUARD_UNDER=1 in the environment guards the front of blocks instead of their end.
namespace tarntest {

/// Null when there is no memory. Alignment 0: by size, as above.
void* GuardAllocate(std::size_t bytes, std::size_t alignment = 0);
/// Always moves. Null when there is no memory; the old block is then untouched.
void* GuardReallocate(void* block, std::size_t bytes);
void GuardFree(void* block);

}  // namespace tarntest
