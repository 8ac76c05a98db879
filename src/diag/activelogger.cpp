#include "diag/activelogger.h"

#include <cstdio>

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
    const TraceOptions given = readOptions();
    directory_ = given.directory.isEmpty() ? DefaultLogDirectory() : given.directory;
    if (!given.noIni)
        ini_ = TraceIni(given.iniPath.isEmpty() ? MakePath(directory_, kIniName) : given.iniPath);
    openLog(ini_.hasChanged() ? readOptions() : given);
    loadPlugins(given.pluginDirectory);
    if (!given.noThread) startUpdater();
}

ActiveLogger::~ActiveLogger() {
    stopUpdater();
    plugins_.unload();
    TraceBridge::Terminate();
}

TraceOptions ActiveLogger::readOptions() const {
    CParamLineArgs inEffect(options_);
    inEffect.MergeArgs(ini_.read());
    CParamLineTracker tracker(inEffect);
    return ReadTraceOptions(tracker);
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
}

void ActiveLogger::refresh() {
    if (ini_.hasChanged()) TraceBridge::Reconfigure(readOptions());
}

void ActiveLogger::startUpdater() {
    HoldModule();
    updater_ = new TraceStateUpdaterThread([this] { refresh(); });
    updater_->start();
}

void ActiveLogger::stopUpdater() {
    if (updater_ == nullptr) return;
    updater_->stop();
    updater_->join(kStopMilliseconds);
    if (updater_->isAlive())
        return;  // stuck in the system: better left behind than taken away under its feet
    delete updater_;
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
