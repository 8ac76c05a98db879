// The small blocks by themselves: the test programs that count allocations take strings from elsewhere.
#include "strings/base/smallblocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <random>
#include <string>
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
    const std::string expected(held.bytes, static_cast<char>(held.bytes % 251));
    EXPECT_EQ(std::memcmp(held.block, expected.data(), held.bytes), 0) << held.bytes;
    smallblocks::Give(held.block, held.bytes);
}

void InThread(const std::function<void()>& work) {
    std::thread(work).join();
}

}  // namespace

TEST(SmallBlocks, SizesAreTheSmallestThatFit) {
    for (std::size_t bytes = 1; bytes <= blocksizes::kLargest; ++bytes) {
        const unsigned number = blocksizes::NumberOf(bytes);
        EXPECT_LE(bytes, blocksizes::kBytes[number]);
        EXPECT_TRUE(number == 0 || bytes > blocksizes::kBytes[number - 1]) << bytes;
    }
}

// Threads swap blocks of all sizes through common places, end, and others take over.
TEST(SmallBlocks, KeepTheirBytesWhicheverThreadHasThem) {
    static Held places[2000];
    static std::mutex locks[2000];
    const long before = ospages::Calls::OpenNow();
    const auto swap = [](unsigned seed) {
        std::mt19937 random(seed);
        for (int step = 0; step < 20'000; ++step) {
            const std::size_t place = random() % 2000;
            const Held mine = TakeFilled(1 + random() % blocksizes::kLargest);
            locks[place].lock();
            const Held theirs = std::exchange(places[place], mine);
            locks[place].unlock();
            GiveChecked(theirs);
        }
    };
    for (unsigned round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < 4; ++i) threads.emplace_back(swap, round * 4 + i);
        for (std::thread& thread : threads) thread.join();
    }
    InThread([&] { std::for_each(std::begin(places), std::end(places), GiveChecked); });
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
    bool sawNull = false;
    for (unsigned long nth = 1; nth <= 10; ++nth) {
        InThread([&] {  // of a thread's own the first call is the notice of its end
            std::vector<Held> blocks(kBlocks);
            ospages::Calls::Fail(nth, ERROR_NOT_ENOUGH_MEMORY);
            SetLastError(kEarlier);
            for (Held& held : blocks) held = TakeFilled(blocksizes::kLargest);
            EXPECT_EQ(GetLastError(), kEarlier);
            ospages::Calls::Fail(0, 0);
            for (const Held& held : blocks) {
                sawNull = sawNull || held.block == nullptr;
                GiveChecked(held);
            }
        });
    }
    EXPECT_TRUE(sawNull);
}
