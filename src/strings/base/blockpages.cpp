#include "strings/base/blockpages.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <new>

#include "seam/ospages.h"
#include "strings/base/blocksizes.h"
#include "waiting/waiting.h"

namespace TarnLibA500::blockpages {
namespace {

using blocksizes::kPageBytes;

/// The pages of a region, a bit for each.
using PageBits = std::uint64_t;

// A region is made of slices, because only these begin at round addresses. One for each slice would do, too, but a burst
// then spends as much time on taking them from the system and giving them back as on everything else.
constexpr std::size_t kSliceBytes = ospages::kRegionStep;
constexpr unsigned kPagesPerSlice = kSliceBytes / kPageBytes;
constexpr unsigned kPagesPerRegion = 64;
constexpr std::size_t kRegionBytes = kPagesPerRegion * kPageBytes;
constexpr PageBits kAllPages = ~PageBits{0};
// The pages where the slices begin.
constexpr PageBits kFirstPages = kAllPages / ((PageBits{1} << kPagesPerSlice) - 1);
// Unused pages that are kept, so that work at the edge of one does not ask the system each time.
constexpr int kMaxIdlePages = 2 * kPagesPerRegion;
// Beyond this, regions that have used pages lose the others, when they are so many that it is worth a call. A region whose
// blocks are freed one after the other goes back whole before that.
constexpr int kFarTooManyPages = kMaxIdlePages + kPagesPerRegion;
constexpr int kManyPages = kPagesPerRegion / 2;

constexpr PageBits BitOf(unsigned page) {
    return PageBits{1} << page;
}

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
    Block* free;          // blocks that were given back
    std::uint16_t lent;   // blocks that are not here
    std::uint16_t fresh;  // blocks at the page's end that nobody had yet: nothing was written there

    bool hasBlocks() const noexcept { return free != nullptr || fresh != 0; }
};

struct Region;

/// What stands at the start of a slice, in its first page.
struct alignas(16) Slice {
    Region* region;
};

/// What stands at the start of a region.
struct Region : Slice {
    Region* next;
    Region* previous;
    PageBits unused;  // pages that are not cut into blocks
    PageBits absent;  // unused ones that were taken away
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
    return *reinterpret_cast<Slice*>(AddressOf(place) & ~(kSliceBytes - 1))->region;
}

List<Region>& ListOf(const Region& region) noexcept {
    if (region.absent != 0) return shrunk;
    if (region.unused == kAllPages) return empty;
    return region.unused != 0 ? roomy : full;
}

/// Changes which pages of a region are unused and absent.
void Change(Region& region, PageBits unused, PageBits absent) noexcept {
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
    for (std::size_t at = 0; at < kRegionBytes; at += kSliceBytes)
        reinterpret_cast<Slice*>(static_cast<char*>(memory) + at)->region = region;
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

/// Takes a region's unused pages away, except those where the region itself and its slices begin.
void Shrink(Region& region) noexcept {
    const PageBits absent = region.unused & ~kFirstPages;
    for (PageBits left = absent; left != 0;) {
        const int first = std::countr_zero(left);
        const int count = std::countr_one(left >> first);
        ospages::Decommit(reinterpret_cast<char*>(&region) + first * kPageBytes, count * kPageBytes);
        left &= left + BitOf(first);  // the carry runs through the pages that are gone now
    }
    Change(region, region.unused, absent);
}

/// Cuts a page of the region into blocks.
Page& CutPage(Region& region, unsigned number, unsigned size) noexcept {
    Page& page = region.pages[number];
    const std::size_t taken = number == 0 ? sizeof(Region) : number % kPagesPerSlice == 0 ? sizeof(Slice) : 0;
    const std::size_t bytes = blocksizes::kBytes[size];
    static_assert(kPageBytes - sizeof(Region) >= blocksizes::kLargest);
    page.free = nullptr;
    page.lent = 0;
    page.fresh = static_cast<std::uint16_t>((kPageBytes - taken) / bytes);
    return page;
}

/// A new page for blocks of a size, in its list; null when there is no memory.
Page* AddPage(unsigned size) noexcept {
    Region* const region = FindRoom();
    if (region == nullptr) return nullptr;
    const unsigned number = static_cast<unsigned>(std::countr_zero(region->unused)) % kPagesPerRegion;
    Change(*region, region->unused & ~BitOf(number), 0);
    Page& page = CutPage(*region, number, size);
    partly[size].add(page);
    return &page;
}

void RemovePage(Page& page, unsigned size) noexcept {
    partly[size].remove(page);
    Region& region = RegionOf(&page);
    Change(region, region.unused | BitOf(static_cast<unsigned>(&page - region.pages)), region.absent);
    if (region.unused == kAllPages && (idlePages > kMaxIdlePages || region.absent != 0)) {
        ListOf(region).remove(region);
        idlePages -= region.idlePages();
        ospages::Release(&region);
    } else if (idlePages > kFarTooManyPages && region.idlePages() >= kManyPages) {
        Shrink(region);
    }
}

/// Puts fresh blocks of a page in front of a list, in the order of their addresses.
std::uint32_t DrawFresh(Page& page, unsigned size, std::uint32_t wanted, Block*& list) noexcept {
    const std::size_t bytes = blocksizes::kBytes[size];
    Region& region = RegionOf(&page);
    char* const end = reinterpret_cast<char*>(&region) + (&page - region.pages + 1) * kPageBytes;
    char* const first = end - page.fresh * bytes;
    const std::uint32_t drawn = std::min<std::uint32_t>(wanted, page.fresh);
    for (std::uint32_t left = drawn; left-- != 0;) list = new (first + left * bytes) Block{list};
    page.fresh = static_cast<std::uint16_t>(page.fresh - drawn);
    return drawn;
}

/// The same with blocks that were given back.
std::uint32_t DrawUsed(Page& page, std::uint32_t wanted, Block*& list) noexcept {
    Block* last = page.free;
    std::uint32_t drawn = 1;
    for (; drawn < wanted && last->next != nullptr; ++drawn) last = last->next;
    Block* const left = last->next;
    last->next = list;
    list = page.free;
    page.free = left;
    return drawn;
}

/// Puts blocks of a page that has some in front of a list.
std::uint32_t Draw(Page& page, unsigned size, std::uint32_t wanted, Block*& list) noexcept {
    const std::uint32_t drawn =
        page.free != nullptr ? DrawUsed(page, wanted, list) : DrawFresh(page, size, wanted, list);
    page.lent = static_cast<std::uint16_t>(page.lent + drawn);
    return drawn;
}

void PutBack(Block* block, unsigned size) noexcept {
    Region& region = RegionOf(block);
    Page& page = region.pages[(AddressOf(block) - AddressOf(&region)) / kPageBytes];
    if (!page.hasBlocks()) partly[size].add(page);
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
        return region != nullptr ? Draw(CutPage(*region, 0, size), size, wanted, list) : 0;
    }
    std::uint32_t taken = 0;
    while (taken < wanted) {
        Page* const page = partly[size].first != nullptr ? partly[size].first : AddPage(size);
        if (page == nullptr) break;
        taken += Draw(*page, size, wanted - taken, list);
        if (!page->hasBlocks()) partly[size].remove(*page);
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
