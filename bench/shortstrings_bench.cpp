// Short texts: made and destroyed, appended to, put together, split into words and tokens.

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "items.h"
#include "row.h"
#include "sharedrows.h"
#include "support/committed.h"
#include "tarnlib/sconcat.h"
#include "tarnlib/sstring.h"
#include "tarnlib/stringhelper.h"
#include "tarnlib/strtok.h"
#include "tarnlib/swordcursor.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr std::size_t kStrings = 1'000'000;

template <class String>
void MakeAndDestroy(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
    for ([[maybe_unused]] auto _ : state) {
        const char* from = text.c_str();
        benchmark::DoNotOptimize(from);
        String made(from);
        benchmark::DoNotOptimize(made);
    }
}

// --- one text of several ---

SAnsiString LineByConcat(const LineParts& p) {
    return Concat(p.user, p.number, p.action, p.size, p.where);
}
SAnsiString LineByAppending(const LineParts& p) {
    SAnsiString line;
    line << p.user << p.number << p.action << p.size << p.where;
    return line;
}
std::string LineStd(const LineParts& p) {
    std::string line(p.user);
    line += std::to_string(p.number);
    line += p.action;
    line += std::to_string(p.size);
    line += p.where;
    return line;
}
std::string LineFmt(const LineParts& p) {
    return fmt::format("{}{}{}{}{}", p.user, p.number, p.action, p.size, p.where);
}

template <class String>
String Sum(const Summands<String>& of) {
    return of.a + of.b + of.c;
}

// --- words ---

SIArray<SAnsiString> SplitOurs(const SAnsiString& text) {
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(text, words, kSeparators, false, false);
    return words;
}

// The next word, where it stands; empty at the end.
std::string_view NextView(const std::string& text, std::size_t& at) {
    const std::size_t first = text.find_first_not_of(kSeparators, at);
    if (first == text.npos) return {};
    at = std::min(text.find_first_of(kSeparators, first), text.size());
    return {text.data() + first, at - first};
}

std::vector<std::string> SplitStd(const std::string& text) {
    std::vector<std::string> words;
    std::size_t at = 0;
    for (std::string_view word; !(word = NextView(text, at)).empty();) words.emplace_back(word);
    return words;
}

// Words looked at where they stand: how many letters they have.
std::size_t CursorOurs(const SAnsiString& text) {
    std::size_t letters = 0;
    for (SWordCursor word(text, kSeparators); word.next();) letters += word.getLength();
    return letters;
}
std::size_t CursorStd(const std::string& text) {
    std::size_t letters = 0, at = 0;
    for (std::string_view word; !(word = NextView(text, at)).empty();) letters += word.size();
    return letters;
}

// A string for each token, one after the other.
std::size_t TokensOurs(const SAnsiString& text) {
    std::size_t letters = 0;
    RSStrTok tokens(text);
    tokens.SetToken(' ');
    while (!tokens.IsEmpty()) letters += tokens.Next().getLength();
    return letters;
}
std::size_t TokensStd(const std::string& text) {
    std::size_t letters = 0;
    std::istringstream in(text);
    for (std::string token; std::getline(in, token, ' ');) letters += token.size();
    return letters;
}

// The time is that of a million strings; the table shows what they take besides.
template <class String>
void Million(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
    for ([[maybe_unused]] auto _ : state) {
        const std::size_t before = tarntest::CommittedBytes();
        std::vector<String> strings;
        strings.reserve(kStrings);
        for (std::size_t i = 0; i < kStrings; ++i) strings.emplace_back(text.c_str());
        state.counters["committed"] = static_cast<double>(tarntest::CommittedBytes() - before) / kStrings;
    }
}

const auto append = [](auto& text, const char* ten) { text += ten; };

const bool added = [] {
    AddAppend<SAnsiString>("ours", append);
    AddAppend<std::string>("std::string", append);
    AddRow("ShortLine_of_five", "ours", Line, LineByConcat);
    AddRow("ShortLine_of_five", "<<", Line, LineByAppending);
    AddRow("ShortLine_of_five", "std::string", Line, LineStd);
    AddRow("ShortLine_of_five", "fmt", Line, LineFmt);
    AddRow("ShortSum_of_three", "ours", OneSum<SAnsiString>, Sum<SAnsiString>);
    AddRow("ShortSum_of_three", "std::string", OneSum<std::string>, Sum<std::string>);
    AddRow("SplitWords_10MB", "ours", Words<SAnsiString>, SplitOurs)->Unit(benchmark::kMillisecond);
    AddRow("SplitWords_10MB", "std::string", Words<std::string>, SplitStd)->Unit(benchmark::kMillisecond);
    AddRow("WordCursor_10MB", "ours", Words<SAnsiString>, CursorOurs)->Unit(benchmark::kMillisecond);
    AddRow("WordCursor_10MB", "string_view", Words<std::string>, CursorStd)->Unit(benchmark::kMillisecond);
    AddRow("Tokens_10MB", "ours", Words<SAnsiString>, TokensOurs)->Unit(benchmark::kMillisecond);
    AddRow("Tokens_10MB", "getline", Words<std::string>, TokensStd)->Unit(benchmark::kMillisecond);
    return true;
}();

}  // namespace

BENCHMARK(MakeAndDestroy<SAnsiString>)->Name("BM_ShortMakeAndDestroy/ours")->Arg(10)->Arg(32);
BENCHMARK(MakeAndDestroy<std::string>)->Name("BM_ShortMakeAndDestroy/std::string")->Arg(10)->Arg(32);
BENCHMARK(Million<SAnsiString>)
    ->Name("BM_MillionStrings/ours")
    ->Arg(10)
    ->Arg(40)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Million<std::string>)
    ->Name("BM_MillionStrings/std::string")
    ->Arg(10)
    ->Arg(40)
    ->Unit(benchmark::kMillisecond);
