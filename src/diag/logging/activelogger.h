#pragma once

#include <atomic>

#include "diag/logging/logdirectory.h"
#include "diag/logging/loggingdll.h"
#include "diag/logging/tracebridge.h"
#include "diag/logging/traceini.h"
#include "diag/logging/traceoptions.h"
#include "jtc/jtc.h"
#include "tarnlib/refcount.h"

namespace TarnLibA500 {

class TraceStateUpdaterThread;

/// Logging between the first Initialize and the last Terminate. Counted, because other threads may still be
/// in it when it is stopped.
class ActiveLogger : public CRefCount {
  public:
    /// Reads the options, opens the log, loads plug-ins and starts the refresh thread. When it throws, nothing
    /// of that is left. The bridge outlives every thread in it.
    ActiveLogger(TraceBridge& bridge, const CParamLineArgs& commandLine);
    ActiveLogger(const ActiveLogger&) = delete;
    ActiveLogger& operator=(const ActiveLogger&) = delete;

    /// Stops and closes everything, without memory. Plug-ins are ended once nobody is in them any more.
    void stop() noexcept;

    SAnsiString getCmdLine() const;
    LoggingDLL& plugins() { return plugins_; }

    /// Takes up a changed trace ini file.
    void refresh();

  protected:
    ~ActiveLogger() override = default;

  private:
    TraceOptions readOptions();
    void findIni(const TraceOptions& options, bool isDirectoryConfigured);
    void openLog(const TraceOptions& options, const LogDirectory& directory);
    void start(TraceOptions& options);
    void startUpdater(TraceOptions& options);
    void stopUpdater();
    void dropUpdater();

    TraceBridge& bridge_;
    CParamLineArgs options_;
    CParamLineTracker tracker_;  ///< the options in effect, those of the ini file too
    SAnsiString directory_;
    TraceIni ini_;
    bool isIniPending_ = false;      ///< the ini file has changed, and that is not in effect yet
    SIArray<OptionNotice> notices_;  ///< what the last reading of the options brought up
    LoggingDLL plugins_;
    std::atomic<bool> isStopped_{false};
    TraceStateUpdaterThread* updater_ = nullptr;
    void* module_ = nullptr;  ///< this one, which stays loaded as long as the thread is there
};

}  // namespace TarnLibA500
