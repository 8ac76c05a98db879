// Rows of several sources whose work keeps a state: a text that grows, a lock.

#pragma once

#include <string>

#include <benchmark/benchmark.h>

namespace bench {

/// A text of ten appended in each round; to a new string from time to time, so that it stays short.
template <class String, class Append>
void AddAppend(const std::string& contender, Append append) {
    const auto run = [append](benchmark::State& state) {
        constexpr std::size_t kMaxAppended = 1000;
        String text;
        std::size_t left = 0;
        for ([[maybe_unused]] auto _ : state) {
            if (left-- == 0) {
                text = String();
                left = kMaxAppended;
            }
            const char* from = "0123456789";
            benchmark::DoNotOptimize(from);
            append(text, from);
            benchmark::DoNotOptimize(text);
        }
    };
    benchmark::RegisterBenchmark(("BM_ShortAppend_10/" + contender).c_str(), run);
}

template <class Lock>
void LockAndUnlock(benchmark::State& state) {
    static Lock lock;
    static int guarded = 0;
    for ([[maybe_unused]] auto _ : state) {
        lock.lock();
        benchmark::DoNotOptimize(++guarded);
        lock.unlock();
    }
}

/// A lock taken and given back in each round, by one thread and by four that meet.
template <class Lock>
void AddLock(const std::string& contender) {
    benchmark::RegisterBenchmark(("BM_Monitor/" + contender).c_str(), LockAndUnlock<Lock>)
        ->Threads(1)
        ->Threads(4)
        ->UseRealTime();
}

}  // namespace bench
