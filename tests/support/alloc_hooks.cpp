#include "support/alloc_hooks.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "strings/base/memory.h"

#ifdef TARN_GUARD_HEAP
#include "support/guard_heap.h"
#endif

namespace {

// Plain data: a thread-local with a destructor would be gone before the last operator delete of its thread.
thread_local unsigned long allocations = 0;
thread_local unsigned long failingAllocation = 0;  // in terms of `allocations`; 0: none
thread_local bool failureHappened = false;
std::atomic<long> liveBlocks{0};

struct Watch {
    const void* block;
    void* copy;
    unsigned long bytes;
};
thread_local Watch watch{};

constexpr std::size_t kDefaultAlignment = 0;

#ifdef TARN_GUARD_HEAP
void* RawAllocate(std::size_t bytes, std::size_t alignment) {
    return tarntest::GuardAllocate(bytes, alignment);
}
void* RawReallocate(void* block, std::size_t bytes) {
    return tarntest::GuardReallocate(block, bytes);
}
void RawFree(void* block, std::size_t) {
    tarntest::GuardFree(block);
}
#else
void* RawAllocate(std::size_t bytes, std::size_t alignment) {
    const std::size_t size = bytes == 0 ? 1 : bytes;
    return alignment == kDefaultAlignment ? std::malloc(size) : _aligned_malloc(size, alignment);
}
void* RawReallocate(void* block, std::size_t bytes) {
    return std::realloc(block, bytes);
}
void RawFree(void* block, std::size_t alignment) {
    if (alignment == kDefaultAlignment)
        std::free(block);
    else
        _aligned_free(block);
}
#endif

/// Counts one request; false when it is the one that is to fail.
bool MayAllocate() {
    if (++allocations != failingAllocation) return true;
    failureHappened = true;
    return false;
}

void* Counted(void* block) {
    if (block != nullptr) liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* TakeBlock(std::size_t bytes, std::size_t alignment = kDefaultAlignment) {
    return MayAllocate() ? Counted(RawAllocate(bytes, alignment)) : nullptr;
}

void GiveBlock(void* block, std::size_t alignment = kDefaultAlignment) {
    if (block == nullptr) return;
    liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    RawFree(block, alignment);
}

void* AllocateOrThrow(std::size_t bytes, std::size_t alignment = kDefaultAlignment) {
    void* block = TakeBlock(bytes, alignment);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

namespace tarntest {

unsigned long AllocationsSoFar() {
    return allocations;
}

void FailAllocation(unsigned long nth) {
    failingAllocation = nth == 0 ? 0 : allocations + nth;
    failureHappened = false;
}

bool FailureHappened() {
    return failureHappened;
}

void CopyWhenFreed(const void* block, void* copy, unsigned long bytes) {
    watch = {block, copy, bytes};
}

long LiveBlocks() {
    return liveBlocks.load(std::memory_order_relaxed);
}

}  // namespace tarntest

namespace TarnLibA500::memory {

void* HookAllocate(std::size_t bytes) noexcept {
    return TakeBlock(bytes);
}

void* HookReallocate(void* block, std::size_t bytes) noexcept {
    if (!MayAllocate()) return nullptr;
    return block == nullptr ? Counted(RawAllocate(bytes, kDefaultAlignment)) : RawReallocate(block, bytes);
}

void HookFree(void* block) noexcept {
    if (block != nullptr && block == watch.block) {
        std::memcpy(watch.copy, block, watch.bytes);
        watch = {};  // the next block at this address is another
    }
    GiveBlock(block);
}

}  // namespace TarnLibA500::memory

// The array and nothrow forms of the standard library call these.
void* operator new(std::size_t bytes) {
    return AllocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return AllocateOrThrow(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    GiveBlock(block);
}
void operator delete(void* block, std::size_t) noexcept {
    GiveBlock(block);
}
void operator delete(void* block, std::align_val_t alignment) noexcept {
    GiveBlock(block, static_cast<std::size_t>(alignment));
}
void operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
    GiveBlock(block, static_cast<std::size_t>(alignment));
}
