#pragma once

#include <cstddef>
#include <cstdint>

#include "strings/base/blockpages.h"
#include "strings/base/blocksizes.h"

/// Small blocks of memory, for whoever knows at the end how many bytes were asked for: most texts are short, and the
/// C heap is dear for them. Each thread has blocks of every size at hand, without a lock and without an atomic
/// operation; a handful at a time comes from the store of the process and goes back to it. A block may be given back
/// by any thread, by one that is ending, and while the process ends. Nothing here changes GetLastError.
namespace TarnLibA500::smallblocks {

/// Free blocks of one size.
struct Shelf {
    blockpages::Block* first;
    std::uint32_t room;  ///< how many more it takes before a handful goes back
};

/// What a thread does with its shelves.
enum class Use : std::uint32_t {
    NotYet,  ///< the thread has not been here
    Kept,    ///< the system tells when the thread ends
    Never    ///< the thread is ending, or the system cannot tell: everything goes to the store at once
};

/// What a thread has at hand. All zero at first.
struct Shelves {
    Shelf of[blocksizes::kCount];
    Use use;
};

extern "C" unsigned long _tls_index;
extern "C" char _tls_start;
/// The image of the shelves, from which the loader makes those of each thread.
extern Shelves image;

/// This thread's. The compiler's thread_local is a function call that asks the system and may allocate; here is what it
/// does elsewhere, as the format of executable files describes it: FS:[2C] leads to the thread's blocks of data,
/// one for each module.
inline Shelves& Mine() noexcept {
    const std::uintptr_t* blocks;
    __asm__("movl %%fs:0x2C, %0" : "=r"(blocks));
    const auto offset =
        reinterpret_cast<std::uintptr_t>(&image) - reinterpret_cast<std::uintptr_t>(&_tls_start);
    return *reinterpret_cast<Shelves*>(blocks[_tls_index] + offset);
}

/// What Take does when the shelf is empty.
void* TakeFromStore(unsigned size) noexcept;
/// What Give does when the shelf is full.
void GiveToStore(blockpages::Block* block, unsigned size) noexcept;

/// A block for at most blocksizes::kLargest bytes; null when there is no memory.
inline void* Take(std::size_t bytes) noexcept {
    const unsigned size = blocksizes::NumberOf(bytes);
    Shelf& shelf = Mine().of[size];
    blockpages::Block* const block = shelf.first;
    if (block == nullptr) return TakeFromStore(size);
    shelf.first = block->next;
    ++shelf.room;
    return block;
}

/// Takes back a block that was taken for so many bytes.
inline void Give(void* memory, std::size_t bytes) noexcept {
    const unsigned size = blocksizes::NumberOf(bytes);
    auto* const block = static_cast<blockpages::Block*>(memory);
    Shelf& shelf = Mine().of[size];
    if (shelf.room == 0) return GiveToStore(block, size);
    --shelf.room;
    block->next = shelf.first;
    shelf.first = block;
}

}  // namespace TarnLibA500::smallblocks
