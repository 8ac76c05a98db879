// Dates as text and back against the C and C++ libraries and {fmt}, their parts against the C library's calendar, and the
// present time against the C++ library's clock.

#include <benchmark/benchmark.h>
#include <fmt/chrono.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "items.h"
#include "row.h"
#include "tarnlib/sdatetimeconv.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr const char* kOurPattern = "yyyy-MM-dd@HH:mm:ss.SS";
constexpr const char* kTheirPattern = "%Y-%m-%d@%H:%M:%S.000";
constexpr const char* kOurNames = "dddd, dd MMMM yyyy";

const STimeZone& utc = STimeZone::TZ_UTC();
const STimeZone& local = STimeZone::TZ_Local();

std::vector<SDateTime> OurMoments() {
    std::vector<SDateTime> moments;
    for (const long long seconds : Moments()) moments.emplace_back(seconds, utc);
    return moments;
}

std::vector<struct tm> RuntimeMoments() {
    std::vector<struct tm> moments;
    for (const SDateTime& moment : OurMoments()) moments.push_back(sicSDateTimeToTm(&moment));
    return moments;
}

template <class Value, class Work>
void Each(benchmark::State& state, const std::vector<Value>& values, Work work) {
    std::size_t next = 0;
    for (auto _ : state) {
        work(values[next]);
        next = (next + 1) % values.size();
    }
}

// The same value as text and as text with names.
SAnsiString FormatOurs(const SDateTime& moment) {
    return moment.Format(kOurPattern, utc);
}
std::string FormatRuntime(const std::tm& moment) {
    char text[64];
    return {text, std::strftime(text, sizeof text, kTheirPattern, &moment)};
}
std::string FormatFmt(const std::tm& moment) {
    return fmt::format("{:%Y-%m-%d@%H:%M:%S.000}", moment);
}
SAnsiString NamesOurs(const SDateTime& moment) {
    return moment.Format(kOurNames, utc);
}
std::string NamesFmt(const std::tm& moment) {
    return fmt::format("{:%A, %d %B %Y}", moment);
}

void FormatIntoArrayOurs(benchmark::State& state) {
    Each(state, OurMoments(), [](const SDateTime& moment) {
        char text[64];
        benchmark::DoNotOptimize(moment.Format(text, sizeof text, kOurPattern, utc));
        benchmark::DoNotOptimize(text[0]);
    });
}

void FormatIntoArrayRuntime(benchmark::State& state) {
    Each(state, RuntimeMoments(), [](const struct tm& moment) {
        char text[64];
        benchmark::DoNotOptimize(std::strftime(text, sizeof text, kTheirPattern, &moment));
        benchmark::DoNotOptimize(text[0]);
    });
}

template <class String>
std::vector<String> Texts() {
    std::vector<String> texts;
    for (const SDateTime& moment : OurMoments())
        texts.emplace_back(moment.Format("yyyy-MM-dd@HH:mm:ss", utc).getString());
    return texts;
}

SDateTime ParseOurs(const SAnsiString& text) {
    SDateTime moment;
    benchmark::DoNotOptimize(StringToDate(text, moment, utc));
    return moment;
}

std::tm ParseStream(const std::string& text) {
    static std::istringstream in;
    std::tm parts = {};
    in.clear();
    in.str(text);
    in >> std::get_time(&parts, "%Y-%m-%d@%H:%M:%S");
    return parts;
}

void NowOurs(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(SDateTime::GetCurrentDateTime());
}

void NowChrono(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(std::chrono::system_clock::now());
}

void ReadParts(benchmark::State& state, const STimeZone& zone) {
    Each(state, OurMoments(), [&zone](const SDateTime& moment) {
        short year;
        unsigned char month, day, hour, minute, second;
        unsigned short millisecond;
        moment.GetDateTime(year, month, day, hour, minute, second, millisecond, zone);
        benchmark::DoNotOptimize(year + month + day + hour + minute + second);
    });
}

void ReadPartsRuntime(benchmark::State& state, struct tm* (*convert)(const __time64_t*)) {
    _putenv("TZ=");
    Each(state, Moments(),
         [convert](const __time64_t& moment) { benchmark::DoNotOptimize(*convert(&moment)); });
}

void Build(benchmark::State& state, const STimeZone& zone) {
    Each(state, RuntimeMoments(),
         [&zone](const struct tm& parts) { benchmark::DoNotOptimize(SDateTime(&parts, zone)); });
}

void BuildRuntime(benchmark::State& state) {
    Each(state, RuntimeMoments(), [](struct tm parts) { benchmark::DoNotOptimize(_mktime64(&parts)); });
}

const bool added = [] {
    AddRow("DateFormat_String", "ours", OurMoments, FormatOurs);
    AddRow("DateFormat_String", "strftime", RuntimeMoments, FormatRuntime);
    AddRow("DateFormat_String", "fmt", RuntimeMoments, FormatFmt);
    AddRow("DateFormat_Names", "ours", OurMoments, NamesOurs);
    AddRow("DateFormat_Names", "fmt", RuntimeMoments, NamesFmt);
    AddRow("DateParse", "ours", Texts<SAnsiString>, ParseOurs);
    AddRow("DateParse", "std::get_time", Texts<std::string>, ParseStream);
    return true;
}();

}  // namespace

BENCHMARK(FormatIntoArrayOurs)->Name("BM_DateFormat_Array/ours");
BENCHMARK(FormatIntoArrayRuntime)->Name("BM_DateFormat_Array/strftime");
BENCHMARK(NowOurs)->Name("BM_PresentTime/ours");
BENCHMARK(NowChrono)->Name("BM_PresentTime/std::chrono");
BENCHMARK_CAPTURE(ReadParts, utc, utc)->Name("BM_DateParts_UTC/ours");
BENCHMARK_CAPTURE(ReadPartsRuntime, utc, &_gmtime64)->Name("BM_DateParts_UTC/gmtime");
BENCHMARK_CAPTURE(ReadParts, local, local)->Name("BM_DateParts_Local/ours");
BENCHMARK_CAPTURE(ReadPartsRuntime, local, &_localtime64)->Name("BM_DateParts_Local/localtime");
BENCHMARK_CAPTURE(Build, local, local)->Name("BM_DateBuild_Local/ours");
BENCHMARK(BuildRuntime)->Name("BM_DateBuild_Local/mktime");
