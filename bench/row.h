// Rows of the table: the same work on the same items, by us and by rivals. Before anything is timed the contenders of a
// row have to come to the same results.

#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

#include "tarnlib/sdatetimeconv.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"

namespace bench {

// --- results as text ---

inline std::string AsText(std::string_view text) {
    return std::string(text);
}
inline std::string AsText(const TarnLibA500::SAnsiString& text) {
    return text.getString();
}

/// Real numbers by 15 digits: some rivals read and write the last one otherwise.
template <class Number>
requires std::is_arithmetic_v<Number> std::string AsText(Number number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", static_cast<double>(number));
    return text;
}

inline std::string AsText(const std::tm& parts) {
    char text[64];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts)};
}
inline std::string AsText(const TarnLibA500::SDateTime& moment) {
    const std::tm parts = sicSDateTimeToTm(&moment);
    return AsText(parts);
}

/// Parts with a line end each.
template <class Parts>
std::string Joined(const Parts& parts) {
    std::string lines;
    for (const auto& part : parts) lines.append(AsText(part)).append("\n");
    return lines;
}
template <class String>
std::string AsText(const std::vector<String>& strings) {
    return Joined(strings);
}
inline std::string AsText(const TarnLibA500::SIArray<TarnLibA500::SAnsiString>& strings) {
    std::string lines;
    for (std::uint32_t i = 0; i < strings.GetSize(); ++i) lines.append(strings[i].getString()).append("\n");
    return lines;
}

// --- rows ---

/// Who takes part, for the page that shows the table.
inline bool AddRival(const std::string& name, const std::string& version) {
    benchmark::AddCustomContext("rival " + name, version);
    return true;
}

/// The first contender of a row says what its result is; one that comes to another fails. Asked once of each.
template <class Result>
void AgreeOn(benchmark::State& state, const std::string& row, const std::string& contender, Result result) {
    static std::map<std::string, std::string> results;
    static std::map<std::string, bool> verdicts;
    const auto [verdict, isNew] = verdicts.emplace(row + "/" + contender, true);
    if (isNew) {
        const std::string text = result();
        verdict->second = results.emplace(row, text).first->second == text;
    }
    if (!verdict->second) state.SkipWithError("another result than the contender before");
}

template <class Items, class Work>
void Agree(benchmark::State& state, const std::string& row, const std::string& contender, const Items& items,
           Work work) {
    AgreeOn(state, row, contender, [&] {
        std::string lines;
        for (const auto& item : items) lines.append(AsText(work(item))).append("\n");
        return lines;
    });
}

/// A row that works on one item in each round, on one after the other.
template <class Items, class Work>
benchmark::internal::Benchmark* AddRow(const std::string& row, const std::string& contender, Items (*make)(),
                                       Work work) {
    const auto run = [=](benchmark::State& state) {
        const Items items = make();
        Agree(state, row, contender, items, work);
        std::size_t next = 0;
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(work(items[next]));
            if (++next == items.size()) next = 0;
        }
    };
    return benchmark::RegisterBenchmark(("BM_" + row + "/" + contender).c_str(), run);
}

/// A row that works on all items in each round, so that no branch predictor learns them by heart.
template <class Items, class Work>
benchmark::internal::Benchmark* AddRowOfAll(const std::string& row, const std::string& contender,
                                            Items (*make)(), Work work) {
    const auto run = [=](benchmark::State& state) {
        const Items items = make();
        Agree(state, row, contender, items, work);
        for ([[maybe_unused]] auto _ : state)
            for (const auto& item : items) benchmark::DoNotOptimize(work(item));
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * items.size()));
    };
    return benchmark::RegisterBenchmark(("BM_" + row + "/" + contender).c_str(), run);
}

}  // namespace bench
