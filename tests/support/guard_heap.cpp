#include "support/guard_heap.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "waiting/waiting.h"

// Nothing here may allocate by new, nor own anything with a destructor: the heap is used before the first
// constructor of the program and after its last destructor.
namespace {

constexpr std::size_t kPageSize = 4096;
constexpr std::size_t kArenaSize = 32u << 20;
constexpr std::size_t kArenaPages = kArenaSize / kPageSize;
constexpr std::size_t kMaxArenas = 48;  // 1.5 GiB of the 2 GiB that a process has
// A block costs two mappings of the host, which allows 65,530 to a process.
constexpr std::size_t kMaxLiveBlocks = 24000;
constexpr std::size_t kMaxAlignmentBySize = 16;
constexpr int kUnusedByte = 0xFD;  // around a block; must still be there when it is freed
constexpr int kFreshByte = 0xCD;   // in a new block
constexpr std::size_t kNone = SIZE_MAX;

enum class PageState : std::uint8_t { kUnused, kLive, kFreed };

/// What is known of a page: the block of its span, which is the block's pages and one guard page.
struct Page {
    PageState state;
    std::size_t size;
    unsigned char* block;
    unsigned char* data;  // the block's pages
};

// Static destructors allocate and free, too, when the threads are gone that may have been here.
constinit waiting::Lock heapLock;

unsigned char* arenas[kMaxArenas];  // pages are numbered through all of them
Page pages[kMaxArenas * kArenaPages];
std::size_t arenaCount = 0;
std::size_t nextPage = 0;  // goes round, so that what was freed longest ago is used again first
std::size_t liveBlocks = 0;
bool guardsFront = false;

[[noreturn]] void Die(const char* finding, const void* block) {
    char line[160];
    const int length = std::snprintf(line, sizeof line, "GUARD: %s %p\n", finding, block);
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), line, static_cast<DWORD>(length), &written, nullptr);
    __builtin_trap();
}

bool AddArena() {
    if (arenaCount == kMaxArenas) return false;
    void* const base = VirtualAlloc(nullptr, kArenaSize, MEM_RESERVE, PAGE_NOACCESS);
    if (base == nullptr) return false;
    char value[2] = {};
    guardsFront = GetEnvironmentVariableA("TARN_GUARD_UNDER", value, sizeof value) == 1 && value[0] == '1';
    arenas[arenaCount++] = static_cast<unsigned char*>(base);
    return true;
}

/// The number of an address's page; kNone for those of other heaps.
std::size_t PageOf(const void* address) {
    for (std::size_t arena = 0; arena < arenaCount; ++arena) {
        const auto offset =
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(arenas[arena]);
        if (offset < kArenaSize) return arena * kArenaPages + offset / kPageSize;
    }
    return kNone;
}

std::size_t DataSize(std::size_t size) {
    return std::max<std::size_t>(1, (size + kPageSize - 1) / kPageSize) * kPageSize;
}

/// The first of so many pages in a row that no live block has; kNone when the address space is spent.
std::size_t TakeSpan(std::size_t count) {
    std::size_t found = 0;
    for (std::size_t looked = 0; looked < std::size(pages) + count; ++looked) {
        if (nextPage == arenaCount * kArenaPages && !AddArena()) nextPage = 0;
        if (arenaCount == 0) return kNone;
        if (nextPage % kArenaPages == 0) found = 0;  // arenas do not lie side by side
        found = pages[nextPage++].state == PageState::kLive ? 0 : found + 1;
        if (found == count) return nextPage - count;
    }
    return kNone;
}

std::size_t AlignmentFor(std::size_t size, std::size_t wanted) {
    if (wanted != 0) return wanted;
    const std::size_t lowestBit = size & (~size + 1);
    return lowestBit == 0 ? kMaxAlignmentBySize : std::min(lowestBit, kMaxAlignmentBySize);
}

/// Null when the address space is spent.
void* AllocateGuarded(std::size_t size, std::size_t alignment) {
    const std::size_t dataSize = DataSize(size);
    const std::size_t count = dataSize / kPageSize + 1;
    const std::size_t first = TakeSpan(count);
    if (first == kNone) return nullptr;
    unsigned char* const data =
        arenas[first / kArenaPages] + (first % kArenaPages + (guardsFront ? 1 : 0)) * kPageSize;
    if (VirtualAlloc(data, dataSize, MEM_COMMIT, PAGE_READWRITE) == nullptr) return nullptr;
    const std::size_t step = AlignmentFor(size, alignment);
    unsigned char* const block = guardsFront ? data : data + dataSize - (size + step - 1) / step * step;
    std::memset(data, kUnusedByte, dataSize);
    std::memset(block, kFreshByte, size);
    std::fill_n(pages + first, count, Page{PageState::kLive, size, block, data});
    ++liveBlocks;
    return block;
}

/// The page of a live block; ends the process for anything else.
const Page& RequireBlock(std::size_t page, const void* block) {
    if (pages[page].state == PageState::kFreed) Die("second free of", block);
    if (pages[page].state != PageState::kLive || pages[page].block != block)
        Die("free of an address that is no block", block);
    return pages[page];
}

void RequireUnused(const unsigned char* begin, const unsigned char* end, const char* finding,
                   const void* block) {
    for (; begin != end; ++begin)
        if (*begin != kUnusedByte) Die(finding, block);
}

void FreeGuarded(std::size_t number, void* block) {
    const Page page = RequireBlock(number, block);
    const std::size_t dataSize = DataSize(page.size);
    RequireUnused(page.data, page.block, "bytes were written before the block", block);
    RequireUnused(page.block + page.size, page.data + dataSize, "bytes were written behind the block", block);
    VirtualFree(page.data, dataSize, MEM_DECOMMIT);
    const std::size_t first = PageOf(page.data) - (guardsFront ? 1 : 0);
    std::fill_n(pages + first, dataSize / kPageSize + 1, Page{PageState::kFreed, 0, nullptr, nullptr});
    --liveBlocks;
}

void* AllocateUnguarded(std::size_t bytes, std::size_t alignment) {
    if (alignment > alignof(std::max_align_t)) return nullptr;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

}  // namespace

namespace tarntest {

void* GuardAllocate(std::size_t bytes, std::size_t alignment) {
    if (alignment > kPageSize) Die("alignment of more than a page", nullptr);
    const waiting::Guard guard(heapLock);
    const bool isGuarded = bytes < kArenaSize - kPageSize && liveBlocks < kMaxLiveBlocks;
    void* const block = isGuarded ? AllocateGuarded(bytes, alignment) : nullptr;
    return block != nullptr ? block : AllocateUnguarded(bytes, alignment);
}

void* GuardReallocate(void* block, std::size_t bytes) {
    std::size_t oldSize = 0;
    {
        const waiting::Guard guard(heapLock);
        const std::size_t page = PageOf(block);
        if (page == kNone) return std::realloc(block, bytes);
        oldSize = RequireBlock(page, block).size;
    }
    void* const moved = GuardAllocate(bytes);
    if (moved == nullptr) return nullptr;
    std::memcpy(moved, block, std::min(oldSize, bytes));
    GuardFree(block);
    return moved;
}

void GuardFree(void* block) {
    if (block == nullptr) return;
    const waiting::Guard guard(heapLock);
    const std::size_t page = PageOf(block);
    if (page != kNone)
        FreeGuarded(page, block);
    else
        std::free(block);
}

}  // namespace tarntest
