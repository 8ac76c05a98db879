// Trace points that are switched off against spdlog's level check, and lines to a file against spdlog's basic
// file logger with the same bytes a line, buffered on both sides.

#include <benchmark/benchmark.h>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>
#include <memory>

#include "row.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"

using namespace TarnLibA500;

namespace {

constexpr int kLevel = 6;
constexpr const char* kText = "sent 1234 bytes to the next host in 56 ms";
// Date, zone, letter, component, process, thread, context, place: as long as in our lines.
constexpr const char* kPattern = "%Y-%m-%dT%H:%M:%S.%e+00:00 m bench %P %t [] trace_bench.cpp(47) %v";

std::filesystem::path Folder() {
    return std::filesystem::temp_directory_path() / "tarnlib-bench";
}

/// Our log, open as long as the object lives.
class OurLog {
  public:
    /// The filter names the sources whose points are on; all are without one.
    explicit OurLog(const char* filter = "") {
        CParamLineArgs args;
        args.SetProgramName("bench");
        args.SetArg("trace", "m");
        args.SetArg("tracecmpname", "bench");
        args.SetArg("keep", "off");
        args.SetArg("loggingPath", Folder().string().c_str());
        if (*filter != '\0') args.SetArg("fileLogFilter", filter);
        SLogger::Initialize(args);
    }
    ~OurLog() { SLogger::Terminate(); }
    OurLog(const OurLog&) = delete;
    OurLog& operator=(const OurLog&) = delete;
};

/// Made by the first thread of a run and removed by the last.
std::unique_ptr<OurLog> ourLog;
std::shared_ptr<spdlog::logger> theirLog;

void OpenTheirs() {
    std::filesystem::create_directories(Folder());
    theirLog = std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                                                             (Folder() / "spdlog.log").string(), true));
    theirLog->set_pattern(kPattern);
}

void OurLines(benchmark::State& state) {
    if (state.thread_index() == 0) ourLog = std::make_unique<OurLog>();
    for (auto _ : state) TARN_TRACE(kLevel, "%1", kText);
    if (state.thread_index() == 0) ourLog.reset();
}

void TheirLines(benchmark::State& state) {
    if (state.thread_index() == 0) OpenTheirs();
    for (auto _ : state) theirLog->info("{}", kText);
    if (state.thread_index() == 0) theirLog.reset();
}

void OurSwitchedOff(benchmark::State& state) {
    int argument = 1;
    for (auto _ : state) {
        TARN_TRACE(kLevel, "%1", argument);
        benchmark::ClobberMemory();
    }
}

void TheirSwitchedOff(benchmark::State& state) {
    spdlog::logger logger("off");
    logger.set_level(spdlog::level::off);
    for (auto _ : state) {
        bool isOn = logger.should_log(spdlog::level::info);
        benchmark::DoNotOptimize(isOn);
        benchmark::ClobberMemory();
    }
}

// Its mask is on, but the file filter names other sources. The rival has a logger of its own for what is switched off.
void OurFilteredOut(benchmark::State& state) {
    const OurLog log("othersource");
    OurSwitchedOff(state);
}

const bool added = bench::AddRival("spdlog", fmt::format("{}.{}", SPDLOG_VER_MAJOR, SPDLOG_VER_MINOR));

BENCHMARK(OurSwitchedOff)->Name("BM_Trace_SwitchedOff/ours");
BENCHMARK(TheirSwitchedOff)->Name("BM_Trace_SwitchedOff/spdlog");
BENCHMARK(OurFilteredOut)->Name("BM_Trace_FilteredOut/ours");
BENCHMARK(TheirSwitchedOff)->Name("BM_Trace_FilteredOut/spdlog");
BENCHMARK(OurLines)->Name("BM_Trace_Line/ours")->Threads(1)->UseRealTime();
BENCHMARK(TheirLines)->Name("BM_Trace_Line/spdlog")->Threads(1)->UseRealTime();
BENCHMARK(OurLines)->Name("BM_Trace_Line/ours")->Threads(4)->UseRealTime();
BENCHMARK(TheirLines)->Name("BM_Trace_Line/spdlog")->Threads(4)->UseRealTime();

}  // namespace
