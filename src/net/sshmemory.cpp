#include "net/sshmemory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "seam/osmemory.h"
#include "strings/base/wipe.h"

namespace TarnLibA500::sshmemory {
namespace {

/// In front of a block, which is aligned as the C heap aligns here.
struct alignas(8) Head {
    std::size_t bytes;
};

Head* HeadOf(void* block) noexcept {
    return static_cast<Head*>(block) - 1;
}

}  // namespace

void* Allocate(std::size_t count, void**) noexcept {
    if (count > SIZE_MAX - sizeof(Head)) return nullptr;
    auto* const head = static_cast<Head*>(osmemory::Allocate(sizeof(Head) + count));
    if (head == nullptr) return nullptr;
    head->bytes = count;
    return head + 1;
}

void* Reallocate(void* block, std::size_t count, void** session) noexcept {
    void* const larger = Allocate(count, session);
    if (block == nullptr || larger == nullptr) return larger;
    std::memcpy(larger, block, std::min(count, HeadOf(block)->bytes));
    Free(block, session);
    return larger;
}

void Free(void* block, void**) noexcept {
    if (block == nullptr) return;
    Wipe(block, HeadOf(block)->bytes);
    osmemory::Free(HeadOf(block));
}

}  // namespace TarnLibA500::sshmemory
