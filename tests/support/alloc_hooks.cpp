#include "support/alloc_hooks.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef TARN_GUARD_HEAP
#include "support/guard_heap.h"
#endif

namespace {

// Plain data: a thread-local with a destructor would be gone before the last operator delete of its thread.
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

void* Counted(void* block) {
    if (block != nullptr) tarntest::Allocations::Opened();
    return block;
}

void* TakeBlock(std::size_t bytes, std::size_t alignment = kDefaultAlignment) {
    return tarntest::Allocations::Error() != 0 ? nullptr : Counted(RawAllocate(bytes, alignment));
}

void GiveBlock(void* block, std::size_t alignment = kDefaultAlignment) {
    if (block == nullptr) return;
    tarntest::Allocations::Closed();
    RawFree(block, alignment);
}

void* AllocateOrThrow(std::size_t bytes, std::size_t alignment = kDefaultAlignment) {
    void* block = TakeBlock(bytes, alignment);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

namespace tarntest {

void CopyWhenFreed(const void* block, void* copy, unsigned long bytes) {
    watch = {block, copy, bytes};
}

}  // namespace tarntest

namespace osmemory {

void* Allocate(std::size_t bytes) noexcept {
    return TakeBlock(bytes);
}

void* Reallocate(void* block, std::size_t bytes) noexcept {
    if (Calls::Error() != 0) return nullptr;
    return block == nullptr ? Counted(RawAllocate(bytes, kDefaultAlignment)) : RawReallocate(block, bytes);
}

void Free(void* block) noexcept {
    if (block != nullptr && block == watch.block) {
        std::memcpy(watch.copy, block, watch.bytes);
        watch = {};  // the next block at this address is another
    }
    GiveBlock(block);
}

}  // namespace osmemory

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
