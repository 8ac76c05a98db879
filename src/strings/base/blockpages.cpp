#include "strings/base/blockpages.h"

#include <bit>
#include <cstddef>
#include <new>

#include "seam/ospages.h"
#include "strings/base/blocksizes.h"
#include "waiting/waiting.h"

namespace TarnLibA500::blockpages {
namespace {

using blocksizes::kPageBytes;

constexpr std::size_t kRegionBytes = ospages::kRegionStep;
constexpr unsigned kPagesPerRegion = kRegionBytes / kPageBytes;
constexpr std::uint32_t kAllPages = (1U << kPagesPerRegion) - 1;
// Unused pages that are kept, so that work at the edge of one does not ask the system each time.
constexpr int kMaxIdlePages = 4 * kPagesPerRegion;
// So many unused pages of a region that still has used ones are worth a call.
constexpr int kManyPages = 12;

template <class Node>
struct List {
    Node* first = nullptr;

    void add(Node& node) noexcept {
        node.previous = nullptr;
        node.next = first;
        if (first != nullptr) first->previous = &node;
        first = &node;
    }
    void remove(Node& node) noexcept {
        (node.previous != nullptr ? node.previous->next : first) = node.next;
        if (node.next != nullptr) node.next->previous = node.previous;
    }
};

struct Page {
    Page* next;
    Page* previous;
    Block* free;
    std::uint32_t lent;  // blocks that are not here
};

/// What stands at the start of a region, in its first page.
struct alignas(16) Region {
    Region* next;
    Region* previous;
    std::uint32_t unused;  // a bit for each page that is not cut into blocks
    std::uint32_t absent;  // unused ones that were taken away
    Page pages[kPagesPerRegion];

    int idlePages() const noexcept { return std::popcount(unused & ~absent); }
};

constinit waiting::Lock lock;
constinit List<Page> partly[blocksizes::kCount];  // pages that have free blocks, by size
// Regions, by what their pages are.
constinit List<Region> empty;   // all unused, and there
constinit List<Region> roomy;   // used and unused ones, all there
constinit List<Region> shrunk;  // used ones, the others mostly absent
constinit List<Region> full;
int idlePages = 0;  // of all regions

std::uintptr_t AddressOf(const void* place) noexcept {
    return reinterpret_cast<std::uintptr_t>(place);
}

Region& RegionOf(const void* place) noexcept {
    return *reinterpret_cast<Region*>(AddressOf(place) & ~(kRegionBytes - 1));
}

List<Region>& ListOf(const Region& region) noexcept {
    if (region.absent != 0) return shrunk;
    if (region.unused == kAllPages) return empty;
    return region.unused != 0 ? roomy : full;
}

/// Changes which pages of a region are unused and absent.
void Change(Region& region, std::uint32_t unused, std::uint32_t absent) noexcept {
    ListOf(region).remove(region);
    idlePages -= region.idlePages();
    region.unused = unused;
    region.absent = absent;
    idlePages += region.idlePages();
    ListOf(region).add(region);
}

Region* NewRegion() noexcept {
    void* const memory = ospages::Take(kRegionBytes);
    if (memory == nullptr) return nullptr;
    auto* const region = new (memory) Region{};
    region->unused = kAllPages;
    return region;
}

/// A region with an unused page that is there; null when there is no memory.
Region* FindRoom() noexcept {
    if (roomy.first != nullptr) return roomy.first;
    if (empty.first != nullptr) return empty.first;
    if (Region* const region = shrunk.first) {
        if (!ospages::Commit(region, kRegionBytes)) return nullptr;
        Change(*region, region->unused, 0);
        return region;
    }
    Region* const region = NewRegion();
    if (region == nullptr) return nullptr;
    idlePages += region->idlePages();
    empty.add(*region);
    return region;
}

/// Takes a region's unused pages away, except the first, where the region itself stands.
void Shrink(Region& region) noexcept {
    const std::uint32_t absent = region.unused & ~1U;
    for (std::uint32_t left = absent; left != 0;) {
        const int first = std::countr_zero(left);
        const int count = std::countr_one(left >> first);
        ospages::Decommit(reinterpret_cast<char*>(&region) + first * kPageBytes, count * kPageBytes);
        left &= ~(((1U << count) - 1) << first);
    }
    Change(region, region.unused, absent);
}

/// Cuts a page of the region into blocks.
Page& CutPage(Region& region, unsigned number, unsigned size) noexcept {
    Page& page = region.pages[number];
    const std::size_t taken = number == 0 ? sizeof(Region) : 0;
    const std::size_t bytes = blocksizes::kBytes[size];
    char* const begin = reinterpret_cast<char*>(&region) + number * kPageBytes + taken;
    page.lent = 0;
    static_assert(kPageBytes - sizeof(Region) >= blocksizes::kLargest);
    std::size_t left = (kPageBytes - taken) / bytes - 1;
    page.free = new (begin + left * bytes) Block{nullptr};
    while (left-- != 0) page.free = new (begin + left * bytes) Block{page.free};
    return page;
}

/// A new page for blocks of a size, in its list; null when there is no memory.
Page* AddPage(unsigned size) noexcept {
    Region* const region = FindRoom();
    if (region == nullptr) return nullptr;
    const unsigned number = static_cast<unsigned>(std::countr_zero(region->unused)) % kPagesPerRegion;
    Change(*region, region->unused & ~(1U << number), 0);
    Page& page = CutPage(*region, number, size);
    partly[size].add(page);
    return &page;
}

void RemovePage(Page& page, unsigned size) noexcept {
    partly[size].remove(page);
    Region& region = RegionOf(&page);
    Change(region, region.unused | 1U << (&page - region.pages), region.absent);
    const bool isTooMuch = idlePages > kMaxIdlePages;
    if (region.unused == kAllPages && (isTooMuch || region.absent != 0)) {
        ListOf(region).remove(region);
        idlePages -= region.idlePages();
        ospages::Release(&region);
    } else if (isTooMuch && region.idlePages() >= kManyPages) {
        Shrink(region);
    }
}

/// Puts blocks of a page that has some in front of a list, in the order of their addresses if they were never used.
std::uint32_t Draw(Page& page, std::uint32_t wanted, Block*& list) noexcept {
    Block* last = page.free;
    std::uint32_t drawn = 1;
    for (; drawn < wanted && last->next != nullptr; ++drawn) last = last->next;
    Block* const left = last->next;
    last->next = list;
    list = page.free;
    page.free = left;
    page.lent += drawn;
    return drawn;
}

void PutBack(Block* block, unsigned size) noexcept {
    Page& page = RegionOf(block).pages[AddressOf(block) % kRegionBytes / kPageBytes];
    if (page.free == nullptr) partly[size].add(page);
    block->next = page.free;
    page.free = block;
    if (--page.lent == 0) RemovePage(page, size);
}

void ReleaseAllOf(List<Region>& regions) noexcept {
    while (Region* const region = regions.first) {
        regions.remove(*region);
        ospages::Release(region);
    }
}

}  // namespace

std::uint32_t Take(unsigned size, std::uint32_t wanted, Block*& list) noexcept {
    const waiting::Guard guard(lock);
    if (!guard.holds()) {
        // The lists may be half changed, and only this thread is left: a region that is in none of them will do.
        Region* const region = NewRegion();
        return region != nullptr ? Draw(CutPage(*region, 0, size), wanted, list) : 0;
    }
    std::uint32_t taken = 0;
    while (taken < wanted) {
        Page* const page = partly[size].first != nullptr ? partly[size].first : AddPage(size);
        if (page == nullptr) break;
        taken += Draw(*page, wanted - taken, list);
        if (page->free == nullptr) partly[size].remove(*page);
    }
    return taken;
}

bool Give(unsigned size, Block* list) noexcept {
    const waiting::Guard guard(lock);
    if (!guard.holds()) return false;
    while (list != nullptr) {
        Block* const block = list;
        list = block->next;
        PutBack(block, size);
    }
    return true;
}

void ReleaseAll() noexcept {
    const waiting::Guard guard(lock);
    if (!guard.holds()) return;
    for (List<Page>& pages : partly) pages.first = nullptr;
    for (List<Region>* regions : {&empty, &roomy, &shrunk, &full}) ReleaseAllOf(*regions);
    idlePages = 0;
}

}  // namespace TarnLibA500::blockpages
