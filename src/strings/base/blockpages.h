#pragma once

#include <cstdint>

/// The process's store of small blocks: pages cut into blocks of one size, which threads take and give back by
/// the handful (smallblocks.h). A page whose blocks are all here serves any size again, and pages go back to the
/// system by regions.
namespace TarnLibA500::blockpages {

/// A block that nobody uses.
struct Block {
    Block* next;
};

/// Puts up to "wanted" blocks of a size in front of a list, and returns how many; 0 when there is no memory.
std::uint32_t Take(unsigned size, std::uint32_t wanted, Block*& list) noexcept;

/// Takes back a list of blocks of a size. False, and nothing done, when a thread that the end of the process took
/// away was in the middle of something here.
[[nodiscard]] bool Give(unsigned size, Block* list) noexcept;

/// Gives all pages back to the system, whoever uses blocks of them.
void ReleaseAll() noexcept;

}  // namespace TarnLibA500::blockpages
