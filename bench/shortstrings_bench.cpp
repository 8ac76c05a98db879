// Short texts: made and destroyed, appended to, put together, split into words and tokens.

#include <benchmark/benchmark.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "support/committed.h"
#include "tarnlib/sconcat.h"
#include "tarnlib/sstring.h"
#include "tarnlib/stringhelper.h"
#include "tarnlib/strtok.h"
#include "tarnlib/swordcursor.h"

using namespace TarnLibA500;

namespace {

constexpr std::size_t kTextBytes = 10'000'000;
constexpr std::size_t kStrings = 1'000'000;
constexpr std::size_t kMaxAppended = 1000;
constexpr const char* kSeparators = " ,.";

const std::string& Words() {
    static const std::string text = [] {
        std::string made;
        while (made.size() < kTextBytes) made += "the quick brown fox, and the lazy dog then. ";
        return made;
    }();
    return text;
}

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

// A call a round; a new string from time to time, so that it stays short.
template <class String>
void AppendTen(benchmark::State& state) {
    String text;
    std::size_t left = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (left-- == 0) {
            text = String();
            left = kMaxAppended;
        }
        const char* from = "0123456789";
        benchmark::DoNotOptimize(from);
        text += from;
        benchmark::DoNotOptimize(text);
    }
}

struct Parts {
    const char* user = "anna";
    const char* action = "opened the file";
    const char* where = "C:\\data\\report.txt";
    int number = 12345;
    int size = -678;
};

template <class Make>
void Line(benchmark::State& state, Make make) {
    Parts parts;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(parts);
        benchmark::DoNotOptimize(make(parts));
    }
}

SAnsiString LineByConcat(const Parts& p) {
    return Concat(p.user, p.number, p.action, p.size, p.where);
}
SAnsiString LineByAppending(const Parts& p) {
    SAnsiString line;
    line << p.user << p.number << p.action << p.size << p.where;
    return line;
}
std::string LineStd(const Parts& p) {
    std::string line(p.user);
    line += std::to_string(p.number);
    line += p.action;
    line += std::to_string(p.size);
    line += p.where;
    return line;
}
std::string LineFmt(const Parts& p) {
    return fmt::format("{}{}{}{}{}", p.user, p.number, p.action, p.size, p.where);
}

template <class String>
void Sum(benchmark::State& state) {
    const String a("the first part, "), b("a second part and "), c("the third one");
    for ([[maybe_unused]] auto _ : state) {
        String sum = a + b + c;
        benchmark::DoNotOptimize(sum);
    }
}

void SplitOurs(benchmark::State& state) {
    const SAnsiString text(Words().c_str());
    for ([[maybe_unused]] auto _ : state) {
        SIArray<SAnsiString> words;
        SStringHelper::makeWords(text, words, kSeparators, false, false);
        benchmark::DoNotOptimize(words);
    }
}

// The next word, where it stands; empty at the end.
std::string_view NextView(const std::string& text, std::size_t& at) {
    const std::size_t first = text.find_first_not_of(kSeparators, at);
    if (first == text.npos) return {};
    at = std::min(text.find_first_of(kSeparators, first), text.size());
    return {text.data() + first, at - first};
}

void SplitStd(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::vector<std::string> words;
        std::size_t at = 0;
        for (std::string_view word; !(word = NextView(Words(), at)).empty();) words.emplace_back(word);
        benchmark::DoNotOptimize(words);
    }
}

void CursorOurs(benchmark::State& state) {
    const SAnsiString text(Words().c_str());
    for ([[maybe_unused]] auto _ : state) {
        std::size_t letters = 0;
        for (SWordCursor word(text, kSeparators); word.next();) letters += word.getLength();
        benchmark::DoNotOptimize(letters);
    }
}

void CursorStd(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::size_t letters = 0, at = 0;
        for (std::string_view word; !(word = NextView(Words(), at)).empty();) letters += word.size();
        benchmark::DoNotOptimize(letters);
    }
}

void TokensOurs(benchmark::State& state) {
    const SAnsiString text(Words().c_str());
    for ([[maybe_unused]] auto _ : state) {
        RSStrTok tokens(text);
        tokens.SetToken(' ');
        while (!tokens.IsEmpty()) benchmark::DoNotOptimize(tokens.Next());
    }
}

void TokensStd(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::istringstream text(Words());
        for (std::string token; std::getline(text, token, ' ');) benchmark::DoNotOptimize(token);
    }
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
        state.counters["bytes"] = static_cast<double>(tarntest::CommittedBytes() - before) / kStrings;
    }
}

}  // namespace

#define TARN_OURS_AND_STD(WORK, NAME)                       \
    BENCHMARK(WORK<SAnsiString>)->Name("BM_" NAME "/ours"); \
    BENCHMARK(WORK<std::string>)->Name("BM_" NAME "/std::string")

BENCHMARK(MakeAndDestroy<SAnsiString>)->Name("BM_ShortMakeAndDestroy/ours")->Arg(10)->Arg(32);
BENCHMARK(MakeAndDestroy<std::string>)->Name("BM_ShortMakeAndDestroy/std::string")->Arg(10)->Arg(32);
TARN_OURS_AND_STD(AppendTen, "ShortAppend_10");
TARN_OURS_AND_STD(Sum, "ShortSum_of_three");
BENCHMARK_CAPTURE(Line, ours, LineByConcat)->Name("BM_ShortLine_of_five/ours");
BENCHMARK_CAPTURE(Line, append, LineByAppending)->Name("BM_ShortLine_of_five/<<");
BENCHMARK_CAPTURE(Line, std, LineStd)->Name("BM_ShortLine_of_five/std::string");
BENCHMARK_CAPTURE(Line, fmt, LineFmt)->Name("BM_ShortLine_of_five/fmt");
BENCHMARK(SplitOurs)->Name("BM_SplitWords_10MB/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(SplitStd)->Name("BM_SplitWords_10MB/std::string")->Unit(benchmark::kMillisecond);
BENCHMARK(CursorOurs)->Name("BM_WordCursor_10MB/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(CursorStd)->Name("BM_WordCursor_10MB/string_view")->Unit(benchmark::kMillisecond);
BENCHMARK(TokensOurs)->Name("BM_Tokens_10MB/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(TokensStd)->Name("BM_Tokens_10MB/getline")->Unit(benchmark::kMillisecond);
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
