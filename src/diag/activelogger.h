#pragma once

#include "diag/loggingdll.h"
#include "diag/traceini.h"
#include "diag/traceoptions.h"
#include "jtc/jtc.h"

namespace TarnLibA500 {

class TraceStateUpdaterThread;

/// Logging between the first Initialize and the last Terminate.
class ActiveLogger {
  public:
    /// Reads the options, opens the log, loads plug-ins and starts the refresh thread.
    explicit ActiveLogger(const CParamLineArgs& commandLine);
    /// Stops and closes everything.
    ~ActiveLogger();
    ActiveLogger(const ActiveLogger&) = delete;
    ActiveLogger& operator=(const ActiveLogger&) = delete;

    SAnsiString getCmdLine() const;
    bool hasPlugins() const { return !plugins_.isEmpty(); }
    void logToPlugins(int level, int category, unsigned long message, const SAnsiString& text,
                      const SIArray<SAnsiString>& arguments) const;

    /// Takes up a changed trace ini file.
    void refresh();

  private:
    TraceOptions readOptions() const;
    void openLog(const TraceOptions& options);
    void loadPlugins(const SAnsiString& directory);
    void startUpdater();
    void stopUpdater();

    CParamLineArgs options_;
    SAnsiString directory_;
    TraceIni ini_;
    mutable JTCMonitor pluginLock_;
    LoggingDLL plugins_;
    TraceStateUpdaterThread* updater_ = nullptr;
};

}  // namespace TarnLibA500
