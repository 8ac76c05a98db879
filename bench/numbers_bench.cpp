// Numbers as text and back against the standard library and {fmt}. Where the rival writes into an array or
// reads from a range, so do we; where it makes a string, so do we.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tarnlib/neutralstr.h"
#include "tarnlib/sstringconv.h"

using namespace TarnLibA500;

namespace {

constexpr std::size_t kNumbers = 1024;
using Random = std::mt19937_64;

// Every length of number is as frequent as any other.
template <class T>
T AnyInteger(Random& random) {
    return static_cast<T>(static_cast<T>(random()) >> (random() % (sizeof(T) * 8)));
}
double Price(Random& random) {
    return static_cast<double>(random() % 1'000'000) / 100;
}
double Measurement(Random& random) {
    return std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 60) - 80);
}
double AnyReal(Random& random) {
    for (;;) {
        const std::uint64_t bits = random();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isfinite(number)) return number;
    }
}

template <class T>
std::vector<T> Numbers(T (*make)(Random&)) {
    Random random(kNumbers);
    std::vector<T> numbers(kNumbers);
    for (T& number : numbers) number = make(random);
    return numbers;
}

// One measurement for all: a thousand items, so that no branch predictor learns them by heart.
template <class Items, class Work>
void Each(benchmark::State& state, const Items& items, Work work) {
    for (auto _ : state)
        for (const auto& item : items) work(item);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * items.size()));
}

template <class T>
void IntegerToArrayOurs(benchmark::State& state, T (*make)(Random&)) {
    wchar_t text[SWCharStringConv::kArrayUnits];
    Each(state, Numbers(make), [&](T number) {
        SWCharStringConv::ToString(number, text);
        benchmark::DoNotOptimize(text);
    });
}
template <class T>
void IntegerToArrayStd(benchmark::State& state, T (*make)(Random&)) {
    char text[SWCharStringConv::kArrayUnits];
    Each(state, Numbers(make), [&](T number) {
        *std::to_chars(text, text + sizeof text, number).ptr = '\0';
        benchmark::DoNotOptimize(text);
    });
}

template <class T>
void ToStringOurs(benchmark::State& state, T (*make)(Random&)) {
    Each(state, Numbers(make), [](T number) { benchmark::DoNotOptimize(NeutralString::FromNumber(number)); });
}
template <class T>
void ToStringFmt(benchmark::State& state, T (*make)(Random&)) {
    Each(state, Numbers(make), [](T number) { benchmark::DoNotOptimize(fmt::format("{}", number)); });
}

template <class T>
void ToStringStd(benchmark::State& state, T (*make)(Random&)) {
    Each(state, Numbers(make), [](T number) { benchmark::DoNotOptimize(std::to_string(number)); });
}

void HexOurs(benchmark::State& state, int (*make)(Random&)) {
    Each(state, Numbers(make),
         [](int number) { benchmark::DoNotOptimize(SAnsiStringConv::ToString(number, 16)); });
}
void HexFmt(benchmark::State& state, int (*make)(Random&)) {
    Each(state, Numbers(make),
         [](int number) { benchmark::DoNotOptimize(fmt::format("{:X}", static_cast<unsigned>(number))); });
}

void FixedOurs(benchmark::State& state, double (*make)(Random&)) {
    Each(state, Numbers(make),
         [](double number) { benchmark::DoNotOptimize(NeutralString::FromNumber(number, 2)); });
}
void FixedFmt(benchmark::State& state, double (*make)(Random&)) {
    Each(state, Numbers(make),
         [](double number) { benchmark::DoNotOptimize(fmt::format("{:.2f}", number)); });
}

template <class String, class T>
std::vector<String> Texts(T (*make)(Random&)) {
    std::vector<String> texts;
    for (T number : Numbers(make)) texts.emplace_back(fmt::format("{}", number).c_str());
    return texts;
}

template <class T>
void FromTextOurs(benchmark::State& state, T (*make)(Random&)) {
    Each(state, Texts<SAnsiString>(make), [](const SAnsiString& text) {
        T number = 0;
        benchmark::DoNotOptimize(NeutralString::ToNumber(text, number));
        benchmark::DoNotOptimize(number);
    });
}
template <class T>
void FromTextStd(benchmark::State& state, T (*make)(Random&)) {
    Each(state, Texts<std::string>(make), [](const std::string& text) {
        T number = 0;
        benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), number));
        benchmark::DoNotOptimize(number);
    });
}

using Int32 = int;
using Int64 = long long;

}  // namespace

#define TARN_PAIR(NAME, OURS, RIVAL, RIVAL_NAME, MAKE)              \
    BENCHMARK_CAPTURE(OURS, NAME, MAKE)->Name("BM_" #NAME "/ours"); \
    BENCHMARK_CAPTURE(RIVAL, NAME, MAKE)->Name("BM_" #NAME "/" RIVAL_NAME)

TARN_PAIR(IntegerToArray_32, IntegerToArrayOurs, IntegerToArrayStd, "std::to_chars", AnyInteger<Int32>);
TARN_PAIR(IntegerToArray_64, IntegerToArrayOurs, IntegerToArrayStd, "std::to_chars", AnyInteger<Int64>);
TARN_PAIR(IntegerToString_32, ToStringOurs, ToStringFmt, "fmt", AnyInteger<Int32>);
TARN_PAIR(IntegerToString_64, ToStringOurs, ToStringFmt, "fmt", AnyInteger<Int64>);
BENCHMARK_CAPTURE(ToStringStd, std32, AnyInteger<Int32>)->Name("BM_IntegerToString_32/std::to_string");
BENCHMARK_CAPTURE(ToStringStd, std64, AnyInteger<Int64>)->Name("BM_IntegerToString_64/std::to_string");
TARN_PAIR(IntegerToHex_32, HexOurs, HexFmt, "fmt", AnyInteger<Int32>);
TARN_PAIR(TextToInteger_32, FromTextOurs, FromTextStd, "std::from_chars", AnyInteger<Int32>);
TARN_PAIR(TextToInteger_64, FromTextOurs, FromTextStd, "std::from_chars", AnyInteger<Int64>);
TARN_PAIR(RealToString_Price, ToStringOurs, ToStringFmt, "fmt", Price);
TARN_PAIR(RealToString_Measurement, ToStringOurs, ToStringFmt, "fmt", Measurement);
TARN_PAIR(RealToString_Any, ToStringOurs, ToStringFmt, "fmt", AnyReal);
TARN_PAIR(RealToString_TwoDecimals, FixedOurs, FixedFmt, "fmt", Price);
TARN_PAIR(TextToReal_Price, FromTextOurs, FromTextStd, "std::from_chars", Price);
TARN_PAIR(TextToReal_Measurement, FromTextOurs, FromTextStd, "std::from_chars", Measurement);
TARN_PAIR(TextToReal_Any, FromTextOurs, FromTextStd, "std::from_chars", AnyReal);
