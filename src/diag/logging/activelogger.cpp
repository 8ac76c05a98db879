#include "diag/logging/activelogger.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <utility>

#include "console/console.h"
#include "diag/assert/unlogged.h"
#include "diag/logging/loggeroptions.h"
#include "diag/logging/tracestateupdater.h"
#include "diag/logging/tracetext.h"
#include "files/systempath.h"
#include "seam/osmodules.h"

namespace TarnLibA500 {
namespace {

constexpr long kStopMilliseconds = 10'000;
constexpr const char* kIniName = "trace.ini";

// What the ini file cannot do: change where the log is or what was started, open dialogs, or silence the
// process.
constexpr const char* kNotFromIni[] = {"loggingPath",   "tracecmpname", "loggingPluginDir",
                                       "notracethread", "traceinipath", "notraceini",
                                       "nativeassert",  "noassert",     "nevertrace"};

// A console gets the characters, everything else the bytes.
void PrintToStandardOutput(const SAnsiString& text) {
    if (console::Of(stdout) != nullptr) {
        const Utf8 utf8(text);
        console::Write(stdout, utf8.text(), std::strlen(utf8.text()), CP_UTF8);
    } else {
        std::fwrite(text.getString(), 1, text.getLength(), stdout);
    }
    std::fflush(stdout);
}

// Its two lines one by one: a report is one line, whatever stands in the path.
void ReportDirectoryFailure(const SAnsiString& directory) {
    const SAnsiString text = LogDirectoryFailure(directory);
    const auto lineEnd = text.find("\n");
    ReportUnlogged(text.left(lineEnd).getString());
    ReportUnlogged(lineEnd.getPtr() + 1);
}

SIArray<OptionNotice> WithoutKnown(const SIArray<OptionNotice>& notices, const SIArray<OptionNotice>& known) {
    SIArray<OptionNotice> news;
    for (const OptionNotice& notice : notices) {
        if (std::find(known.begin(), known.end(), notice) == known.end()) news.Add(notice);
    }
    return news;
}

SAnsiString DescribeEngine() {
    CollectedText description;
    TraceLog400::State::print(description);
    return description.text();
}

// The module that this code is in, once more: a thread that runs in it keeps it loaded.
HMODULE HoldModule() {
    const HMODULE module = osmodules::Hold(reinterpret_cast<const void*>(&HoldModule));
    if (module == nullptr) throw std::runtime_error("the module cannot be kept loaded");
    return module;
}

}  // namespace

ActiveLogger::ActiveLogger(TraceBridge& bridge, const CParamLineArgs& commandLine)
    : bridge_(bridge), options_(MergedLoggerOptions(commandLine)) {
    TraceOptions options = readOptions();
    const LogDirectory directory = FindLogDirectory(options.directory);
    directory_ = directory.path;
    findIni(options, directory.isConfigured);
    if (ini_.update()) options = readOptions();
    notices_ = options.notices;
    openLog(options, directory);
    try {
        start(options);
    } catch (...) {
        stop();
        throw;
    }
}

// Anybody could put one beside the default directory for logs.
void ActiveLogger::findIni(const TraceOptions& options, bool isDirectoryConfigured) {
    if (options.noIni) return;
    if (!options.iniPath.isEmpty()) {
        ini_ = TraceIni(AbsolutePath(options.iniPath));
    } else if (isDirectoryConfigured) {
        ini_ = TraceIni(JoinPath(directory_, kIniName));
    }
}

void ActiveLogger::start(TraceOptions& options) {
    plugins_.load(options.pluginDirectory, PluginOptions(options_));
    if (!options.noThread) startUpdater(options);
}

void ActiveLogger::stop() noexcept {
    isStopped_ = true;
    stopUpdater();
    plugins_.unload();
    bridge_.Terminate();
}

TraceOptions ActiveLogger::readOptions() {
    CParamLineArgs changes(ini_.options());
    SIArray<OptionNotice> refusals;
    for (const char* name : kNotFromIni) {
        if (changes.RemoveArg(name))
            refusals.Add(
                {OptionNotice::Loss, ini_.path() + ": the option " + name + " is not taken from there"});
    }
    if (!ini_.problem().isEmpty()) refusals.Add({OptionNotice::Loss, ini_.problem()});
    CParamLineArgs inEffect(options_);
    inEffect.MergeArgs(changes);
    CParamLineTracker tracker(inEffect);
    TraceOptions options = ReadTraceOptions(tracker);
    options.notices.Append(refusals);
    tracker_ = std::move(tracker);
    return options;
}

void ActiveLogger::openLog(const TraceOptions& options, const LogDirectory& directory) {
    if (options.verbose)
        PrintToStandardOutput("Admin before TraceBridge::Initialize: " + DescribeEngine() + "\n");
    SAnsiString refusal;
    if (!MakeLogDirectory(directory, refusal)) ReportDirectoryFailure(directory_);
    if (!refusal.isEmpty()) {
        ReportUnlogged(refusal.getString());
        directory_ = NoLogDirectory();
    }
    bridge_.Initialize(options, directory_);
    if (options.verbose) PrintToStandardOutput("TraceLog state:\n" + DescribeEngine() + "\n");
}

// What was said before is not said again.
void ActiveLogger::refresh() {
    isIniPending_ |= ini_.update();
    if (!isIniPending_) return;
    TraceOptions options = readOptions();
    SIArray<OptionNotice> all(options.notices);
    options.notices = WithoutKnown(all, notices_);
    if (!isStopped_) bridge_.Reconfigure(options);
    std::swap(notices_, all);
    isIniPending_ = false;
}

// Without a thread logging goes on; then every line is written at once.
void ActiveLogger::startUpdater(TraceOptions& options) {
    try {
        module_ = HoldModule();
        updater_ = new TraceStateUpdaterThread([this] { refresh(); });
        updater_->start();
    } catch (const std::exception& failure) {
        dropUpdater();
        options.noThread = true;
        options.notices.RemoveAll();
        options.notices.Add({OptionNotice::Loss, SAnsiString("no trace state updater: ") + failure.what()});
        bridge_.Reconfigure(options);
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
    dropUpdater();
}

void ActiveLogger::dropUpdater() {
    delete updater_;
    updater_ = nullptr;
    if (module_ != nullptr) osmodules::Free(static_cast<HMODULE>(std::exchange(module_, nullptr)));
}

SAnsiString ActiveLogger::getCmdLine() const {
    CParamLineArgs options(options_);
    options.SetArg("loggingPath", directory_);
    return options.GetCmdLine();
}

}  // namespace TarnLibA500
