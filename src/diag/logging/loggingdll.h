#pragma once

#include <atomic>

#include "diag/logging/loggerimpl.h"
#include "diag/logging/pluginturn.h"
#include "tarnlib/cparamlineargs.h"
#include "tarnlib/siarray.h"
#include "tarnlib/simap.h"

namespace TarnLibA500 {

/// The route to loggers in modules of their own: finds them, loads them and hands every structured entry to
/// them. Any thread may log; one at a time is in the plug-ins.
class LoggingDLL {
  public:
    /// Loads every log_xn_*.dll of the directory, log_xn_system first. One that cannot be used is traced and
    /// left out. Nothing is loaded from a directory that is not an absolute path.
    void load(const SAnsiString& directory, const SAnsiString& options);
    /// Ends and unloads them, when no thread is in them. Otherwise that is done with this object, which such
    /// a thread keeps alive.
    void unload();
    bool isEmpty() const { return isEmpty_; }

    /// An entry that a plug-in logs itself is not handed over. A plug-in that throws is ended and left out.
    void log(int level, int category, unsigned long message, const SAnsiString& text,
             const SIArray<SAnsiString>& arguments);

  private:
    using Loggers = SIMap<SAnsiString, CRefPtr<SLoggerImpl>>;  // by module name

    void loadOne(const SAnsiString& path, const SAnsiString& name, const SAnsiString& options);
    void traceStuck();

    PluginTurns turns_;
    Loggers loggers_;  ///< changed by the thread whose turn it is
    std::atomic<bool> isEmpty_{true};
};

/// The options of plug-ins as one command line: what the registry keeps for the product, the environment, and
/// the options of the process, the later ones winning. Without secrets.
SAnsiString PluginOptions(const CParamLineArgs& given);

}  // namespace TarnLibA500
