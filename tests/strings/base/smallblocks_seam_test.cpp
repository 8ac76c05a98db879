// The small blocks by themselves: the test programs that count allocations take strings from elsewhere.
#include "strings/base/smallblocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "seam/ospages.h"
#include "support/committed.h"

using namespace TarnLibA500;

namespace {

struct Held {
    std::size_t bytes = 0;
    void* block = nullptr;
};

/// A block that is full of its size.
Held TakeFilled(std::size_t bytes) {
    void* const block = smallblocks::Take(bytes);
    if (block != nullptr) std::memset(block, static_cast<int>(bytes % 251), bytes);
    return {bytes, block};
}

void GiveChecked(const Held& held) {
    if (held.block == nullptr) return;
    const auto* const bytes = static_cast<const unsigned char*>(held.block);
    const auto isRight = [&](unsigned char byte) { return byte == held.bytes % 251; };
    EXPECT_TRUE(std::all_of(bytes, bytes + held.bytes, isRight)) << held.bytes;
    smallblocks::Give(held.block, held.bytes);
}

void InThread(const std::function<void()>& work) {
    std::thread(work).join();
}

}  // namespace

// Threads swap blocks of all sizes through common places, end, and others take over.
TEST(SmallBlocks, KeepTheirBytesWhicheverThreadHasThem) {
    static std::atomic<Held> places[2000];
    const long before = ospages::Calls::OpenNow();
    const auto swap = [](unsigned seed) {
        std::mt19937 random(seed);
        for (int step = 0; step < 20'000; ++step) {
            const Held mine = TakeFilled(1 + random() % blocksizes::kLargest);
            GiveChecked(places[random() % std::size(places)].exchange(mine));
        }
    };
    for (unsigned round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < 4; ++i) threads.emplace_back(swap, round * 4 + i);
        for (std::thread& thread : threads) thread.join();
    }
    InThread([&] {
        for (std::atomic<Held>& place : places) GiveChecked(place.exchange({}));
    });
    EXPECT_LE(ospages::Calls::OpenNow(), before + 5);  // the notice, and regions that are kept in reserve
}

TEST(SmallBlocks, ABurstGoesBackToTheSystemWhoeverFreesInWhateverOrder) {
    std::vector<Held> blocks(400'000);
    const auto make = [&] {
        for (Held& held : blocks) held = TakeFilled(55);
    };
    const auto give = [&] { std::for_each(blocks.begin(), blocks.end(), GiveChecked); };
    const auto here = [](const std::function<void()>& work) { work(); };
    for (const auto& [name, maker, giver] : {std::tuple("the same thread", +here, +here),
                                             {"the maker has ended", &InThread, +here},
                                             {"the maker lives on", +here, &InThread}}) {
        for (const bool isShuffled : {false, true}) {
            InThread([] {});  // the system may keep the stack of the last thread that ended
            const std::size_t before = tarntest::CommittedBytes();
            maker(make);
            const std::size_t peak = tarntest::CommittedBytes();
            if (isShuffled) std::shuffle(blocks.begin(), blocks.end(), std::mt19937(1));
            giver(give);
            EXPECT_GT(peak, before + 20'000'000) << name;
            EXPECT_LT(tarntest::CommittedBytes(), before + (peak - before) / 10) << name << isShuffled;
        }
    }
}

TEST(SmallBlocks, AFailureOfTheSystemIsNullAndLeavesItsErrorAlone) {
    constexpr std::size_t kBlocks = 5000;
    constexpr DWORD kEarlier = 1234;
    std::size_t nulls = 0;
    for (unsigned long nth = 1; nth <= 10; ++nth) {
        InThread([&] {  // of a thread's own the first call is the notice of its end
            std::vector<Held> blocks(kBlocks);
            ospages::Calls::Fail(nth, ERROR_NOT_ENOUGH_MEMORY);
            SetLastError(kEarlier);
            for (Held& held : blocks) held = TakeFilled(blocksizes::kLargest);
            EXPECT_EQ(GetLastError(), kEarlier);
            for (const Held& held : blocks) nulls += held.block == nullptr ? 1 : 0;
            std::for_each(blocks.begin(), blocks.end(), GiveChecked);
        });
    }
    ospages::Calls::Fail(0, 0);
    EXPECT_GT(nulls, 0U);
}
