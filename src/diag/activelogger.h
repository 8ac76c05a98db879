#pragma once

#include <atomic>

#include "diag/loggingdll.h"
#include "diag/traceini.h"
#include "diag/traceoptions.h"
#include "jtc/jtc.h"
#include "tarnlib/refcount.h"

namespace TarnLibA500 {

class TraceStateUpdaterThread;

/// Logging between the first Initialize and the last Terminate. Counted, because other threads may still be
/// in it when it is stopped.
class ActiveLogger : public CRefCount {
  public:
    /// Reads the options, opens the log, loads plug-ins and starts the refresh thread.
    explicit ActiveLogger(const CParamLineArgs& commandLine);
    ActiveLogger(const ActiveLogger&) = delete;
    ActiveLogger& operator=(const ActiveLogger&) = delete;

    /// Stops and closes everything. Plug-ins are ended once nobody is in them any more.
    void stop();

    SAnsiString getCmdLine() const;
    bool hasPlugins() const { return hasPlugins_; }
    void logToPlugins(int level, int category, unsigned long message, const SAnsiString& text,
                      const SIArray<SAnsiString>& arguments) const;

    /// Takes up a changed trace ini file.
    void refresh();

  protected:
    ~ActiveLogger() override = default;

  private:
    TraceOptions readOptions();
    void openLog(const TraceOptions& options);
    void loadPlugins(const SAnsiString& directory);
    void startUpdater(TraceOptions& options);
    void stopUpdater();

    CParamLineArgs options_;
    CParamLineTracker tracker_;  ///< the options in effect, those of the ini file too
    SAnsiString directory_;
    TraceIni ini_;
    mutable JTCMonitor pluginLock_;
    LoggingDLL plugins_;
    std::atomic<bool> hasPlugins_{false};
    std::atomic<bool> isStopped_{false};
    TraceStateUpdaterThread* updater_ = nullptr;
};

}  // namespace TarnLibA500
