#include "support/guard_heap.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

enum class PageState : std::uint8_t { kUnused, kFirstOfBlock, kInsideBlock, kFreed };

/// What is known of a page. Only the first page of a span (the block's pages and one guard page) has it all.
struct Page {
    PageState state;
    std::uint32_t firstPage;  // index of the span's first page
    std::uint32_t spanPages;
    std::size_t size;
    unsigned char* block;
};

struct Arena {
    unsigned char* base;
    Page* pages;
    std::size_t pagesUsed;
};

/// Spans of freed blocks, oldest first, to be used again when the address space is spent.
struct FreedSpan {
    Arena* arena;
    std::size_t firstPage;
};
constexpr std::size_t kMaxFreedSpans = kMaxArenas * kArenaPages / 2;

// Static destructors allocate and free, too, when the threads are gone that may have been here.
constinit waiting::Lock heapLock;

Arena arenas[kMaxArenas];
std::size_t arenaCount = 0;
std::size_t liveBlocks = 0;
FreedSpan* freedSpans = nullptr;
std::size_t oldestFreed = 0;
std::size_t freedCount = 0;
bool guardsFront = false;

[[noreturn]] void Die(const char* finding, const void* block) {
    char line[160];
    const int length = std::snprintf(line, sizeof line, "GUARD: %s %p\n", finding, block);
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), line, static_cast<DWORD>(length), &written, nullptr);
    __builtin_trap();
}

void* Reserve(std::size_t bytes, DWORD more, DWORD protection) {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | more, protection);
}

void InitialiseOnce() {
    if (freedSpans != nullptr) return;
    char value[2] = {};
    guardsFront = GetEnvironmentVariableA("TARN_GUARD_UNDER", value, sizeof value) == 1 && value[0] == '1';
    freedSpans =
        static_cast<FreedSpan*>(Reserve(kMaxFreedSpans * sizeof(FreedSpan), MEM_COMMIT, PAGE_READWRITE));
    if (freedSpans == nullptr) Die("no memory for the heap's own tables", nullptr);
}

Arena* AddArena() {
    if (arenaCount == kMaxArenas) return nullptr;
    Arena& arena = arenas[arenaCount];
    arena.base = static_cast<unsigned char*>(Reserve(kArenaSize, 0, PAGE_NOACCESS));
    arena.pages = static_cast<Page*>(Reserve(kArenaPages * sizeof(Page), MEM_COMMIT, PAGE_READWRITE));
    if (arena.base == nullptr || arena.pages == nullptr) {
        if (arena.base != nullptr) VirtualFree(arena.base, 0, MEM_RELEASE);
        return nullptr;
    }
    ++arenaCount;
    return &arena;
}

Arena* ArenaOf(const void* address) {
    for (Arena* arena = arenas; arena != arenas + arenaCount; ++arena) {
        const auto offset =
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(arena->base);
        if (offset < kArenaSize) return arena;
    }
    return nullptr;
}

/// A block's own pages: the span without its guard page.
unsigned char* DataBegin(const Arena& arena, std::size_t firstPage) {
    return arena.base + (firstPage + (guardsFront ? 1 : 0)) * kPageSize;
}
std::size_t DataSize(std::size_t spanPages) {
    return (spanPages - 1) * kPageSize;
}

/// Takes the oldest freed span of exactly this size out of the ring.
bool ReuseSpan(std::size_t spanPages, FreedSpan& found) {
    for (std::size_t i = 0; i < freedCount; ++i) {
        FreedSpan& candidate = freedSpans[(oldestFreed + i) % kMaxFreedSpans];
        if (candidate.arena == nullptr || candidate.arena->pages[candidate.firstPage].spanPages != spanPages)
            continue;
        found = candidate;
        candidate.arena = nullptr;
        while (freedCount != 0 && freedSpans[oldestFreed].arena == nullptr) {
            oldestFreed = (oldestFreed + 1) % kMaxFreedSpans;
            --freedCount;
        }
        return true;
    }
    return false;
}

bool TakeSpan(std::size_t spanPages, FreedSpan& span) {
    Arena* arena = arenaCount == 0 ? nullptr : &arenas[arenaCount - 1];
    if (arena == nullptr || arena->pagesUsed + spanPages > kArenaPages) arena = AddArena();
    if (arena == nullptr) return ReuseSpan(spanPages, span);
    span = {arena, arena->pagesUsed};
    arena->pagesUsed += spanPages;
    return true;
}

void RememberFreed(Arena* arena, std::size_t firstPage) {
    if (freedCount == kMaxFreedSpans) return;
    freedSpans[(oldestFreed + freedCount) % kMaxFreedSpans] = {arena, firstPage};
    ++freedCount;
}

std::size_t AlignmentFor(std::size_t size, std::size_t wanted) {
    if (wanted != 0) return wanted;
    const std::size_t lowestBit = size & (~size + 1);
    return lowestBit == 0 ? kMaxAlignmentBySize : std::min(lowestBit, kMaxAlignmentBySize);
}

unsigned char* PlaceBlock(unsigned char* data, std::size_t dataSize, std::size_t size,
                          std::size_t alignment) {
    if (guardsFront) return data;
    return data + dataSize - (size + alignment - 1) / alignment * alignment;
}

/// Null when the address space is spent.
void* AllocateGuarded(std::size_t size, std::size_t alignment) {
    const std::size_t spanPages = std::max<std::size_t>(1, (size + kPageSize - 1) / kPageSize) + 1;
    FreedSpan span{};
    if (!TakeSpan(spanPages, span)) return nullptr;
    unsigned char* const data = DataBegin(*span.arena, span.firstPage);
    const std::size_t dataSize = DataSize(spanPages);
    if (VirtualAlloc(data, dataSize, MEM_COMMIT, PAGE_READWRITE) == nullptr) return nullptr;

    unsigned char* const block = PlaceBlock(data, dataSize, size, AlignmentFor(size, alignment));
    std::memset(data, kUnusedByte, dataSize);
    std::memset(block, kFreshByte, size);
    Page* const first = &span.arena->pages[span.firstPage];
    const auto firstPage = static_cast<std::uint32_t>(span.firstPage);
    *first = {PageState::kFirstOfBlock, firstPage, static_cast<std::uint32_t>(spanPages), size, block};
    for (std::size_t i = 1; i < spanPages; ++i)
        first[i] = {PageState::kInsideBlock, firstPage, 0, 0, nullptr};
    ++liveBlocks;
    return block;
}

/// The record of a live block; ends the process for anything else.
Page& RecordOf(const Arena& arena, const void* block) {
    const auto offset = static_cast<const unsigned char*>(block) - arena.base;
    const Page& page = arena.pages[static_cast<std::size_t>(offset) / kPageSize];
    Page& record = arena.pages[page.firstPage];
    if (record.state == PageState::kFreed) Die("second free of", block);
    if (record.state != PageState::kFirstOfBlock || record.block != block)
        Die("free of an address that is no block", block);
    return record;
}

void RequireUnused(const unsigned char* begin, const unsigned char* end, const char* finding,
                   const void* block) {
    for (; begin != end; ++begin)
        if (*begin != kUnusedByte) Die(finding, block);
}

void FreeGuarded(Arena& arena, void* block) {
    Page& record = RecordOf(arena, block);
    unsigned char* const data = DataBegin(arena, record.firstPage);
    const std::size_t dataSize = DataSize(record.spanPages);
    RequireUnused(data, record.block, "bytes were written before the block", block);
    RequireUnused(record.block + record.size, data + dataSize, "bytes were written behind the block", block);
    VirtualFree(data, dataSize, MEM_DECOMMIT);
    record.state = PageState::kFreed;
    --liveBlocks;
    RememberFreed(&arena, record.firstPage);
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
    InitialiseOnce();
    const bool isGuarded = bytes < kArenaSize - kPageSize && liveBlocks < kMaxLiveBlocks;
    void* const block = isGuarded ? AllocateGuarded(bytes, alignment) : nullptr;
    return block != nullptr ? block : AllocateUnguarded(bytes, alignment);
}

void* GuardReallocate(void* block, std::size_t bytes) {
    std::size_t oldSize = 0;
    {
        const waiting::Guard guard(heapLock);
        const Arena* arena = ArenaOf(block);
        if (arena == nullptr) return std::realloc(block, bytes);
        oldSize = RecordOf(*arena, block).size;
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
    if (Arena* arena = ArenaOf(block))
        FreeGuarded(*arena, block);
    else
        std::free(block);
}

}  // namespace tarntest
