// Numbers as text and back against the standard library and {fmt}. Where the rival writes into an array or
// reads from a range, so do we; where it makes a string, so do we.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <charconv>
#include <string>

#include "items.h"
#include "row.h"
#include "tarnlib/neutralstr.h"
#include "tarnlib/sstringconv.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

template <auto make>
void IntegerToArrayOurs(benchmark::State& state) {
    const auto numbers = Numbers<make>();
    wchar_t text[SWCharStringConv::kArrayUnits];
    for ([[maybe_unused]] auto _ : state) {
        for (const auto number : numbers) {
            SWCharStringConv::ToString(number, text);
            benchmark::DoNotOptimize(text);
        }
    }
}
template <auto make>
void IntegerToArrayStd(benchmark::State& state) {
    const auto numbers = Numbers<make>();
    char text[SWCharStringConv::kArrayUnits];
    for ([[maybe_unused]] auto _ : state) {
        for (const auto number : numbers) {
            *std::to_chars(text, text + sizeof text, number).ptr = '\0';
            benchmark::DoNotOptimize(text);
        }
    }
}

const auto toStringOurs = [](auto number) { return NeutralString::FromNumber(number); };
const auto toStringFmt = [](auto number) { return fmt::format("{}", number); };
const auto toStringStd = [](auto number) { return std::to_string(number); };

SAnsiString HexOurs(int number) {
    return SAnsiStringConv::ToString(number, 16);
}
std::string HexFmt(int number) {
    return fmt::format("{:X}", static_cast<unsigned>(number));
}

SAnsiString FixedOurs(double number) {
    return NeutralString::FromNumber(number, 2);
}
std::string FixedFmt(double number) {
    return fmt::format("{:.2f}", number);
}

template <class T>
T FromTextOurs(const SAnsiString& text) {
    T number = 0;
    benchmark::DoNotOptimize(NeutralString::ToNumber(text, number));
    return number;
}
template <class T>
T FromTextStd(const std::string& text) {
    T number = 0;
    benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), number));
    return number;
}

template <auto make>
void AddToString(const std::string& row) {
    AddRowOfAll(row, "ours", Numbers<make>, toStringOurs);
    AddRowOfAll(row, "fmt", Numbers<make>, toStringFmt);
}

template <auto make>
void AddFromText(const std::string& row) {
    using Number = decltype(Numbers<make>())::value_type;
    AddRowOfAll(row, "ours", NumberTexts<SAnsiString, make>, FromTextOurs<Number>);
    AddRowOfAll(row, "std::from_chars", NumberTexts<std::string, make>, FromTextStd<Number>);
}

const bool added = [] {
    AddRival("fmt", fmt::format("{}.{}", FMT_VERSION / 10000, FMT_VERSION / 100 % 100));
    AddToString<AnyInteger<int>>("IntegerToString_32");
    AddToString<AnyInteger<long long>>("IntegerToString_64");
    AddRowOfAll("IntegerToString_32", "std::to_string", Numbers<AnyInteger<int>>, toStringStd);
    AddRowOfAll("IntegerToString_64", "std::to_string", Numbers<AnyInteger<long long>>, toStringStd);
    AddRowOfAll("IntegerToHex_32", "ours", Numbers<AnyInteger<int>>, HexOurs);
    AddRowOfAll("IntegerToHex_32", "fmt", Numbers<AnyInteger<int>>, HexFmt);
    AddToString<Price>("RealToString_Price");
    AddToString<Measurement>("RealToString_Measurement");
    AddToString<AnyReal>("RealToString_Any");
    AddRowOfAll("RealToString_TwoDecimals", "ours", Numbers<Price>, FixedOurs);
    AddRowOfAll("RealToString_TwoDecimals", "fmt", Numbers<Price>, FixedFmt);
    AddFromText<AnyInteger<int>>("TextToInteger_32");
    AddFromText<AnyInteger<long long>>("TextToInteger_64");
    AddFromText<Price>("TextToReal_Price");
    AddFromText<Measurement>("TextToReal_Measurement");
    AddFromText<AnyReal>("TextToReal_Any");
    return true;
}();

}  // namespace

BENCHMARK(IntegerToArrayOurs<AnyInteger<int>>)->Name("BM_IntegerToArray_32/ours");
BENCHMARK(IntegerToArrayStd<AnyInteger<int>>)->Name("BM_IntegerToArray_32/std::to_chars");
BENCHMARK(IntegerToArrayOurs<AnyInteger<long long>>)->Name("BM_IntegerToArray_64/ours");
BENCHMARK(IntegerToArrayStd<AnyInteger<long long>>)->Name("BM_IntegerToArray_64/std::to_chars");
