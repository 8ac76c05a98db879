// Dates as text and back against the C and C++ libraries and {fmt}, and their parts against the C library's calendar.

#include <benchmark/benchmark.h>
#include <fmt/chrono.h>

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "tarnlib/sdatetimeconv.h"

using namespace TarnLibA500;

namespace {

constexpr long long kFirst = 946'684'800;  // 2000-01-01
constexpr long long kStep = 98'765;        // a day and some hours
constexpr int kMoments = 4096;
constexpr const char* kOurPattern = "yyyy-MM-dd@HH:mm:ss.SS";
constexpr const char* kTheirPattern = "%Y-%m-%d@%H:%M:%S.000";
constexpr const char* kOurNames = "dddd, dd MMMM yyyy";

const STimeZone& utc = STimeZone::TZ_UTC();
const STimeZone& local = STimeZone::TZ_Local();

std::vector<SDateTime> Moments() {
    std::vector<SDateTime> moments;
    for (int i = 0; i < kMoments; ++i) moments.emplace_back(kFirst + i * kStep, utc);
    return moments;
}

std::vector<struct tm> RuntimeMoments() {
    std::vector<struct tm> moments;
    for (const SDateTime& moment : Moments()) moments.push_back(sicSDateTimeToTm(&moment));
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

void FormatOurs(benchmark::State& state) {
    Each(state, Moments(), [](const SDateTime& moment) {
        const SAnsiString text = moment.Format(kOurPattern, utc);
        benchmark::DoNotOptimize(text.getString());
    });
}

void FormatRuntime(benchmark::State& state) {
    Each(state, RuntimeMoments(), [](const struct tm& moment) {
        char text[64];
        const std::string string(text, std::strftime(text, sizeof text, kTheirPattern, &moment));
        benchmark::DoNotOptimize(string.data());
    });
}

void FormatFmt(benchmark::State& state) {
    Each(state, RuntimeMoments(), [](const struct tm& moment) {
        benchmark::DoNotOptimize(fmt::format("{:%Y-%m-%d@%H:%M:%S.000}", moment));
    });
}

void NamesOurs(benchmark::State& state) {
    Each(state, Moments(), [](const SDateTime& moment) {
        const SAnsiString text = moment.Format(kOurNames, utc);
        benchmark::DoNotOptimize(text.getString());
    });
}

void NamesFmt(benchmark::State& state) {
    Each(state, RuntimeMoments(),
         [](const struct tm& moment) { benchmark::DoNotOptimize(fmt::format("{:%A, %d %B %Y}", moment)); });
}

void FormatIntoArrayOurs(benchmark::State& state) {
    Each(state, Moments(), [](const SDateTime& moment) {
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

void ParseOurs(benchmark::State& state) {
    std::vector<SAnsiString> texts;
    for (const SDateTime& moment : Moments()) texts.push_back(moment.Format("yyyy-MM-dd@HH:mm:ss", utc));
    Each(state, texts, [](const SAnsiString& text) {
        SDateTime moment;
        benchmark::DoNotOptimize(StringToDate(text, moment, utc));
        benchmark::DoNotOptimize(moment);
    });
}

void ParseStream(benchmark::State& state) {
    std::vector<std::string> texts;
    for (const SDateTime& moment : Moments())
        texts.emplace_back(moment.Format("yyyy-MM-dd@HH:mm:ss", utc).getString());
    std::istringstream in;
    Each(state, texts, [&in](const std::string& text) {
        struct tm parts = {};
        in.clear();
        in.str(text);
        in >> std::get_time(&parts, "%Y-%m-%d@%H:%M:%S");
        benchmark::DoNotOptimize(parts);
    });
}

void ReadParts(benchmark::State& state, const STimeZone& zone) {
    Each(state, Moments(), [&zone](const SDateTime& moment) {
        short year;
        unsigned char month, day, hour, minute, second;
        unsigned short millisecond;
        moment.GetDateTime(year, month, day, hour, minute, second, millisecond, zone);
        benchmark::DoNotOptimize(year + month + day + hour + minute + second);
    });
}

void ReadPartsRuntime(benchmark::State& state, struct tm* (*convert)(const __time64_t*)) {
    _putenv("TZ=");
    std::vector<__time64_t> moments;
    for (int i = 0; i < kMoments; ++i) moments.push_back(kFirst + i * kStep);
    Each(state, moments,
         [convert](const __time64_t& moment) { benchmark::DoNotOptimize(*convert(&moment)); });
}

void Build(benchmark::State& state, const STimeZone& zone) {
    Each(state, RuntimeMoments(),
         [&zone](const struct tm& parts) { benchmark::DoNotOptimize(SDateTime(&parts, zone)); });
}

void BuildRuntime(benchmark::State& state) {
    Each(state, RuntimeMoments(), [](struct tm parts) { benchmark::DoNotOptimize(_mktime64(&parts)); });
}

}  // namespace

BENCHMARK(FormatOurs)->Name("BM_DateFormat_String/ours");
BENCHMARK(FormatRuntime)->Name("BM_DateFormat_String/strftime");
BENCHMARK(FormatFmt)->Name("BM_DateFormat_String/fmt");
BENCHMARK(NamesOurs)->Name("BM_DateFormat_Names/ours");
BENCHMARK(NamesFmt)->Name("BM_DateFormat_Names/fmt");
BENCHMARK(FormatIntoArrayOurs)->Name("BM_DateFormat_Array/ours");
BENCHMARK(FormatIntoArrayRuntime)->Name("BM_DateFormat_Array/strftime");
BENCHMARK(ParseOurs)->Name("BM_DateParse/ours");
BENCHMARK(ParseStream)->Name("BM_DateParse/std::get_time");
BENCHMARK_CAPTURE(ReadParts, utc, utc)->Name("BM_DateParts_UTC/ours");
BENCHMARK_CAPTURE(ReadPartsRuntime, utc, &_gmtime64)->Name("BM_DateParts_UTC/gmtime");
BENCHMARK_CAPTURE(ReadParts, local, local)->Name("BM_DateParts_Local/ours");
BENCHMARK_CAPTURE(ReadPartsRuntime, local, &_localtime64)->Name("BM_DateParts_Local/localtime");
BENCHMARK_CAPTURE(Build, local, local)->Name("BM_DateBuild_Local/ours");
BENCHMARK(BuildRuntime)->Name("BM_DateBuild_Local/mktime");
