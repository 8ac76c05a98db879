#include "support/guard_heap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

// The heap that is to find faults must find these; otherwise every other guarded test proves nothing.
namespace {

using tarntest::GuardAllocate;
using tarntest::GuardFree;
using tarntest::GuardReallocate;

volatile int behindFive = 5;  // the compiler sees a plain 5 and refuses

volatile unsigned char* Bytes(void* block) {
    return static_cast<volatile unsigned char*>(block);
}

void* Freed(void* block) {
    GuardFree(block);
    return block;
}

void* WrittenBefore(void* block) {
    Bytes(block)[-1] = 0;
    return block;
}

void WriteAfterMove(void* block) {
    GuardReallocate(block, 800);
    Bytes(block)[0] = 0;
}

/// A block when all addresses are spent.
void* AllocatedAgain(std::size_t bytes) {
    for (int i = 0; i < 60; ++i) GuardFree(GuardAllocate(31U << 20));
    return GuardAllocate(bytes);
}

const struct {
    const char* name;
    void (*commit)();
    const char* report;
} kFaults[] = {
    {"write behind", [] { Bytes(GuardAllocate(13))[13] = 0; }, "CRASH code"},
    {"read behind", [] { (void)Bytes(GuardAllocate(4096))[4096]; }, "CRASH code"},
    {"use after free", [] { Bytes(Freed(GuardAllocate(8)))[0] = 0; }, "CRASH code"},
    {"use after a move", [] { WriteAfterMove(GuardAllocate(8)); }, "CRASH code"},
    {"write before", [] { GuardFree(WrittenBefore(GuardAllocate(8))); },
     "GUARD: bytes were written before the block"},
    {"second free", [] { GuardFree(Freed(GuardAllocate(8))); }, "GUARD: second free"},
    {"free inside", [] { GuardFree(static_cast<char*>(GuardAllocate(8)) + 4); },
     "GUARD: free of an address that is no block"},
    {"write behind where another block was", [] { Bytes(AllocatedAgain(2U << 20))[2U << 20] = 0; },
     "CRASH code"},
    {"operator new is guarded", [] { Bytes(new char[5])[behindFive] = 0; }, "CRASH code"},
};

TEST(GuardHeapDeathTest, FindsFaults) {
    for (const auto& fault : kFaults) {
        SCOPED_TRACE(fault.name);
        EXPECT_DEATH(fault.commit(), fault.report);
    }
}

TEST(GuardHeap, KeepsContentsWhenMovedAndAlignsAsAsked) {
    void* const block = GuardReallocate(std::memcpy(GuardAllocate(3), "abc", 3), 10000);
    EXPECT_EQ(std::memcmp(block, "abc", 3), 0);
    GuardFree(block);
    struct alignas(64) Line {};
    const auto line = std::make_unique<Line>();
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(line.get()) % 64);
}

}  // namespace
