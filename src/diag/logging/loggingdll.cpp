#include "diag/logging/loggingdll.h"

#include <utility>

#include "diag/assert/levels.h"
#include "diag/logging/loggeroptions.h"
#include "files/namepattern.h"
#include "files/systempath.h"
#include "system/systemtext.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/registry.h"
#include "tarnlib/ssfilesearch.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "loggingdll";
constexpr const char* kPattern = "log_xn_*.dll";
constexpr const char* kSystemModule = "log_xn_system.dll";

// What stands before the extension of a name that the pattern matches, whatever the C locale makes of its bytes.
SAnsiString Stem(const SAnsiString& fileName) {
    constexpr std::uint32_t kExtensionBytes = 4;
    return SAnsiString(fileName.getString(), fileName.getLength() - kExtensionBytes);
}

// The system plug-in first, then in the order of the directory.
SIArray<SAnsiString> FindModules(const SAnsiString& directory) {
    const NamePattern systemModule(kSystemModule);
    SIArray<SAnsiString> first, others;
    SSFileSearch search;
    for (bool found = search.FindFirst(directory, kPattern); found; found = search.FindNext()) {
        const SAnsiString name = search.GetEntry().name;
        (systemModule.matches(ToSystem(name).getString()) ? first : others).Add(name);
    }
    first.Append(others);
    return first;
}

void TraceFailure(const SAnsiString& path, const SAnsiString& why) {
    TARN_TRACE_AT(levels::kLoss, kUnit, "the logging plug-in %1 is not used: %2", path, why);
}

}  // namespace

void LoggingDLL::load(const SAnsiString& directory, const SAnsiString& options) {
    if (directory.isEmpty()) return;
    if (!IsAbsolutePath(directory)) return TraceFailure(directory, "the directory is not an absolute path");
    const PluginTurn turn(turns_);
    try {
        for (const SAnsiString& name : FindModules(directory))
            loadOne(JoinPath(directory, name), Stem(name), options);
    } catch (const SFileSysException& failure) {
        TraceFailure(JoinPath(directory, kPattern), failure.toString());
    }
    isEmpty_ = loggers_.IsEmpty();
}

void LoggingDLL::loadOne(const SAnsiString& path, const SAnsiString& name, const SAnsiString& options) {
    try {
        loggers_.SetAt(name, new SLoggerImpl(path, options));
    } catch (const CSharedLibraryException& failure) {
        TraceFailure(path, failure.toString());
    } catch (const SAnsiString& why) {
        TraceFailure(path, why);
    }
}

// They end when nobody waits for a turn any more: a plug-in may be waiting for a thread that logs.
void LoggingDLL::unload() {
    Loggers ending;
    const PluginTurn turn(turns_);
    isEmpty_ = true;
    if (turn.outcome() == PluginTurns::Mine) std::swap(ending, loggers_);
}

void LoggingDLL::log(int level, int category, unsigned long message, const SAnsiString& text,
                     const SIArray<SAnsiString>& arguments) {
    SIArray<CRefPtr<SLoggerImpl>> failed;  // they end after the turn
    const PluginTurn turn(turns_);
    if (turn.outcome() == PluginTurns::Stuck) traceStuck();
    if (turn.outcome() != PluginTurns::Mine) return;
    for (auto at = loggers_.GetFirst(); at != loggers_.End();) {
        const auto [name, logger] = *at++;
        try {
            logger->log(level, category, message, text, arguments);
        } catch (const SAnsiString& why) {
            TraceFailure(logger->path(), why);
            failed.Add(logger);
            loggers_.RemoveKey(name);
        }
    }
    isEmpty_ = loggers_.IsEmpty();
}

void LoggingDLL::traceStuck() {
    if (turns_.isNews())
        TARN_TRACE_AT(levels::kLoss, kUnit,
                      "a logging plug-in does not return: entries are not handed over until it does");
}

SAnsiString PluginOptions(const CParamLineArgs& given) {
    const SAnsiString kept =
        Registry("SOFTWARE\\velmora", "velmora", HKEY_LOCAL_MACHINE, false).ReadValue("CmdLine");
    CParamLineArgs options = ParseLoggerOptions(kept);
    options.MergeArgs(given);
    return WithoutSecrets(options).GetCmdLine();
}

}  // namespace TarnLibA500
