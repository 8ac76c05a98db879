#include "strings/base/smallblocks.h"

#include <algorithm>
#include <atomic>

#include "seam/ospages.h"
#include "waiting/waiting.h"

namespace TarnLibA500::smallblocks {

// Sorted between the marks of the C runtime, which reach from ".tls" to ".tls$ZZZ".
[[gnu::section(".tls$TARN")]] Shelves image{};

namespace {

using blockpages::Block;

constexpr std::size_t kHandfulBytes = 2048;
constexpr std::size_t kMaxHandful = 32;

constexpr std::uint32_t HandfulOf(unsigned size) {
    return static_cast<std::uint32_t>(std::min(kMaxHandful, kHandfulBytes / blocksizes::kBytes[size]));
}

constinit std::atomic<DWORD> endNotice{FLS_OUT_OF_INDEXES};

/// Texts are made between a failure and the question for its code.
class LastErrorKept {
  public:
    LastErrorKept() noexcept : error_(GetLastError()) {}
    ~LastErrorKept() { SetLastError(error_); }
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;

  private:
    DWORD error_;
};

// Also called where a fiber is deleted, and for every thread when the notice is freed: only a thread itself may
// touch its shelves. What it does with blocks after its end goes to the store.
void WINAPI AtThreadEnd(void* shelves) {
    Shelves& mine = Mine();
    if (shelves != &mine) return;
    mine.use = Use::Never;
    for (unsigned size = 0; size < blocksizes::kCount; ++size) {
        // What cannot go back is lost with the process.
        (void)blockpages::Give(size, mine.of[size].first);
        mine.of[size] = {};
    }
}

/// The process's notice; FLS_OUT_OF_INDEXES when the system has none left.
DWORD EndNotice() noexcept {
    DWORD notice = endNotice.load(std::memory_order_acquire);
    if (notice != FLS_OUT_OF_INDEXES) return notice;
    const DWORD made = ospages::NewNotice(&AtThreadEnd);
    if (made == FLS_OUT_OF_INDEXES) return made;
    if (endNotice.compare_exchange_strong(notice, made, std::memory_order_acq_rel)) return made;
    ospages::FreeNotice(made);  // another thread was first
    return notice;
}

/// True when the thread may have blocks at hand.
bool KeepsBlocks(Shelves& mine) noexcept {
    if (mine.use != Use::NotYet) return mine.use == Use::Kept;
    mine.use = Use::Never;
    const DWORD notice = EndNotice();
    if (notice == FLS_OUT_OF_INDEXES || !ospages::SetValue(notice, &mine)) return false;
    for (unsigned size = 0; size < blocksizes::kCount; ++size) mine.of[size].room = 2 * HandfulOf(size);
    mine.use = Use::Kept;
    return true;
}

/// Gives a handful of a full shelf back.
void MakeRoom(Shelf& shelf, unsigned size) noexcept {
    const std::uint32_t handful = HandfulOf(size);
    Block* const first = shelf.first;
    Block* last = first;
    for (std::uint32_t i = 1; i < handful; ++i) last = last->next;
    Block* const rest = last->next;
    last->next = nullptr;
    if (blockpages::Give(size, first)) {
        shelf.first = rest;
        shelf.room = handful;
    } else {
        last->next = rest;
    }
}

/// Frees everything when the module is unloaded; the end of the process does that itself, and later than
/// the last text is.
struct AtUnload {
    ~AtUnload() {
        if (waiting::ProcessIsEnding()) return;
        const DWORD notice = endNotice.exchange(FLS_OUT_OF_INDEXES);
        if (notice != FLS_OUT_OF_INDEXES) ospages::FreeNotice(notice);
        blockpages::ReleaseAll();
    }
};
// The first object of the module, and so the last to be destroyed: the others may hold texts.
[[gnu::init_priority(101)]] AtUnload atUnload;

}  // namespace

void* TakeFromStore(unsigned size) noexcept {
    const LastErrorKept error;
    Shelves& mine = Mine();
    Block* list = nullptr;
    if (!KeepsBlocks(mine)) return blockpages::Take(size, 1, list) != 0 ? list : nullptr;
    const std::uint32_t taken = blockpages::Take(size, HandfulOf(size), list);
    if (taken == 0) return nullptr;
    mine.of[size].first = list->next;
    mine.of[size].room -= taken - 1;
    return list;
}

void GiveToStore(Block* block, unsigned size) noexcept {
    const LastErrorKept error;
    Shelves& mine = Mine();
    if (!KeepsBlocks(mine)) {
        block->next = nullptr;
        (void)blockpages::Give(size, block);  // otherwise it is lost with the process
        return;
    }
    Shelf& shelf = mine.of[size];
    if (shelf.room == 0) MakeRoom(shelf, size);
    if (shelf.room != 0) --shelf.room;  // while the process ends a shelf may hold more than it should
    block->next = shelf.first;
    shelf.first = block;
}

}  // namespace TarnLibA500::smallblocks
