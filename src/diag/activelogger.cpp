#include "diag/activelogger.h"

#include <cstdio>
#include <exception>

#include "diag/logdirectory.h"
#include "diag/loggeroptions.h"
#include "diag/tracebridge.h"
#include "diag/tracestateupdater.h"
#include "diag/tracetext.h"
#include "tarnlib/pathparts.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr long kStopMilliseconds = 10'000;
constexpr const char* kIniName = "trace.ini";

void PrintToStandardOutput(const SAnsiString& text) {
    std::fwrite(text.getString(), 1, text.getLength(), stdout);
    std::fflush(stdout);
}

SAnsiString DescribeEngine() {
    CollectedText description;
    TraceLog400::State::print(description);
    return description.text();
}

// The module that this code is in, once more or once less: a thread that runs in it keeps it loaded.
void HoldModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&HoldModule),
                       &module);
}
void ReleaseModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&HoldModule), &module);
    FreeLibrary(module);
}

}  // namespace

ActiveLogger::ActiveLogger(const CParamLineArgs& commandLine) : options_(MergedLoggerOptions(commandLine)) {
    TraceOptions options = readOptions();
    directory_ = options.directory.isEmpty() ? DefaultLogDirectory() : options.directory;
    if (!options.noIni)
        ini_ = TraceIni(options.iniPath.isEmpty() ? MakePath(directory_, kIniName) : options.iniPath);
    if (ini_.update()) options = readOptions();
    openLog(options);
    loadPlugins(options.pluginDirectory);
    if (!options.noThread) startUpdater(options);
}

void ActiveLogger::stop() {
    isStopped_ = true;
    stopUpdater();
    {
        const JTCSynchronized lock(pluginLock_);
        hasPlugins_ = false;
        plugins_.unload();
    }
    TraceBridge::Terminate();
}

// The ini file changes neither where the log is nor what was started.
TraceOptions ActiveLogger::readOptions() {
    CParamLineArgs changes(ini_.options());
    for (const char* name :
         {"loggingPath", "tracecmpname", "loggingPluginDir", "notracethread", "traceinipath", "notraceini"})
        changes.RemoveArg(name);
    CParamLineArgs inEffect(options_);
    inEffect.MergeArgs(changes);
    tracker_ = CParamLineTracker(inEffect);
    return ReadTraceOptions(tracker_);
}

void ActiveLogger::openLog(const TraceOptions& options) {
    if (options.verbose)
        PrintToStandardOutput("Admin before TraceBridge::Initialize: " + DescribeEngine() + "\n");
    if (!MakeLogDirectory(directory_))
        TraceBridge::UnloadedAssert(LogDirectoryFailure(directory_).getString());
    TraceBridge::Initialize(options, directory_);
    if (options.verbose) PrintToStandardOutput("TraceLog state:\n" + DescribeEngine() + "\n");
}

void ActiveLogger::loadPlugins(const SAnsiString& directory) {
    const JTCSynchronized lock(pluginLock_);
    if (!directory.isEmpty()) plugins_.load(directory, PluginOptions(options_));
    hasPlugins_ = !plugins_.isEmpty();
}

void ActiveLogger::refresh() {
    if (!ini_.update()) return;
    const TraceOptions options = readOptions();
    if (!isStopped_) TraceBridge::Reconfigure(options);
}

// Without a thread logging goes on; then every line is written at once.
void ActiveLogger::startUpdater(TraceOptions& options) {
    HoldModule();
    updater_ = new TraceStateUpdaterThread([this] { refresh(); });
    try {
        updater_->start();
    } catch (const std::exception& failure) {
        delete updater_;
        updater_ = nullptr;
        ReleaseModule();
        options.noThread = true;
        options.notices.RemoveAll();
        options.notices.Add(
            {TraceLog400::Logger::Warning, SAnsiString("no trace state updater: ") + failure.what()});
        TraceBridge::Reconfigure(options);
    }
}

void ActiveLogger::stopUpdater() {
    if (updater_ == nullptr) return;
    updater_->stop();
    updater_->join(kStopMilliseconds);
    if (updater_->isAlive()) {
        AddRef();  // stuck in the system: it and what it uses are left behind, rather than taken away from it
        return;
    }
    delete updater_;
    updater_ = nullptr;
    ReleaseModule();
}

SAnsiString ActiveLogger::getCmdLine() const {
    CParamLineArgs options(options_);
    options.SetArg("loggingPath", directory_);
    return options.GetCmdLine();
}

void ActiveLogger::logToPlugins(int level, int category, unsigned long message, const SAnsiString& text,
                                const SIArray<SAnsiString>& arguments) const {
    const JTCSynchronized lock(pluginLock_);
    plugins_.log(level, category, message, text, arguments);
}

}  // namespace TarnLibA500
